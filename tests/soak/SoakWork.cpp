#include "tests/soak/SoakWork.h"

#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/dispatch/TSKBlockOperation.h"
#include "NorvikCore/linq/LINQ.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

#include <cstdio>

namespace norvik::test {
namespace {

int reportDescriptor = 2;
std::atomic<int> failures = 0;

class SoakSlip : public NSObject {
  NK_OBJECT(SoakSlip, NSObject)
  NK_PROPERTY(NSString, department, setDepartment)
  NK_PROPERTY(Decimal, netPay, setNetPay)
};

class SoakField : public NSObject {
  NK_OBJECT(SoakField, NSObject)
  NK_PROPERTY(Value, value, setValue)
};

std::string where(const char* what, int source, int number) {
  return std::string(what) + " (source " + std::to_string(source) + ", round " + std::to_string(number) + ")";
}

NSString keyOf(const char* name, int source) { return NSString(name + std::to_string(source)); }

/// The value of the cookie with that name, or "(none)".
NSString cookieNamed(const NSHTTPCookieStorage& storage, const NSURL& url, const NSString& name) {
  for (const NSHTTPCookie& cookie : storage.cookiesForURL(url)->as<NSHTTPCookie>()) {
    if (cookie.name() == name) return cookie.value();
  }
  return "(none)";
}

}  // namespace

void keepReportDescriptor(int descriptor) { reportDescriptor = descriptor; }

void soakFailed(const std::string& what) {
  if (++failures <= 20) dprintf(reportDescriptor, "soak: WRONG: %s\n", what.c_str());
}

bool hasSoakFailed() { return failures != 0; }

SoakWork::SoakWork(const std::string& folder)
    : defaultsPath_(folder + "/pay/defaults.sqlite"),
      defaults_(make<NSUserDefaults>(defaultsPath_)),
      cookies_(make<NSHTTPCookieStorage>(NSString(folder + "/pay/cookies.sqlite"))),
      url_(NSURL::URLWithString("https://pay.example.co.uk/slips/april")),
      controller_(FBKVOController::controllerWithObserver(*account_)) {
  defaults_->registerDefaults(*NSDictionary::dictionaryWith({{"soakRegistered", 20}}));
  controller_->observe_keyPath_options_block(account_, "balance", NSKeyValueObservingOptionNew,
                                             [this](NSObject&, NSObject&, const NSDictionary&) { ++notifications_; });
}

void SoakWork::round(int source, int number) {
  observe(source, number);
  bind(source, number);
  dispatch(source, number);
  query(source, number);
  preferences(source, number);
  cookies(source, number);
}

void SoakWork::roundOfChild(int source, int number) {
  observe(source, number);
  bind(source, number);
  dispatch(source, number);
  query(source, number);
  defaults_->setInteger(number, "soakChild");
  expect(defaults_->integerForKey("soakChild") == number, where("preference of a child", source, number));
  expect(cookies_->setCookieLine(NSString("child=" + std::to_string(number) + "; Path=/; Max-Age=3600"), *url_),
         where("a child's cookie is taken", source, number));
}

void SoakWork::checkTracesOfChild(int source, int number) {
  expect(defaults_->synchronize(), where("preferences synchronize", source, number));
  expect(defaults_->integerForKey("soakChild") == number, where("a child's preference is seen", source, number));
  expect(cookies_->synchronize(), where("cookies synchronize", source, number));
  expect(cookieNamed(*cookies_, *url_, "child") == NSString(std::to_string(number)),
         where("a child's cookie is seen", source, number));
}

void SoakWork::checkTotals() {
  expect(notifications_ == changes_,
         "one notification a change: " + std::to_string(notifications_) + " of " + std::to_string(changes_));
  std::uint64_t ran = 0;
  queue_->dispatchSynchronously([&] { ran = ran_; });
  expect(ran == dispatched_, "every block ran once: " + std::to_string(ran) + " of " + std::to_string(dispatched_));
}

void SoakWork::observe(int source, int number) {
  const auto slip = make<SoakSlip>();
  int calls = 0;
  Value last;
  const auto controller = FBKVOController::controllerWithObserver(*slip);
  controller->observe_keyPath_options_block(slip, "netPay", NSKeyValueObservingOptionNew,
                                            [&](NSObject&, NSObject&, const NSDictionary& change) {
                                              ++calls;
                                              last = change[NSKeyValueChangeNewKey];
                                            });
  for (int i = 1; i <= 3; ++i) slip->setNetPay(Decimal(number + i));
  controller->unobserve(slip, "netPay");
  slip->setNetPay(Decimal(0));
  expect(calls == 3 && last == Value(Decimal(number + 3)), where("observe", source, number));

  changes_ += 2;
  account_->setBalance(number);
  account_->setBalance(number + 1);
}

void SoakWork::bind(int source, int number) {
  const auto slip = make<SoakSlip>();
  const auto field = make<SoakField>();
  slip->setNetPay(Decimal(number));
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(
      *field, NSValueBinding, *slip, "netPay", NSDictionary::dictionaryWith({{NKBind, "readOnly"}}),
      [](const Value& pay) -> Value { return pay.as<Decimal>() * Decimal(12); },
      [](const Value& shown) -> Value { return shown.as<Decimal>() / Decimal(12); });
  expect(field->value() == Value(Decimal(number * 12)), where("a binding shows", source, number));
  slip->setNetPay(Decimal(number + 1));
  expect(field->value() == Value(Decimal((number + 1) * 12)), where("a binding follows", source, number));
  expect(nk_updateBoundValue(*field, Value(Decimal((number + 2) * 12))), where("a binding takes", source, number));
  expect(slip->netPay() == Decimal(number + 2), where("a binding pushes back", source, number));
  unbind(*field, NSValueBinding);
  slip->setNetPay(Decimal(0));
  expect(field->value() == Value(Decimal((number + 2) * 12)), where("an ended binding stays", source, number));
}

void SoakWork::dispatch(int source, int number) {
  const auto queue = TSKDispatchQueue::dispatchQueueWithLabel("soak round");
  int sum = 0;
  for (int i = 1; i <= 20; ++i) queue->dispatchAsynchronously([&sum, i] { sum += i; });
  const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(queue, [&sum] { sum += 1000; });
  queue->dispatchAsynchronously([&sum] { sum += 5; });
  operation->waitUntilFinished();
  int atEnd = 0;
  queue->dispatchSynchronously([&] { queue->dispatchSynchronously([&] { atEnd = sum; }); });
  expect(atEnd == 1215, where("blocks", source, number));

  const dispatch_semaphore_t fired = dispatch_semaphore_create(0);
  queue->scheduleTimerWithName("late", 3600, TSKTimerRestart,
                               [source, number] { soakFailed(where("a cancelled timer", source, number)); });
  queue->scheduleTimerWithName("soon", 0, TSKTimerRestart, [fired] { dispatch_semaphore_signal(fired); });
  expect(dispatch_semaphore_wait(fired, dispatch_time(DISPATCH_TIME_NOW, 60 * INT64_C(1'000'000'000))) == 0,
         where("a timer fires", source, number));
  queue->cancelTimerWithName("late");

  dispatched_ += 3;
  for (int i = 0; i < 3; ++i) queue_->dispatchAsynchronously([this] { ++ran_; });
}

void SoakWork::query(int source, int number) {
  const auto slips = make<NSMutableArray>();
  for (int i = 1; i <= 40; ++i) {
    const auto slip = make<SoakSlip>();
    slip->setDepartment(i % 4 == 0 ? "Works" : "Sales");
    slip->setNetPay(Decimal(number) + Decimal(i));
    slips->addObject(slip);
  }
  const Ref<NSArray> all = slips;
  const auto isWorks = [](const SoakSlip& slip) { return slip.department() == "Works"; };
  const Value sum = all | linq_where(isWorks) | linq_select(&SoakSlip::netPay) | linq_sum();
  expect(sum == Value(Decimal(10) * Decimal(number) + Decimal(220)), where("a query's sum", source, number));
  const Ref<NSMutableDictionary> groups = all | linq_groupBy(&SoakSlip::department);
  expect(groups->count() == 2 && groups->objectForKey("Sales").as<Ref<NSArray>>()->count() == 30,
         where("a query's groups", source, number));
}

void SoakWork::preferences(int source, int number) {
  const NSString key = keyOf("soakWorker", source), text = keyOf("soakText", source);
  defaults_->setInteger(number, key);
  defaults_->setObject(NSString(std::to_string(number) + " Zoë"), text);
  expect(defaults_->integerForKey(key) == number, where("a preference", source, number));
  expect(defaults_->stringForKey(text) == NSString(std::to_string(number) + " Zoë"),
         where("a preference's text", source, number));
  expect(defaults_->integerForKey("soakRegistered") == 20, where("a registered preference", source, number));
  if (number % 10 == 0) {
    const auto other = make<NSUserDefaults>(defaultsPath_);
    expect(other->integerForKey(key) == number, where("a preference in another object", source, number));
    defaults_->removeObjectForKey(text);
    expect(!defaults_->stringForKey(text), where("a removed preference", source, number));
  }
}

void SoakWork::cookies(int source, int number) {
  const NSString kept = keyOf("kept", source), session = keyOf("session", source), value(std::to_string(number));
  expect(cookies_->setCookieLine(kept + "=" + value + "; Domain=example.co.uk; Path=/; Max-Age=3600", *url_),
         where("a cookie is taken", source, number));
  expect(cookies_->setCookieLine(session + "=" + value + "; Path=/; Secure", *url_),
         where("a session's cookie is taken", source, number));
  expect(cookieNamed(*cookies_, *url_, kept) == value, where("a cookie", source, number));
  expect(cookieNamed(*cookies_, *url_, session) == value, where("a session's cookie", source, number));
  expect(cookies_->setCookieLine(session + "=; Path=/; Secure; Max-Age=0", *url_),
         where("an expired cookie is taken", source, number));
  expect(cookieNamed(*cookies_, *url_, session) == "(none)", where("an expired cookie", source, number));
}

}  // namespace norvik::test
