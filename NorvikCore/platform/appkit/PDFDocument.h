// NorvikCore/platform/appkit/PDFDocument.h - creates a PDF file in memory, page by page.
//
//   PDFDocument document(a4Paper, "Payslip of April");
//   document.drawText(*text, {56, 56}, 480);
//   document.beginPage();
//   document.drawText(*more, {56, 56}, 480);
//   Ref<NSData> file = document.data();
//
// Text in the file can be selected and searched; the fonts are embedded. Canvas describes what can be drawn.
#pragma once

#include "NorvikCore/platform/appkit/Canvas.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"

namespace norvik {

namespace detail {
class ByteSink;
}  // namespace detail

/// 210 by 297 millimetres.
constexpr NSSize a4Paper{210 / 25.4 * 72, 297 / 25.4 * 72};

class NK_EXPORT PDFDocument final : public Canvas {
 public:
  /// Has one page at first. A side that is not between 1 and 14,400 points raises NSInvalidArgumentException.
  explicit PDFDocument(NSSize pageSize = a4Paper, const NSString& title = NSString());
  ~PDFDocument() override;

  /// Adds a page at the end; later calls draw on it.
  void beginPage();
  /// The file. The document is complete after that: drawing on it raises NSInternalInconsistencyException, and the next
  /// call returns the same bytes. Raises NSGenericException if something could not be drawn or there was no memory for
  /// it.
  [[nodiscard]] Ref<NSData> data();

 protected:
  [[nodiscard]] detail::CairoContext& context() override { return *context_; }

 private:
  detail::Hidden<detail::ByteSink> drawn_;
  detail::Hidden<detail::CairoContext> context_;
};

}  // namespace norvik
