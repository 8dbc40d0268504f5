#include "NorvikCore/platform/values/Format.h"

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSNumber.h"
#include "NorvikCore/platform/values/internal/FormatBuffer.h"
#include "NorvikCore/platform/values/internal/FormatCopy.h"
#include "NorvikCore/platform/values/internal/FormatNumber.h"
#include "NorvikCore/platform/values/internal/Utf8Words.h"

#include <algorithm>
#include <cstring>

namespace norvik {
namespace detail {
namespace {

constexpr std::string_view badArgument = "(bad argument)", badFormat = "(bad format)", absentText = "(null)";

constexpr bool isContinuation(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

std::size_t utf16Units(std::string_view text) noexcept {
  std::size_t units = 0;
  for (const char c : text) units += isContinuation(c) ? 0U : static_cast<unsigned char>(c) >= 0xF0 ? 2U : 1U;
  return units;
}

/// The longest start of `text` with at most `limit` UTF-16 units, whole characters only.
std::string_view firstUnits(std::string_view text, std::size_t limit) noexcept {
  std::size_t units = 0, end = 0;
  while (end < text.size()) {
    units += static_cast<unsigned char>(text[end]) >= 0xF0 ? 2U : 1U;
    if (units > limit) break;
    do ++end;
    while (end < text.size() && isContinuation(text[end]));
  }
  return text.substr(0, end);
}

/// The longest start of `text` with at most `limit` bytes, whole characters only.
std::string_view firstBytes(std::string_view text, std::size_t limit) noexcept {
  if (text.size() <= limit) return text;
  while (limit > 0 && isContinuation(text[limit])) --limit;
  return text.substr(0, limit);
}

void appendPadded(FormatBuffer& out, std::string_view text, const FormatField& field) {
  const auto width = static_cast<std::size_t>(field.width);
  const std::size_t units = width > 0 ? utf16Units(text) : 0;
  const std::size_t spaces = width > units ? width - units : 0;
  if (!field.leftAlign) out.append(spaces, ' ');
  out.append(text);
  if (field.leftAlign) out.append(spaces, ' ');
}

std::string_view boundedText(const FormatArgument& argument, int precision) noexcept {
  const char* text = static_cast<const char*>(argument.pointer);
  std::size_t limit = argument.length;
  if (precision >= 0) limit = std::min(limit, static_cast<std::size_t>(precision));
  // strnlen stops at the limit, so an array without a terminating zero is not read beyond its end.
  const std::size_t length = limit == static_cast<std::size_t>(-1) ? std::strlen(text) : ::strnlen(text, limit);
  return {text, length};
}

/// Drops an incomplete character at the end of `text`.
std::string_view wholeCharacters(std::string_view text) noexcept {
  std::size_t last = text.size();
  while (last > 0 && isContinuation(text[last - 1])) --last;
  if (last == 0) return text;  // no lead byte: these bytes are not characters
  const auto lead = static_cast<unsigned char>(text[last - 1]);
  const std::size_t needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  return text.size() - (last - 1) < needed ? text.substr(0, last - 1) : text;
}

void appendPadded(FormatBuffer& out, const NSString& text, const FormatField& field) {
  const auto width = static_cast<std::size_t>(field.width);
  const std::size_t units = width > 0 ? text.length() : 0;
  const std::size_t spaces = width > units ? width - units : 0;
  if (!field.leftAlign) out.append(spaces, ' ');
  out.append(text);
  if (field.leftAlign) out.append(spaces, ' ');
}

void appendText(FormatBuffer& out, const FormatArgument& argument, const FormatField& field, bool precisionInBytes) {
  std::string_view text;
  if (argument.kind() == FormatKind::absent) {
    text = absentText;
  } else if (argument.kind() == FormatKind::string) {
    const NSString& string = *static_cast<const NSString*>(argument.pointer);
    text = string.view();
    if (!string.isWellFormed()) {
      if (field.precision < 0) return appendPadded(out, string, field);
      const auto limit = static_cast<std::size_t>(field.precision);
      const NSUInteger units = utf16Units(precisionInBytes ? firstBytes(text, limit) : firstUnits(text, limit));
      return appendPadded(out, string.substringToIndex(units), field);
    }
  } else if (argument.kind() == FormatKind::text) {
    text = {static_cast<const char*>(argument.pointer), argument.length};
  } else if (precisionInBytes && field.precision >= 0) {
    text = boundedText(argument, field.precision);
    if (text.size() == static_cast<std::size_t>(field.precision)) text = wholeCharacters(text);
    return appendPadded(out, text, field);
  } else {
    text = boundedText(argument, -1);
  }
  if (field.precision >= 0) {
    const auto limit = static_cast<std::size_t>(field.precision);
    text = precisionInBytes ? firstBytes(text, limit) : firstUnits(text, limit);
  }
  appendPadded(out, text, field);
}

/// The text of a number or a boolean, as NSNumber gives it; of a value or an object its description.
NSString describe(const FormatArgument& argument) {
  switch (argument.kind()) {
    case FormatKind::boolean:
      return NSNumber(argument.integer != 0).stringValue();
    case FormatKind::signedInteger:
      return NSNumber(argument.integer).stringValue();
    case FormatKind::unsignedInteger:
      return NSNumber(static_cast<std::uint64_t>(argument.integer)).stringValue();
    case FormatKind::floating:
      return NSNumber(argument.floating).stringValue();
    default:
      return argument.describe(argument.pointer);
  }
}

void appendObject(FormatBuffer& out, const FormatArgument& argument, const FormatField& field) {
  if (argument.kind() >= FormatKind::text && argument.kind() <= FormatKind::string) {
    return appendText(out, argument, field, false);
  }
  const NSString description = describe(argument);
  FormatArgument text;
  text.setKind(FormatKind::string);
  text.pointer = &description;
  appendText(out, text, field, false);
}

void appendCharacter(FormatBuffer& out, const FormatArgument& argument, const FormatField& field) {
  if (argument.kind() == FormatKind::character &&
      argument.bytes() == 1) {  // one byte, which may be a part of a character
    const char byte = static_cast<char>(argument.integer);
    return appendPadded(out, std::string_view(&byte, 1), field);
  }
  auto point = static_cast<std::uint64_t>(argument.integer);
  if (point > 0x10FFFF) point = 0xFFFD;
  appendPadded(out, NSString::fromCodePoint(static_cast<char32_t>(point)), field);
}

void appendFloatingKind(FormatBuffer& out, char conversion, const FormatArgument& argument, const FormatField& field) {
  switch (argument.kind()) {
    case FormatKind::longFloating:
      return appendFloating(out, conversion, *static_cast<const long double*>(argument.pointer), field);
    case FormatKind::decimal:
      return appendDecimalNumber(out, *static_cast<const Decimal*>(argument.pointer), field);
    case FormatKind::number: {
      const NSNumber& number = *static_cast<const NSNumber*>(argument.pointer);
      const Decimal decimal = number.decimalValue();
      if (decimal.isNaN() && number.kind() == NSNumber::Kind::Double)  // infinite, or beyond the range of a Decimal
        return appendFloating(out, conversion, number.doubleValue(), field);
      return appendDecimalNumber(out, decimal, field);
    }
    default:
      return appendFloating(out, conversion, argument.floating, field);
  }
}

void appendArgument(FormatBuffer& out, char conversion, const FormatArgument& argument, const FormatField& field) {
  if (argument.kind() == FormatKind::absent && conversion != 'p') {
    FormatField whole = field;
    if (conversion != '@' && conversion != 's' && conversion != 'S') whole.precision = -1;  // it counts digits
    return appendText(out, argument, whole, false);
  }
  switch (conversion) {
    case '@':
      return appendObject(out, argument, field);
    case 's':
    case 'S':
      return appendText(out, argument, field, true);
    case 'c':
    case 'C':
      return appendCharacter(out, argument, field);
    case 'p':
      return appendAddress(out, argument.kind() == FormatKind::absent ? nullptr : argument.pointer, field);
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      return appendFloatingKind(out, conversion, argument, field);
    default: {
      const bool isNegative = argument.integer < 0 && (argument.kind() == FormatKind::signedInteger ||
                                                       argument.kind() == FormatKind::character);
      return appendInteger(out, conversion, static_cast<std::uint64_t>(argument.integer), isNegative, argument.bytes(),
                           field);
    }
  }
}

/// Walks through a format: plain text is copied, and each directive takes its arguments in order or by position.
class Renderer {
 public:
  Renderer(FormatBuffer& out, std::string_view format, FormatArguments arguments) noexcept
      : out_(out), format_(format), arguments_(arguments) {}

  void render() {
    std::size_t at = 0;
    while (at < format_.size()) {
      const void* percent = std::memchr(format_.data() + at, '%', format_.size() - at);
      if (!percent) return out_.append(format_.substr(at));
      const auto found = static_cast<std::size_t>(static_cast<const char*>(percent) - format_.data());
      out_.append(format_.substr(at, found - at));
      at = found + 1;
      renderDirective(at);
    }
  }

 private:
  /// The common directives, which are a letter alone: numbers and text without formatting. False for all others.
  bool renderPlain(std::size_t at) {
    if (at >= format_.size() || next_ >= arguments_.size()) return false;
    const FormatArgument& argument = arguments_.data()[next_];
    switch (format_[at]) {
      case 'd':
      case 'i':
      case 'u':
        if (argument.kind() != FormatKind::signedInteger && argument.kind() != FormatKind::unsignedInteger)
          return false;
        appendDecimal(out_, static_cast<std::uint64_t>(argument.integer),
                      argument.kind() == FormatKind::signedInteger && argument.integer < 0);
        break;
      case '@':
      case 's':
        if (argument.kind() == FormatKind::string) {
          out_.append(*static_cast<const NSString*>(argument.pointer));
        } else if (argument.kind() == FormatKind::text) {
          out_.append(std::string_view(static_cast<const char*>(argument.pointer), argument.length));
        } else if (argument.kind() == FormatKind::cText) {
          out_.append(boundedText(argument, -1));
        } else {
          return false;
        }
        break;
      case 'f':
        if (argument.kind() != FormatKind::floating) return false;
        appendFixed(out_, argument.floating);
        break;
      default:
        return false;
    }
    ++next_;
    return true;
  }

  void renderDirective(std::size_t& at) {
    if (renderPlain(at)) {
      ++at;
      return;
    }
    const FormatDirective directive = parseFormatDirective(format_, at);
    if (directive.conversion == 0) return out_.append(badFormat);
    FormatField field{.leftAlign = directive.leftAlign,
                      .plusSign = directive.plusSign,
                      .spaceSign = directive.spaceSign,
                      .alternate = directive.alternate,
                      .zeroPad = directive.zeroPad,
                      .width = std::max(directive.width, 0),
                      .precision = directive.precision};
    bool fits = takeField(directive.widthArgument, field.width);
    fits = takeField(directive.precisionArgument, field.precision) && fits;
    if (field.width < 0) {  // a negative width from a * aligns to the left
      field.leftAlign = true;
      field.width = -field.width;
    }
    field.width = std::min(field.width, formatFieldLimit);
    field.precision = std::clamp(field.precision, -1, formatFieldLimit);
    if (directive.conversion == '%') return out_.append(fits ? std::string_view("%") : badArgument);
    const FormatArgument* argument = take(directive.argument);
    fits = fits && argument &&
           (argument->kind() == FormatKind::absent || formatAccepts(directive.conversion, argument->kind()));
    if (!fits) return out_.append(badArgument);
    appendArgument(out_, directive.conversion, *argument, field);
  }

  const FormatArgument* take(int argument) noexcept {
    const std::size_t index = argument == FormatDirective::next ? next_++ : static_cast<std::size_t>(argument) - 1;
    return index < arguments_.size() ? arguments_.data() + index : nullptr;
  }

  /// Takes a width or precision from the arguments if it was written as *.
  bool takeField(int argument, int& number) noexcept {
    if (argument == FormatDirective::none) return true;
    const FormatArgument* given = take(argument);
    if (!given || !formatAcceptsAsField(given->kind())) return false;
    const bool isHuge = given->kind() == FormatKind::unsignedInteger && given->integer < 0;
    const std::int64_t value = isHuge ? formatFieldLimit : given->integer;
    number = static_cast<int>(std::clamp<std::int64_t>(value, -formatFieldLimit, formatFieldLimit));
    return true;
  }

  FormatBuffer& out_;
  std::string_view format_;
  FormatArguments arguments_;
  std::size_t next_ = 0;
};

/// True if the content of the argument is at most `size` bytes; reads no more than is needed to decide that.
bool isWithin(const FormatArgument& argument, std::size_t size) noexcept {
  switch (argument.kind()) {
    case FormatKind::string:
      return static_cast<const NSString*>(argument.pointer)->view().size() <= size;
    case FormatKind::text:
      return argument.length <= size;
    case FormatKind::cText:
      return ::strnlen(static_cast<const char*>(argument.pointer), std::min(argument.length, size + 1)) <= size;
    default:
      return true;
  }
}

}  // namespace

std::size_t formText(char* memory, std::size_t size, std::string_view format, FormatArguments arguments) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (!isWithin(arguments.data()[i], size)) return size + 1;
  }
  FormatBuffer buffer;
  Renderer(buffer, format, arguments).render();
  const std::string_view text = buffer.view();
  if (text.size() > size || !isValidByWords(text) || (text.empty() && !format.empty())) return size + 1;
  text.copy(memory, text.size());
  return text.size();
}

}  // namespace detail

NSString stringWithFormatArguments(std::string_view format, FormatArguments arguments) {
  detail::FormatBuffer text;
  detail::Renderer(text, format, arguments).render();
  return text.string();
}

void appendFormatArguments(std::string& text, std::string_view format, FormatArguments arguments) {
  detail::FormatBuffer buffer;
  detail::Renderer(buffer, format, arguments).render();
  if (const std::string_view plain = buffer.view(); !plain.empty() && detail::isValidByWords(plain)) [[likely]] {
    text.append(plain);
  } else {
    text.append(buffer.string().utf8());
  }
}

}  // namespace norvik
