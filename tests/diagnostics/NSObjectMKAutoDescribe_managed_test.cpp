#include "NorvikCore/diagnostics/NSObject+MK_AutoDescribe.h"
#include "NorvikCore/platform/kernel/SystemLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace norvik;

namespace {

class NSManagedObject : public NSObject {
  NK_OBJECT(NSManagedObject, NSObject)
  NK_PROPERTY(NSString, fault, setFault)
};

class ManagedEmployee : public NSManagedObject {
  NK_OBJECT(ManagedEmployee, NSManagedObject)
  [[nodiscard]] NSString description() const override { return "Jo, 50% of hours"; }
};

class UnmanagedEmployee : public NSObject {
  NK_OBJECT(UnmanagedEmployee, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

}  // namespace

TEST(NSObjectMKAutoDescribeManaged, AManagedObjectGivesItsOwnDescription) {
  EXPECT_EQ(mk_describeObject(*make<ManagedEmployee>()), "Jo, 50% of hours");
}

TEST(NSObjectMKAutoDescribeManaged, AManagedObjectsDescriptionIsPrinted) {
  const kernel::SystemLogCapture console;
  mk_printObject(*make<ManagedEmployee>());
  EXPECT_THAT(console.lines(), testing::ElementsAre("Jo, 50% of hours"));
}

TEST(NSObjectMKAutoDescribeManaged, KeysAndMethodsOfAManagedObjectAreListedAllTheSame) {
  EXPECT_EQ(mk_describeObjectKeys(*make<ManagedEmployee>(), *mk_propertyList<ManagedEmployee>()),
            "\n- - - > ManagedEmployee attributes: \n\tfault : \n< - - -\n");
  EXPECT_EQ(mk_describeObjectMethods(*make<ManagedEmployee>()), "\n- - - > ManagedEmployee methods: \n< - - -\n");
}

TEST(NSObjectMKAutoDescribeManaged, OtherObjectsAreDescribedByTheirProperties) {
  EXPECT_EQ(mk_describeObject(*make<UnmanagedEmployee>()),
            "\n- - - > UnmanagedEmployee attributes: \n\tname : \n< - - -\n");
}
