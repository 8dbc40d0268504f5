#include "NorvikCore/platform/foundation/internal/NumberReader.h"

#include "NorvikCore/platform/values/Utf8.h"
#include "NorvikCore/platform/values/internal/DecimalDivisor.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace norvik::detail {
namespace {

constexpr std::string_view trueMinus = "\u2212";

/// White space of all of Unicode, and the marks of direction in texts of right-to-left scripts.
constexpr bool isBlank(char32_t point) noexcept {
  return point == ' ' || (point >= 0x9 && point <= 0xD) || point == 0x85 || point == 0xA0 || point == 0x61C ||
         point == 0x1680 || (point >= 0x2000 && point <= 0x200A) || point == 0x200E || point == 0x200F ||
         point == 0x2028 || point == 0x2029 || point == 0x202F || point == 0x205F || point == 0x3000;
}

void skipBlanks(std::string_view& text) noexcept {
  while (!text.empty()) {
    const utf8::Character first = utf8::decode(text.data());
    if (!isBlank(first.point)) return;
    text.remove_prefix(first.size);
  }
}

std::string_view withoutBlanksAround(std::string_view text) noexcept {
  skipBlanks(text);
  while (!text.empty()) {
    std::size_t last = text.size() - 1;
    while (last > 0 && utf8::isContinuation(text[last])) --last;
    if (!isBlank(utf8::decode(text.data() + last).point)) break;
    text = text.substr(0, last);
  }
  return text;
}

inline bool take(std::string_view& text, std::string_view prefix) noexcept {
  if (text.empty() || prefix.empty() || text.front() != prefix.front() || !text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

std::size_t characterCount(std::string_view text) noexcept {
  return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return !utf8::isContinuation(c); }));
}

constexpr bool isLatinDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Removes the first occurrence; returns whether there was one.
bool remove(std::string& text, std::string_view part) {
  const std::size_t at = part.empty() ? std::string::npos : text.find(part);
  if (at == std::string::npos) return false;
  text.erase(at, part.size());
  return true;
}

std::string replaced(std::string text, std::string_view part, std::string_view by) {
  const std::size_t at = part.empty() ? std::string::npos : text.find(part);
  if (at != std::string::npos) text.replace(at, part.size(), by);
  return text;
}

}  // namespace

/// The digits that were read, in the form for Decimal::parse. They are at most a few characters longer than the text.
class NumberReader::Digits {
 public:
  explicit Digits(std::size_t textSize) {
    const std::size_t size = textSize + 4;  // "-", ".", "E-"
    if (size > small_.size()) large_ = std::make_unique<char[]>(size);
    begin_ = large_ ? large_.get() : small_.data();
    *begin_ = '-';
    end_ = begin_ + 1;
  }
  void add(char c) noexcept { *end_++ = c; }
  /// Takes the ASCII digits at the beginning of the text and returns their number.
  std::size_t take(std::string_view& text) noexcept {
    char* out = end_;
    const char* in = text.data();
    for (const char* const last = in + text.size(); in != last && isLatinDigit(*in);) *out++ = *in++;
    const auto count = static_cast<std::size_t>(out - end_);
    end_ = out;
    text.remove_prefix(count);
    return count;
  }
  [[nodiscard]] std::string_view text(bool isNegative) const noexcept {
    const char* const first = isNegative ? begin_ : begin_ + 1;
    return {first, static_cast<std::size_t>(end_ - first)};
  }

 private:
  std::array<char, 96> small_;
  std::unique_ptr<char[]> large_;
  char *begin_, *end_;
};

NumberReader::NumberReader(Settings settings)
    : settings_(std::move(settings)),
      minusCore_(withoutBlanksAround(settings_.minusSign)),
      plusCore_(withoutBlanksAround(settings_.plusSign)),
      hasOwnDigits_(settings_.digits[0] != "0"),
      isBare_(settings_.power == 0 && settings_.padding.empty() && settings_.exponentSign.empty() &&
              std::ranges::all_of(settings_.forms, [this](const Form& form) {
                return form.after.empty() && form.before == (form.isNegative ? settings_.minusSign : "");
              })) {
  std::vector<Form> all = settings_.forms;
  const auto &symbol = settings_.currencySymbol, &code = settings_.currencyCode;
  for (const auto& [from, to] : {std::pair{symbol, code}, std::pair{code, symbol}}) {
    for (const Form& form : settings_.forms) {
      Form other{replaced(form.before, from, to), replaced(form.after, from, to), form.isNegative};
      if (std::ranges::find(all, other) == all.end()) all.push_back(std::move(other));
    }
  }
  for (const Form& form : all) {
    const LooseForm loose = looseForm(form, all);
    if (std::ranges::find(looseForms_, loose) == looseForms_.end()) looseForms_.push_back(loose);
  }
  const std::vector<LooseForm> forms = looseForms_;
  std::stable_partition(looseForms_.begin(), looseForms_.end(),
                        [&](const LooseForm& form) { return isWithinAnother(form, forms); });
}

bool NumberReader::isWithinAnother(const LooseForm& form, const std::vector<LooseForm>& forms) {
  return form.impliesMinus && std::ranges::any_of(forms, [&](const LooseForm& other) {
           return !other.impliesMinus && (form.before.empty() || form.before == other.before) &&
                  (form.after.empty() || form.after == other.after);
         });
}

NumberReader::LooseForm NumberReader::withoutSign(const Form& form) const {
  const std::string_view sign = form.isNegative ? minusCore_ : plusCore_;
  std::string before = form.before, after = form.after;
  const bool leads = remove(before, sign);
  const bool follows = !leads && remove(after, sign);
  return {std::string(withoutBlanksAround(before)), std::string(withoutBlanksAround(after)), false, follows};
}

NumberReader::LooseForm NumberReader::looseForm(const Form& form, const std::vector<Form>& all) const {
  const LooseForm whole{std::string(withoutBlanksAround(form.before)), std::string(withoutBlanksAround(form.after)),
                        form.isNegative, false};
  const LooseForm bare = withoutSign(form);
  const auto hasSameTexts = [&](const LooseForm& other) {
    return other.before == bare.before && other.after == bare.after;
  };
  const bool hasSign = std::ranges::any_of(all, [&](const Form& other) {
    if (other.isNegative == form.isNegative) return false;
    const LooseForm asItIs{std::string(withoutBlanksAround(other.before)),
                           std::string(withoutBlanksAround(other.after)), false, false};
    return hasSameTexts(withoutSign(other)) || (form.isNegative && hasSameTexts(asItIs));
  });
  return hasSign && !(bare.before == whole.before && bare.after == whole.after) ? bare : whole;
}

std::optional<NumberReader::Reading> NumberReader::read(std::string_view text, bool isLenient) const {
  if (!isLenient) return readStrictly(text);
  if (auto reading = readStrictly(text)) return reading;
  const std::string_view trimmed = withoutBlanksAround(text);
  if (trimmed.size() < text.size()) {
    if (auto reading = readStrictly(trimmed)) return reading;
  }
  for (const LooseForm& form : looseForms_) {
    if (auto reading = readLoosely(trimmed, form)) return reading;
  }
  return std::nullopt;
}

inline bool NumberReader::mayBegin(char first, const Form& form) const noexcept {
  if (!settings_.padding.empty()) return true;
  if (!form.before.empty()) return first == form.before.front();
  return isLatinDigit(first) || hasOwnDigits_ || settings_.decimalSeparator.starts_with(first);
}

std::optional<NumberReader::Reading> NumberReader::readStrictly(std::string_view text) const {
  if (text.empty()) return std::nullopt;
  for (const Form& form : settings_.forms) {
    if (!mayBegin(text.front(), form)) continue;
    if (auto reading = readStrictly(text, form)) return reading;
  }
  return std::nullopt;
}

std::string_view NumberReader::withoutOuterPadding(std::string_view text, const Form& form) const noexcept {
  const std::string_view padding = settings_.padding;
  const auto countAtStart = [padding](std::string_view of) {
    std::size_t count = 0;
    for (; of.starts_with(padding); of.remove_prefix(padding.size())) ++count;
    return count;
  };
  const auto countAtEnd = [padding](std::string_view of) {
    std::size_t count = 0;
    for (; of.ends_with(padding); of.remove_suffix(padding.size())) ++count;
    return count;
  };
  if (settings_.padPosition == PadPosition::beforePrefix) {
    const std::size_t found = countAtStart(text), own = countAtStart(form.before);
    if (found > own) text.remove_prefix((found - own) * padding.size());
  } else if (settings_.padPosition == PadPosition::afterSuffix) {
    const std::size_t found = countAtEnd(text), own = countAtEnd(form.after);
    if (found > own) text.remove_suffix((found - own) * padding.size());
  }
  return text;
}

std::string_view NumberReader::withoutInnerPadding(std::string_view number) const noexcept {
  const std::string_view padding = settings_.padding;
  if (settings_.padPosition == PadPosition::afterPrefix) {
    while (number.starts_with(padding)) number.remove_prefix(padding.size());
  } else if (settings_.padPosition == PadPosition::beforeSuffix) {
    while (number.ends_with(padding)) number.remove_suffix(padding.size());
  }
  return number;
}

std::string_view NumberReader::withoutPadding(std::string_view text) const noexcept {
  const std::string_view padding = settings_.padding;
  if (padding.empty()) return text;
  while (text.starts_with(padding)) text.remove_prefix(padding.size());
  while (text.ends_with(padding)) text.remove_suffix(padding.size());
  return text;
}

std::optional<NumberReader::Reading> NumberReader::readStrictly(std::string_view text, const Form& form) const {
  const bool mayBePadded = !settings_.padding.empty();
  const std::string_view whole = text;
  if (mayBePadded) text = withoutOuterPadding(text, form);
  bool isPadded = text.size() < whole.size();
  const std::size_t size = form.before.size() + form.after.size();
  if (text.size() <= size || !text.starts_with(form.before) || !text.ends_with(form.after)) return std::nullopt;
  text = text.substr(form.before.size(), text.size() - size);
  if (mayBePadded) {
    const std::string_view number = withoutInnerPadding(text);
    isPadded |= number.size() < text.size();
    text = number;
  }
  if (isPadded && characterCount(whole) != settings_.width) return std::nullopt;
  Digits digits(text.size());
  bool hasPoint = false;
  if (!takeDigits(text, false, digits, hasPoint)) return std::nullopt;
  if (!text.empty() && (!takeExponent(text, false, digits) || !text.empty())) return std::nullopt;
  return reading(digits.text(form.isNegative), hasPoint);
}

std::optional<NumberReader::Reading> NumberReader::readLoosely(std::string_view text, const LooseForm& form) const {
  text = withoutPadding(text);
  bool hasSign = form.impliesMinus, isNegative = form.impliesMinus;
  bool hasBefore = form.before.empty(), hasAfter = form.after.empty();
  const auto takeAround = [&](bool& hasText, std::string_view wanted, bool takesSign) {
    for (;;) {
      text = withoutPadding(text);
      skipBlanks(text);
      if (!hasText && take(text, wanted)) {
        hasText = true;
      } else if (takesSign && !hasSign && takeSign(text, isNegative)) {
        hasSign = true;
      } else {
        return;
      }
    }
  };
  takeAround(hasBefore, form.before, true);
  Digits digits(text.size());
  bool hasPoint = false;
  if (!takeDigits(text, true, digits, hasPoint) || !takeExponent(text, true, digits)) return std::nullopt;
  takeAround(hasAfter, form.after, form.signFollows);
  if (!text.empty() || (form.impliesMinus && !(hasBefore && hasAfter))) return std::nullopt;
  return reading(digits.text(isNegative), hasPoint);
}

bool NumberReader::takeSign(std::string_view& text, bool& isNegative) const noexcept {
  if (take(text, minusCore_) || take(text, "-") || take(text, trueMinus)) {
    isNegative = true;
    return true;
  }
  return take(text, plusCore_) || take(text, "+");
}

inline bool NumberReader::takeGroupingSeparator(std::string_view& text, bool isLenient) const noexcept {
  const std::string_view separator = settings_.groupingSeparator;
  if (take(text, separator)) return true;
  if (!isLenient) return false;
  if (separator == "\u2019") return take(text, "'");
  const bool isSpace = separator == "\u00A0" || separator == "\u202F";
  return isSpace && (take(text, " ") || take(text, "\u00A0") || take(text, "\u202F"));
}

inline std::size_t NumberReader::takeRun(std::string_view& text, Kind& kind, Digits& digits) const {
  if (kind != Kind::Own) {
    if (const std::size_t count = digits.take(text); count > 0) {
      kind = Kind::Ascii;
      return count;
    }
  }
  return hasOwnDigits_ && kind != Kind::Ascii ? takeOwnRun(text, kind, digits) : 0;
}

std::size_t NumberReader::takeOwnRun(std::string_view& text, Kind& kind, Digits& digits) const {
  std::size_t count = 0;
  for (bool found = true; found;) {
    found = false;
    for (std::size_t digit = 0; digit < settings_.digits.size() && !found; ++digit) {
      found = take(text, settings_.digits[digit]);
      if (found) digits.add(static_cast<char>('0' + digit));
    }
    if (found) ++count;
  }
  if (count > 0) kind = Kind::Own;
  return count;
}

bool NumberReader::takeDigits(std::string_view& text, bool isLenient, Digits& digits, bool& hasPoint) const {
  Kind kind = Kind::Any;
  std::size_t inGroup = takeRun(text, kind, digits);
  bool hasDigits = inGroup > 0;
  if (hasDigits) {
    const auto last = static_cast<std::size_t>(settings_.lastGroup);
    const auto others = static_cast<std::size_t>(settings_.otherGroups);
    bool isFirst = true;
    for (std::string_view rest = text; takeGroupingSeparator(rest, isLenient); rest = text) {
      const std::size_t inNext = takeRun(rest, kind, digits);
      if (inNext == 0) break;
      if (!isLenient && (!settings_.isGrouped || (isFirst ? inGroup > others : inGroup != others))) return false;
      text = rest;
      inGroup = inNext;
      isFirst = false;
    }
    if (!isLenient && !isFirst && inGroup != last) return false;
  }

  hasPoint = take(text, settings_.decimalSeparator);
  if (hasPoint) {
    digits.add('.');
    hasDigits |= takeRun(text, kind, digits) > 0;
  }
  return hasDigits;
}

bool NumberReader::takeExponent(std::string_view& text, bool isLenient, Digits& digits) const {
  if (settings_.exponentSign.empty()) return true;
  if (!take(text, settings_.exponentSign) && !(isLenient && (take(text, "E") || take(text, "e")))) return true;
  bool isNegative = false;
  if (isLenient) {
    skipBlanks(text);
    takeSign(text, isNegative);
  } else {
    isNegative = take(text, settings_.minusSign);
    if (!isNegative) take(text, settings_.plusSign);
  }
  digits.add('E');
  if (isNegative) digits.add('-');
  Kind kind = Kind::Any;
  return takeRun(text, kind, digits) > 0;
}

namespace {

/// Divides by ten repeatedly, and adds a place only where the last digit is not zero: 50% is 0.5.
template <class Mantissa>
Decimal dividedByTen(Mantissa mantissa, int exponent, bool isNegative, int times) noexcept {
  for (; times > 0; --times) {
    if (mantissa % 10 == 0) {
      mantissa /= 10;
    } else {
      --exponent;
    }
  }
  return DecimalAccess::make(mantissa, exponent, isNegative);
}

Decimal dividedByPowerOfTen(const Decimal& number, int power) noexcept {
  if (power == 0) return number;
  const UInt128 mantissa = DecimalAccess::mantissa(number);
  const auto low = static_cast<std::uint64_t>(mantissa);  // 128-bit divisions are ten times as slow
  return low == mantissa ? dividedByTen(low, number.exponent(), number.isNegative(), power)
                         : dividedByTen(mantissa, number.exponent(), number.isNegative(), power);
}

/// True also for whole numbers beyond 64 bits.
bool hasFraction(const Decimal& number) noexcept {
  constexpr int mostPlaces = 18;
  const int places = -number.exponent();
  const UInt128 mantissa = DecimalAccess::mantissa(number);
  if (places < 0 || places > mostPlaces || mantissa >= powersOfTen64[mostPlaces]) {
    return number != Decimal(number.longLongValue());
  }
  return static_cast<std::uint64_t>(mantissa) % powerOfTen64(places) != 0;
}

}  // namespace

std::optional<NumberReader::Reading> NumberReader::reading(std::string_view digits, bool hasPoint) const {
  const auto read = Decimal::parse(digits);
  if (!read || read->exponent() - settings_.power < Decimal::minimumExponent) return std::nullopt;
  const Decimal number = dividedByPowerOfTen(*read, settings_.power);
  return Reading{number, isBare_ ? hasPoint : hasFraction(number)};
}

}  // namespace norvik::detail
