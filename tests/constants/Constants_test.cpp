// Every constant and its value, copied by hand from the table that the application's modules agreed on.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "NorvikCore/constants/ErrorKeys.h"
#include "NorvikCore/constants/NKBind.h"
#include "NorvikCore/constants/NKDebuggerAttached.h"
#include "NorvikCore/constants/NorvikCoreVersion.h"
#include "NorvikCore/constants/NotificationNames.h"
#include "NorvikCore/constants/PreferenceKeys.h"
#include "NorvikCore/constants/StringTableNames.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/values/Format.h"
#include "tests/support/DefaultsFolder.h"

namespace norvik {
namespace {

struct Row {
  const char* name;
  const NSString& constant;
  const char* value;
};
#define ROW(constant, value) \
  Row { #constant, constant, value }

const std::vector<Row>& preferenceKeys() {
  static const std::vector<Row> rows = {
      ROW(NKAddDuplicateEmployerPAYERefWarningEnabled, "AddDuplicateEmployerPAYERefWarningEnabled"),
      ROW(NKAgentSettingsKey, "AgentSettings"),
      ROW(NKAppMessageColor, "AppMessageColor"),
      ROW(NKAppTitleColor, "TitleColor"),
      ROW(NKAttachMonoSoftDebugger, "AttachMonoSoftDebugger"),
      ROW(NKAutoCreateSnapshots, "AutoCreateSnapshots"),
      ROW(NKAutoOrganiseDocumentsAndSnapshots, "AutoOrganiseDocumentsAndSnapshots"),
      ROW(NKBureauStatisticsReportDefinition, "BureauStatisticsReportDefinition"),
      ROW(NKCurrencySymbol, "CurrencySymbol"),
      ROW(NKDeveloperMode, "DeveloperMode"),
      ROW(NKDoNotPrintIgnoredCodingNotices, "DoNotPrintIgnoredCodingNotices"),
      ROW(NKEmailPayslipsTermsOfUseAccepted, "EmailPayslipsTermsOfUseAccepted"),
      ROW(NKEmployeeNameDisplayStyle, "EmployeeNameDisplayStyle"),
      ROW(NKEmployeeOrderingMethod, "EmployeeOrderingMethod"),
      ROW(NKEmployerBrowserRecentFilesColumns, "EmployerBrowserRecentFilesColumns"),
      ROW(NKEmployerBrowserShowFilePath, "EmployerBrowserShowFilePath"),
      ROW(NKEnableUIAnimationDuringLongRunningOperations, "EnableUIAnimationDuringLongRunningOperations"),
      ROW(NKFirstLaunchProcessingComplete, "FirstLaunchProcessingComplete"),
      ROW(NKGeneratedEmployeeEmailPattern, "GeneratedEmployeeEmailPattern"),
      ROW(NKImportAdditionCSVFields, "ImportAdditionCSVFields"),
      ROW(NKImportCSVIgnoreLeavers, "ImportCSVIgnoreLeavers"),
      ROW(NKImportCisAdditionCSVFields, "ImportCisAdditionCSVFields"),
      ROW(NKImportCisDailyPaymentCSVFields, "ImportCisDailyPaymentCSVFields"),
      ROW(NKImportCisDeductionCSVFields, "ImportCisDeductionCSVFields"),
      ROW(NKImportCisHourlyPaymentCSVFields, "ImportCisHourlyPaymentCSVFields"),
      ROW(NKImportCisPeriodPaymentCSVFields, "ImportCisPeriodPaymentCSVFields"),
      ROW(NKImportCsvRememberColumnSelections, "ImportCsvRememberColumnSelections"),
      ROW(NKImportCsvReplaceExistingItems, "ImportCsvReplaceExistingItems"),
      ROW(NKImportDailyPaymentCSVFields, "ImportDailyPaymentCSVFields"),
      ROW(NKImportDeductionCSVFields, "ImportDeductionCSVFields"),
      ROW(NKImportDynamicCisPayslipItemCSVFields, "ImportDynamicCisPayslipItemCSVFields"),
      ROW(NKImportDynamicPayslipItemCSVFields, "ImportDynamicPayslipItemCSVFields"),
      ROW(NKImportEmployeeCSVFields, "ImportEmployeeCSVFields"),
      ROW(NKImportHourlyPaymentCSVFields, "ImportHourlyPaymentCSVFields"),
      ROW(NKImportNoteCSVFields, "ImportNoteCSVFields"),
      ROW(NKImportPeriodPaymentCSVFields, "ImportPeriodPaymentCSVFields"),
      ROW(NKImportSubcontractorCSVFields, "ImportSubcontractorCSVFields"),
      ROW(NKImprovementProgrammeOptIn, "ImprovementProgrammeOptIn"),
      ROW(NKInstalledFromPackage, "InstalledFromPackage"),
      ROW(NKIsCloudOnboardingPromptEnabled, "IsCloudOnboardingPromptEnabled"),
      ROW(NKIsEmployeeNameDisplayNationalInsuranceNumber, "IsEmployeeNameDisplayNationalInsuranceNumber"),
      ROW(NKIsEmployeeNameDisplayTitle, "IsEmployeeNameDisplayTitle"),
      ROW(NKIsEmployeeNameDisplayWorksNumber, "IsEmployeeNameDisplayWorksNumber"),
      ROW(NKIsSubcontractorNameDisplayNinoOrCrn, "IsSubcontractorNameDisplayNinoOrCrn"),
      ROW(NKIsSubcontractorNameDisplayUtr, "IsSubcontractorNameDisplayUtr"),
      ROW(NKIsSubcontractorNameDisplayWorksNumber, "IsSubcontractorNameDisplayWorksNumber"),
      ROW(NKLargeEmployerFileOptimisation, "LargeEmployerFileOptimisation"),
      ROW(NKLogDatabaseActivity, "LogDatabaseActivity"),
      ROW(NKLogSynchronizationContextActivity, "LogSynchronizationContextActivity"),
      ROW(NKManagedEnvironmentChainCrashes, "ManagedEnvironmentChainCrashes"),
      ROW(NKManagedEnvironmentChainSignals, "ManagedEnvironmentChainSignals"),
      ROW(NKManagedEnvironmentTraceLevel, "ManagedEnvironmentTraceLevel"),
      ROW(NKManagedEnvironmentTraceMask, "ManagedEnvironmentTraceMask"),
      ROW(NKMaxAutoSnapshotCount, "MaxAutoSnapshotCount"),
      ROW(NKNavLastDocumentPath, "NavLastNKDocumentPath"),
      ROW(NKNavLastExportPath, "NavLastExportPath"),
      ROW(NKNavLastSnapshotPath, "NavLastSnapshotPath"),
      ROW(NKOnDocumentCloseWarningEnabled, "OnDocumentCloseWarningEnabled"),
      ROW(NKOpenDuplicateEmployerPAYERefWarningEnabled, "OpenDuplicateEmployerPAYERefWarningEnabled"),
      ROW(NKOpenPDFExportDocumentAfterCompletion, "OpenPDFExportDocumentAfterCompletion"),
      ROW(NKPDFSecurityKey, "PDFSecurityKey"),
      ROW(NKPDFSecurityRequirePassword, "PDFSecurityRequirePassword"),
      ROW(NKPayslipSummaryColumns, "PayslipSummaryColumns"),
      ROW(NKPercentageSymbol, "PercentageSymbol"),
      ROW(NKProxyType, "ProxyType"),
      ROW(NKRTISubmissionPollTimeout, "RTISubmissionPollTimeout"),
      ROW(NKRaiseExceptionOnDataAssemblyVersionMismatch, "RaiseExceptionOnDataAssemblyVersionMismatch"),
      ROW(NKRecentEmployerFiles, "RecentEmployerFiles"),
      ROW(NKRememberPDFSecuritySettings, "RememberPDFSecuritySettings"),
      ROW(NKShowDebugMenu, "ShowDebugMenu"),
      ROW(NKSmartPensionIsAdvisorAutoGuess, "SmartPensionIsAdvisorAutoGuess"),
      ROW(NKSubcontractorNameDisplayStyle, "SubcontractorNameDisplayStyle"),
      ROW(NKSubcontractorOrderingMethod, "SubcontractorOrderingMethod"),
      ROW(NKSupportRequestCompanyName, "SupportRequestCompanyName"),
      ROW(NKSupportRequestEmail, "SupportRequestEmail"),
      ROW(NKSupportRequestName, "SupportRequestName"),
      ROW(NKSupportRequestPhone, "SupportRequestPhone"),
      ROW(NKTestingMode, "TestingMode"),
      ROW(NKTextHeading1Font, "TextHeading1Font"),
      ROW(NKUserAgent, "UserAgent"),
      ROW(NKUserUUID, "UserUUID"),
  };
  return rows;
}

const std::vector<Row>& notificationNames() {
  static const std::vector<Row> rows = {
      ROW(NKNoteAgentSettingsChanged, "NKNoteAgentSettingsChanged"),
      ROW(NKNoteCisTaxPeriodUpdated, "NKNoteCisTaxPeriodUpdated"),
      ROW(NKNoteCloudClientAvailable, "NKNoteCloudClientAvailable"),
      ROW(NKNoteCloudClientSigninStatusChanged, "NKNoteCloudClientSigninStatusChanged"),
      ROW(NKNoteCloudEmployersCollectionChanged, "NKNoteCloudEmployersCollectionChanged"),
      ROW(NKNoteEmployeeNameDisplayStyleChanged, "NoteEmployeeNameDisplayStyleChanged"),
      ROW(NKNoteEmployeeOrderingChanged, "NoteEmployeeOrderingChanged"),
      ROW(NKNoteHelperKey, "NoteHelperKey"),
      ROW(NKNoteLogLevelChangedChanged, "NoteLogLevelChanged"),
      ROW(NKNotePeriodUpdated, "NKNotePeriodUpdated"),
      ROW(NKNoteRTISettingsChanged, "NoteRTISettingsChanged"),
      ROW(NKNoteRecentEmployerFileInfoAdded, "NKNoteRecentEmployerFileInfoAdded"),
      ROW(NKNoteRecentEmployerFileInfoRemoved, "NKNoteRecentEmployerFileInfoRemoved"),
      ROW(NKNoteSubcontractorNameDisplayStyleChanged, "NoteSubcontractorNameDisplayStyleChanged"),
      ROW(NKNoteSubcontractorOrderingChanged, "NKNoteSubcontractorOrderingChanged"),
  };
  return rows;
}

const std::vector<Row>& otherTexts() {
  static const std::vector<Row> rows = {
      ROW(NKShowAlertForErrorKey, "NKShowAlertForErrorKey"),
      ROW(NKSlotExceptionErrorKey, "NKSlotExceptionErrorKey"),
      ROW(NKAnalysisStrings, "Analysis"),
      ROW(NKEmployeesStrings, "Employees"),
      ROW(NKEmployerStrings, "Employer"),
      ROW(NKHmrcStrings, "HMRC"),
      ROW(NKPayrollStrings, "Payroll"),
      ROW(NKRtiStrings, "RTI"),
      ROW(NKBind, "NKBind"),
      ROW(NorvikCoreVersionString, "@(#)PROGRAM:NorvikCore  PROJECT:Norvik-1\n"),
  };
  return rows;
}

void expectValues(const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(row.constant.str(), row.value) << row.name;
}

TEST(Constants, EveryPreferenceKeyHasItsValue) { expectValues(preferenceKeys()); }
TEST(Constants, EveryNotificationNameHasItsValue) { expectValues(notificationNames()); }
TEST(Constants, EveryOtherTextHasItsValue) { expectValues(otherTexts()); }

TEST(Constants, NoTwoPreferenceKeysShareAValue) {
  std::set<std::string> values;
  for (const Row& row : preferenceKeys()) EXPECT_TRUE(values.insert(row.value).second) << row.name;
}

// The table above would not detect a constant that was added to a header but not to the table.
TEST(Constants, TheTableHasEveryTextOfTheHeadersAndNoOther) {
  std::set<std::string> declared, tested;
  for (const char* header : {"ErrorKeys", "NKBind", "NKDebuggerAttached", "NorvikCoreVersion", "NotificationNames",
                             "PreferenceKeys", "StringTableNames"}) {
    std::ifstream file(std::string(NORVIK_CONSTANTS_FOLDER) + "/" + header + ".h");
    ASSERT_TRUE(file) << header;
    constexpr std::string_view start = "NK_EXPORT extern const NSString ";
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with(start)) declared.insert(line.substr(start.size(), line.size() - start.size() - 1));
    }
  }
  for (const auto* rows : {&preferenceKeys(), &notificationNames(), &otherTexts()}) {
    for (const Row& row : *rows) tested.insert(row.name);
  }
  EXPECT_EQ(declared, tested);
  EXPECT_EQ(declared.size(), 106u);
}

TEST(ErrorKeys, HeaderExample) {
  const Ref<NSError> error = NSError::errorWithDomain("Application File Error", 0,
                                                      NSDictionary::dictionaryWith({{NKShowAlertForErrorKey, true}}));
  EXPECT_EQ(error->userInfo()->objectForKey("NKShowAlertForErrorKey"), Value(true));
}

TEST(NotificationNames, HeaderExample) {
  int heard = 0;
  const Ref<NSObject> period = NSArray::arrayWith({1});
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const Ref<NSObject> observation =
      center.addObserverForName("NKNotePeriodUpdated", period, [&](const NSNotification& n) {
        EXPECT_EQ(n.object(), period);
        ++heard;
      });
  NSNotificationCenter::defaultCenter().postNotificationName(NKNotePeriodUpdated, period);
  center.removeObserver(*observation);
  EXPECT_EQ(heard, 1);
}

TEST(PreferenceKeys, HeaderExample) {
  const test::StandardDefaults fresh;
  EXPECT_FALSE(NSUserDefaults::standardUserDefaults().boolForKey(NKDeveloperMode));
  NSUserDefaults::standardUserDefaults().setBool(true, "DeveloperMode");
  EXPECT_TRUE(NSUserDefaults::standardUserDefaults().boolForKey(NKDeveloperMode));
}

TEST(StringTableNames, HeaderExample) { EXPECT_EQ(NKRtiStrings, "RTI"); }

TEST(NKDebuggerAttached, IsFalseUntilTheApplicationSetsIt) {
  EXPECT_FALSE(NKDebuggerAttached);
  NKDebuggerAttached = true;
  EXPECT_TRUE(NKDebuggerAttached);
  NKDebuggerAttached = false;
  EXPECT_FALSE(NKDebuggerAttached);
}

TEST(NKDebuggerAttached, HeaderExample) {
  NKDebuggerAttached = true;
  const bool isAttached = NKDebuggerAttached;
  NKDebuggerAttached = false;
  EXPECT_TRUE(isAttached);
}

TEST(NorvikCoreVersion, HeaderExample) { EXPECT_EQ(stringWithFormat("%.1f", NorvikCoreVersionNumber), "1.0"); }

TEST(NorvikCoreVersion, IsOnePointNought) { EXPECT_EQ(NorvikCoreVersionNumber, 1.0); }

}  // namespace
}  // namespace norvik
