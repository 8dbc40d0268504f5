#include "NorvikCore/platform/values/NSMutableString.h"

#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/internal/StringHalves.h"
#include "NorvikCore/platform/values/internal/StringIndex.h"

#include <utility>

namespace norvik {

void NSMutableString::appendString(const NSString& text) { detail::appendJoining(bytes_, text.view()); }

void NSMutableString::appendBytes(std::string_view text) {
  if (utf8::isValid(text)) {
    bytes_ += text;
  } else {
    appendString(NSString::fromBytes(text));
  }
}

void NSMutableString::replaceCharactersInRange(NSRange range, const NSString& text) {
  const NSUInteger units = length();
  if (range.location > units || range.length > units - range.location) {
    NSException::raise(NSRangeException, "replaceCharactersInRange: {" + std::to_string(range.location) + ", " +
                                             std::to_string(range.length) + "} is beyond the text of " +
                                             std::to_string(units) + " units");
  }
  const detail::StringPlace from = detail::walkUnits(bytes_, {}, range.location);
  const detail::StringPlace to = detail::walkUnits(bytes_, from, range.length);
  if (!from.secondHalf && !to.secondHalf && !text.empty() && text.isWellFormed()) [[likely]] {
    bytes_.replace(from.byte, to.byte - from.byte, text.view());  // no two halves can form a pair here
    return;
  }
  std::string head = bytes_.substr(0, from.byte), tail = bytes_.substr(to.byte);
  if (from.secondHalf) head += utf8::encode(utf8::highHalf(utf8::decode(bytes_.data() + from.byte).point)).view();
  if (to.secondHalf) {
    const char16_t low = utf8::lowHalf(utf8::decode(tail.data()).point);
    tail.replace(0, 4, utf8::encode(low).view());
  }
  detail::appendJoining(head, text.view());
  detail::appendJoining(head, tail);
  bytes_ = std::move(head);
}

}  // namespace norvik
