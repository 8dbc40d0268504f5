// examples/payrun/Diagnosis.h - facts about this machine and this user for a support request.
#pragma once

#include <string>

namespace payrun {

/// Sections of lines, each with a label and a text; the texts of a section are aligned. Preferences are listed by name.
/// Values are shown only for known preferences that are numbers or yes and no. Texts are never shown, because any text
/// may be a secret. A section that fails contains the reason, and the other sections follow. Creates no folder and
/// stores nothing.
std::string diagnosis(const std::string& programVersion);

}  // namespace payrun
