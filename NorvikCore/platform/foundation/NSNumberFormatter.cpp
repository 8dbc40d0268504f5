#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/foundation/internal/IcuText.h"
#include "NorvikCore/platform/foundation/internal/NumberIncrement.h"
#include "NorvikCore/platform/foundation/internal/NumberReader.h"
#include "NorvikCore/platform/foundation/internal/PlainNumberPattern.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/values/NSException.h"

#include <unicode/decimfmt.h>
#include <unicode/fpositer.h>
#include <unicode/rbnf.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using detail::icuString;
using detail::NumberReader;
using detail::PlainNumberPattern;
using detail::stringFromIcu;
using detail::utf8FromIcu;
using Symbol = icu::DecimalFormatSymbols::ENumberFormatSymbol;

/// No language needs more than 470 units for a number below 10^15. ICU reads in time quadratic in the length.
constexpr std::size_t mostUnitsOfWords = 500;
constexpr int noIntegerLimit = 309;  // the number of digits of the greatest double

void check(UErrorCode status, const char* what) {
  if (U_FAILURE(status)) {
    NSException::raise(NSInternalInconsistencyException, std::string(what) + ": " + u_errorName(status));
  }
}

UNumberFormatStyle styleInIcu(NSNumberFormatterStyle style) noexcept {
  switch (style) {
    case NSNumberFormatterCurrencyStyle:
      return UNUM_CURRENCY;
    case NSNumberFormatterPercentStyle:
      return UNUM_PERCENT;
    case NSNumberFormatterScientificStyle:
      return UNUM_SCIENTIFIC;
    default:
      return UNUM_DECIMAL;
  }
}

icu::DecimalFormat::ERoundingMode roundingInIcu(NSNumberFormatterRoundingMode mode) noexcept {
  using enum icu::DecimalFormat::ERoundingMode;
  switch (mode) {
    case NSNumberFormatterRoundCeiling:
      return kRoundCeiling;
    case NSNumberFormatterRoundFloor:
      return kRoundFloor;
    case NSNumberFormatterRoundDown:
      return kRoundDown;
    case NSNumberFormatterRoundUp:
      return kRoundUp;
    case NSNumberFormatterRoundHalfDown:
      return kRoundHalfDown;
    case NSNumberFormatterRoundHalfUp:
      return kRoundHalfUp;
    case NSNumberFormatterRoundHalfEven:
      break;
  }
  return kRoundHalfEven;
}

std::optional<PlainNumberPattern::Rounding> plainRounding(NSNumberFormatterRoundingMode mode) noexcept {
  switch (mode) {
    case NSNumberFormatterRoundCeiling:
      return PlainNumberPattern::Rounding::Ceiling;
    case NSNumberFormatterRoundFloor:
      return PlainNumberPattern::Rounding::Floor;
    case NSNumberFormatterRoundDown:
      return PlainNumberPattern::Rounding::Down;
    case NSNumberFormatterRoundUp:
      return PlainNumberPattern::Rounding::Up;
    case NSNumberFormatterRoundHalfEven:
      return PlainNumberPattern::Rounding::HalfEven;
    case NSNumberFormatterRoundHalfUp:
      return PlainNumberPattern::Rounding::HalfUp;
    case NSNumberFormatterRoundHalfDown:
      break;
  }
  return std::nullopt;
}

/// English outside the United States spells numbers with "and": one hundred and five.
void chooseWords(icu::RuleBasedNumberFormat& words, const icu::Locale& locale) {
  if (std::string_view(locale.getLanguage()) != "en") return;
  const std::string_view country = locale.getCountry();
  if (country.empty() || country == "US") return;
  UErrorCode status = U_ZERO_ERROR;
  words.setDefaultRuleSet(icu::UnicodeString(u"%spellout-cardinal-verbose"), status);
  check(status, "the words of a locale");
}

NSDecimalNumberHandler atScale(std::int16_t scale) { return NSDecimalNumberHandler({.scale = scale}); }

/// Languages have words for numbers below 10^18, and ICU spells the double nearest to a number, with 20 digits behind
/// the point at most. Beyond that, ICU writes 64-bit integers in digits and spells doubles, some of them with a wrong
/// value.
bool hasWords(const NSNumber& number) {
  constexpr std::int64_t firstWithout = 1'000'000'000'000'000'000;
  constexpr int mostPlaces = 20;
  const Decimal decimal = number.decimalValue();
  const double real = number.doubleValue();
  if (decimal.isNaN()) return !std::isfinite(real);
  if (decimal >= Decimal(firstWithout) || decimal <= Decimal(-firstWithout)) return false;
  if (decimal == Decimal(decimal.longLongValue())) return true;
  const auto places = [&] { return decimal.decimalNumberByRoundingAccordingToBehavior(atScale(mostPlaces)); };
  return Decimal(real) == decimal && places() == decimal;
}

/// The range of the number in a text, between the fixed texts of the pattern, or the range of its digits without an
/// exponent.
struct Span {
  std::int32_t from = INT32_MAX, to = 0;
};

bool isOfInteger(std::int32_t field) noexcept { return field == UNUM_INTEGER_FIELD; }

bool isOfFraction(std::int32_t field) noexcept { return field == UNUM_FRACTION_FIELD; }

bool isOfDigits(std::int32_t field) noexcept {
  return isOfInteger(field) || isOfFraction(field) || field == UNUM_DECIMAL_SEPARATOR_FIELD;
}

bool isOfNumber(std::int32_t field) noexcept {
  return isOfDigits(field) || field == UNUM_EXPONENT_SYMBOL_FIELD || field == UNUM_EXPONENT_SIGN_FIELD ||
         field == UNUM_EXPONENT_FIELD;
}

Span spanOf(bool (*isWanted)(std::int32_t field), icu::FieldPositionIterator fields) {
  Span span;
  for (icu::FieldPosition field; fields.next(field);) {
    if (!isWanted(field.getField())) continue;
    span.from = std::min(span.from, field.getBeginIndex());
    span.to = std::max(span.to, field.getEndIndex());
  }
  return span;
}

/// Whether ICU accepts the pattern. This does not depend on the locale.
bool isPattern(const NSString& pattern) {
  const auto& any = kernel::madeOnce([] {
    UErrorCode status = U_ZERO_ERROR;
    auto made = std::make_unique<icu::DecimalFormat>(u"0", status);
    if (!made) throw std::bad_alloc();
    check(status, "a number format");
    return made.release();
  });
  const kernel::ForkHold hold;
  UErrorCode status = U_ZERO_ERROR;
  icu::DecimalFormat trial(any);
  trial.applyPattern(icuString(pattern), status);
  return U_SUCCESS(status);
}

icu::UnicodeString written(const icu::DecimalFormat& format, const std::string& number,
                           icu::FieldPositionIterator& fields) {
  icu::UnicodeString text;
  UErrorCode status = U_ZERO_ERROR;
  format.format(icu::StringPiece(number), text, &fields, status);
  check(status, "formatting a number");
  return text;
}

/// ICU writes the first numbers of a format step by step and compiles the format for the later ones. In some patterns
/// of money the two differ by a space beside the currency. After this call only the compiled format writes.
void compile(const icu::DecimalFormat& format) {
  constexpr int interpretedNumbers = 3;
  for (int i = 0; i <= interpretedNumbers; ++i) {
    icu::FieldPositionIterator ignored;
    written(format, "0", ignored);
  }
}

enum class DigitLimit { MinimumInteger, MaximumInteger, MinimumFraction, MaximumFraction };

}  // namespace

/// The settings, and the ICU formats built from them. ICU takes microseconds for each setting of a format. A format is
/// therefore built when all settings are known, that is when the first text or limit is requested.
struct NSNumberFormatter::Engine {
  Ref<NSLocale> locale = NSLocale::currentLocale();
  NSNumberFormatterStyle style = NSNumberFormatterNoStyle;
  NSNumberFormatterBehavior behavior = NSNumberFormatterBehavior10_4;
  NSNumberFormatterRoundingMode rounding = NSNumberFormatterRoundHalfEven;
  std::optional<NSString> ownPattern;  ///< replaces the style's
  /// The limits that were set after the style or the pattern. A change of the locale keeps them.
  struct {
    std::optional<std::pair<int, int>> integerDigits, fractionDigits;  ///< minimum and maximum
    std::optional<bool> grouping;
  } own;
  bool allowsFloats = true, isLenient = false, generatesDecimals = false, keepsEveryDigit = false;
  std::optional<NSNumber> maximum, minimum;

  // The formats, valid once they are built.
  std::unique_ptr<icu::DecimalFormat> digits;
  std::unique_ptr<icu::RuleBasedNumberFormat> words;  ///< for the spell-out style only
  std::unique_ptr<icu::DecimalFormat> stepless;       ///< for a pattern with an increment: the same without it
  std::optional<PlainNumberPattern> plain;            ///< the fast path, if the settings allow it
  bool writesShortText = false;                       ///< plain->isShort()
  std::optional<NSNumber> leastCut;                   ///< has one integer digit more than are shown
  std::optional<NumberReader> reader;

  /// Several threads may read by one formatter, and any of them may be the first.
  Engine& built() {
    if (isBuilt.load(std::memory_order_acquire)) [[likely]]
      return *this;
    MutexLock lock(building);
    if (!isBuilt.load(std::memory_order_relaxed)) {
      build();
      isBuilt.store(true, std::memory_order_release);
    }
    return *this;
  }

  /// Called after a change of style, pattern or locale.
  void startAfresh() noexcept { isBuilt.store(false, std::memory_order_relaxed); }
  void forgetOwnLimits() noexcept {
    own = {};
    waiting.clear();
  }

  /// Limits take the values that result in the locale in which they were set.
  void applyWaiting() {
    if (!waiting.empty()) built();
  }

  void setLimit(DigitLimit limit, int count) {
    constexpr std::size_t mostWaiting = 16;
    if (!isBuilt.load(std::memory_order_relaxed) && waiting.size() < mostWaiting) {
      waiting.emplace_back(limit, count);
    } else {
      built().apply(limit, count);
      settingsChanged();
    }
  }
  void setGrouping(bool has) {
    own.grouping = has;
    if (!isBuilt.load(std::memory_order_relaxed)) return;
    digits->setGroupingUsed(has);
    settingsChanged();
  }
  void setRounding(NSNumberFormatterRoundingMode mode) {
    rounding = mode;
    if (!isBuilt.load(std::memory_order_relaxed)) return;
    digits->setRoundingMode(roundingInIcu(mode));
    settingsChanged();
  }

 private:
  std::atomic<bool> isBuilt{false};
  Mutex building;
  mutable std::atomic<bool> isCutReported{false};
  std::vector<std::pair<DigitLimit, int>> waiting;  ///< limits that were set but not yet applied, in order
  bool isMoney = false;                             ///< the pattern has a currency

  [[nodiscard]] icu::Locale icuLocale() const {
    return icu::Locale::createCanonical(locale->localeIdentifier().utf8().c_str());
  }

  /// Applies style or pattern in the locale to new formats.
  void build() {
    const icu::Locale where = icuLocale();
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::NumberFormat> made(icu::NumberFormat::createInstance(where, styleInIcu(style), status));
    check(status, "the number format of a locale");
    auto* decimal = dynamic_cast<icu::DecimalFormat*>(made.get());
    if (!decimal) NSException::raise(NSInternalInconsistencyException, "a locale without decimal numbers");
    made.release();
    digits.reset(decimal);
    words.reset();
    if (style == NSNumberFormatterSpellOutStyle) {
      words = std::make_unique<icu::RuleBasedNumberFormat>(icu::URBNF_SPELLOUT, where, status);
      check(status, "the words of a locale");
      chooseWords(*words, where);
    }
    if (ownPattern) {
      digits->applyPattern(icuString(*ownPattern), status);
      check(status, "a number pattern");
    } else if (style == NSNumberFormatterNoStyle) {
      digits->applyPattern(u"#", status);
      check(status, "a number pattern");
    }
    if (rounding != NSNumberFormatterRoundHalfEven) digits->setRoundingMode(roundingInIcu(rounding));
    digits->setParseNoExponent(!digits->isScientificNotation());
    if (own.integerDigits) {
      digits->setMinimumIntegerDigits(own.integerDigits->first);
      digits->setMaximumIntegerDigits(own.integerDigits->second);
    }
    if (own.fractionDigits) {
      digits->setMinimumFractionDigits(own.fractionDigits->first);
      digits->setMaximumFractionDigits(own.fractionDigits->second);
    }
    for (const auto& [limit, count] : waiting) apply(limit, count);
    waiting.clear();
    if (own.grouping) digits->setGroupingUsed(*own.grouping);
    settingsChanged();
  }

  /// ICU moves the other limit if the two would cross.
  void apply(DigitLimit limit, int count) {
    switch (limit) {
      case DigitLimit::MinimumInteger:
        digits->setMinimumIntegerDigits(count);
        break;
      case DigitLimit::MaximumInteger:
        digits->setMaximumIntegerDigits(count);
        break;
      case DigitLimit::MinimumFraction:
        digits->setMinimumFractionDigits(count);
        break;
      case DigitLimit::MaximumFraction:
        digits->setMaximumFractionDigits(count);
        break;
    }
    if (limit == DigitLimit::MinimumInteger || limit == DigitLimit::MaximumInteger) {
      own.integerDigits = {digits->getMinimumIntegerDigits(), digits->getMaximumIntegerDigits()};
    } else {
      own.fractionDigits = {digits->getMinimumFractionDigits(), digits->getMaximumFractionDigits()};
    }
  }

  /// Derives the other formats from ICU's format.
  void settingsChanged() {
    icu::UnicodeString pattern;
    isMoney = digits->toPattern(pattern).indexOf(u'\u00A4') >= 0;
    chooseStepless();
    if (isMoney) compile(*digits);
    if (isMoney && stepless) compile(*stepless);
    choosePlainPattern();
    chooseReader();
    const int mostDigits = digits->getMaximumIntegerDigits() - powerOfMultiplier();
    leastCut.reset();
    if (!words && mostDigits < Decimal::maximumDigits) {
      leastCut = Decimal(1).decimalNumberByMultiplyingByPowerOf10(static_cast<std::int16_t>(mostDigits));
    }
  }

  /// An increment finer than the last digit shown is ignored, as in ICU.
  void chooseStepless() {
    stepless.reset();
    const double increment = digits->getRoundingIncrement();
    const int most = digits->getMaximumFractionDigits();
    // The digits of a mantissa say nothing about the number's last place: all of the multiple's digits are written.
    const bool hasPowers = digits->isScientificNotation();
    if (increment == 0 || (!hasPowers && 2 * increment * std::pow(10.0, most) <= 1)) return;
    stepless = std::make_unique<icu::DecimalFormat>(*digits);
    stepless->setRoundingIncrement(0);
    stepless->setMaximumFractionDigits(hasPowers ? Decimal::maximumDigits
                                                 : std::max(most, -Decimal(increment).exponent()));
  }

  [[nodiscard]] std::string symbol(Symbol which) const {
    return utf8FromIcu(digits->getDecimalFormatSymbols()->getConstSymbol(which));
  }
  [[nodiscard]] std::string decimalSeparator() const {
    return symbol(isMoney ? Symbol::kMonetarySeparatorSymbol : Symbol::kDecimalSeparatorSymbol);
  }
  [[nodiscard]] std::string groupingSeparator() const {
    return symbol(isMoney ? Symbol::kMonetaryGroupingSeparatorSymbol : Symbol::kGroupingSeparatorSymbol);
  }

  /// Copies all settings of ICU's format to the fast path, or leaves it unset if it does not support one of them.
  void choosePlainPattern() {
    plain.reset();
    const auto mode = plainRounding(rounding);
    if (words || !mode || digits->isScientificNotation() || digits->areSignificantDigitsUsed() ||
        digits->getRoundingIncrement() != 0 || digits->getFormatWidth() > 0 ||
        digits->isDecimalSeparatorAlwaysShown()) {
      return;
    }
    PlainNumberPattern pattern;
    icu::UnicodeString affix;
    pattern.positive.before = utf8FromIcu(digits->getPositivePrefix(affix));
    pattern.positive.after = utf8FromIcu(digits->getPositiveSuffix(affix));
    pattern.negative.before = utf8FromIcu(digits->getNegativePrefix(affix));
    pattern.negative.after = utf8FromIcu(digits->getNegativeSuffix(affix));
    if (symbol(Symbol::kZeroDigitSymbol) != "0") return;
    pattern.isGrouped = digits->isGroupingUsed() && digits->getGroupingSize() != 0;
    const int secondary = digits->getSecondaryGroupingSize();
    if (pattern.isGrouped && (digits->getGroupingSize() != 3 || (secondary != 0 && secondary != 3))) return;
    pattern.minimumGrouping = digits->getMinimumGroupingDigits() > 1 ? digits->getMinimumGroupingDigits() : 1;
    pattern.decimalSeparator = decimalSeparator();
    pattern.groupingSeparator = groupingSeparator();
    pattern.minimumInteger = digits->getMinimumIntegerDigits();
    pattern.maximumInteger = digits->getMaximumIntegerDigits();
    pattern.minimumFraction = digits->getMinimumFractionDigits();
    pattern.maximumFraction = digits->getMaximumFractionDigits();
    pattern.power = powerOfMultiplier();
    pattern.rounding = *mode;
    if (!isMoney || writesAsIcu(pattern)) plain = std::move(pattern);
    writesShortText = plain && plain->isShort();
  }

  /// Builds the reader for the texts that the settings result in.
  void chooseReader() {
    NumberReader::Settings settings;
    for (std::size_t i = 0; i < settings.digits.size(); ++i) {
      settings.digits[i] = utf8FromIcu(digits->getDecimalFormatSymbols()->getConstDigitSymbol(static_cast<int>(i)));
    }
    settings.decimalSeparator = decimalSeparator();
    settings.groupingSeparator = groupingSeparator();
    settings.minusSign = symbol(Symbol::kMinusSignSymbol);
    settings.plusSign = symbol(Symbol::kPlusSignSymbol);
    if (digits->isScientificNotation()) settings.exponentSign = symbol(Symbol::kExponentialSymbol);
    settings.isGrouped = digits->isGroupingUsed() && digits->getGroupingSize() > 0;
    if (settings.isGrouped) {
      settings.lastGroup = digits->getGroupingSize();
      const int others = digits->getSecondaryGroupingSize();
      settings.otherGroups = others > 0 ? others : settings.lastGroup;
    }
    settings.power = powerOfMultiplier();
    if (digits->getFormatWidth() > 0) {
      settings.padding = utf8FromIcu(digits->getPadCharacterString());
      const bool isPartOfNumbers = std::ranges::find(settings.digits, settings.padding) != settings.digits.end() ||
                                   settings.padding == settings.decimalSeparator ||
                                   settings.padding == settings.groupingSeparator;
      if (isPartOfNumbers) settings.padding.clear();
      settings.padPosition = padPosition();
      settings.width = static_cast<std::size_t>(digits->getFormatWidth());
    }
    if (!isMoney) settings.forms = forms();
    if (isMoney) {
      icu::DecimalFormat unpadded(*digits);
      unpadded.setFormatWidth(0);
      compile(unpadded);
      settings.decimalSeparator = writtenSeparator(unpadded);
      settings.forms = formsOfMoney(unpadded, settings.decimalSeparator);
      settings.currencySymbol = symbol(Symbol::kCurrencySymbol);
      settings.currencyCode = symbol(Symbol::kIntlCurrencySymbol);
    }
    reader.emplace(std::move(settings));
  }

  [[nodiscard]] NumberReader::PadPosition padPosition() const {
    switch (digits->getPadPosition()) {
      case icu::DecimalFormat::kPadAfterPrefix:
        return NumberReader::PadPosition::afterPrefix;
      case icu::DecimalFormat::kPadBeforeSuffix:
        return NumberReader::PadPosition::beforeSuffix;
      case icu::DecimalFormat::kPadAfterSuffix:
        return NumberReader::PadPosition::afterSuffix;
      default:
        return NumberReader::PadPosition::beforePrefix;
    }
  }

  [[nodiscard]] std::vector<NumberReader::Form> forms() const {
    std::vector<NumberReader::Form> result(2);
    icu::UnicodeString affix;
    result[0].before = utf8FromIcu(digits->getPositivePrefix(affix));
    result[0].after = utf8FromIcu(digits->getPositiveSuffix(affix));
    result[1].before = utf8FromIcu(digits->getNegativePrefix(affix));
    result[1].after = utf8FromIcu(digits->getNegativeSuffix(affix));
    result[1].isNegative = true;
    return result;
  }

  /// The text around money depends on the number: on its digits (such as the space between a currency's letters and a
  /// digit) and, if the pattern has the currency's name, on the plural of the name.
  [[nodiscard]] std::vector<NumberReader::Form> formsOfMoney(const icu::DecimalFormat& unpadded,
                                                             const std::string& separator) const {
    icu::UnicodeString pattern;
    const bool hasName = unpadded.toPattern(pattern).indexOf(u"\u00A4\u00A4\u00A4") >= 0;
    std::vector<std::string> samples{"5", "0.5"};
    if (hasName) {
      const int power = powerOfMultiplier();
      for (const char* shown : {"0", "1", "2", "3", "11", "21", "100", "1000000", "1.5"}) {
        samples.emplace_back(shown);
        if (power > 0) samples.push_back(shown + ("E-" + std::to_string(power)));
      }
    }
    std::vector<NumberReader::Form> result;
    for (const char* sign : {"", "-"}) {
      for (const std::string& sample : samples) {
        icu::FieldPositionIterator fields;
        const icu::UnicodeString text = written(unpadded, sign + sample, fields);
        const Span span = spanOf(isOfNumber, fields);
        NumberReader::Form form;
        form.isNegative = *sign != '\0';
        form.before = utf8FromIcu(text.tempSubStringBetween(0, span.from));
        const bool hasInteger = spanOf(isOfInteger, fields).to > 0;
        if (!hasInteger && form.before.ends_with(separator)) form.before.resize(form.before.size() - separator.size());
        form.after = utf8FromIcu(text.tempSubString(span.to));
        if (std::ranges::find(result, form) == result.end()) result.push_back(std::move(form));
      }
    }
    return result;
  }

  /// A pattern such as 0¤00 has the currency in the place of the decimal separator.
  [[nodiscard]] std::string writtenSeparator(const icu::DecimalFormat& unpadded) const {
    icu::FieldPositionIterator fields;
    const icu::UnicodeString text = written(unpadded, "5.5E-" + std::to_string(powerOfMultiplier()), fields);
    const Span integer = spanOf(isOfInteger, fields), fraction = spanOf(isOfFraction, fields);
    if (integer.to == 0 || fraction.from < integer.to || fraction.from == INT32_MAX) return decimalSeparator();
    return utf8FromIcu(text.tempSubStringBetween(integer.to, fraction.from));
  }

  /// The power of ten by which numbers are multiplied. Patterns have no other multipliers.
  [[nodiscard]] int powerOfMultiplier() const {
    int power = digits->getMultiplierScale();
    for (std::int32_t multiplier = digits->getMultiplier(); multiplier > 1; multiplier /= 10) ++power;
    return power;
  }

  /// Whether the pattern writes positive and negative money as ICU does.
  [[nodiscard]] bool writesAsIcu(const PlainNumberPattern& pattern) const {
    for (const char* sample : {"1234567.891", "-0.5"}) {
      std::string ours;
      const Decimal number = Decimal::decimalNumberWithString(sample);
      pattern.append(ours, number);
      if (ours != utf8FromIcu(textInIcu(number))) return false;
    }
    return true;
  }

 public:
  [[nodiscard]] icu::UnicodeString textInIcu(const NSNumber& number) const {
    const kernel::ForkHold hold;
    icu::UnicodeString text;
    const Decimal decimal = number.decimalValue();
    if (words && hasWords(number)) {
      if (decimal == Decimal(decimal.longLongValue())) {
        words->format(static_cast<std::int64_t>(decimal.longLongValue()), text);
      } else {
        words->format(number.doubleValue(), text);
      }
    } else if (decimal.isNaN() && stepless && std::isfinite(number.doubleValue())) {
      icu::FieldPositionIterator fields;
      text = written(*stepless, multipleNear(detail::NumberDigits::of(number.doubleValue())), fields);
    } else if (decimal.isNaN()) {
      digits->format(number.doubleValue(), text);
    } else if (words && !own.fractionDigits) {
      icu::DecimalFormat whole(*digits);
      whole.setMaximumFractionDigits(-Decimal::minimumExponent);
      text = textInDigits(whole, decimal);
    } else {
      text = textInDigits(stepless ? *stepless : *digits, decimal);
    }
    return text;
  }

  /// The multiple of the pattern's increment to which the number is rounded.
  [[nodiscard]] std::string multipleNear(const detail::NumberDigits& number) const {
    return detail::roundedToIncrement(number, powerOfMultiplier(), Decimal(digits->getRoundingIncrement()), rounding);
  }

  /// A number that shows as zero has no sign.
  [[nodiscard]] icu::UnicodeString textInDigits(const icu::DecimalFormat& format, const Decimal& number) const {
    const std::string plainDigits =
        &format == stepless.get() ? multipleNear(detail::NumberDigits::of(number)) : number.stringValue();
    icu::FieldPositionIterator fields;
    icu::UnicodeString text = written(format, plainDigits, fields);
    const Span span = spanOf(isOfDigits, fields);
    if (number.isNegative() && isZero(text.tempSubStringBetween(span.from, span.to))) {
      text = written(format, "0", fields);
    }
    return text;
  }

  [[nodiscard]] bool isZero(const icu::UnicodeString& text) const {
    for (int digit = 1; digit < 10; ++digit) {
      if (text.indexOf(digits->getDecimalFormatSymbols()->getConstDigitSymbol(digit)) >= 0) return false;
    }
    return true;
  }

  /// Words are accepted only if one of the language's rules, except those for years, spells the number that way,
  /// because ICU reads "twelve twelve" as 1212.
  [[nodiscard]] std::optional<NSNumber> numberInWords(const NSString& text) const {
    const NSString wanted = isLenient ? text.stringByTrimming() : text;
    if (wanted.length() > mostUnitsOfWords) return std::nullopt;
    const kernel::ForkHold hold;
    const icu::UnicodeString units = icuString(wanted);
    icu::Formattable result;
    icu::ParsePosition position(0);
    words->parse(units, result, position);
    if (position.getIndex() == 0 || position.getIndex() != units.length()) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const double real = result.getDouble(status);
    if (U_FAILURE(status)) return std::nullopt;
    if (isSpelt(units, real)) return NSNumber(real);
    // ICU adds the digits of a fraction in doubles, so neighbouring doubles are tried too.
    constexpr int mostSteps = 8;
    double below = real, above = real;
    for (int i = 0; i < mostSteps && real != std::trunc(real); ++i) {
      below = std::nextafter(below, -HUGE_VAL);
      above = std::nextafter(above, HUGE_VAL);
      if (isSpelt(units, below)) return NSNumber(below);
      if (isSpelt(units, above)) return NSNumber(above);
    }
    return std::nullopt;
  }

  [[nodiscard]] bool isSpelt(const icu::UnicodeString& text, double number) const {
    for (std::int32_t i = 0; i < words->getNumberOfRuleSetNames(); ++i) {
      const icu::UnicodeString rules = words->getRuleSetName(i);
      if (rules.indexOf(u"year") >= 0) continue;
      icu::UnicodeString spelt;
      icu::FieldPosition ignored;
      UErrorCode status = U_ZERO_ERROR;
      words->format(number, rules, spelt, ignored, status);
      if (U_SUCCESS(status) && spelt == text) return true;
    }
    return false;
  }

  /// The result of `use` for the number in the text and whether it has a fraction; otherwise a default result.
  template <class Use>
  [[nodiscard]] auto withNumberIn(const NSString& text, Use use) const -> decltype(use(NSNumber(), false)) {
    if (const auto reading = reader->read(text.view(), isLenient)) return use(reading->number, reading->hasFraction);
    if (!words) return {};
    const auto number = numberInWords(text);
    if (!number) return {};
    const Decimal decimal = number->decimalValue();
    return use(*number, decimal.isNaN() || decimal != Decimal(decimal.longLongValue()));
  }

  [[nodiscard]] std::optional<NSNumber> numberFrom(const NSString& text) const {
    return withNumberIn(text,
                        [this](const NSNumber& number, bool hasFraction) { return accepted(number, hasFraction); });
  }

  /// A number above the maximum that is shown without its first digits is reported once.
  void reportCut(const NSNumber& number) const {
    if (!leastCut || !maximum || number <= *maximum || number < *leastCut) return;
    if (isCutReported.exchange(true, std::memory_order_relaxed)) return;
    NSLog("A number formatter shows a number above its maximum, %@, without the first digits", *maximum);
  }

  enum class Refusal : std::uint8_t { none, fraction, aboveMaximum, belowMinimum };

  [[nodiscard]] Refusal refusalOf(const NSNumber& number, bool hasFraction) const {
    if (!allowsFloats && hasFraction) return Refusal::fraction;
    if (maximum && number > *maximum) return Refusal::aboveMaximum;
    if (minimum && number < *minimum) return Refusal::belowMinimum;
    return Refusal::none;
  }

  /// The number in the kind that the settings require; absent if it is refused.
  [[nodiscard]] std::optional<NSNumber> accepted(const NSNumber& number, bool hasFraction) const {
    if (refusalOf(number, hasFraction) != Refusal::none) return std::nullopt;
    const Decimal decimal = number.decimalValue();
    if (generatesDecimals) return decimal.isNaN() ? std::nullopt : std::optional<NSNumber>(decimal);
    if (!hasFraction && decimal == Decimal(decimal.longLongValue())) return NSNumber(decimal.longLongValue());
    const double real = number.doubleValue();
    if (keepsEveryDigit && Decimal(real) != decimal) return decimal;
    return NSNumber(real);
  }
};

NSNumberFormatter::NSNumberFormatter() : engine_(new Engine) {}
NSNumberFormatter::~NSNumberFormatter() = default;

NSString NSNumberFormatter::stringFromNumber(const NSNumber& number) const {
  const Engine& engine = engine_->built();
  if (engine.plain) {
    if (const Decimal decimal = number.decimalValue(); engine.plain->covers(decimal)) {
      if (engine.writesShortText) {
        PlainNumberPattern::ShortText room;
        if (const std::string_view text = engine.plain->shortText(room, decimal); !text.empty()) return NSString(text);
      }
      engine.reportCut(number);
      std::string text;
      engine.plain->append(text, decimal);
      return NSString(text);
    }
  }
  engine.reportCut(number);
  return stringFromIcu(engine.textInIcu(number));
}

std::optional<NSNumber> NSNumberFormatter::numberFromString(const NSString& text) const {
  return engine_->built().numberFrom(text);
}

std::optional<NSNumber> NSNumberFormatter::numberInView(std::string_view text) const {
  return numberFromString(NSString::borrowing(text));  // valid during the call, and no number keeps its text
}

std::optional<NSString> NSNumberFormatter::stringForObjectValue(const Value& value) const {
  if (value.isAbsent() || value.isNull()) return NSString();
  if (!value.isNumber()) return std::nullopt;
  return stringFromNumber(value.number());
}

Ref<NSAttributedString> NSNumberFormatter::attributedStringForObjectValue_withDefaultAttributes(
    const Value& value, const Ref<NSDictionary>& attributes) const {
  const auto text = stringForObjectValue(value);
  return text ? NSAttributedString::attributedStringWithString(*text, attributes) : nullptr;
}

bool NSNumberFormatter::getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                                  NSString* error) const {
  if (text.empty()) {
    value = Value();
    return true;
  }
  if (const auto number = numberFromString(text)) {
    value = *number;
    return true;
  }
  if (error) *error = "\"" + text + "\" " + reasonToRefuse(text);
  return false;
}

NSString NSNumberFormatter::reasonToRefuse(const NSString& text) const {
  using Refusal = Engine::Refusal;
  const Engine& engine = engine_->built();
  switch (engine.withNumberIn(
      text, [&engine](const NSNumber& number, bool hasFraction) { return engine.refusalOf(number, hasFraction); })) {
    case Refusal::fraction:
      return "is not a whole number.";
    case Refusal::aboveMaximum:
      return "is greater than " + stringFromNumber(*engine.maximum) + ".";
    case Refusal::belowMinimum:
      return "is less than " + stringFromNumber(*engine.minimum) + ".";
    case Refusal::none:
      break;
  }
  return "is not a number that can be entered here.";
}

NSNumberFormatterStyle NSNumberFormatter::numberStyle() const noexcept { return engine_->style; }

void NSNumberFormatter::setNumberStyle(NSNumberFormatterStyle style) {
  engine_->style = style;
  engine_->ownPattern.reset();
  engine_->forgetOwnLimits();
  engine_->startAfresh();
}

Ref<NSLocale> NSNumberFormatter::locale() const noexcept { return engine_->locale; }

void NSNumberFormatter::setLocale(const Ref<NSLocale>& locale) {
  engine_->applyWaiting();
  engine_->locale = locale ? locale : NSLocale::currentLocale();
  engine_->startAfresh();
}

NSString NSNumberFormatter::format() const {
  const kernel::ForkHold hold;
  icu::UnicodeString pattern;
  return stringFromIcu(engine_->built().digits->toPattern(pattern));
}

void NSNumberFormatter::setFormat(const NSString& pattern) {
  if (!isPattern(pattern)) {
    NSException::raise(NSInvalidArgumentException, "\"" + pattern.utf8() + "\" is not a number pattern");
  }
  engine_->ownPattern = pattern;
  engine_->forgetOwnLimits();
  engine_->startAfresh();
}

NSNumberFormatterBehavior NSNumberFormatter::formatterBehavior() const noexcept { return engine_->behavior; }
void NSNumberFormatter::setFormatterBehavior(NSNumberFormatterBehavior behavior) noexcept {
  engine_->behavior = behavior;
}

int NSNumberFormatter::minimumIntegerDigits() const { return engine_->built().digits->getMinimumIntegerDigits(); }
void NSNumberFormatter::setMinimumIntegerDigits(int count) { engine_->setLimit(DigitLimit::MinimumInteger, count); }
int NSNumberFormatter::maximumIntegerDigits() const {
  const int count = engine_->built().digits->getMaximumIntegerDigits();
  return count < noIntegerLimit ? count : noIntegerLimit;
}
void NSNumberFormatter::setMaximumIntegerDigits(int count) { engine_->setLimit(DigitLimit::MaximumInteger, count); }
int NSNumberFormatter::minimumFractionDigits() const { return engine_->built().digits->getMinimumFractionDigits(); }
void NSNumberFormatter::setMinimumFractionDigits(int count) { engine_->setLimit(DigitLimit::MinimumFraction, count); }
int NSNumberFormatter::maximumFractionDigits() const { return engine_->built().digits->getMaximumFractionDigits(); }
void NSNumberFormatter::setMaximumFractionDigits(int count) { engine_->setLimit(DigitLimit::MaximumFraction, count); }
bool NSNumberFormatter::hasThousandSeparators() const { return engine_->built().digits->isGroupingUsed(); }
void NSNumberFormatter::setHasThousandSeparators(bool has) { engine_->setGrouping(has); }
NSNumberFormatterRoundingMode NSNumberFormatter::roundingMode() const noexcept { return engine_->rounding; }
void NSNumberFormatter::setRoundingMode(NSNumberFormatterRoundingMode mode) { engine_->setRounding(mode); }

bool NSNumberFormatter::allowsFloats() const noexcept { return engine_->allowsFloats; }
void NSNumberFormatter::setAllowsFloats(bool allows) noexcept { engine_->allowsFloats = allows; }
bool NSNumberFormatter::lenient() const noexcept { return engine_->isLenient; }
void NSNumberFormatter::setLenient(bool isLenient) { engine_->isLenient = isLenient; }
bool NSNumberFormatter::generatesDecimalNumbers() const noexcept { return engine_->generatesDecimals; }
void NSNumberFormatter::setGeneratesDecimalNumbers(bool generates) noexcept { engine_->generatesDecimals = generates; }
void NSNumberFormatter::setKeepsEveryDigit(bool keeps) noexcept { engine_->keepsEveryDigit = keeps; }
const std::optional<NSNumber>& NSNumberFormatter::maximum() const noexcept { return engine_->maximum; }
void NSNumberFormatter::setMaximum(std::optional<NSNumber> maximum) { engine_->maximum = maximum; }
const std::optional<NSNumber>& NSNumberFormatter::minimum() const noexcept { return engine_->minimum; }
void NSNumberFormatter::setMinimum(std::optional<NSNumber> minimum) { engine_->minimum = minimum; }

namespace {

/// One of the enumerators 0 to `last`.
template <class Enumeration>
Enumeration decodeEnumerator(NSCoder& coder, const NSString& key, Enumeration last) {
  const std::int64_t number = coder.decodeIntegerForKey(key);
  if (number < 0 || number > static_cast<std::int64_t>(last)) {
    NSException::raise(NSInvalidUnarchiveOperationException, "a number formatter's " + key.utf8() + " is damaged");
  }
  return static_cast<Enumeration>(number);
}

/// A count of digits, limited to the range of counts.
int decodeDigits(NSCoder& coder, const NSString& key) {
  return static_cast<int>(std::clamp<std::int64_t>(coder.decodeIntegerForKey(key), 0, noIntegerLimit));
}

}  // namespace

void NSNumberFormatter::encodeWithCoder(NSCoder& coder) const {
  const Engine& e = engine_->built();
  coder.encodeObject(e.locale->localeIdentifier(), "locale");
  coder.encodeInteger(e.style, "numberStyle");
  coder.encodeInteger(e.behavior, "formatterBehavior");
  coder.encodeInteger(e.rounding, "roundingMode");
  coder.encodeObject(e.ownPattern, "format");
  coder.encodeBool(e.own.integerDigits.has_value(), "hasIntegerDigits");
  coder.encodeInteger(minimumIntegerDigits(), "minimumIntegerDigits");
  coder.encodeInteger(maximumIntegerDigits(), "maximumIntegerDigits");
  coder.encodeBool(e.own.fractionDigits.has_value(), "hasFractionDigits");
  coder.encodeInteger(minimumFractionDigits(), "minimumFractionDigits");
  coder.encodeInteger(maximumFractionDigits(), "maximumFractionDigits");
  coder.encodeObject(e.own.grouping, "hasThousandSeparators");
  coder.encodeBool(e.allowsFloats, "allowsFloats");
  coder.encodeBool(e.isLenient, "lenient");
  coder.encodeBool(e.generatesDecimals, "generatesDecimalNumbers");
  coder.encodeObject(e.maximum, "maximum");
  coder.encodeObject(e.minimum, "minimum");
}

bool NSNumberFormatter::initWithCoder(NSCoder& coder) {
  Engine& e = *engine_;
  e.locale = NSLocale::localeWithLocaleIdentifier(coder.decode<NSString>("locale"));
  e.style = decodeEnumerator(coder, "numberStyle", NSNumberFormatterSpellOutStyle);
  e.behavior = decodeEnumerator(coder, "formatterBehavior", NSNumberFormatterBehavior10_4);
  e.rounding = decodeEnumerator(coder, "roundingMode", NSNumberFormatterRoundHalfUp);
  e.forgetOwnLimits();
  e.startAfresh();
  if (const auto pattern = coder.decode<std::optional<NSString>>("format")) setFormat(*pattern);
  if (coder.decodeBoolForKey("hasIntegerDigits")) {
    setMinimumIntegerDigits(decodeDigits(coder, "minimumIntegerDigits"));
    setMaximumIntegerDigits(decodeDigits(coder, "maximumIntegerDigits"));
  }
  if (coder.decodeBoolForKey("hasFractionDigits")) {
    setMinimumFractionDigits(decodeDigits(coder, "minimumFractionDigits"));
    setMaximumFractionDigits(decodeDigits(coder, "maximumFractionDigits"));
  }
  if (const auto grouping = coder.decode<std::optional<bool>>("hasThousandSeparators"))
    setHasThousandSeparators(*grouping);
  e.allowsFloats = coder.decodeBoolForKey("allowsFloats");
  e.generatesDecimals = coder.decodeBoolForKey("generatesDecimalNumbers");
  setLenient(coder.decodeBoolForKey("lenient"));
  e.maximum = coder.decode<std::optional<NSNumber>>("maximum");
  e.minimum = coder.decode<std::optional<NSNumber>>("minimum");
  return true;
}

}  // namespace norvik
