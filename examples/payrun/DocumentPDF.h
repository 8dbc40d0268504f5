// examples/payrun/DocumentPDF.h - a document on A4 pages.
#pragma once

#include <string>

#include "Document.h"

namespace payrun {

/// A PDF file. A text that needs a little more than a page is printed smaller, down to four fifths, on one. Otherwise a
/// table continues on the next page below its headings; a total stays with the row above it, and each page has its
/// number at its foot. Any thread.
std::string pdfDocument(const Document& document);

}  // namespace payrun
