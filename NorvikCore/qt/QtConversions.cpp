#include "NorvikCore/qt/QtConversions.h"

#include "NorvikCore/platform/values/NSException.h"

#include <cmath>
#include <string>

namespace norvik {
namespace {

constexpr double secondsPerDay = 86400;
constexpr double greatestMilliseconds = 9e15;  // of either sign: 285,000 years, exact in a double
constexpr std::int64_t exactInDouble = std::int64_t{1} << 53;

QDate referenceDay() { return QDate(2001, 1, 1); }

[[noreturn]] void raiseQtType(const Value& value, QMetaType type) {
  NSException::raise(NSInvalidArgumentException, "a property of type " + NSString(type.name() ? type.name() : "?") +
                                                     " cannot hold the value " + value.description());
}

template <class Integer>
QVariant integerVariant(const Value& value, QMetaType type) {
  if (!value.isNumber() || value.as<Decimal>() != Decimal(value.as<Integer>())) raiseQtType(value, type);
  return QVariant::fromValue(value.as<Integer>());
}

/// Absent if the value has no exact double.
std::optional<double> exactDouble(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::Double:
      return value.as<double>();
    case Value::Kind::Integer: {
      const auto whole = value.as<std::int64_t>();
      if (whole < -exactInDouble || whole > exactInDouble) return std::nullopt;
      return static_cast<double>(whole);
    }
    default:
      return std::nullopt;
  }
}

}  // namespace

QString nk_toQString(const NSString& text) {
  if (text.isWellFormed()) {
    const std::string_view bytes = text.view();
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
  }
  const std::u16string units = text.toUtf16();
  return QString(reinterpret_cast<const QChar*>(units.data()), static_cast<qsizetype>(units.size()));
}

NSString nk_toNSString(const QString& text) {
  return NSString::fromUtf16({reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())});
}

QString nk_toQString(const Decimal& decimal) { return QString::fromStdString(to_string(decimal)); }

std::optional<Decimal> nk_toDecimal(const QString& text) { return Decimal::parse(nk_toNSString(text).view()); }

QDateTime nk_toQDateTime(Date date) {
  const double milliseconds = std::round(date.timeIntervalSince1970() * 1000);
  if (!(std::abs(milliseconds) <= greatestMilliseconds)) return {};
  return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(milliseconds), Qt::UTC);
}

QDateTime nk_toQDateTime(Date date, const QTimeZone& zone) { return nk_toQDateTime(date).toTimeZone(zone); }

std::optional<Date> nk_toDate(const QDateTime& date) {
  if (!date.isValid()) return std::nullopt;
  return Date::dateWithTimeIntervalSince1970(static_cast<double>(date.toMSecsSinceEpoch()) / 1000);
}

QDate nk_toQDate(Date date) {
  const double seconds = date.timeIntervalSinceReferenceDate();
  if (!(std::abs(seconds) <= greatestMilliseconds / 1000)) return {};
  return referenceDay().addDays(static_cast<qint64>(std::floor(seconds / secondsPerDay)));
}

std::optional<Date> nk_toDate(QDate day) {
  if (!day.isValid()) return std::nullopt;
  return Date::fromReferenceSeconds(static_cast<double>(referenceDay().daysTo(day)) * secondsPerDay);
}

QVariant nk_toQVariant(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::Absent:
    case Value::Kind::Null:
      return {};
    case Value::Kind::Boolean:
      return value.as<bool>();
    case Value::Kind::Integer:
      return static_cast<qlonglong>(value.as<std::int64_t>());
    case Value::Kind::Double:
      return value.as<double>();
    case Value::Kind::Decimal:
      return QVariant::fromValue(*value.decimal());
    case Value::Kind::Date:
      return nk_toQDateTime(*value.date());
    case Value::Kind::String:
      return nk_toQString(*value.string());
    case Value::Kind::Object:
      break;
  }
  return QVariant::fromValue(value);
}

QVariant nk_toQVariant(const Value& value, QMetaType type) {
  if (type == QMetaType::fromType<Value>()) return QVariant::fromValue(value);
  if (type == QMetaType::fromType<QVariant>()) return nk_toQVariant(value);
  if (value.isAbsent() || value.isNull()) return QVariant(type);
  if (type == QMetaType::fromType<Decimal>() && value.isNumber()) return QVariant::fromValue(value.as<Decimal>());
  switch (type.id()) {
    case QMetaType::QString:
      if (const NSString* text = value.string()) return nk_toQString(*text);
      return nk_toQString(value.description());
    case QMetaType::Bool:
      if (value.isNumber()) return value.as<bool>();
      raiseQtType(value, type);
    case QMetaType::Int:
      return integerVariant<int>(value, type);
    case QMetaType::UInt:
      return integerVariant<unsigned>(value, type);
    case QMetaType::LongLong:
      return integerVariant<qlonglong>(value, type);
    case QMetaType::ULongLong:
      return integerVariant<qulonglong>(value, type);
    case QMetaType::Double:
      if (const std::optional<double> exact = exactDouble(value)) return *exact;
      raiseQtType(value, type);
    case QMetaType::QDate:
      if (value.isDate()) return nk_toQDate(*value.date());
      raiseQtType(value, type);
    case QMetaType::QDateTime:
      if (value.isDate()) return nk_toQDateTime(*value.date());
      raiseQtType(value, type);
    default:
      break;
  }
  if ((type.flags() & QMetaType::IsEnumeration) != 0) return integerVariant<int>(value, type);
  QVariant variant = nk_toQVariant(value);
  if (variant.metaType() != type) raiseQtType(value, type);
  return variant;
}

Value nk_toValue(const QVariant& variant) {
  if (!variant.isValid()) return {};
  const QMetaType type = variant.metaType();
  if (type == QMetaType::fromType<Value>()) return variant.value<Value>();
  if (type == QMetaType::fromType<Decimal>()) return variant.value<Decimal>();
  if ((type.flags() & QMetaType::IsEnumeration) != 0) return static_cast<std::int64_t>(variant.toLongLong());
  switch (type.id()) {
    case QMetaType::Nullptr:
      return {};
    case QMetaType::Bool:
      return variant.toBool();
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
      return static_cast<std::int64_t>(variant.toLongLong());
    case QMetaType::ULong:
    case QMetaType::ULongLong:
      return static_cast<std::uint64_t>(variant.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
      return variant.toDouble();
    case QMetaType::QChar:
    case QMetaType::QString:
      return nk_toNSString(variant.toString());
    case QMetaType::QDate:
      return nk_toDate(variant.toDate());
    case QMetaType::QDateTime:
      return nk_toDate(variant.toDateTime());
    default:
      NSException::raise(NSInvalidArgumentException, "a " + NSString(type.name() ? type.name() : "?") + " is no Value");
  }
}

}  // namespace norvik
