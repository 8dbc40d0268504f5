// examples/payrun/DocumentHTML.h - a document as a page for a browser and for paper.
#pragma once

#include <string>

#include "Document.h"

namespace payrun {

/// A complete page that refers to no other file. It is readable on a phone. It prints on one sheet of A4 if letters of
/// 6 points or more are small enough, and on several sheets otherwise.
std::string htmlDocument(const Document& document);

}  // namespace payrun
