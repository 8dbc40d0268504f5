// examples/payrun/DocumentTerminal.h - a document as lines of a terminal.
#pragma once

#include <cstddef>
#include <string>

#include "Document.h"
#include "NorvikCore/platform/appkit/AttributedStringTerminal.h"

namespace payrun {

/// Lines of at most `width` cells, each with a line feed. Texts that are too long are wrapped at spaces, or within a
/// word that is longer than its column. Right-aligned texts such as amounts are wrapped only if no other column can be
/// narrowed.
std::string terminalDocument(const Document& document, std::size_t width, norvik::TerminalColors colors);

}  // namespace payrun
