#include "NorvikCore/platform/object/ValueConversion.h"

#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

using namespace norvik;

namespace {

struct Postcode {
  NSString text;
  friend bool operator==(const Postcode&, const Postcode&) = default;
};

}  // namespace

template <>
struct norvik::ValueConversion<Postcode> {
  static Value toValue(const Postcode& postcode) { return postcode.text; }
  static Postcode fromValue(const Value& value) { return {value.as<NSString>()}; }
};

namespace {

class Office : public NSObject {
  NK_OBJECT(Office, NSObject)
  NK_PROPERTY(Postcode, postcode, setPostcode)
};

TEST(ValueConversion, HeaderExample) {
  const auto office = make<Office>();
  office->setPostcode({"CF10 1AA"});
  EXPECT_EQ(office->valueForKey("postcode"), Value("CF10 1AA"));
  office->setValue_forKey("LS1 4DY", "postcode");
  EXPECT_EQ(office->postcode(), Postcode{"LS1 4DY"});
  EXPECT_EQ(Value("M1 1AE").as<Postcode>(), Postcode{"M1 1AE"});
}

TEST(ValueConversion, AnOwnConversionMayRefuseAValue) {
  const auto office = make<Office>();
  office->setPostcode({"CF10 1AA"});
  EXPECT_THROW(office->setValue_forKey(12, "postcode"), NSException);
  EXPECT_EQ(office->postcode(), Postcode{"CF10 1AA"});
}

}  // namespace
