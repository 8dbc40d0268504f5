#include "Diagnosis.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "Characters.h"
#include "NorvikCore/Categories/NSFileManager+DirectoryLocations.h"
#include "NorvikCore/Categories/NSProcessInfo+Norvik.h"
#include "NorvikCore/constants/NorvikCoreVersion.h"
#include "NorvikCore/constants/PreferenceKeys.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/foundation/LinkedLibraries.h"
#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "NorvikCore/platform/values/Format.h"

namespace payrun {

using namespace norvik;

namespace {

namespace fs = std::filesystem;

/// Preferences that reveal nothing about a person, an employer or a place.
bool isHarmless(const NSString& key) {
  const NSString* const harmless[] = {
      &NKAddDuplicateEmployerPAYERefWarningEnabled,
      &NKAttachMonoSoftDebugger,
      &NKAutoCreateSnapshots,
      &NKAutoOrganiseDocumentsAndSnapshots,
      &NKDeveloperMode,
      &NKDoNotPrintIgnoredCodingNotices,
      &NKEmployeeNameDisplayStyle,
      &NKEmployeeOrderingMethod,
      &NKEmployerBrowserShowFilePath,
      &NKEnableUIAnimationDuringLongRunningOperations,
      &NKFirstLaunchProcessingComplete,
      &NKImportCSVIgnoreLeavers,
      &NKImportCsvRememberColumnSelections,
      &NKImportCsvReplaceExistingItems,
      &NKInstalledFromPackage,
      &NKIsCloudOnboardingPromptEnabled,
      &NKIsEmployeeNameDisplayNationalInsuranceNumber,
      &NKIsEmployeeNameDisplayTitle,
      &NKIsEmployeeNameDisplayWorksNumber,
      &NKIsSubcontractorNameDisplayNinoOrCrn,
      &NKIsSubcontractorNameDisplayUtr,
      &NKIsSubcontractorNameDisplayWorksNumber,
      &NKLargeEmployerFileOptimisation,
      &NKLogDatabaseActivity,
      &NKLogSynchronizationContextActivity,
      &NKManagedEnvironmentChainCrashes,
      &NKManagedEnvironmentChainSignals,
      &NKManagedEnvironmentTraceLevel,
      &NKMaxAutoSnapshotCount,
      &NKOnDocumentCloseWarningEnabled,
      &NKOpenDuplicateEmployerPAYERefWarningEnabled,
      &NKOpenPDFExportDocumentAfterCompletion,
      &NKProxyType,
      &NKRTISubmissionPollTimeout,
      &NKRaiseExceptionOnDataAssemblyVersionMismatch,
      &NKRememberPDFSecuritySettings,
      &NKShowDebugMenu,
      &NKSubcontractorNameDisplayStyle,
      &NKSubcontractorOrderingMethod,
      &NKTestingMode,
  };
  return std::any_of(std::begin(harmless), std::end(harmless), [&](const NSString* known) { return *known == key; });
}

std::string text(const NSString& string) {
  constexpr std::size_t longest = 500;
  return oneLine(string.bytes(), longest);
}

struct Line {
  std::string label, text;
};

/// Appends the lines of one section. If `find` raises an exception, its reason is the last line.
void appendSection(std::string& result, const std::string& heading,
                   const std::function<void(std::vector<Line>&)>& find) {
  std::vector<Line> lines;
  try {
    find(lines);
  } catch (const std::exception& error) {
    lines.push_back({"not available", oneLine(error.what(), 500)});
  }
  std::size_t width = 20;  // so that short sections have the same width
  for (const Line& line : lines) width = std::max(width, cellCount(line.label));
  result += "\n" + heading + "\n";
  for (const Line& line : lines) {
    result += "  " + line.label + std::string(width - cellCount(line.label) + 2, ' ') + line.text + "\n";
  }
}

std::string errorOf(const char* path, int access) {
  return ::access(path, access) == 0 ? "" : std::system_category().message(errno);
}

/// Whether a folder exists and is writable; if it does not exist, whether it can be created.
std::string stateOf(const NSString& folder) {
  const fs::path path(folder.fileSystemRepresentation());
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) {
    const std::string refusal = errorOf(path.c_str(), R_OK | W_OK | X_OK);
    return refusal.empty() ? "exists" : "exists, cannot be used: " + refusal;
  }
  if (fs::exists(status)) return "not a folder: something else has its name";
  if (!fs::exists(status) && status.type() != fs::file_type::not_found) return "cannot be found: " + error.message();
  if (fs::is_symlink(fs::symlink_status(path, error))) return "not a folder: a link that leads nowhere has its name";
  fs::path above = path.parent_path();
  while (!fs::exists(above, error) && above != above.parent_path()) above = above.parent_path();
  const std::string refusal =
      fs::is_directory(above, error) ? errorOf(above.c_str(), W_OK | X_OK) : std::system_category().message(ENOTDIR);
  return refusal.empty() ? "does not exist yet" : "does not exist, cannot be created: " + refusal;
}

void addFolder(std::vector<Line>& lines, const char* label, const std::optional<NSString>& folder) {
  lines.push_back({label, folder ? text(*folder) + " (" + stateOf(*folder) + ")" : "none"});
}

void findProgram(std::vector<Line>& lines, const std::string& version) {
  NSBundle& bundle = NSBundle::mainBundle();
  lines.push_back({"version", version});
  lines.push_back({"executable", text(bundle.executablePath())});
  lines.push_back({"identifier", text(bundle.bundleIdentifier().value_or("none"))});
  lines.push_back({"process", std::to_string(NSProcessInfo::processInfo().processIdentifier())});
}

void findFolders(std::vector<Line>& lines) {
  const NSFileManager& files = NSFileManager::defaultManager();
  const NSString name = NSBundle::mainBundle().objectForInfoDictionaryKey("CFBundleExecutable").as<NSString>();
  addFolder(lines, "home", NSHomeDirectory());
  addFolder(lines, "application support",
            pathForDirectory(files, NSApplicationSupportDirectory, NSUserDomainMask, name));
  addFolder(lines, "documents", pathForDirectory(files, NSDocumentDirectory, NSUserDomainMask));
  addFolder(lines, "caches", pathForDirectory(files, NSCachesDirectory, NSUserDomainMask));
  addFolder(lines, "temporary", NSTemporaryDirectory());
  addFolder(lines, "logs", make<DDLogFileManagerDefault>()->defaultLogsDirectory());
}

void findVersions(std::vector<Line>& lines) {
  for (const LinkedLibrary& library : linkedLibraries()) lines.push_back({text(library.name), text(library.version)});
  lines.push_back({"vocabulary", text(stringWithFormat("%.1f", NorvikCoreVersionNumber))});
  lines.push_back({"operating system", text(nk_operatingSystemVersionString())});
  lines.push_back({"", text(NSProcessInfo::processInfo().operatingSystemVersionString())});
}

void findHardware(std::vector<Line>& lines) {
  const NSProcessInfo& process = NSProcessInfo::processInfo();
  lines.push_back({"model", text(nk_macHardwareModel(process).value_or("none given"))});
  lines.push_back({"processors", std::to_string(process.processorCount())});
}

void findOpenFiles(std::vector<Line>& lines) {
  const char* const meanings[] = {"they could not be listed", "all are valid", "one is bad", "the check of one failed"};
  const Ref<NSMutableDictionary> files = NSMutableDictionary::dictionary();
  const int status = nk_validateOpenFileDescriptors(NSProcessInfo::processInfo(), files);
  lines.push_back({"check", std::to_string(status) + ", " + meanings[status]});
  lines.push_back({"valid files", std::to_string(files->count())});
}

std::string kindOf(const Value& value) {
  if (value.kind() == Value::Kind::Boolean) return "yes or no";
  if (value.isNumber()) return "number";
  if (value.isString()) return "text";
  if (value.isDate()) return "date";
  if (value.object<NSData>() != nullptr) return "data";
  if (value.object<NSArray>() != nullptr) return "list";
  if (value.object<NSDictionary>() != nullptr) return "table";
  return "damaged";
}

std::string preferenceText(const NSString& key, const Value& value) {
  if (!value.isNumber() || !isHarmless(key)) return kindOf(value) + ", not shown";
  if (value.kind() == Value::Kind::Boolean) return value.as<bool>() ? "yes" : "no";
  return text(value.number().stringValue());
}

void findPreferences(std::vector<Line>& lines) {
  const std::optional<NSString> identifier = NSBundle::mainBundle().bundleIdentifier();
  const NSString suite = identifier.value_or(NSProcessInfo::processInfo().processName());
  lines.push_back({"database", text(NSUserDefaults::databasePathOfSuite(suite))});
  NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
  if (!defaults.synchronize()) {
    lines.push_back({"stored", "cannot be read, standard error says why"});
    return;
  }
  const Ref<NSDictionary> all = defaults.dictionaryRepresentation();
  lines.push_back({"stored", std::to_string(all->count())});
  for (const auto& [key, value] : *all) {
    const NSString name = key.as<NSString>();
    lines.push_back({oneLine(name.bytes(), 80), preferenceText(name, value)});
  }
}

}  // namespace

std::string diagnosis(const std::string& programVersion) {
  std::string result = "payrun, for a support request; it has names of folders and of preferences in it\n";
  appendSection(result, "Program", [&](std::vector<Line>& lines) { findProgram(lines, programVersion); });
  appendSection(result, "Folders", findFolders);
  appendSection(result, "Versions", findVersions);
  appendSection(result, "Machine", findHardware);
  appendSection(result, "Open files", findOpenFiles);
  appendSection(result, "Preferences", findPreferences);
  return result;
}

}  // namespace payrun
