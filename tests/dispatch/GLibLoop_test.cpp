// The main queue in GLib's main loop.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include "tests/dispatch/Wrappers.h"

#include <glib-unix.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

namespace norvik {
namespace {

class GLibLoop : public test::WatchedTest {
 protected:
  GLibLoop()
      : loop_(g_main_loop_new(nullptr, FALSE)),
        source_(g_unix_fd_add(dispatch_main_queue_descriptor(), G_IO_IN, &GLibLoop::drain, nullptr)) {}
  ~GLibLoop() override {
    g_source_remove(source_);
    g_main_loop_unref(loop_);
  }

  /// Runs the loop until the work on another thread has ended.
  template <class Work>
  void runWhile(const Work& work) {
    std::thread worker([&] {
      work();
      main_->dispatchAsynchronously([this] { g_main_loop_quit(loop_); });
    });
    g_main_loop_run(loop_);
    worker.join();
  }

  const test::Wrapper main_ = TSKDispatchQueue::mainDispatchQueue();
  GMainLoop* const loop_;

 private:
  static gboolean drain(gint, GIOCondition, gpointer) {
    dispatch_main_queue_drain();
    return G_SOURCE_CONTINUE;
  }
  const guint source_;
};

TEST_F(GLibLoop, RunsBlocksInTheirOrderOnTheMainThread) {
  const auto mainThread = std::this_thread::get_id();
  std::string seen;
  runWhile([&] {
    for (const char* text : {"a", "b", "c"}) {
      main_->dispatchAsynchronously([&seen, text, mainThread] {
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
        seen += text;
      });
    }
    main_->dispatchSynchronously([&] { seen += "d"; });
    EXPECT_EQ(seen, "abcd");
  });
}

TEST_F(GLibLoop, KeepsTheHierarchyAcrossIt) {
  const test::Wrapper payroll = test::serial("payroll", TSKDeadlockSkip);
  bool refused = true;
  bool inPlace = false;
  runWhile([&] {
    payroll->dispatchSynchronously([&] {
      main_->dispatchSynchronously([&] {
        main_->dispatchSynchronously([&] { inPlace = true; });
        payroll->dispatchSynchronously([&] { refused = false; });
      });
    });
  });
  EXPECT_TRUE(refused);
  EXPECT_TRUE(inPlace);
}

TEST_F(GLibLoop, TimersOfTheMainQueueFireThere) {
  std::string seen;
  main_->scheduleTimerWithName("save", 0.005, TSKTimerRestart, [&] {
    EXPECT_TRUE(main_->isCurrentQueue());
    seen += "saved";
    g_main_loop_quit(loop_);
  });
  g_main_loop_run(loop_);
  EXPECT_EQ(seen, "saved");
}

TEST_F(GLibLoop, OtherSourcesGetTheirTurnWhileABlockQueuesItselfAgain) {
  struct Turns {
    GMainLoop* loop;
    int idle = 0;
    bool over = false;
  } turns{loop_};
  std::function<void()> again = [&] {
    if (!turns.over) main_->dispatchAsynchronously([&] { again(); });
  };
  again();
  g_timeout_add(
      0,
      [](gpointer data) -> gboolean {
        auto* seen = static_cast<Turns*>(data);
        if (++seen->idle < 3) return G_SOURCE_CONTINUE;
        seen->over = true;
        g_main_loop_quit(seen->loop);
        return G_SOURCE_REMOVE;
      },
      &turns);
  g_main_loop_run(loop_);
  EXPECT_EQ(turns.idle, 3);
  dispatch_main_queue_drain();  // runs the last block, which enqueues nothing
}

TEST_F(GLibLoop, ABlockMayRunTheLoopWithinItself) {
  std::string seen;
  runWhile([&] {
    main_->dispatchSynchronously([&] {
      GMainLoop* dialog = g_main_loop_new(nullptr, FALSE);
      main_->dispatchAsynchronously([&] { seen += "after the dialog"; });
      g_timeout_add(
          1,
          [](gpointer data) -> gboolean {
            g_main_loop_quit(static_cast<GMainLoop*>(data));
            return G_SOURCE_REMOVE;
          },
          dialog);
      g_main_loop_run(dialog);
      g_main_loop_unref(dialog);
      seen += "dialog, ";
    });
  });
  EXPECT_EQ(seen, "dialog, after the dialog") << "the main queue waits for its running block";
}

}  // namespace
}  // namespace norvik
