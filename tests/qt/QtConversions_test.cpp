#include "NorvikCore/qt/QtConversions.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QTimeZone>

#include <limits>

namespace norvik {
namespace {

TEST(QtConversions, HeaderExample) {
  const std::optional<Decimal> pay = nk_toDecimal("1234.50");
  ASSERT_TRUE(pay);
  EXPECT_EQ(nk_toQString(*pay), "1234.50");
  EXPECT_EQ(nk_toDate(QDate(2024, 4, 30)), "2024-04-30"_date);
}

TEST(QtConversions, TextsKeepEveryUnit) {
  const NSString rows[] = {"",
                           "pay",
                           "Zo\u00EB",
                           "\U0001F4B7",
                           NSString(std::string_view("a\0b", 3)),
                           NSString::fromUtf16(u"a\xD83Dz"),
                           NSString::fromBytes("\xff\xfe")};
  for (const NSString& row : rows) EXPECT_EQ(nk_toNSString(nk_toQString(row)), row) << row;
  EXPECT_EQ(nk_toQString(NSString::fromUtf16(u"a\xD83Dz")), QStringView(u"a\xD83Dz").toString());
}

TEST(QtConversions, DecimalsKeepEveryDigit) {
  EXPECT_EQ(nk_toQString(Decimal(12345678901234567890U) * 0.01_dec), "123456789012345678.90");
  EXPECT_EQ(nk_toQString(*nk_toDecimal("12345678901234567890123456789012345678")),
            "12345678901234567890123456789012345678");
  EXPECT_FALSE(nk_toDecimal("1,234.50"));
  EXPECT_FALSE(nk_toDecimal(""));
  EXPECT_FALSE(nk_toDecimal("12 "));
  const QVariant variant = nk_toQVariant(0.10_dec);
  EXPECT_FALSE(variant.canConvert<double>());
  EXPECT_EQ(to_string(variant.value<Decimal>()), "0.10");
}

TEST(QtConversions, ADayIsThatOfUtcAndAnInstantKeepsItsMilliseconds) {
  EXPECT_EQ(nk_toQDate("2021-07-01"_date), QDate(2021, 7, 1));
  EXPECT_EQ(nk_toQDate("2021-07-01"_date + 86399.999), QDate(2021, 7, 1));
  EXPECT_EQ(nk_toQDate("2000-12-31"_date + 3600), QDate(2000, 12, 31)) << "before the reference date";
  EXPECT_EQ(nk_toDate(QDate(1582, 10, 14)), Date::dateWithString("1582-10-14"));
  EXPECT_FALSE(nk_toDate(QDate()));
  EXPECT_FALSE(nk_toQDate(Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN())).isValid());
  EXPECT_FALSE(nk_toQDate(Date::fromReferenceSeconds(1e300)).isValid());

  const QDateTime summer = nk_toQDateTime("2021-07-01"_date + 0.25, QTimeZone("Europe/London"));
  EXPECT_EQ(summer.toString("dd/MM/yyyy HH:mm:ss.zzz"), "01/07/2021 01:00:00.250");
  EXPECT_EQ(nk_toDate(summer), "2021-07-01"_date + 0.25);
  EXPECT_EQ(nk_toQDateTime("2021-07-01"_date).toString(Qt::ISODate), "2021-07-01T00:00:00Z");
  EXPECT_FALSE(nk_toQDateTime(Date::fromReferenceSeconds(-1e300)).isValid());
  EXPECT_FALSE(nk_toDate(QDateTime()));
}

TEST(QtConversions, AValueComesBackFromAVariantAsTheSameKind) {
  const Value rows[] = {Value(), true, -5, INT64_MIN, 0.1, 12.50_dec, "2021-07-01"_date, "text", NSArray::array()};
  for (const Value& row : rows) {
    const Value back = nk_toValue(nk_toQVariant(row));
    EXPECT_EQ(back.kind(), row.kind()) << row;
    EXPECT_EQ(back, row) << row;
  }
  EXPECT_TRUE(nk_toValue(nk_toQVariant(Value::null())).isAbsent());
  EXPECT_TRUE(nk_toValue(QVariant(QDate())).isAbsent());
  EXPECT_EQ(nk_toValue(QVariant(18446744073709551615ULL)), Value(18446744073709551615_dec));
  EXPECT_EQ(nk_toValue(QVariant::fromValue(Qt::AlignRight)), Value(2));
  EXPECT_EQ(nk_toValue(QVariant(QChar(u'x'))), Value("x"));
  EXPECT_RAISES(static_cast<void>(nk_toValue(QColor(Qt::red))), "NSInvalidArgumentException");
}

TEST(QtConversions, APropertyGetsAValueExactlyOrItRaises) {
  EXPECT_EQ(nk_toQVariant(7.00_dec, QMetaType(QMetaType::Int)), QVariant(7));
  EXPECT_EQ(nk_toQVariant(12.50_dec, QMetaType(QMetaType::QString)), QVariant("12.50"));
  EXPECT_EQ(nk_toQVariant("2021-07-01"_date, QMetaType(QMetaType::QDate)), QVariant(QDate(2021, 7, 1)));
  EXPECT_EQ(nk_toQVariant(3, QMetaType(QMetaType::Double)), QVariant(3.0));
  EXPECT_EQ(nk_toQVariant(0.5, QMetaType(QMetaType::Double)), QVariant(0.5));
  EXPECT_EQ(nk_toQVariant(Value(), QMetaType(QMetaType::QString)), QVariant(QString()));
  EXPECT_EQ(nk_toQVariant(2, QMetaType::fromType<Decimal>()).value<Decimal>(), 2);

  const struct {
    const char* why;
    Value value;
    QMetaType type;
  } refused[] = {{"a fraction", 7.5_dec, QMetaType(QMetaType::Int)},
                 {"out of range", 3000000000, QMetaType(QMetaType::Int)},
                 {"a text", "7", QMetaType(QMetaType::Int)},
                 {"a decimal", 0.1_dec, QMetaType(QMetaType::Double)},
                 {"more digits than a double has", 9007199254740993, QMetaType(QMetaType::Double)},
                 {"a number", 1, QMetaType(QMetaType::QDate)},
                 {"a text", "red", QMetaType(QMetaType::QColor)}};
  for (const auto& row : refused) {
    EXPECT_RAISES(static_cast<void>(nk_toQVariant(row.value, row.type)), "NSInvalidArgumentException") << row.why;
  }
}

}  // namespace
}  // namespace norvik
