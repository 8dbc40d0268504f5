#include "NorvikCore/platform/object/Value_fmt.h"

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSSet.h"

#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace norvik {
namespace {

class ShownPayslip : public NSObject {
  NK_OBJECT(ShownPayslip, NSObject)
  [[nodiscard]] NSString description() const override { return "a payslip"; }
};

class UnreadablePayslip : public NSObject {
  NK_OBJECT(UnreadablePayslip, NSObject)
  [[nodiscard]] NSString description() const override { throw std::runtime_error("unreadable"); }
};

/// What {fmt} shows, after a check that a stream shows the same.
template <class T>
std::string shown(const T& content) {
  std::ostringstream stream;
  stream << content;
  EXPECT_EQ(fmt::format("{}", content), stream.str());
  return stream.str();
}

TEST(ValueFmt, HeaderExample) {
  const auto slip = make<ShownPayslip>();
  EXPECT_EQ(fmt::format("{}", Value(1234.50_dec)), "1234.50");
  EXPECT_EQ(fmt::format("{}, {:>8}", slip, Ref<ShownPayslip>()), "a payslip,   (null)");
  EXPECT_EQ(fmt::format("{}", NSArray::arrayWithObjects("BR", 5)), "(\n    BR,\n    5\n)");
}

TEST(ValueFmt, ValuesOfEveryKindAreShown) {
  EXPECT_EQ(shown(Value()), "(null)");
  EXPECT_EQ(shown(Value::null()), "<null>");
  EXPECT_EQ(shown(Value(true)), "1");
  EXPECT_EQ(shown(Value(-7)), "-7");
  EXPECT_EQ(shown(Value(0.1)), "0.1");
  EXPECT_EQ(shown(Value(5.00_dec)), "5.00");
  EXPECT_EQ(shown(Value(Date())), "2001-01-01 00:00:00 +0000");
  EXPECT_EQ(shown(Value("Zo\u00EB")), "Zo\u00EB");
  EXPECT_EQ(shown(Value(NSString::fromCodePoint(0xD800))), "\uFFFD") << "a lone half is not UTF-8";
  EXPECT_EQ(shown(Value(make<ShownPayslip>())), "a payslip");
  EXPECT_EQ(fmt::format("{:*^9}|{:.3}", Value("BR"), Value("1257L")), "***BR****|125");
}

TEST(ValueFmt, ObjectsBlocksClassesAndSelectorsAreShown) {
  const auto slip = make<ShownPayslip>();
  EXPECT_EQ(fmt::format("{} {} {}", *slip, static_cast<const NSObject&>(*slip), slip), "a payslip a payslip a payslip");
  EXPECT_EQ(shown(*slip), "a payslip");
  EXPECT_EQ(shown(Ref<ShownPayslip>()), "(null)");
  EXPECT_EQ(shown(Block<void()>()), "(null)");
  EXPECT_EQ(shown(SEL("run:")), "run:");
  EXPECT_EQ(shown(ShownPayslip::staticClass()), "ShownPayslip");
}

TEST(ValueFmt, CollectionsAreShownWithTheirElements) {
  const auto nested = NSArray::arrayWithObjects(NSSet::setWithObjects(1), NSDictionary::dictionaryWith({{"a b", 2}}));
  EXPECT_EQ(shown(nested), "(\n    {(\n        1\n    )},\n    {\n        \"a b\" = 2;\n    }\n)");
  EXPECT_EQ(shown(*nested), shown(nested)) << "a collection is described also where <fmt/ranges.h> is included";
  EXPECT_EQ(shown(NSArray::array()), "(\n)");
  EXPECT_EQ(fmt::format("{}", std::vector<Value>{1, "a"}), "[1, a]");
}

TEST(ValueFmt, ACollectionThatContainsItselfIsShownOnce) {
  const auto array = NSMutableArray::array();
  array->addObject(array);
  EXPECT_EQ(shown(array), "(\n    <NSMutableArray: ...>\n)");
  array->removeAllObjects();
}

TEST(ValueFmt, AnExceptionOfADescriptionPasses) {
  const auto slip = make<UnreadablePayslip>();
  const auto array = NSArray::arrayWithObjects(1, slip);
  EXPECT_THROW((void)fmt::format("{}", slip), std::runtime_error);
  EXPECT_THROW((void)fmt::format("{}", Value(array)), std::runtime_error);
  std::ostringstream stream;
  EXPECT_THROW(stream << "before " << array, std::runtime_error);
  EXPECT_EQ(stream.str(), "before ");
  EXPECT_TRUE(stream.good());
}

}  // namespace
}  // namespace norvik
