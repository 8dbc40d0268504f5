#include "NorvikCore/platform/appkit/PDFDocument.h"

#include "NorvikCore/platform/appkit/internal/ByteSink.h"
#include "NorvikCore/platform/appkit/internal/CairoContext.h"
#include "NorvikCore/platform/appkit/internal/ShapedText.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {
namespace {

constexpr double longestSide = 14'400;  // the limit of the format

NSSize checked(NSSize size) {
  const auto fits = [](double side) { return side >= 1 && side <= longestSide; };
  if (!fits(size.width) || !fits(size.height)) {
    NSException::raise(NSInvalidArgumentException, "a page's side is not between 1 and 14,400 points");
  }
  return size;
}

}  // namespace

PDFDocument::PDFDocument(NSSize pageSize, const NSString& title)
    : Canvas(checked(pageSize)), drawn_(new detail::ByteSink) {
  const kernel::ForkHold hold;  // because Cairo asks for the local time, under a lock of the C library
  context_ = detail::Hidden(new detail::CairoContext(detail::pangoLibrary().cairo_pdf_surface_create_for_stream(
      detail::ByteSink::append, drawn_.get(), pageSize.width, pageSize.height)));
  if (title.empty()) return;
  detail::pangoLibrary().cairo_pdf_surface_set_metadata(context_->surface(), CAIRO_PDF_METADATA_TITLE,
                                                        detail::drawableText(title).c_str());
}

PDFDocument::~PDFDocument() = default;

void PDFDocument::beginPage() {
  const kernel::ForkHold hold;
  detail::pangoLibrary().cairo_show_page(context_->cairo());
}

Ref<NSData> PDFDocument::data() {
  context_->finish();
  const std::string& bytes = drawn_->bytes();
  return NSData::dataWithBytes(bytes.data(), bytes.size());
}

}  // namespace norvik
