// NorvikCore/platform/object/SEL.h - the name of an operation, such as "ddSetLogLevel:", with the size and the cost of
// a pointer.
//
//   slip->performSelector("setGrossPay:", Value(12.50_dec));      // a text converts to a selector
//   SEL("setLogLevel:forClass:").argumentCount();                 // 2
//
// Construction from text looks the name up in a table of all selectors. Comparing, copying and hashing are those of a
// pointer; the order, for keys of a std::map, differs from one run to the next.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace norvik {

class NK_EXPORT SEL {
 public:
  /// No operation; its name is empty.
  constexpr SEL() noexcept = default;
  SEL(std::string_view name);  // NOLINT(google-explicit-constructor): a selector is written as its text
  SEL(const char* name) : SEL(std::string_view(name)) {}         // NOLINT(google-explicit-constructor)
  SEL(const std::string& name) : SEL(std::string_view(name)) {}  // NOLINT(google-explicit-constructor)
  SEL(const NSString& name) : SEL(name.view()) {}                // NOLINT(google-explicit-constructor)
  SEL(std::nullptr_t) = delete;

  [[nodiscard]] NSString name() const noexcept;
  /// How many arguments the operation takes: the number of colons.
  [[nodiscard]] std::size_t argumentCount() const noexcept;
  explicit operator bool() const noexcept { return name_ != nullptr; }
  friend bool operator==(SEL, SEL) noexcept = default;
  friend std::strong_ordering operator<=>(SEL a, SEL b) noexcept { return std::compare_three_way()(a.name_, b.name_); }
  /// Writes the name.
  NK_EXPORT friend std::ostream& operator<<(std::ostream& out, SEL selector);

 private:
  friend struct std::hash<SEL>;
  const NSString* name_ = nullptr;
};

}  // namespace norvik

template <>
struct std::hash<norvik::SEL> {
  std::size_t operator()(norvik::SEL selector) const noexcept { return std::hash<const void*>()(selector.name_); }
};
