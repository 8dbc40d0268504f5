#include "NorvikCore/markup/internal/TagAttributes.h"

#include "NorvikCore/markup/internal/MarkupScan.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik::detail {
namespace {

constexpr std::string_view quotes = "\"'";

}  // namespace

Ref<NSDictionary> tagAttributesIn(std::string_view raw) {
  const auto attributes = NSMutableDictionary::dictionary();
  ByteScanner scanner(raw);
  for (;;) {
    scanner.skip(blanksAndTabs);
    if (scanner.atEnd()) return attributes->copy();
    const std::string_view name = scanner.upTo(" =");
    const bool hasValue = scanner.skip(" =").find('=') != std::string_view::npos && !scanner.atEnd();
    Value value = Value::null();
    if (hasValue) {
      const std::size_t opening = scanner.skip(quotes).size();
      const std::string_view end = opening == 0 ? blanksAndTabs : quotes;
      const std::string_view text = opening > 1 ? std::string_view() : scanner.upTo(end);
      if (opening <= 1) scanner.skip(end);
      if (opening > 1 || !text.empty()) value = textOfBytes(text);
    }
    if (!name.empty()) attributes->setObject(std::move(value), textOfBytes(name));
  }
}

}  // namespace norvik::detail
