// One thread loads a shared object with classes while others look classes up.
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace norvik;

TEST(ClassAcrossSharedObjects, ThreadsLookClassesUpWhileOneLoadsASharedObject) {
  std::atomic<int> looking{0};
  std::atomic<bool> isLoaded{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < 4; ++i) {
    readers.emplace_back([&] {
      ++looking;
      while (true) {
        const bool mustFind = isLoaded;
        const Class* found = Class::named("OnlyInTheHidingPlugin");
        EXPECT_TRUE(found || !mustFind);
        EXPECT_EQ(Class::named("NSObject"), &NSObject::staticClass());
        if (mustFind) break;
      }
    });
  }
  while (looking < 4) std::this_thread::yield();
  void* plugin = dlopen(NORVIK_HIDING_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  isLoaded = true;
  for (std::thread& each : readers) each.join();
  ASSERT_NE(plugin, nullptr) << dlerror();
  EXPECT_EQ(Class::named("OnlyInTheHidingPlugin")->performClassOperation("answer"), Value(43));
}

TEST(ClassAcrossSharedObjects, ASharedObjectThatWasUnloadedUnaskedKeepsItsClasses) {
  void* plugin = dlopen(NORVIK_HIDING_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(plugin, nullptr) << dlerror();
  EXPECT_EQ(dlclose(plugin), 0);  // no class was looked up in between
  const Class* loaded = Class::named("OnlyInTheHidingPlugin");
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(loaded->performClassOperation("answer"), Value(43));
}
