// fuzz/KeyValueGenerator.h - makes key paths and values from the bytes of a fuzzer's input.
#pragma once

#include "fuzz/KeyValueGraph.h"

#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::fuzz {

/// Removes numbers from the front of the input; returns zeros when the input is used up.
struct Input {
  std::span<const std::uint8_t> bytes;

  [[nodiscard]] bool isEmpty() const { return bytes.empty(); }
  unsigned below(unsigned count) {
    if (bytes.empty()) return 0;
    const unsigned value = bytes.front();
    bytes = bytes.subspan(1);
    return value % count;
  }
};

inline const NSString& text(unsigned which) {
  static const auto& all = *new std::vector<NSString>{"",
                                                      "name",
                                                      "12.5",
                                                      "7 days",
                                                      "/tmp/pay.csv",
                                                      "\u00A3",
                                                      NSString::fromCodePoint(0xD83D),
                                                      NSString::fromCodePoint(0xDCB7),
                                                      NSString::fromBytes("\xFF"),
                                                      "\U0001F4B7",
                                                      "@sum",
                                                      "a.b",
                                                      "self",
                                                      NSString(std::string_view("\0n", 2))};
  return all[which % all.size()];
}
inline constexpr unsigned textCount = 14;

inline constexpr const char* words[] = {"next",
                                        "name",
                                        "pay",
                                        "bonus",
                                        "count",
                                        "rate",
                                        "flag",
                                        "day",
                                        "boss",
                                        "list",
                                        "group",
                                        "map",
                                        "any",
                                        "total",
                                        "title",
                                        "lead",
                                        "grade",
                                        "number",
                                        "special",
                                        "self",
                                        "description",
                                        "length",
                                        "@count",
                                        "@sum",
                                        "@avg",
                                        "@max",
                                        "@min",
                                        "@unionOfObjects",
                                        "@median",
                                        "@",
                                        "doubleValue",
                                        "boolValue",
                                        "intValue",
                                        "decimalValue",
                                        "@distinctUnionOfObjects",
                                        "Grade",
                                        "integerValue",
                                        "stringValue",
                                        "longLongValue",
                                        "@unionOfArrays",
                                        "@distinctUnionOfArrays",
                                        "lastPathComponent",
                                        "pathExtension",
                                        "timeIntervalSince1970",
                                        "timeIntervalSinceReferenceDate"};
inline constexpr unsigned wordCount = std::size(words);

/// Words with full stops between them, pieces of text and full stops at any place, and sometimes a path of the greatest
/// length or a longer one.
inline NSString takePath(Input& input) {
  const unsigned pieces = input.below(9);
  std::u16string path;
  const auto add = [&](const NSString& piece) { path += piece.toUtf16(); };
  bool isKeyOpen = false;
  for (unsigned i = 0; i < pieces; ++i) {
    const unsigned kind = input.below(16);
    if (kind == 15) {
      path += u'.';
      isKeyOpen = false;
    } else if (kind == 14) {
      add(text(input.below(textCount)));
      isKeyOpen = true;
    } else if (kind == 13 && i == 0) {
      const unsigned times = input.below(256);
      for (unsigned n = 0; n < (times < 240 ? times % 4 : (times - 238) * 67); ++n) path += u"self.";
    } else {
      if (isKeyOpen) path += u'.';
      if (kind >= 11) {
        add(text(input.below(textCount)));
      } else {
        add(words[input.below(wordCount)]);
      }
      isKeyOpen = true;
    }
  }
  return NSString::fromUtf16(path);
}

/// Any value. The same bytes give the same value in another world.
inline Value takeValue(Input& input, const World& world, int depth = 0) {
  const unsigned kind = input.below(depth > 1 ? 12 : 16);
  switch (kind) {
    case 0:
      return depth == 0 ? Value() : Value::null();
    case 1:
      return Value::null();
    case 2:
      return input.below(2) == 1;
    case 3:
      return static_cast<int>(input.below(256)) - 100;
    case 4:
      return static_cast<double>(input.below(256)) / 4 - 10;
    case 5:
      return Decimal(static_cast<int>(input.below(256)) - 50) / Decimal(8);
    case 6:
      return Date::fromReferenceSeconds(input.below(256) * 86400.0);
    case 7:
      return 5'000'000'000;
    case 8:
      return text(input.below(textCount));
    case 9:
    case 10:
      return world.nodes[input.below(4)];
    case 11:
      return world.leaf;
    case 12: {
      if (depth == 0 && input.below(2) == 1) return world.maps[input.below(2)];
      std::vector<NSDictionary::Entry> entries;
      for (unsigned i = input.below(4); i > 0; --i) {
        const NSString& key = text(input.below(textCount));
        entries.push_back({key, takeValue(input, world, depth + 1)});
      }
      return make<NSDictionary>(std::move(entries));
    }
    default: {
      std::vector<Value> elements;
      for (unsigned i = input.below(4); i > 0; --i) elements.push_back(takeValue(input, world, depth + 1));
      return kind == 15 ? Value(make<NSSet>(std::move(elements))) : Value(make<NSArray>(std::move(elements)));
    }
  }
}

}  // namespace norvik::fuzz
