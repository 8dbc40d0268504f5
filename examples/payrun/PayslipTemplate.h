// examples/payrun/PayslipTemplate.h - the form of a payslip: lines of marked-up text with placeholders, which a user
// can edit.
//
//   const PayslipTemplate form(TextFile("my.template"));
//   const Document payslip = form.payslip(run, 0);
//
// docs/payslips.md describes the language. The markup is parsed once, before values are inserted, so a value is always
// plain text, whatever it contains. Several threads may create payslips of one template at the same time.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "Document.h"
#include "PayRun.h"
#include "TextFile.h"

namespace payrun {

struct Placeholder;

class PayslipTemplate {
 public:
  /// Throws InputError, with the place, for invalid markup and for an unknown tag or placeholder.
  explicit PayslipTemplate(const TextFile& file);

  /// The payslip of the employee at that index.
  [[nodiscard]] Document payslip(const PayRun& run, std::size_t index) const;

  // The parsed lines.

  /// A text of one style, or a value.
  struct Piece {
    norvik::NSString text;
    const Placeholder* value = nullptr;  // used instead of the text
    bool inPounds = false;
    norvik::Ref<norvik::NSDictionary> attributes;  // empty if there are none
  };
  /// The text of a paragraph or a cell.
  struct Text {
    std::vector<Piece> pieces;
    norvik::Ref<norvik::NSAttributedString> fixed;  // of a text without values
    Side side = Side::Left;
    bool isHeading = false;
  };
  struct Line {
    enum class Kind { Paragraph, Row, RuleAboveRow, Rule };
    Kind kind = Kind::Paragraph;
    std::vector<Text> texts;
  };
  /// Lines that appear once, or once for each item of some kinds.
  struct Section {
    enum class Items { None, All, Pay, Deductions };
    Items items = Items::None;
    std::vector<Line> lines;
  };

 private:
  std::optional<Text> title_;
  std::vector<Section> sections_;
};

/// The template that is installed with the program, or the built-in one if none is installed.
TextFile installedTemplate();

}  // namespace payrun
