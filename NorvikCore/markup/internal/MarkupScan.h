// NorvikCore/markup/internal/MarkupScan.h - marked-up text taken apart in one pass: the text without tags, the tags,
// and which of them is the innermost where.
//
//   const MarkupScan scan = scanMarkup("Pay <b>now</b>", true);
//   scan.text;               // "Pay now"
//   scan.tags[0].name;       // "b", from unit 4 to unit 7
//
// Works on the bytes of NSString::view(): what matters to markup is ASCII, which is never part of another character.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::detail {

inline constexpr std::string_view blanksAndTabs = " \t";

/// Goes over bytes; what it passes is a part of them.
class ByteScanner {
 public:
  explicit ByteScanner(std::string_view bytes) noexcept : bytes_(bytes) {}

  [[nodiscard]] bool atEnd() const noexcept { return at_ == bytes_.size(); }
  [[nodiscard]] std::string_view rest() const noexcept { return bytes_.substr(at_); }
  std::string_view upTo(std::string_view set) noexcept { return passed(bytes_.find_first_of(set, at_)); }
  std::string_view upTo(char byte) noexcept { return passed(bytes_.find(byte, at_)); }
  std::string_view skip(std::string_view set) noexcept { return passed(bytes_.find_first_not_of(set, at_)); }
  std::string_view skip(char byte) noexcept { return passed(bytes_.find_first_not_of(byte, at_)); }

 private:
  std::string_view passed(std::size_t to) noexcept {
    if (to == std::string_view::npos) to = bytes_.size();
    const std::string_view part = bytes_.substr(at_, to - at_);
    at_ = to;
    return part;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
};

/// A text of bytes of NSString::view(), lone halves included.
[[nodiscard]] NSString textOfBytes(std::string_view bytes);

[[nodiscard]] inline bool isEndingName(std::string_view name) noexcept { return name.starts_with('/'); }
/// `ending`, which begins with "/", ends the tag of that name, whatever their case.
[[nodiscard]] bool isEndedBy(std::string_view name, std::string_view ending);

struct MarkupScan {
  using Index = std::uint32_t;
  static constexpr Index none = UINT32_MAX;

  struct Tag {
    std::string_view name;           ///< in the source; without data where there is none
    std::string_view rawAttributes;  ///< what is behind the name
    NSUInteger location = 0, end = 0;
    Index around = none;  ///< the tag that this one is in
    Index stretch = 0;    ///< the stretch that begins where the tag does, if there is any behind it
  };
  /// Text without a tag in it, and never empty.
  struct Stretch {
    NSUInteger length;
    Index tag;  ///< the innermost around it
  };

  NSString text;
  std::vector<Tag> tags;        ///< as they were opened
  std::vector<Index> finished;  ///< as they were closed
  std::vector<Stretch> stretches;
  NSUInteger length = 0;
  std::optional<NSString> fault;  ///< why it is no markup; nothing else counts then
};

/// One pass. `source` must live as long as the result. Without `tags` only the text and the fault are of use.
[[nodiscard]] MarkupScan scanMarkup(const NSString& source, bool tags);

}  // namespace norvik::detail
