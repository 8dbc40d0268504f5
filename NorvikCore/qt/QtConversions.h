// NorvikCore/qt/QtConversions.h - texts, dates, decimals and values from and to the types of Qt.
//
//   edit->setText(nk_toQString(slip->name()));
//   slip->setPaymentDate(nk_toDate(picker->date()).value());          // 00:00:00 UTC of that day
//   std::optional<Decimal> pay = nk_toDecimal("1234.50");             // every digit, never through a double
//   label->setText(nk_toQString(*pay));                               // "1234.50"
//
// A component of its own: find_package(NorvikCore COMPONENTS Qt), NorvikCore::Qt.
//
// Texts:    unit by unit, including lone surrogate halves and NULs.
// Dates:    a QDate is a payroll date: 00:00:00 UTC of its day, whatever the zone of the user. A QDateTime is an
//           instant; its time zone is read and then lost. A date becomes a QDateTime in UTC, or in a given zone,
//           rounded to the millisecond.
// Decimals: by their digits. A Decimal in a QVariant is a norvik::Decimal; no function converts it to a double.
//
// Every function is pure and safe on any thread.
#pragma once  // include time: QDateTime, QString and QVariant are what it is about

#include "NorvikCore/platform/export.h"

#ifndef Q_MOC_RUN  // moc of Qt 6.4 cannot read <concepts>
#include "NorvikCore/platform/object/Value.h"
#endif

#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <QTimeZone>
#include <QVariant>

namespace norvik {

[[nodiscard]] NK_EXPORT QString nk_toQString(const NSString& text);
[[nodiscard]] NK_EXPORT NSString nk_toNSString(const QString& text);

/// The digits as they stand: "1234.50", "NaN". For a user's format, use a formatter.
[[nodiscard]] NK_EXPORT QString nk_toQString(const Decimal& decimal);
/// Decimal::parse(): absent unless the whole text is a number with a decimal point, without grouping.
[[nodiscard]] NK_EXPORT std::optional<Decimal> nk_toDecimal(const QString& text);

/// In UTC. Invalid for not-a-number, and for a date too far away for Qt.
[[nodiscard]] NK_EXPORT QDateTime nk_toQDateTime(Date date);
/// The same instant, with the clock of that zone.
[[nodiscard]] NK_EXPORT QDateTime nk_toQDateTime(Date date, const QTimeZone& zone);
/// Absent if the date is invalid.
[[nodiscard]] NK_EXPORT std::optional<Date> nk_toDate(const QDateTime& date);

/// The day in UTC: a payroll date keeps its day. Invalid for not-a-number and for a date too far away for Qt.
[[nodiscard]] NK_EXPORT QDate nk_toQDate(Date date);
/// 00:00:00 UTC of the day; absent if it is invalid.
[[nodiscard]] NK_EXPORT std::optional<Date> nk_toDate(QDate day);

/// bool, qlonglong, double, norvik::Decimal, QDateTime (UTC) and QString; an object stays a norvik::Value in the
/// QVariant. The absent value and the null marker become an invalid QVariant.
[[nodiscard]] NK_EXPORT QVariant nk_toQVariant(const Value& value);
/// The value as a variant of that type, such as a property's. An absent value becomes the type's default: an empty
/// text, an invalid date, 0. For a QString a number is written with its digits, and anything else as description()
/// gives it. NSInvalidArgumentException if the type cannot hold the value exactly: a fraction or a number out of range
/// in an integer, a Decimal in a double, a text in a number.
[[nodiscard]] NK_EXPORT QVariant nk_toQVariant(const Value& value, QMetaType type);
/// The reverse of both. An invalid QVariant, an invalid date and a null pointer become the absent value, an enumerator
/// its number, a QChar a text. Raises NSInvalidArgumentException for a type that no Value can hold, such as QColor.
[[nodiscard]] NK_EXPORT Value nk_toValue(const QVariant& variant);

}  // namespace norvik
