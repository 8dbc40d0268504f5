#include "NorvikCore/platform/object/ObjectMacros.h"

#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/Block.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace norvik;

namespace {

using Doubling = Block<int(int)>;

class Button : public NSObject {
  NK_OBJECT(Button, NSObject)
  NK_PROPERTY(SEL, action, setAction)
  NK_PROPERTY(Block<int(int)>, handler, setHandler)
  NK_WEAK_PROPERTY(NSObject, target, setTarget)
  NK_ATOMIC_PROPERTY(SEL, alternate, setAlternate)
  NK_ATOMIC_PROPERTY(Block<int(int)>, fallback, setFallback)
  NK_ATOMIC_PROPERTY(Ref<Button>, next, setNext)
};

class ButtonWatcher : public NSObject {
  NK_OBJECT(ButtonWatcher, NSObject)
  void observeValueForKeyPath(const NSString& path, NSObject&, const KeyValueChange& change, void*) override {
    heard.push_back(path.utf8() + ":" + change.oldValue().description().utf8() + ">" +
                    change.newValue().description().utf8());
  }
  std::vector<std::string> heard;
};

}  // namespace

TEST(ObjectMacros, ASelectorIsReadAndWrittenByKeyAsItsName) {
  const auto button = make<Button>();
  for (const char* key : {"action", "alternate"}) {
    EXPECT_TRUE(button->valueForKey(key).isAbsent()) << key;
    button->setValue_forKey("press:", key);
    EXPECT_EQ(button->valueForKey(key), Value("press:")) << key;
    EXPECT_RAISES(button->setValue_forKey(5, key), "NSInvalidArgumentException") << key;
  }
  EXPECT_EQ(button->action(), SEL("press:"));
  EXPECT_EQ(button->alternate(), SEL("press:"));
  button->setValue_forKey(Value(), "action");
  button->setValue_forKey(Value::null(), "alternate");
  EXPECT_FALSE(button->action() || button->alternate());
}

TEST(ObjectMacros, AClosureIsReadAndWrittenByKeyAsTheSameClosure) {
  const auto button = make<Button>();
  const Doubling twice = [](int n) { return 2 * n; };
  for (const char* key : {"handler", "fallback"}) {
    EXPECT_TRUE(button->valueForKey(key).isAbsent()) << key;
    button->setValue_forKey(twice, key);
    EXPECT_EQ(button->valueForKey(key).object(), twice.object().get()) << key;
    EXPECT_EQ(button->valueForKey(key).as<Doubling>()(4), 8) << key;
    EXPECT_RAISES(button->setValue_forKey(Block<void()>([] {}), key), "NSInvalidArgumentException") << key;
  }
  EXPECT_EQ(button->handler(), twice);
  button->setValue_forKey(Value(), "handler");
  EXPECT_FALSE(button->handler());
}

TEST(ObjectMacros, AWeakPropertyIsAKeyThatReadsAbsentOnceItsObjectIsGone) {
  const auto button = make<Button>();
  auto target = make<Button>();
  button->setValue_forKey(target, "target");
  EXPECT_EQ(button->valueForKey("target").object(), target.get());
  target = nullptr;
  EXPECT_TRUE(button->valueForKey("target").isAbsent());
  EXPECT_TRUE(Button::staticClass().property("target")->isWeak);
  EXPECT_TRUE(Button::staticClass().property("fallback")->isAtomic);
}

TEST(ObjectMacros, EveryFormOfPropertyIsObserved) {
  const auto button = make<Button>();
  const auto watcher = make<ButtonWatcher>();
  for (const char* key : {"action", "alternate", "target.action", "next.action"}) {
    button->addObserver(*watcher, key, NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew);
  }
  const auto other = make<Button>();
  other->setAction("press:");
  button->setAction("go:");
  button->setAlternate("stop:");
  button->setTarget(other);
  button->setNext(other);
  EXPECT_EQ(watcher->heard, (std::vector<std::string>{"action:<null>>go:", "alternate:<null>>stop:",
                                                      "target.action:<null>>press:", "next.action:<null>>press:"}));
}

TEST(ObjectMacros, APropertySaysTheClassItRefersTo) {
  EXPECT_EQ(&Button::staticClass().property("next")->objectClass(), &Button::staticClass());
  EXPECT_EQ(&Button::staticClass().property("target")->objectClass(), &NSObject::staticClass());
  EXPECT_EQ(Button::staticClass().property("action")->objectClass, nullptr);
}
