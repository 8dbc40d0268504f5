#include "PayslipTemplate.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "BuiltInTemplate.h"
#include "Characters.h"
#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/values/Utf8.h"
#include "PayslipValues.h"

namespace payrun {

using namespace norvik;

namespace {

using Piece = PayslipTemplate::Piece;
using Text = PayslipTemplate::Text;
using Line = PayslipTemplate::Line;
using Section = PayslipTemplate::Section;
using Items = Section::Items;

// Tags

/// An invalid tag; what() gives the reason.
class TagError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Attributes for the use of this program, which are not shown in the text.
constexpr NSString rightAttribute = "payrun.right", headingAttribute = "payrun.heading";

Ref<NSFont> fontIn(const NSDictionary& attributes) {
  auto* const font = attributes[NSFontAttributeName].object<NSFont>();
  return font != nullptr ? ref(*font) : documentFont();
}

Ref<NSDictionary> fontOf(const NSFont& before, double scale, bool isBold, bool isItalic) {
  const auto font = make<NSFont>(before.familyName(), before.pointSize() * scale, before.isBold() || isBold,
                                 before.isItalic() || isItalic);
  return NSDictionary::dictionaryWithObject(font, NSFontAttributeName);
}

/// The value of an attribute that must be the only one of its tag.
NSString onlyAttribute(const NSString& tag, const NSDictionary& written, const char* name) {
  const Value value = written[name];
  if (written.count() != 1 || !value.isString()) {
    throw TagError("the tag " + quoted(tag.view()) + " takes the attribute " + name + " and no other");
  }
  return *value.string();
}

Ref<NSColor> colorIn(const NSString& tag, const NSString& text) {
  const std::string_view digits = text.view();
  unsigned number = 0;
  const auto [end, error] = digits.size() == 7 && digits[0] == '#'
                                ? std::from_chars(digits.data() + 1, digits.data() + 7, number, 16)
                                : std::from_chars_result{nullptr, std::errc::invalid_argument};
  if (error != std::errc() || end != digits.data() + digits.size()) {
    throw TagError("the tag " + quoted(tag.view()) + " takes a colour such as #5B6470, not " + quoted(digits));
  }
  const auto component = [&](int shift) { return (number >> shift & 0xFFU) / 255.0; };
  return NSColor::colorWithRed(component(16), component(8), component(0), 1);
}

/// The attributes that a tag adds. `present` are the attributes of the tags around it.
Ref<NSDictionary> attributesOf(const NSString& tag, const NSDictionary& written, const NSDictionary& present) {
  const NSString name = lowercaseString(tag);
  const auto with = [](const NSString& attribute, const Value& value) {
    return NSDictionary::dictionaryWithObject(value, attribute);
  };
  if (name == "color") {
    return with(NSForegroundColorAttributeName, colorIn(tag, onlyAttribute(tag, written, "value")));
  }
  if (name == "background") {
    return with(NSBackgroundColorAttributeName, colorIn(tag, onlyAttribute(tag, written, "value")));
  }
  if (name == "a") return with(NSLinkAttributeName, onlyAttribute(tag, written, "href"));
  if (written.count() != 0) throw TagError("the tag " + quoted(tag.view()) + " takes no attributes");
  const Ref<NSFont> font = fontIn(present);
  constexpr double larger = 1.25, smaller = 0.8;
  if (name == "b") return fontOf(*font, 1, true, false);
  if (name == "i") return fontOf(*font, 1, false, true);
  if (name == "big") return fontOf(*font, larger, false, false);
  if (name == "small") return fontOf(*font, smaller, false, false);
  if (name == "u") return with(NSUnderlineStyleAttributeName, 1);
  if (name == "right") return with(rightAttribute, true);
  if (name == "heading") {
    const auto attributes = fontOf(*font, 1, true, false)->mutableCopy();
    attributes->setObject(true, headingAttribute);
    return attributes;
  }
  throw TagError("there is no tag " + quoted(tag.view()));
}

const MRKTaggedStringOptions& tagOptions() {
  static const Ref<MRKTaggedStringOptions>& options = *new Ref<MRKTaggedStringOptions>([] {
    const auto made = MRKTaggedStringOptions::options();
    made->setUnknownTagDynamicAttributes(attributesOf);
    return made;
  }());
  return *options;
}

// Texts

/// A placeholder for a value during parsing. It is a noncharacter of Unicode, so that no text needs it.
constexpr std::string_view markerBytes = "\xEF\xB7\x90", unknownBytes = "\xEF\xBF\xBD";

/// The length of the tag or the placeholder at the start of the text. 1 for any other character, and if the end of the
/// tag or placeholder is missing.
std::size_t unitLength(std::string_view text) {
  if (text.front() != '<' && text.front() != '{') return 1;
  const bool isBrace = text.starts_with("{}}");
  const std::size_t end = text.find(text.front() == '<' ? '>' : '}', isBrace ? 2 : 1);
  return end == std::string_view::npos ? 1 : end + 1;
}

/// The attributes of a text without those of this program; null if there are no others.
Ref<NSDictionary> shownOf(const NSDictionary& attributes) {
  const auto shown = attributes.mutableCopy();
  for (const NSString& name : {rightAttribute, headingAttribute}) shown->removeObjectForKey(name);
  return shown->count() == 0 ? nullptr : shown->copy();
}

/// The pieces one after the other. A value is replaced by the result of `valueOf`.
template <class ValueOf>
Ref<NSAttributedString> joined(const std::vector<Piece>& pieces, ValueOf&& valueOf) {
  std::string whole;
  std::vector<AttributeRun> runs;
  runs.reserve(pieces.size());
  for (const Piece& piece : pieces) {
    const std::size_t before = whole.size();
    if (piece.value != nullptr) {
      whole += valueOf(piece);
    } else {
      whole += piece.text.view();
    }
    runs.push_back({utf8::unitCount(std::string_view(whole).substr(before)), piece.attributes});
  }
  return make<NSAttributedString>(NSString(whole), std::move(runs));
}

/// Reads one paragraph or cell.
class TextReader {
 public:
  /// `part` is a part of the file's text.
  TextReader(const TextFile& file, std::string_view part, Items items) : file_(file), part_(part), items_(items) {}

  Text read() {
    const Ref<NSAttributedString> parsed = parse(markupWithMarkers());
    Text text;
    for (const auto& [range, attributes] : *parsed) {
      if (!(*attributes)[rightAttribute].isAbsent()) text.side = Side::Right;
      if (!(*attributes)[headingAttribute].isAbsent()) text.isHeading = true;
      appendPieces(text.pieces, parsed->string().substringWithRange(range), shownOf(*attributes));
    }
    const bool hasValue = std::ranges::any_of(text.pieces, [](const Piece& piece) { return piece.value != nullptr; });
    if (!hasValue) text.fixed = joined(text.pieces, [](const Piece&) { return std::string(); });
    return text;
  }

 private:
  [[noreturn]] void refuse(std::string_view where, const std::string& problem) const {
    file_.refuse(static_cast<std::size_t>(where.data() - file_.text().data()), problem);
  }

  /// The part, with a marker instead of each placeholder.
  std::string markupWithMarkers() {
    std::string source;
    for (std::string_view rest = part_; !rest.empty();) {
      const std::size_t length = unitLength(rest);
      const std::string_view unit = rest.substr(0, length);
      if (unit.front() == '<') {
        if (length == 1) refuse(rest, "a < has no > after it; {<} is the character");
        if (unit.find('{') != std::string_view::npos) refuse(rest, quoted(unit) + " has a { within a tag");
        source += unit;
      } else if (unit.front() == '{') {
        if (length == 1) refuse(rest, "a { has no } after it; {{} is the character");
        readPlaceholder(unit);
        source += markerBytes;
      } else {
        source += unit.front() == '\t' ? ' ' : unit.front();
        if (source.ends_with(markerBytes)) source.replace(source.size() - markerBytes.size(), 3, unknownBytes);
      }
      rest.remove_prefix(length);
    }
    return source;
  }

  void readPlaceholder(std::string_view whole) {
    constexpr std::string_view pounds = "£", characters = "{}<>|";
    std::string_view name = whole.substr(1, whole.size() - 2);
    Piece value;
    if (name.size() == 1 && characters.find(name) != std::string_view::npos) {
      value.text = NSString(name);
    } else {
      value.inPounds = name.starts_with(pounds);
      if (value.inPounds) name.remove_prefix(pounds.size());
      value.value = placeholderNamed(name);
      if (value.value == nullptr || (value.inPounds && value.value->amount == nullptr)) {
        refuse(whole, "there is no placeholder " + quoted(whole));
      }
      if (value.value->isOfItem && items_ == Items::None) {
        refuse(whole, quoted(whole) + " can be used only between <items>, <pay> or <deductions> and its end");
      }
    }
    values_.push_back(std::move(value));
  }

  /// A space is added for parsing, because the parser looks up tags only if the text is not empty.
  Ref<NSAttributedString> parse(const std::string& source) const {
    try {
      Ref<NSError> error;
      const auto parsed =
          MRKTaggedString::stringWithString(NSString(source + " "))->attributedStringWithOptions(tagOptions(), &error);
      if (parsed) return parsed->attributedSubstringFromRange({0, parsed->length() - 1});
      refuse(part_, quoted(part_) + ": " + (*error->userInfo())["developerError"].as<NSString>().str());
    } catch (const TagError& error) {
      refuse(part_, quoted(part_) + ": " + error.what());
    }
  }

  /// Splits a text of one style into values and the texts between them.
  void appendPieces(std::vector<Piece>& pieces, const NSString& text, const Ref<NSDictionary>& attributes) {
    std::string_view rest = text.view();
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find(markerBytes), rest.size());
      Piece piece;
      if (end == 0) {
        piece = std::move(values_[used_++]);
      } else {
        piece.text = NSString(rest.substr(0, end));
      }
      piece.attributes = attributes;
      pieces.push_back(std::move(piece));
      rest.remove_prefix(end == 0 ? markerBytes.size() : end);
    }
  }

  const TextFile& file_;
  std::string_view part_;
  Items items_;
  std::vector<Piece> values_;  // in the order of their markers
  std::size_t used_ = 0;
};

// Lines

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return text.substr(0, 0);
  return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

bool isRule(std::string_view text) { return text.size() >= 3 && text.find_first_not_of('-') == std::string_view::npos; }

/// The texts between the bars of a row.
std::vector<std::string_view> cellsOf(std::string_view row) {
  std::vector<std::string_view> cells;
  row.remove_prefix(1);
  std::size_t end = 0;
  while (end < row.size()) {
    if (row[end] != '|') {
      end += unitLength(row.substr(end));
      continue;
    }
    cells.push_back(trimmed(row.substr(0, end)));
    row.remove_prefix(end + 1);
    end = 0;
  }
  if (!trimmed(row).empty() || cells.empty()) cells.push_back(trimmed(row));
  return cells;
}

constexpr std::pair<std::string_view, Items> sectionTags[] = {
    {"items", Items::All}, {"pay", Items::Pay}, {"deductions", Items::Deductions}};

std::string lowered(std::string_view ascii) {
  std::string result(ascii);
  for (char& c : result) c = 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return result;
}

/// Reads the lines of a template.
class LineReader {
 public:
  explicit LineReader(const TextFile& file) : file_(file) {}

  std::vector<Section> sections;
  std::optional<Text> title;

  void read() {
    sections.emplace_back();
    std::string_view rest = file_.text();
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find('\n'), rest.size());
      readLine(trimmed(rest.substr(0, end)));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (open_ != nullptr) refuse(opening_, quoted(opening_) + " is never closed");
    if (sections.size() == 1 && sections[0].lines.empty()) file_.refuse(0, "the template has no line");
  }

 private:
  [[noreturn]] void refuse(std::string_view where, const std::string& problem) const {
    file_.refuse(static_cast<std::size_t>(where.data() - file_.text().data()), problem);
  }

  void readLine(std::string_view line) {
    if (line.starts_with(';')) return;
    for (std::size_t i = 0; i < line.size(); ++i) {
      if (line[i] != '\t' && controlCharacter(line.substr(i)) != 0) {
        refuse(line.substr(i), quoted(line) + " has a control character");
      }
    }
    if (readSectionTag(line) || readTitle(line)) return;
    std::vector<Line>& lines = sections.back().lines;
    if (isRule(line)) {
      lines.push_back({Line::Kind::Rule, {}});
    } else if (line.starts_with('|')) {
      lines.push_back(rowOf(line));
    } else {
      lines.push_back({Line::Kind::Paragraph, {textOf(line)}});
      if (lines.back().texts[0].isHeading) refuse(line, "<heading> can be used only in a row");
    }
  }

  Line rowOf(std::string_view line) const {
    const std::vector<std::string_view> cells = cellsOf(line);
    if (std::ranges::all_of(cells, isRule)) return {Line::Kind::RuleAboveRow, {}};
    Line row{Line::Kind::Row, {}};
    for (const std::string_view cell : cells) row.texts.push_back(textOf(cell));
    return row;
  }

  Text textOf(std::string_view part) const { return TextReader(file_, part, sections.back().items).read(); }

  /// Reads <items>, <pay>, <deductions> or one of their end tags, which must be alone on the line.
  bool readSectionTag(std::string_view line) {
    const std::string tag = lowered(line);
    for (const auto& section : sectionTags) {
      const std::string name(section.first);
      if (tag == "<" + name + ">") {
        if (open_ != nullptr) refuse(line, quoted(line) + " is inside " + quoted(opening_));
        open_ = &section;
        opening_ = line;
        sections.push_back({section.second, {}});
        return true;
      }
      if (tag == "</" + name + ">") {
        if (open_ != &section) refuse(line, quoted(line) + " closes nothing");
        open_ = nullptr;
        sections.emplace_back();
        return true;
      }
    }
    return false;
  }

  bool readTitle(std::string_view line) {
    constexpr std::string_view begin = "<title>", end = "</title>";
    const std::string tag = lowered(line);
    if (!tag.starts_with(begin) || !tag.ends_with(end)) return false;
    if (title) refuse(line, "the title is given twice");
    if (open_ != nullptr) refuse(line, "the title is inside " + quoted(opening_));
    title = textOf(line.substr(begin.size(), line.size() - begin.size() - end.size()));
    return true;
  }

  const TextFile& file_;
  const std::pair<std::string_view, Items>* open_ = nullptr;
  std::string_view opening_;
};

// Payslips

/// Inserts values and collects the resulting lines.
class DocumentWriter {
 public:
  void append(const Line& line, const PayslipSource& source) {
    std::vector<Cell> cells;
    bool hasValues = false, isHeading = false;
    isAnyValueThere_ = false;
    for (const Text& text : line.texts) {
      cells.push_back({filled(text, source), text.side});
      hasValues |= !text.fixed;
      isHeading |= text.isHeading;
    }
    if (hasValues && !isAnyValueThere_) return;
    switch (line.kind) {
      case Line::Kind::Rule:
        blocks_.emplace_back(Rule());
        break;
      case Line::Kind::RuleAboveRow:
        isRuleAboveNext_ = true;
        return;
      case Line::Kind::Paragraph:
        blocks_.emplace_back(Paragraph{std::move(cells[0].text), cells[0].side});
        break;
      case Line::Kind::Row: {
        const bool isFirst = blocks_.empty() || !std::holds_alternative<DocumentTable>(blocks_.back());
        if (isFirst) blocks_.emplace_back(DocumentTable());
        std::get<DocumentTable>(blocks_.back()).rows.push_back({std::move(cells), isHeading, isRuleAboveNext_});
        break;
      }
    }
    isRuleAboveNext_ = false;
  }

  Ref<NSAttributedString> filled(const Text& text, const PayslipSource& source) {
    if (text.fixed) return text.fixed;
    return joined(text.pieces, [&](const Piece& piece) {
      std::string value = piece.value->valueFor(source, piece.inPounds);
      isAnyValueThere_ |= !value.empty();
      return value;
    });
  }

  /// Returns the blocks without the empty lines at the start and at the end.
  std::vector<Block> take() {
    while (!blocks_.empty() && isEmptyLine(blocks_.back())) blocks_.pop_back();
    blocks_.erase(blocks_.begin(), std::ranges::find_if_not(blocks_, isEmptyLine));
    return std::move(blocks_);
  }

 private:
  static bool isEmptyLine(const Block& block) {
    const auto* paragraph = std::get_if<Paragraph>(&block);
    return paragraph != nullptr && paragraph->text->length() == 0;
  }

  std::vector<Block> blocks_;
  bool isRuleAboveNext_ = false;
  bool isAnyValueThere_ = false;
};

bool isOf(Items items, ItemKind kind) {
  return items == Items::All || (items == Items::Deductions) == (kind == ItemKind::Deduction);
}

}  // namespace

PayslipTemplate::PayslipTemplate(const TextFile& file) {
  LineReader lines(file);
  lines.read();
  title_ = std::move(lines.title);
  sections_ = std::move(lines.sections);
}

Document PayslipTemplate::payslip(const PayRun& run, std::size_t index) const {
  PayslipSource source{run, index};
  DocumentWriter writer;
  Document document;
  document.title = title_ ? writer.filled(*title_, source)->string() : NSString("Payslip");
  document.title = document.title.stringByReplacingOccurrencesOfString("\n", " ");
  const std::vector<PayslipItem> items = run.itemsOf(index);
  for (const Section& section : sections_) {
    if (section.items == Section::Items::None) {
      for (const Line& line : section.lines) writer.append(line, source);
      continue;
    }
    for (const PayslipItem& item : items) {
      if (!isOf(section.items, item.kind)) continue;
      source.item = &item;
      for (const Line& line : section.lines) writer.append(line, source);
    }
    source.item = nullptr;
  }
  document.blocks = writer.take();
  return document;
}

TextFile installedTemplate() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::filesystem::path installed = program.parent_path() / PAYRUN_TEMPLATE;
  if (!error && std::filesystem::exists(installed, error)) return TextFile(installed.lexically_normal());
  return TextFile("payslip.template", builtInTemplate);
}

}  // namespace payrun
