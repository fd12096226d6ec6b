#pragma once

// The hand-off record shared by the extension and the host: the store keys, the values the store
// holds for the share type and entry, the notification that wakes a running host and the path
// from which a stopped host is launched. The host reads exactly what the extension writes here.
// In share/ only HandoffRecord includes it: the controller writes the record through that class.
namespace handoff {

inline const char* const kShareTypeKey = "ParleyMacShareType";
inline const char* const kShareEntryKey = "ParleyMacShareEntry";
inline const char* const kShareUrlKey = "ParleyMacShareUrl";
inline const char* const kSharePathArrayKey = "ParleyMacSharePathArray";
inline const char* const kShareInvalidFileNamesKey = "ParleyMacShareInvalidFileNames";
inline const char* const kShareInvalidFileSizesKey = "ParleyMacShareInvalidFileSizes";

// The share type as the platform's published type identifiers.
inline const char* const kTypeUrl = "public.url";
inline const char* const kTypeFileUrl = "public.file-url";

inline const char* const kEntrySendToFriend = "sendToFriend";
inline const char* const kEntryFavToParley = "favToParley";

inline const char* const kNotificationName = "ParleyMacShare_Notification";
inline const char* const kHostApplicationPath = "/Applications/Parley.app";

// Info.plist key of the extension whose value starts the application-group identifier.
inline const char* const kTeamIdentifierKey = "TeamIdentifier";

}  // namespace handoff
