#include "NorvikCore/platform/object/Class.h"
#include "tests/platform/object/plugin/PluginClasses.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>

using namespace norvik;

TEST(ClassAcrossSharedObjects, ALoadedObjectsClassesJoinTheListAndOneNameIsOneClass) {
  ASSERT_EQ(Class::named("OnlyInThePlugin"), nullptr);
  const auto before = Class::all();
  void* plugin = dlopen(NORVIK_PLUGIN, RTLD_NOW);
  ASSERT_NE(plugin, nullptr) << dlerror();

  const Class* loaded = Class::named("OnlyInThePlugin");
  ASSERT_NE(loaded, nullptr);
  const auto after = Class::all();
  EXPECT_EQ(after.size(), before.size() + 2) << "a class stated in both counts once, its other version too";
  EXPECT_EQ(std::ranges::count(after, loaded), 1);
  EXPECT_EQ(loaded->performClassOperation("answer"), Value(42));
  EXPECT_EQ(loaded->superclass(), &StatedTwice::staticClass());

  const auto statedTwice = reinterpret_cast<const void* (*)()>(dlsym(plugin, "statedTwiceInThePlugin"));
  ASSERT_NE(statedTwice, nullptr);
  EXPECT_EQ(statedTwice(), &StatedTwice::staticClass());

  const auto hidden = reinterpret_cast<const void* (*)()>(dlsym(plugin, "hiddenInThePlugin"));
  ASSERT_NE(hidden, nullptr);
  EXPECT_EQ(hidden(), &HiddenOnBothSides::staticClass());

  // The header declares the class differently for the shared object, so it is another class there.
  const auto older = reinterpret_cast<const void* (*)()>(dlsym(plugin, "olderInThePlugin"));
  ASSERT_NE(older, nullptr);
  EXPECT_NE(older(), &OtherVersionOnBothSides::staticClass());
  EXPECT_EQ(Class::named("OtherVersionOnBothSides"), nullptr);
  EXPECT_EQ(Class::allNamed("OtherVersionOnBothSides").size(), 2u);

  const Ref<NSObject> made = loaded->makeObject();
  ASSERT_TRUE(made);
  made->setValue_forKey(Value(7), "number");
  EXPECT_EQ(made->valueForKey("number"), Value(7));
}

TEST(ClassAcrossSharedObjects, ASharedObjectThatRegistersAClassIsNotUnloaded) {
  void* plugin = dlopen(NORVIK_HIDING_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(plugin, nullptr) << dlerror();
  const Class* loaded = Class::named("OnlyInTheHidingPlugin");
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(dlclose(plugin), 0);
  ASSERT_NE(dlopen(NORVIK_HIDING_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it was unloaded";
  EXPECT_EQ(loaded->performClassOperation("answer"), Value(43));
  EXPECT_TRUE(loaded->makeObject());
}
