#include "PayslipFiles.h"

#include <atomic>
#include <mutex>
#include <unordered_set>

#include "NorvikCore/Categories/NSString+Norvik.h"
#include "NorvikCore/platform/dispatch/Apply.h"
#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/values/Utf8.h"
#include "OutputFile.h"
#include "ProgressBar.h"

namespace payrun {

using namespace norvik;

namespace {

/// True for marks that reverse the direction of text, so that the end of a name could look like another one.
bool isDirectionControl(char32_t character) {
  return character == 0x61C || (0x200E <= character && character <= 0x200F) ||
         (0x202A <= character && character <= 0x202E) || (0x2066 <= character && character <= 0x2069);
}

/// A text as a part of a file's name, at most `longest` bytes.
std::string partOf(const std::string& text, std::size_t longest) {
  const NSString sanitized = nk_sanitizeFileNameString(NSString(text), "_");
  std::string part;
  for (const char32_t character : sanitized.codePoints()) {
    if (isDirectionControl(character)) continue;
    const utf8::Encoded bytes = utf8::encode(character);
    if (part.size() + bytes.size > longest) break;
    part.append(bytes.bytes, bytes.size);
  }
  return part;
}

std::string nameOf(const Employee& employee) {
  constexpr std::size_t longest = 80;
  std::string name = partOf(employee.number, longest) + " " + partOf(employee.name, longest);
  if (name.starts_with('-')) name[0] = '_';  // a command would take it for an option
  return name;
}

}  // namespace

std::vector<std::string> payslipFileNames(const PayRun& run, std::string_view extension) {
  const std::string month = " " + taxYearName(run.employer().taxYear) + " month " + std::to_string(run.month());
  std::vector<std::string> names;
  std::unordered_set<NSString> taken;  // in lower case
  for (const Employee& employee : run.employer().employees()) {
    const std::string wanted = nameOf(employee) + month;
    std::string name = wanted;
    for (std::size_t i = 2; !taken.insert(lowercaseString(NSString(name))).second; ++i) {
      name = wanted + " (" + std::to_string(i) + ")";
    }
    names.push_back(name.append(".").append(extension));
  }
  return names;
}

void writePayslips(const PayRun& run, const PayslipTemplate& form, const std::filesystem::path& folder,
                   std::string_view extension, std::string (*render)(const Document&)) {
  const std::vector<std::string> names = payslipFileNames(run, extension);
  OutputFolder files(folder);
  ProgressBar progress("writing " + std::string(extension) + " payslips", names.size());
  std::mutex drawing;
  std::atomic<std::size_t> done = 0;
  dispatch_apply(names.size(), dispatch_get_global_queue(), [&](std::size_t i) {
    files.write(names[i], render(form.payslip(run, i)));
    const std::size_t count = ++done;
    if (const std::unique_lock lock(drawing, std::try_to_lock); lock) progress.show(count);
  });
  files.publish();
}

}  // namespace payrun
