// NorvikCore/constants/NotificationNames.h - the notifications that the application's modules exchange.
//
//   NSNotificationCenter::defaultCenter().postNotificationName(NKNotePeriodUpdated, period);
//
// Some values keep the "NK" of their constant's name, some do not. Observers, including stored ones, match the text. So
// use the constants, never the text, and do not change a value. Constants that are never destroyed: any thread, any
// time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

NK_EXPORT extern const NSString NKNoteAgentSettingsChanged;
NK_EXPORT extern const NSString NKNoteCisTaxPeriodUpdated;
NK_EXPORT extern const NSString NKNoteCloudClientAvailable;
NK_EXPORT extern const NSString NKNoteCloudClientSigninStatusChanged;
NK_EXPORT extern const NSString NKNoteCloudEmployersCollectionChanged;
NK_EXPORT extern const NSString NKNoteEmployeeNameDisplayStyleChanged;
NK_EXPORT extern const NSString NKNoteEmployeeOrderingChanged;
/// "Changed" is doubled in the name only: the value is "NoteLogLevelChanged".
NK_EXPORT extern const NSString NKNoteLogLevelChangedChanged;
NK_EXPORT extern const NSString NKNotePeriodUpdated;
NK_EXPORT extern const NSString NKNoteRTISettingsChanged;
NK_EXPORT extern const NSString NKNoteRecentEmployerFileInfoAdded;
NK_EXPORT extern const NSString NKNoteRecentEmployerFileInfoRemoved;
NK_EXPORT extern const NSString NKNoteSubcontractorNameDisplayStyleChanged;
NK_EXPORT extern const NSString NKNoteSubcontractorOrderingChanged;
/// Not a notification but a key of the user info of notifications.
NK_EXPORT extern const NSString NKNoteHelperKey;

}  // namespace norvik
