// examples/payroll-desk/Person.h - an employee with the month's pay, as a model object that fields and tables follow.
#pragma once

#include <cstddef>

#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/object/NSObject.h"

namespace desk {

/// Confined to the main thread once it is shown. The bonus is paid in addition to the items of the files.
class Person : public norvik::NSObject {
  NK_OBJECT(Person, norvik::NSObject)
  NK_PROPERTY(norvik::NSString, number, setNumber)
  NK_PROPERTY(norvik::NSString, name, setName)
  NK_PROPERTY(norvik::NSString, department, setDepartment)
  NK_PROPERTY(norvik::NSString, sortCode, setSortCode)
  NK_PROPERTY(norvik::NSString, account, setAccount)
  NK_PROPERTY(norvik::Decimal, pay, setPay)
  NK_PROPERTY(norvik::Decimal, deductions, setDeductions)
  NK_PROPERTY(norvik::Decimal, bonus, setBonus)
  NK_PROPERTY(norvik::NSString, bonusReason, setBonusReason)
  NK_COMPUTED_PROPERTY_WITH_SETTER(norvik::Decimal, bonusRate, setBonusRate)
  NK_COMPUTED_PROPERTY(norvik::Decimal, gross)
  NK_COMPUTED_PROPERTY(norvik::Decimal, net)
  NK_AFFECTED_BY(bonusRate, bonus)
  NK_AFFECTED_BY(gross, bonus)
  NK_AFFECTED_BY(net, bonus)

 public:
  explicit Person(std::size_t indexOfEmployee) : index(indexOfEmployee) {}

  [[nodiscard]] norvik::Decimal gross() const { return pay() + bonus(); }
  [[nodiscard]] norvik::Decimal net() const { return gross() - deductions(); }
  /// The bonus in percent of the pay. Setting it sets the bonus, rounded to pennies.
  [[nodiscard]] norvik::Decimal bonusRate() const;
  void setBonusRate(const norvik::Decimal& rate);

  // An empty amount is none.
  bool validateName(norvik::Value* value, norvik::Ref<norvik::NSError>* error);
  bool validateSortCode(norvik::Value* value, norvik::Ref<norvik::NSError>* error);
  bool validateAccount(norvik::Value* value, norvik::Ref<norvik::NSError>* error);
  bool validateBonus(norvik::Value* value, norvik::Ref<norvik::NSError>* error);
  bool validateBonusRate(norvik::Value* value, norvik::Ref<norvik::NSError>* error);
  NK_METHOD_AS(validateName, "validateName:error:")
  NK_METHOD_AS(validateSortCode, "validateSortCode:error:")
  NK_METHOD_AS(validateAccount, "validateAccount:error:")
  NK_METHOD_AS(validateBonus, "validateBonus:error:")
  NK_METHOD_AS(validateBonusRate, "validateBonusRate:error:")

  const std::size_t index;  ///< in the employer's employees

 private:
  norvik::Decimal typedRate_;
};

}  // namespace desk
