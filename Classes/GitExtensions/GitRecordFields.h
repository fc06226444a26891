// GitRecordFields.h - writes fields of git's output into records.
#pragma once

#include <string_view>

#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Data.h"

namespace neb {

/// The keys of a name: its text, and its bytes if they are not UTF-8.
struct GitNameKeys {
    NEBConstant text, bytes;
};

inline constexpr GitNameKeys gitNameKeys{NEBSourceControlOperationNameKey,
                                         NEBSourceControlOperationNameBytesKey};
inline constexpr GitNameKeys gitPathKeys{NEBSourceControlOperationPathKey,
                                         NEBSourceControlOperationPathBytesKey};

/// The keys of a time: the seconds, and the time zone.
struct GitTimeKeys {
    NEBConstant seconds, offset;
};

inline constexpr GitTimeKeys gitTimeKeys{NEBSourceControlOperationTimeKey,
                                         NEBSourceControlOperationTimeOffsetKey};

// The functions below do nothing for an empty field. `field` lies within `output`, which long texts
// share. Thread-safe for different records.

/// Sets a text, with U+FFFD for bytes that are not UTF-8.
void gitSetText(NEBDictionary& record, NEBConstant key, const Data& output, std::string_view field);
/// Sets a name, and its bytes if they are not UTF-8.
void gitSetName(NEBDictionary& record, const GitNameKeys& keys, const Data& output,
                std::string_view field);
/// Sets a decimal integer. Does nothing for other text.
void gitSetInteger(NEBDictionary& record, NEBConstant key, std::string_view field);
/// Sets a time in git's raw format, "1600000000 +0200"; see git-log(1), --date=raw. Does nothing
/// for other text.
void gitSetTime(NEBDictionary& record, const GitTimeKeys& keys, std::string_view field);

}  // namespace neb
