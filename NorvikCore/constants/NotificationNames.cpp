#include "NorvikCore/constants/NotificationNames.h"

namespace norvik {

constexpr NSString NKNoteAgentSettingsChanged = "NKNoteAgentSettingsChanged";
constexpr NSString NKNoteCisTaxPeriodUpdated = "NKNoteCisTaxPeriodUpdated";
constexpr NSString NKNoteCloudClientAvailable = "NKNoteCloudClientAvailable";
constexpr NSString NKNoteCloudClientSigninStatusChanged = "NKNoteCloudClientSigninStatusChanged";
constexpr NSString NKNoteCloudEmployersCollectionChanged = "NKNoteCloudEmployersCollectionChanged";
constexpr NSString NKNoteEmployeeNameDisplayStyleChanged = "NoteEmployeeNameDisplayStyleChanged";
constexpr NSString NKNoteEmployeeOrderingChanged = "NoteEmployeeOrderingChanged";
constexpr NSString NKNoteLogLevelChangedChanged = "NoteLogLevelChanged";
constexpr NSString NKNotePeriodUpdated = "NKNotePeriodUpdated";
constexpr NSString NKNoteRTISettingsChanged = "NoteRTISettingsChanged";
constexpr NSString NKNoteRecentEmployerFileInfoAdded = "NKNoteRecentEmployerFileInfoAdded";
constexpr NSString NKNoteRecentEmployerFileInfoRemoved = "NKNoteRecentEmployerFileInfoRemoved";
constexpr NSString NKNoteSubcontractorNameDisplayStyleChanged = "NoteSubcontractorNameDisplayStyleChanged";
constexpr NSString NKNoteSubcontractorOrderingChanged = "NKNoteSubcontractorOrderingChanged";
constexpr NSString NKNoteHelperKey = "NoteHelperKey";

}  // namespace norvik
