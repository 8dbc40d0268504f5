// examples/payrun/DocumentPDF.h - a document on A4 pages.
#pragma once

#include <string>

#include "Document.h"

namespace payrun {

/// A PDF file. A text that needs slightly more than a page is printed smaller, at four fifths or more, so that it fits
/// on one page. Otherwise a table continues on the next page below its headings. A total stays on the page of the row
/// above it. If there are several pages, each has its number at its foot. Any thread.
std::string pdfDocument(const Document& document);

}  // namespace payrun
