#include "NorvikCore/platform/object/ObjectMacros.h"

#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/Block.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <map>
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

class Socket;

class Plug : public NSObject {
  NK_OBJECT(Plug, NSObject)
  NK_PROPERTY(Ref<Socket>, socket, setSocket)
  NK_WEAK_PROPERTY(Socket, formerSocket, setFormerSocket)
};

class Socket : public NSObject {
  NK_OBJECT(Socket, NSObject)
  NK_WEAK_PROPERTY(Plug, plug, setPlug)
};

class ButtonWatcher : public NSObject {
  NK_OBJECT(ButtonWatcher, NSObject)
  void observeValueForKeyPath(const NSString& path, NSObject&, const KeyValueChange& change, void*) override {
    heard.push_back(path.utf8() + ":" + change.oldValue().description().utf8() + ">" +
                    change.newValue().description().utf8());
  }
  std::vector<std::string> heard;
};

class Dial : public Button {
  NK_OBJECT(Dial, Button)
  NK_COMPUTED_PROPERTY_WITH_SETTER(int, turns, setTurns)
  const int& turns() const noexcept { return turns_; }
  void setTurns(const int& turns) noexcept { turns_ = turns; }
  NK_COMPUTED_PROPERTY(NSString, caption)
  NSString caption() const { return "dial"; }
  NK_AFFECTED_BY(caption, turns)
  NK_AFFECTED_BY(caption, press)
  NK_AFFECTED_BY(caption, next)
  int press() { return 1; }
  NK_METHOD(press)

 private:
  int turns_ = 0;
};

// These tests need several statements in one line.
// clang-format off
/// Other macros inside a class do not affect the statements.
#define NK_TEST_COUNTER(a) [[maybe_unused]] static constexpr int counter##a = __COUNTER__;
#define NK_TEST_COUNTERS(a)                                                              \
  NK_TEST_COUNTER(a##0) NK_TEST_COUNTER(a##1) NK_TEST_COUNTER(a##2) NK_TEST_COUNTER(a##3) \
  NK_TEST_COUNTER(a##4) NK_TEST_COUNTER(a##5) NK_TEST_COUNTER(a##6) NK_TEST_COUNTER(a##7)

class Crowded : public NSObject {
  NK_OBJECT(Crowded, NSObject)
  NK_PROPERTY(int, first, setFirst)
  NK_TEST_COUNTERS(a) NK_TEST_COUNTERS(b) NK_TEST_COUNTERS(c)
  NK_PROPERTY(int, second, setSecond) NK_PROPERTY(int, third, setThird) NK_METHOD(work) NK_METHOD_AS(work, "toil")
  NK_PROPERTY(std::map<int, std::vector<int>>, hours, setHours)
  void work() {}
  NK_METHOD_AS(add<int>, "add:")
  template <class T>
  T add(T amount) {
    return first() + amount;
  }

  class Inner : public NSObject {
    NK_OBJECT(Inner, NSObject)
    NK_PROPERTY(int, only, setOnly)
  };

 private:
  NK_PROPERTY(int, secret, setSecret)
  NK_COMPUTED_PROPERTY(int, twice)
  int twice() const { return 2 * secret(); }

 protected:
  NK_READONLY_PROPERTY(int, last)
};

template <class T>
class Holder : public T {
  NK_OBJECT(Holder, T)
  NK_PROPERTY(int, one, setOne) NK_PROPERTY(int, two, setTwo)
  NK_WEAK_PROPERTY(Holder, next, setNext)
  NK_AFFECTED_BY(one, two)
  NK_COMPUTED_PROPERTY(int, sum)
  int sum() const { return one() + two(); }
};

/// Types that contain commas or surround the name, and that use template parameters of the class.
template <class K, class V>
class Pairs : public NSObject {
  NK_OBJECT(Pairs, NSObject)
  NK_PROPERTY(std::map<K, V>, pairs, setPairs)
  NK_COMPUTED_PROPERTY(std::map<K, V>, copy)
  std::map<K, V> copy() const { return pairs(); }
  NK_PROPERTY(V (*)(K, V), merge, setMerge)
  NK_READONLY_PROPERTY(V[3], last)
  void clear() { pairs_->clear(); }
  NK_METHOD(clear)
};

/// The greatest number of statements.
class Full : public NSObject {
  NK_OBJECT(Full, NSObject)
  void work() {}
#define NK_TEST_ONE(n) NK_METHOD_AS(work, #n)
#define NK_TEST_5(n) NK_TEST_ONE(n##0) NK_TEST_ONE(n##1) NK_TEST_ONE(n##2) NK_TEST_ONE(n##3) NK_TEST_ONE(n##4)
#define NK_TEST_25(n) NK_TEST_5(n##0) NK_TEST_5(n##1) NK_TEST_5(n##2) NK_TEST_5(n##3) NK_TEST_5(n##4)
#define NK_TEST_125(n) NK_TEST_25(n##0) NK_TEST_25(n##1) NK_TEST_25(n##2) NK_TEST_25(n##3) NK_TEST_25(n##4)
  NK_TEST_125(a) NK_TEST_125(b) NK_TEST_125(c) NK_TEST_125(d) NK_TEST_25(e) NK_TEST_25(f) NK_TEST_25(g)
};
// clang-format on

template <class T>
concept readsSecret = requires(const T& object) {
  object.secret();
};
template <class T>
concept readsLast = requires(const T& object) {
  object.last();
};

std::vector<std::string> namesOf(const Class& c) {
  std::vector<std::string> names;
  for (const Property& property : c.properties()) names.push_back(property.name.utf8());
  return names;
}

// The functions of a category of Button.
int pressure(const Button&) { return 7; }
std::map<const Button*, Decimal>& weights() {
  static auto& all = *new std::map<const Button*, Decimal>;
  return all;
}
Decimal weight(const Button& button) { return weights()[&button]; }
void setWeight(Button& button, const Decimal& weight) {
  button.willChangeValueForKey("weight");
  weights()[&button] = weight;
  button.didChangeValueForKey("weight");
}
Ref<Button> neighbour(const Button& button) { return button.next(); }
void setNeighbour(Button& button, const Ref<Button>& neighbour) { button.setNext(neighbour); }
std::map<int, int> presses(const Button&) { return {}; }

NK_CATEGORY_READONLY_PROPERTY(Button, int, pressure)
NK_CATEGORY_PROPERTY(Button, Decimal, weight, setWeight)
NK_CATEGORY_PROPERTY(Button, Ref<Button>, neighbour, setNeighbour)
NK_CATEGORY_READONLY_PROPERTY(Button, std::map<int, int>, presses)

}  // namespace

TEST(ObjectMacros, StatementsKeepTheirOrderWhateverStandsBetweenThem) {
  EXPECT_EQ(namesOf(Crowded::staticClass()),
            (std::vector<std::string>{"first", "second", "third", "hours", "secret", "twice", "last"}));
  EXPECT_EQ(Crowded::staticClass().property("hours")->typeName, "std::map<int, std::vector<int>>");
  EXPECT_EQ(Crowded::staticClass().methods().size(), 3u);
  EXPECT_EQ(make<Crowded>()->performSelector("add:", 3), Value(3));
  EXPECT_EQ(namesOf(Crowded::Inner::staticClass()), std::vector<std::string>{"only"});
}

TEST(ObjectMacros, APropertyInAPrivateSectionIsStatedAndStaysPrivate) {
  const auto crowded = make<Crowded>();
  crowded->setValue_forKey(21, "secret");
  EXPECT_EQ(crowded->valueForKey("twice"), Value(42));
  EXPECT_FALSE(readsSecret<Crowded> || readsLast<Crowded>);
}

TEST(ObjectMacros, AClassTemplateStatesLikeAClass) {
  using Held = Holder<Crowded::Inner>;
  EXPECT_EQ(namesOf(Held::staticClass()), (std::vector<std::string>{"one", "two", "next", "sum"}));
  EXPECT_EQ(Held::staticClass().superclass(), &Crowded::Inner::staticClass());
  EXPECT_EQ(Held::staticClass().keysAffecting("one"), std::vector<NSString>{"two"});
  const auto held = make<Held>();
  held->setOne(3);
  held->setValue_forKey(4, "two");
  EXPECT_EQ(held->valueForKey("sum"), Value(7));
}

TEST(ObjectMacros, ATypeIsWrittenAsWhereverATypeIsNamed) {
  using IntPairs = Pairs<int, double>;
  EXPECT_EQ(namesOf(IntPairs::staticClass()), (std::vector<std::string>{"pairs", "copy", "merge", "last"}));
  EXPECT_EQ(IntPairs::staticClass().property("pairs")->typeName, "std::map<K, V>");
  EXPECT_EQ(IntPairs::staticClass().property("merge")->typeName, "V (*)(K, V)");
  const auto pairs = make<IntPairs>();
  pairs->setPairs({{1, 2.5}});
  EXPECT_EQ(pairs->copy(), (std::map<int, double>{{1, 2.5}}));
  pairs->setMerge([](int count, double value) { return count * value; });
  EXPECT_EQ(pairs->merge()(3, 1.5), 4.5);
  EXPECT_EQ(pairs->last()[2], 0.0);
  pairs->performSelector("clear");
  EXPECT_TRUE(pairs->pairs().empty());
}

TEST(ObjectMacros, AClassCanMake575Statements) {
  const auto methods = Full::staticClass().methods();
  ASSERT_EQ(methods.size(), 575u);
  EXPECT_EQ(methods.front().selector, SEL("a000"));
  EXPECT_EQ(methods[124].selector, SEL("a444"));
  EXPECT_EQ(methods.back().selector, SEL("g44"));
}

TEST(ObjectMacros, ACategoryStatesPropertiesForFreeFunctions) {
  const Class& c = Button::staticClass();
  const auto button = make<Button>();
  EXPECT_EQ(button->valueForKey("pressure"), Value(7));
  EXPECT_TRUE(c.property("pressure")->isReadOnly);
  EXPECT_RAISES(button->setValue_forKey(1, "pressure"), "NSUnknownKeyException");
  const Property& weight = *c.property("weight");
  EXPECT_EQ(weight.typeName, "Decimal");
  EXPECT_EQ(weight.setterName, "setWeight");
  EXPECT_EQ(weight.owner, &c);
  EXPECT_TRUE(weight.isComputed);
  EXPECT_FALSE(weight.isReadOnly);
  const auto watcher = make<ButtonWatcher>();
  button->addObserver(*watcher, "weight", NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew);
  button->setValue_forKey(2.50_dec, "weight");
  EXPECT_EQ(watcher->heard, std::vector<std::string>{"weight:0>2.50"});
  EXPECT_RAISES(button->setValue_forKey(Value(), "weight"), "NSInvalidArgumentException");
  EXPECT_EQ(&c.property("neighbour")->objectClass(), &c);
  button->setValue_forKey(button, "neighbour");
  EXPECT_EQ(button->next(), button);
  button->setNext(nullptr);
  EXPECT_EQ(c.property("presses")->typeName, "std::map<int, int>");
  EXPECT_RAISES((void)button->valueForKey("presses"), "NSUnknownKeyException");
  EXPECT_EQ(c.categoryProperties().size(), 4u);
}

TEST(ObjectMacros, ACategoryCannotReplaceAPropertyAndTheConsoleSaysSo) {
  const Class& c = Button::staticClass();
  const Property* first = c.property("pressure");
  const kernel::SystemLogCapture console;
  const detail::CategoryProperty again(c, {.name = "pressure", .text = "double", .isComputed = true});
  EXPECT_EQ(c.property("pressure"), first);
  EXPECT_EQ(c.categoryProperties().size(), 4u);
  EXPECT_EQ(console.lines(),
            std::vector<std::string>{"The property \"pressure\" that a category adds to the class (anonymous "
                                     "namespace)::Button is not used, because the class has one of that name"});
}

TEST(ObjectMacros, AComputedPropertyIsWrittenThroughTheSetterOfItsClass) {
  const auto dial = make<Dial>();
  dial->setValue_forKey(7, "turns");
  EXPECT_EQ(dial->valueForKey("turns"), Value(7));
  EXPECT_EQ(Dial::staticClass().property("turns")->setterName, "setTurns");
  EXPECT_FALSE(Dial::staticClass().property("turns")->isReadOnly);
  EXPECT_RAISES(dial->setValue_forKey(Value(), "turns"), "NSInvalidArgumentException");
  EXPECT_EQ(Dial::staticClass().keysAffecting("caption"), (std::vector<NSString>{"turns", "press", "next"}));
}

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

TEST(ObjectMacros, APropertyMayReferToAClassThatIsDefinedBelow) {
  const auto plug = make<Plug>();
  const auto socket = make<Socket>();
  plug->setValue_forKey(socket, "socket");
  plug->setFormerSocket(socket);
  socket->setPlug(plug);
  EXPECT_EQ(plug->valueForKeyPath("socket.plug"), Value(plug));
  EXPECT_EQ(plug->valueForKey("formerSocket"), Value(socket));
  EXPECT_RAISES(plug->setValue_forKey(plug, "socket"), "NSInvalidArgumentException");
  EXPECT_EQ(&Plug::staticClass().property("socket")->objectClass(), &Socket::staticClass());
  EXPECT_EQ(&Plug::staticClass().property("formerSocket")->objectClass(), &Socket::staticClass());
}
