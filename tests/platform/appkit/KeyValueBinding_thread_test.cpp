// Bindings that are made, used and ended on many threads.
#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

#include "tests/platform/appkit/BindingModels.h"

namespace norvik::test {
namespace {

class SharedAmount : public NSObject {
  NK_OBJECT(SharedAmount, NSObject)
  NK_ATOMIC_PROPERTY(Value, value, setValue)
};

template <class Work>
void onThreads(int count, Work&& work) {
  std::latch together(count);
  std::vector<std::jthread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      together.arrive_and_wait();
      work(i);
    });
  }
}

TEST(KeyValueBindingThreads, ABindingActsOnTheThreadThatMakesTheChange) {
  auto model = make<SharedAmount>();
  auto field = make<BoundField>();
  std::thread::id actedOn;
  bind(*field, *model, "value");
  field->adjust = [&](const Value& value) {
    actedOn = std::this_thread::get_id();
    return value;
  };
  std::thread::id changedOn;
  std::jthread([&] {
    changedOn = std::this_thread::get_id();
    model->setValue(7);
    EXPECT_EQ(field->value(), Value(7));  // set before the setter returned
  }).join();
  EXPECT_EQ(actedOn, changedOn);
}

TEST(KeyValueBindingThreads, EachThreadBindsItsOwnReceiversToOneModel) {
  auto model = make<SharedAmount>();
  onThreads(4, [&](int thread) {
    for (int i = 0; i < 200; ++i) {
      auto mine = make<SharedAmount>();
      bind(*mine, *model, "value");
      if (thread == 0) model->setValue(i);
      if (i % 3 == 0) unbind(*mine, NSValueBinding);
    }
  });
  EXPECT_FALSE(model->isObserved());
}

TEST(KeyValueBindingThreads, OneReceiverIsBoundAndUnboundByAll) {
  auto model = make<SharedAmount>();
  auto receiver = make<SharedAmount>();
  onThreads(4, [&](int thread) {
    for (int i = 0; i < 200; ++i) {
      if (thread % 2 == 0) {
        bind(*receiver, *model, "value");
      } else {
        unbind(*receiver, NSValueBinding);
      }
      static_cast<void>(infoForBinding(*receiver, NSValueBinding));
    }
  });
  unbind(*receiver, NSValueBinding);
  EXPECT_FALSE(model->isObserved());
  EXPECT_FALSE(receiver->isObserved());
}

TEST(KeyValueBindingThreads, ReceiversGoWhileTheirModelChanges) {
  auto model = make<SharedAmount>();
  onThreads(3, [&](int thread) {
    for (int i = 0; i < 300; ++i) {
      if (thread == 0) {
        model->setValue(i);
      } else {
        auto receiver = make<SharedAmount>();
        bind(*receiver, *model, "value");
      }
    }
  });
  EXPECT_FALSE(model->isObserved());
}

TEST(KeyValueBindingThreads, ModelsGoWhileTheirReceiverChanges) {
  auto receiver = make<SharedAmount>();
  onThreads(2, [&](int thread) {
    for (int i = 0; i < 300; ++i) {
      if (thread == 0) {
        receiver->setValue(i);
      } else {
        bind(*receiver, *make<SharedAmount>(), "value");
      }
    }
  });
  unbind(*receiver, NSValueBinding);
  EXPECT_FALSE(receiver->isObserved());
}

}  // namespace
}  // namespace norvik::test
