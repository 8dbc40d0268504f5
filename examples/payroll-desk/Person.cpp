#include "Person.h"

#include <algorithm>
#include <string_view>

#include "NorvikCore/platform/values/Decimal_literal.h"

namespace desk {

using namespace norvik;

namespace {

bool refuse(Ref<NSError>* error, const NSString& reason) {
  if (error)
    *error =
        NSError::errorWithDomain("PayrollDesk", 1, NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, reason}}));
  return false;
}

bool hasDigits(const Value& value, std::string_view pattern) {
  const NSString* const text = value.string();
  return text != nullptr && text->view().size() == pattern.size() &&
         std::equal(pattern.begin(), pattern.end(), text->view().begin(),
                    [](char wanted, char c) { return wanted == '0' ? '0' <= c && c <= '9' : wanted == c; });
}

Decimal amountOrNone(const Value& value) { return value.isNumber() ? value.as<Decimal>() : Decimal(); }

Decimal partOf(const Decimal& pay, const Decimal& rate) { return (pay * rate / 100).round(2); }

}  // namespace

Decimal Person::bonusRate() const {
  if (partOf(pay(), typedRate_) == bonus()) return typedRate_;
  return pay() > 0 ? (bonus() * 100 / pay()).round(2) : Decimal();
}

void Person::setBonusRate(const Decimal& rate) {
  willChangeValueForKey("bonusRate");
  typedRate_ = rate;
  setBonus(partOf(pay(), rate));
  didChangeValueForKey("bonusRate");
}

bool Person::validateName(Value* value, Ref<NSError>* error) {
  const NSString* const text = value->string();
  const NSString trimmed = text != nullptr ? text->stringByTrimming() : NSString();
  if (trimmed.empty()) return refuse(error, "A person needs a name.");
  *value = trimmed;
  return true;
}

bool Person::validateSortCode(Value* value, Ref<NSError>* error) {
  return hasDigits(*value, "00-00-00") || refuse(error, "A sort code has six digits, such as 20-12-52.");
}

bool Person::validateAccount(Value* value, Ref<NSError>* error) {
  return hasDigits(*value, "00000000") || refuse(error, "An account number has eight digits.");
}

bool Person::validateBonus(Value* value, Ref<NSError>* error) {
  const Decimal bonus = amountOrNone(*value).round(2);
  if (bonus < 0) return refuse(error, "A bonus is not below zero.");
  if (bonus > 999'999_dec) return refuse(error, "A bonus is \u00a3999,999 at most.");
  *value = bonus;
  return true;
}

bool Person::validateBonusRate(Value* value, Ref<NSError>* error) {
  const Decimal rate = amountOrNone(*value);
  if (rate < 0 || rate > 100) return refuse(error, "A rate is between 0 and 100 percent.");
  *value = rate;
  return true;
}

}  // namespace desk
