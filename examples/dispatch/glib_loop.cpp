// examples/dispatch/glib_loop.cpp - a GLib or GTK program whose main loop runs the main queue's blocks.
#include "NorvikCore/platform/dispatch/MainQueue.h"

#include <glib-unix.h>

using namespace norvik;

void runLoop(GMainLoop* loop) {
  const auto drain = [](gint, GIOCondition, gpointer) -> gboolean {
    dispatch_main_queue_drain();
    return G_SOURCE_CONTINUE;
  };
  g_unix_fd_add(dispatch_main_queue_descriptor(), G_IO_IN, drain, nullptr);
  g_main_loop_run(loop);
}

// So far the page.

#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include <cstdio>

namespace {

/// Reads in the background and shows on the main thread, then calls `done` there.
template <class Done>
void startImport(Done done) {
  auto reader = TSKDispatchQueue::dispatchQueueWithLabel("import");
  reader->dispatchAsynchronously([done] {
    int employees = 40;  // stands for the number of employees read
    TSKDispatchQueue::mainDispatchQueue()->dispatchAsynchronously([done, employees] {
      std::printf("%d employees\n", employees);
      done();
    });
  });
}

}  // namespace

int main() {
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  startImport([loop] { g_main_loop_quit(loop); });
  runLoop(loop);
  g_main_loop_unref(loop);
}
