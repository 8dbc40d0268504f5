// examples/payrun/DocumentTerminal.h - a document in the lines of a terminal.
#pragma once

#include <cstddef>
#include <string>

#include "Document.h"
#include "NorvikCore/platform/appkit/AttributedStringTerminal.h"

namespace payrun {

/// In lines of at most `width` cells, each with a line feed. Texts that are too long are wrapped at blanks, or within a
/// word that is longer than its place; amounts and other texts on the right only where nothing else is left to shrink.
std::string terminalDocument(const Document& document, std::size_t width, norvik::TerminalColors colors);

}  // namespace payrun
