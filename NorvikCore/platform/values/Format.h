// NorvikCore/platform/values/Format.h - the platform's format language, checked against its arguments.
//
//   stringWithFormat("%d of %@ at %.2f", 3, name, 1.5);         // a literal is checked by the compiler
//   stringWithFormat("%8.2f", 1234.565_dec);                    // " 1234.57": a Decimal is rounded as a decimal
//   stringWithFormat(runtimeFormat(pattern), 3, name);          // a format known only at run time is marked
//   stringWithFormat("%2$@ %1$@", "world", "hello");            // positions count from 1
//
// FormatDirective.h lists the directives and the arguments that each accepts. An argument keeps its type, so lengths
// ("%ld", "%hhu") are accepted and have no effect; %d, %i and %u all show the number of the argument, and %x and %o
// show a negative number as the two's complement of its own width. %f shows a Decimal exactly, rounded to the precision
// (6 without one), a half away from zero; %@ shows all of its digits. An absent value shows as "(null)". Field widths
// count UTF-16 units, the precision of %s counts bytes; neither cuts a character in two.
//
// In a run-time format a directive without a suitable argument shows as "(bad argument)", a percent sign that does not
// begin a directive shows as "(bad format)", and surplus arguments are ignored. No format can read anything except its
// arguments.
//
// Formatting is safe on any thread and independent of the C locale.
#pragma once  // include time: <string> and <optional>: arguments of either are text

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/FormatDirective.h"
#include "NorvikCore/platform/values/NSInteger.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace norvik {

class Date;
class Decimal;
class NSNumber;

namespace detail {

/// One argument with its type reduced to a kind. It refers to the argument, so it is valid only during the call.
struct FormatArgument {
  using Describe = NSString (*)(const void*);

  [[nodiscard]] constexpr FormatKind kind() const noexcept { return static_cast<FormatKind>(kindAndBytes & 0xFF); }
  /// For an integer, the size of its type; for a described value whose copy always has the same description, its size;
  /// else 0.
  [[nodiscard]] constexpr unsigned bytes() const noexcept { return unsigned{kindAndBytes} >> 8; }
  constexpr void setKind(FormatKind kind, std::size_t bytes = 0) noexcept {
    kindAndBytes = static_cast<std::uint16_t>(static_cast<std::size_t>(kind) | bytes << 8);
  }

  std::uint16_t kindAndBytes = 0;  // one number, so that a call site stores both in one step
  union {
    std::int64_t integer = 0;  // an unsigned number is stored as its bits
    double floating;
    const void* pointer;  // the text, the string, the value or the object
  };
  union {
    std::size_t length = 0;  // of a text; for a cText the most bytes that may be read
    Describe describe;
  };
};

// clang-format off
template <class T> inline constexpr bool isOptional = false;
template <class T> inline constexpr bool isOptional<std::optional<T>> = true;
template <class T> concept HasDescription = requires(const T& value) { NSString(value.description()); };
template <class T> concept HasStringValue = requires(const T& value) { NSString(value.stringValue()); };
template <class T> concept HasName = requires(const T& value) { NSString(value.name()); };
template <class T> concept Describable = HasDescription<T> || HasStringValue<T> || HasName<T>;
template <class T> concept RefersToDescribable = requires(const T& reference) {
  { reference ? 1 : 0 };
  { reference.get() };
  requires Describable<std::remove_cvref_t<decltype(*reference)>>;
};
template <class T> inline constexpr bool isPlainValue =
    std::is_same_v<T, Date> || std::is_same_v<T, Decimal> || std::is_same_v<T, NSNumber>;
template <class T> concept HasObject = requires(const T& holder) { requires RefersToDescribable<decltype(holder.object())>; };
// clang-format on

/// The text that %@ shows: the description of an object or a value, the digits of a number, the name of a class or
/// selector.
template <class T>
NSString describeFormatted(const void* content) {
  const T& value = *static_cast<const T*>(content);
  if constexpr (HasDescription<T>) {
    return NSString(value.description());
  } else if constexpr (HasStringValue<T>) {
    return NSString(value.stringValue());
  } else {
    return NSString(value.name());
  }
}

/// The kind of arguments of type T, unless the argument is absent.
template <class T>
consteval FormatKind formatKind() {
  if constexpr (isOptional<T>) {
    return formatKind<typename T::value_type>();
  } else if constexpr (std::is_same_v<T, std::nullptr_t> || std::is_same_v<T, std::nullopt_t>) {
    return FormatKind::absent;
  } else if constexpr (std::is_same_v<T, bool>) {
    return FormatKind::boolean;
  } else if constexpr (isCharacter<T>) {
    return FormatKind::character;
  } else if constexpr (std::is_enum_v<T>) {
    return formatKind<std::underlying_type_t<T>>();
  } else if constexpr (std::is_integral_v<T>) {
    static_assert(sizeof(T) <= 8, "the widest integer a format shows has 64 bits");
    return std::is_signed_v<T> ? FormatKind::signedInteger : FormatKind::unsignedInteger;
  } else if constexpr (std::is_same_v<T, long double>) {
    return FormatKind::longFloating;
  } else if constexpr (std::is_floating_point_v<T>) {
    return FormatKind::floating;
  } else if constexpr (std::is_base_of_v<NSString, T>) {
    return FormatKind::string;
  } else if constexpr (std::is_same_v<T, std::string> || std::is_same_v<T, std::string_view>) {
    return FormatKind::text;
  } else if constexpr (std::is_array_v<T>) {
    static_assert(std::is_same_v<std::remove_cv_t<std::remove_extent_t<T>>, char>,
                  "of arrays only text can be formatted");
    return FormatKind::cText;
  } else if constexpr (std::is_pointer_v<T>) {
    using Pointee = std::remove_cv_t<std::remove_pointer_t<T>>;
    if constexpr (std::is_same_v<Pointee, char>) {
      return FormatKind::cText;
    } else if constexpr (std::is_void_v<Pointee> || std::is_function_v<Pointee>) {
      return FormatKind::pointer;
    } else if constexpr (Describable<Pointee>) {
      return FormatKind::object;
    } else {
      return FormatKind::pointer;
    }
  } else if constexpr (std::is_same_v<T, Decimal>) {
    return FormatKind::decimal;
  } else if constexpr (std::is_same_v<T, NSNumber>) {
    return FormatKind::number;
  } else if constexpr (Describable<T>) {
    return FormatKind::described;
  } else {
    constexpr bool isObject = RefersToDescribable<T> || HasObject<T>;
    static_assert(isObject, "this type cannot be formatted: it has no description()");
    return isObject ? FormatKind::object : FormatKind::absent;
  }
}

template <class T>
FormatArgument formatArgument(const T& value) {
  FormatArgument argument;
  constexpr FormatKind kind = formatKind<T>();
  if constexpr (isOptional<T>) {
    return value ? formatArgument(*value) : argument;
  } else if constexpr (std::is_enum_v<T>) {
    return formatArgument(static_cast<std::underlying_type_t<T>>(value));
  } else if constexpr (kind == FormatKind::object && !std::is_pointer_v<T> && !RefersToDescribable<T>) {
    return formatArgument(value.object());
  } else if constexpr (kind != FormatKind::absent) {
    argument.setKind(kind);
    if constexpr (std::is_integral_v<T>) {
      argument.setKind(kind, sizeof(T));
      argument.integer = static_cast<std::int64_t>(value);
    } else if constexpr (kind == FormatKind::floating) {
      argument.floating = static_cast<double>(value);
    } else if constexpr (kind == FormatKind::longFloating || kind == FormatKind::string) {
      argument.pointer = &value;
    } else if constexpr (kind == FormatKind::text) {
      argument.pointer = value.data();
      argument.length = value.size();
    } else if constexpr (std::is_unbounded_array_v<T>) {
      argument.pointer = value;
      argument.length = static_cast<std::size_t>(-1);
    } else if constexpr (std::is_array_v<T>) {
      argument.pointer = value;
      argument.length = std::extent_v<T>;
      // If the compiler knows the text, for example a literal, its end need not be searched for.
      const char last = value[std::extent_v<T> - 1];
      if (__builtin_constant_p(last) && last == '\0') {
        if (const std::size_t length = __builtin_strlen(value); __builtin_constant_p(length)) {
          argument.setKind(FormatKind::text);
          argument.length = length;
        }
      }
    } else if constexpr (kind >= FormatKind::described && kind <= FormatKind::number) {
      argument.pointer = &value;
      argument.describe = &describeFormatted<T>;
      if constexpr (isPlainValue<T>) {
        static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= 32 && alignof(T) <= 16);
        argument.setKind(kind, sizeof(T));
      }
    } else {
      if constexpr (std::is_pointer_v<T>) {
        if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {
          argument.pointer = reinterpret_cast<const void*>(value);
        } else {
          argument.pointer = const_cast<const void*>(static_cast<const volatile void*>(value));
        }
      } else {
        argument.pointer = value.get();
      }
      if constexpr (kind == FormatKind::cText) {
        argument.length = static_cast<std::size_t>(-1);
      } else if constexpr (kind == FormatKind::object) {
        using Object = std::remove_cvref_t<decltype(*value)>;
        argument.describe = &describeFormatted<Object>;
      }
      if (!argument.pointer && kind != FormatKind::pointer) argument.setKind(FormatKind::absent);
    }
  }
  return argument;
}

/// True if a copy of the argument shows the same text at any later time. Objects change, and the description of a
/// user's value may read anything.
template <class T>
consteval bool argumentCanWait() {
  if constexpr (isOptional<T>) {
    return argumentCanWait<typename T::value_type>();
  } else {
    constexpr FormatKind kind = formatKind<T>();
    return kind <= FormatKind::string && kind != FormatKind::longFloating ? true : isPlainValue<T>;
  }
}

template <class... Args>
constexpr FormatFault checkFormatFor(std::string_view format) noexcept {
  constexpr FormatKind kinds[] = {formatKind<std::remove_cvref_t<Args>>()..., FormatKind::absent};
  return checkFormat(format, kinds, sizeof...(Args));
}

// Named in the compiler's error if a literal is rejected: none of them is constexpr, so calling one is the error.
void formatHasAnUnknownDirective();
void formatNeedsAnotherArgument();
void formatArgumentDoesNotFitItsDirective();
void formatLeavesAnArgumentUnused();
void formatMixesPositionsWithPlainDirectives();
void formatFieldIsTooWide();

}  // namespace detail

/// The arguments of a format as a list, for code that passes them on.
class FormatArguments {
 public:
  constexpr FormatArguments() noexcept = default;
  constexpr FormatArguments(const detail::FormatArgument* arguments, std::size_t count) noexcept
      : arguments_(arguments), count_(count) {}

  [[nodiscard]] constexpr const detail::FormatArgument* data() const noexcept { return arguments_; }
  [[nodiscard]] constexpr std::size_t size() const noexcept { return count_; }

 private:
  const detail::FormatArgument* arguments_ = nullptr;
  std::size_t count_ = 0;
};

/// Holds the list that FormatArguments refers to: `FormatArgumentList list(3, name); f(list);`. The arguments must
/// outlive it.
template <std::size_t N>
class FormatArgumentList {
 public:
  template <class... Args>
  requires(sizeof...(Args) == N) explicit FormatArgumentList(const Args&... arguments)
      : list_{detail::formatArgument(arguments)...} {}
  operator FormatArguments() const noexcept {  // NOLINT(google-explicit-constructor): the same list
    return {list_, N};
  }

 private:
  detail::FormatArgument list_[N == 0 ? 1 : N];
};
template <class... Args>
FormatArgumentList(const Args&...) -> FormatArgumentList<sizeof...(Args)>;

/// A type that can be an argument of a format, as opposed to a list of arguments.
template <class T>
concept FormatArgumentType = !std::is_convertible_v<const T&, FormatArguments>;

template <class... Args>
class FormatString;

/// A format that is known only at run time; made by runtimeFormat(). May be absent.
struct RuntimeFormat {
  std::optional<NSString> text;
};
[[nodiscard]] inline RuntimeFormat runtimeFormat(std::optional<NSString> text) { return {std::move(text)}; }

namespace detail {
template <class T>
inline constexpr bool isFormat = std::is_same_v<T, RuntimeFormat> || std::is_same_v<T, std::nullptr_t>;
template <std::size_t N>
inline constexpr bool isFormat<char[N]> = true;
template <class... Args>
inline constexpr bool isFormat<FormatString<Args...>> = true;

template <class T>
concept NoFormat = !isFormat<T>;
}  // namespace detail

/// A format for arguments of the types Args: a literal, which the compiler checks, a run-time format, or an absent
/// format.
template <class... Args>
class FormatString {
 public:
  template <std::size_t N>
  consteval FormatString(
      const char (&literal)[N])  // NOLINT(google-explicit-constructor): formats are written as literals
      : text_(literal, N - 1),
        present_(true),
        canWait_(detail::formatCanWait(text_) && (detail::argumentCanWait<Args>() && ...)) {
    using detail::FormatFault;
    switch (detail::checkFormatFor<Args...>(text_)) {
      case FormatFault::none:
        break;
      case FormatFault::unknownDirective:
        detail::formatHasAnUnknownDirective();
        break;
      case FormatFault::missingArgument:
        detail::formatNeedsAnotherArgument();
        break;
      case FormatFault::wrongArgument:
        detail::formatArgumentDoesNotFitItsDirective();
        break;
      case FormatFault::surplusArgument:
        detail::formatLeavesAnArgumentUnused();
        break;
      case FormatFault::mixedPositions:
        detail::formatMixesPositionsWithPlainDirectives();
        break;
      case FormatFault::fieldTooWide:
        detail::formatFieldIsTooWide();
        break;
    }
  }
  /// Refers to the run-time format, which must outlive the call.
  FormatString(const RuntimeFormat& format) noexcept  // NOLINT(google-explicit-constructor): see above
      : text_(format.text ? format.text->view() : std::string_view()), present_(format.text.has_value()) {}
  template <detail::NoFormat Text>
  FormatString(const Text&) {  // NOLINT(google-explicit-constructor): its error names the correct spelling
    static_assert(!detail::NoFormat<Text>,
                  "a format is a literal: write \"%@\", text to show a text, or runtimeFormat(text) for a pattern");
  }
  constexpr FormatString(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): the absent format

  [[nodiscard]] constexpr bool isAbsent() const noexcept { return !present_; }
  [[nodiscard]] constexpr std::string_view view() const noexcept { return text_; }
  /// True for a literal whose text may be formed later, from copies of the arguments (internal/FormatCopy.h).
  [[nodiscard]] constexpr bool canWait() const noexcept { return canWait_; }

 private:
  std::string_view text_;
  bool present_ = false, canWait_ = false;
};

/// A FormatString as a function's parameter; the types of its arguments are deduced from the other parameters.
template <class... Args>
using FormatStringFor = FormatString<std::type_identity_t<Args>...>;

/// The text of a format and its arguments, for callers that have the arguments as a list.
[[nodiscard]] NK_EXPORT NSString stringWithFormatArguments(std::string_view format, FormatArguments arguments);
/// Appends the text, as UTF-8, to `text`.
NK_EXPORT void appendFormatArguments(std::string& text, std::string_view format, FormatArguments arguments);

/// The formatted text; an absent format gives an empty text.
template <class... Args>
[[nodiscard]] NSString stringWithFormat(FormatStringFor<Args...> format, const Args&... arguments) {
  return stringWithFormatArguments(format.view(), FormatArgumentList(arguments...));
}

}  // namespace norvik
