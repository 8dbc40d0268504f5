// examples/payrun/DocumentHTML.h - a document as a page for a browser and for paper.
#pragma once

#include <string>

#include "Document.h"

namespace payrun {

/// A complete page that refers to nothing outside of it. It is readable on a phone, and prints on one sheet of A4 as
/// long as letters of 6 points do; beyond that on more.
std::string htmlDocument(const Document& document);

}  // namespace payrun
