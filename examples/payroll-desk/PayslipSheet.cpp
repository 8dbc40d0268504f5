#include "PayslipSheet.h"

#include <algorithm>
#include <string>
#include <variant>

#include "NorvikCore/platform/appkit/AttributedStringHTML.h"

namespace desk {

using namespace norvik;
using namespace payrun;

namespace {

std::string alignment(Side side) { return side == Side::Right ? " align=\"right\"" : ""; }

struct Writer {
  std::string& html;

  void operator()(const Paragraph& paragraph) const {
    const std::string text = htmlText(*paragraph.text);
    html += "<p style=\"margin:0\"" + alignment(paragraph.side) + ">" + (text.empty() ? "&nbsp;" : text) + "</p>";
  }
  void operator()(const Rule&) const { html += "<hr>"; }
  void operator()(const DocumentTable& table) const {
    std::size_t columns = 0;
    for (const Row& row : table.rows) columns = std::max(columns, row.cells.size());
    html += "<table width=\"100%\" cellspacing=\"0\" cellpadding=\"3\" style=\"margin-top:2px\">";
    for (const Row& row : table.rows) {
      const char* const line = row.isHeading      ? "border-bottom:1px solid #8a929e;padding-top:8px"
                               : row.hasRuleAbove ? "border-top:1px solid #c9ced6"
                                                  : "";
      html += "<tr>";
      for (std::size_t i = 0; i < columns; ++i) {
        const bool isThere = i < row.cells.size();
        html += std::string("<td style=\"") + line + "\"" + (isThere ? alignment(row.cells[i].side) : "") + ">";
        if (isThere) html += htmlText(*row.cells[i].text);
        html += "</td>";
      }
      html += "</tr>";
    }
    html += "</table>";
  }
};

}  // namespace

QString sheetOf(const Document& document) {
  std::string html = "<body style=\"color:#1c1f24;font-family:'DejaVu Sans';font-size:9pt\">";
  for (const payrun::Block& block : document.blocks) std::visit(Writer{html}, block);
  return QString::fromStdString(html + "</body>");
}

}  // namespace desk
