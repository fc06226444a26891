// GitRecordFields.h - writes fields of git's output into records.
#pragma once

#include <cstdint>
#include <string>
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

inline constexpr GitNameKeys gitOriginalPathKeys{NEBSourceControlOperationOriginalPathKey,
                                                 NEBSourceControlOperationOriginalPathBytesKey};
inline constexpr GitNameKeys gitUpstreamKeys{NEBSourceControlOperationUpstreamKey,
                                             NEBSourceControlOperationUpstreamBytesKey};
inline constexpr GitNameKeys gitWorktreeKeys{NEBSourceControlOperationWorktreeKey,
                                             NEBSourceControlOperationWorktreeBytesKey};
inline constexpr GitNameKeys gitBranchKeys{NEBSourceControlOperationBranchKey,
                                           NEBSourceControlOperationBranchBytesKey};
inline constexpr GitNameKeys gitSourceKeys{NEBSourceControlOperationSourceKey,
                                           NEBSourceControlOperationSourceBytesKey};
inline constexpr GitNameKeys gitValueKeys{NEBSourceControlOperationValueKey,
                                          NEBSourceControlOperationValueBytesKey};
inline constexpr GitNameKeys gitOriginKeys{NEBSourceControlOperationOriginKey,
                                           NEBSourceControlOperationOriginBytesKey};

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
/// The same with a copy of the text.
void gitSetText(NEBDictionary& record, NEBConstant key, const std::string& text);
/// Sets a name, and its bytes if they are not UTF-8.
void gitSetName(NEBDictionary& record, const GitNameKeys& keys, const Data& output,
                std::string_view field);
/// The same with a copy of the name.
void gitSetName(NEBDictionary& record, const GitNameKeys& keys, const std::string& name);
/// The same with a name that git may have quoted; see gitUnquotedName().
void gitSetQuotedName(NEBDictionary& record, const GitNameKeys& keys, std::string_view field);
/// Sets an id, unless it is one of zeros, which stands for no object.
void gitSetObjectID(NEBDictionary& record, NEBConstant key, std::string_view field);
/// Sets a mode of six octal digits, unless it is "000000", which stands for no file.
void gitSetMode(NEBDictionary& record, NEBConstant key, std::string_view field);
/// Sets the state that the first letter stands for; see --diff-filter in git-diff(1). Does nothing
/// for another letter.
void gitSetState(NEBDictionary& record, NEBConstant key, std::string_view field);
/// Sets NEBSourceControlOperationSimilarityKey from a letter and a number, "R100".
void gitSetSimilarity(NEBDictionary& record, std::string_view field);
/// Sets a decimal integer. Does nothing for other text.
void gitSetInteger(NEBDictionary& record, NEBConstant key, std::string_view field);
/// Sets a time in git's raw format, "1600000000 +0200"; see git-log(1), --date=raw. Does nothing
/// for other text.
void gitSetTime(NEBDictionary& record, const GitTimeKeys& keys, std::string_view field);

/// Sets a time zone, "+0200", in minutes. Does nothing for other text.
void gitSetTimeZone(NEBDictionary& record, NEBConstant key, std::string_view field);

/// Returns a version of a file in conflict, for NEBSourceControlOperationStagesKey.
[[nodiscard]] NEBDictionary gitStage(std::int64_t stage, std::string_view mode,
                                     std::string_view id);

/// Returns a string, or bytes if the field is not UTF-8.
[[nodiscard]] NEBValue gitTextOrBytes(const Data& output, std::string_view field);

/// Returns the name in a field that git quotes only if the name has a quote, a backslash or a
/// control character (core.quotePath=false).
[[nodiscard]] std::string gitUnquotedName(std::string_view field);

}  // namespace neb
