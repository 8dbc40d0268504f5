// NorvikCore/constants/PreferenceKeys.h - the keys under which the application's modules keep their preferences.
//
//   NSUserDefaults::standardUserDefaults().boolForKey(NKDeveloperMode);     // stored under "DeveloperMode"
//
// This header has only the names, so that every module spells them the same way. The module that reads a preference
// decides its meaning and type. A value is its constant's name without "NK", except for the three constants at the end.
// Constants that are never destroyed: any thread, any time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

NK_EXPORT extern const NSString NKAddDuplicateEmployerPAYERefWarningEnabled;
NK_EXPORT extern const NSString NKAppMessageColor;
NK_EXPORT extern const NSString NKAttachMonoSoftDebugger;
NK_EXPORT extern const NSString NKAutoCreateSnapshots;
NK_EXPORT extern const NSString NKAutoOrganiseDocumentsAndSnapshots;
NK_EXPORT extern const NSString NKBureauStatisticsReportDefinition;
NK_EXPORT extern const NSString NKCurrencySymbol;
NK_EXPORT extern const NSString NKDeveloperMode;
NK_EXPORT extern const NSString NKDoNotPrintIgnoredCodingNotices;
NK_EXPORT extern const NSString NKEmailPayslipsTermsOfUseAccepted;
NK_EXPORT extern const NSString NKEmployeeNameDisplayStyle;
NK_EXPORT extern const NSString NKEmployeeOrderingMethod;
NK_EXPORT extern const NSString NKEmployerBrowserRecentFilesColumns;
NK_EXPORT extern const NSString NKEmployerBrowserShowFilePath;
NK_EXPORT extern const NSString NKEnableUIAnimationDuringLongRunningOperations;
NK_EXPORT extern const NSString NKFirstLaunchProcessingComplete;
NK_EXPORT extern const NSString NKGeneratedEmployeeEmailPattern;
NK_EXPORT extern const NSString NKImportAdditionCSVFields;
NK_EXPORT extern const NSString NKImportCSVIgnoreLeavers;
NK_EXPORT extern const NSString NKImportCisAdditionCSVFields;
NK_EXPORT extern const NSString NKImportCisDailyPaymentCSVFields;
NK_EXPORT extern const NSString NKImportCisDeductionCSVFields;
NK_EXPORT extern const NSString NKImportCisHourlyPaymentCSVFields;
NK_EXPORT extern const NSString NKImportCisPeriodPaymentCSVFields;
NK_EXPORT extern const NSString NKImportCsvRememberColumnSelections;
NK_EXPORT extern const NSString NKImportCsvReplaceExistingItems;
NK_EXPORT extern const NSString NKImportDailyPaymentCSVFields;
NK_EXPORT extern const NSString NKImportDeductionCSVFields;
NK_EXPORT extern const NSString NKImportDynamicCisPayslipItemCSVFields;
NK_EXPORT extern const NSString NKImportDynamicPayslipItemCSVFields;
NK_EXPORT extern const NSString NKImportEmployeeCSVFields;
NK_EXPORT extern const NSString NKImportHourlyPaymentCSVFields;
NK_EXPORT extern const NSString NKImportNoteCSVFields;
NK_EXPORT extern const NSString NKImportPeriodPaymentCSVFields;
NK_EXPORT extern const NSString NKImportSubcontractorCSVFields;
NK_EXPORT extern const NSString NKImprovementProgrammeOptIn;
NK_EXPORT extern const NSString NKInstalledFromPackage;
NK_EXPORT extern const NSString NKIsCloudOnboardingPromptEnabled;
NK_EXPORT extern const NSString NKIsEmployeeNameDisplayNationalInsuranceNumber;
NK_EXPORT extern const NSString NKIsEmployeeNameDisplayTitle;
NK_EXPORT extern const NSString NKIsEmployeeNameDisplayWorksNumber;
NK_EXPORT extern const NSString NKIsSubcontractorNameDisplayNinoOrCrn;
NK_EXPORT extern const NSString NKIsSubcontractorNameDisplayUtr;
NK_EXPORT extern const NSString NKIsSubcontractorNameDisplayWorksNumber;
NK_EXPORT extern const NSString NKLargeEmployerFileOptimisation;
NK_EXPORT extern const NSString NKLogDatabaseActivity;
NK_EXPORT extern const NSString NKLogSynchronizationContextActivity;
NK_EXPORT extern const NSString NKManagedEnvironmentChainCrashes;
NK_EXPORT extern const NSString NKManagedEnvironmentChainSignals;
NK_EXPORT extern const NSString NKManagedEnvironmentTraceLevel;
NK_EXPORT extern const NSString NKManagedEnvironmentTraceMask;
NK_EXPORT extern const NSString NKMaxAutoSnapshotCount;
NK_EXPORT extern const NSString NKNavLastExportPath;
NK_EXPORT extern const NSString NKNavLastSnapshotPath;
NK_EXPORT extern const NSString NKOnDocumentCloseWarningEnabled;
NK_EXPORT extern const NSString NKOpenDuplicateEmployerPAYERefWarningEnabled;
NK_EXPORT extern const NSString NKOpenPDFExportDocumentAfterCompletion;
NK_EXPORT extern const NSString NKPDFSecurityKey;
NK_EXPORT extern const NSString NKPDFSecurityRequirePassword;
NK_EXPORT extern const NSString NKPayslipSummaryColumns;
NK_EXPORT extern const NSString NKPercentageSymbol;
NK_EXPORT extern const NSString NKProxyType;
NK_EXPORT extern const NSString NKRTISubmissionPollTimeout;
NK_EXPORT extern const NSString NKRaiseExceptionOnDataAssemblyVersionMismatch;
NK_EXPORT extern const NSString NKRecentEmployerFiles;
NK_EXPORT extern const NSString NKRememberPDFSecuritySettings;
NK_EXPORT extern const NSString NKShowDebugMenu;
NK_EXPORT extern const NSString NKSmartPensionIsAdvisorAutoGuess;
NK_EXPORT extern const NSString NKSubcontractorNameDisplayStyle;
NK_EXPORT extern const NSString NKSubcontractorOrderingMethod;
NK_EXPORT extern const NSString NKSupportRequestCompanyName;
NK_EXPORT extern const NSString NKSupportRequestEmail;
NK_EXPORT extern const NSString NKSupportRequestName;
NK_EXPORT extern const NSString NKSupportRequestPhone;
NK_EXPORT extern const NSString NKTestingMode;
NK_EXPORT extern const NSString NKTextHeading1Font;
NK_EXPORT extern const NSString NKUserAgent;
NK_EXPORT extern const NSString NKUserUUID;

// The value of these is not the name without "NK": "AgentSettings", "TitleColor" and "NavLastNKDocumentPath".
NK_EXPORT extern const NSString NKAgentSettingsKey;
NK_EXPORT extern const NSString NKAppTitleColor;
NK_EXPORT extern const NSString NKNavLastDocumentPath;

}  // namespace norvik
