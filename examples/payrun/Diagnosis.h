// examples/payrun/Diagnosis.h - what a support request needs to know of this machine and this user.
#pragma once

#include <string>

namespace payrun {

/// Sections of lines, each a label and a text; the texts of a section are aligned. Preferences are listed by name, with
/// the values of known ones that are numbers or yes and no; texts are never shown, because any may be a secret. A
/// section that fails says why, and the others follow. Makes no folder and stores nothing.
std::string diagnosis(const std::string& programVersion);

}  // namespace payrun
