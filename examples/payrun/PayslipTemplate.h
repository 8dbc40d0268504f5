// examples/payrun/PayslipTemplate.h - how a payslip looks: lines of marked-up text with placeholders, which a user
// edits.
//
//   const PayslipTemplate form(TextFile("my.template"));
//   const Document payslip = form.payslip(run, 0);
//
// docs/payslips.md has the language. The markup is read once, before there are values: a value is text whatever it
// holds. Any number of threads may make payslips of one template at once.
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
  /// Throws InputError for markup that is wrong, and for a tag or a placeholder that is none, with its place.
  explicit PayslipTemplate(const TextFile& file);

  /// Of the employee at that index.
  [[nodiscard]] Document payslip(const PayRun& run, std::size_t index) const;

  // What the lines were read as.

  /// Text of one style, or a value.
  struct Piece {
    norvik::NSString text;
    const Placeholder* value = nullptr;  // in place of the text
    bool inPounds = false;
    norvik::Ref<norvik::NSDictionary> attributes;  // empty for none
  };
  /// The text of a paragraph or a cell.
  struct Text {
    std::vector<Piece> pieces;
    norvik::Ref<norvik::NSAttributedString> fixed;  // of one without values
    Side side = Side::Left;
    bool isHeading = false;
  };
  struct Line {
    enum class Kind { Paragraph, Row, RuleAboveRow, Rule };
    Kind kind = Kind::Paragraph;
    std::vector<Text> texts;
  };
  /// Lines that are there once, or once for each item of some kinds.
  struct Section {
    enum class Items { None, All, Pay, Deductions };
    Items items = Items::None;
    std::vector<Line> lines;
  };

 private:
  std::optional<Text> title_;
  std::vector<Section> sections_;
};

/// The template that is installed with the program; the one that it was built with where none is.
TextFile installedTemplate();

}  // namespace payrun
