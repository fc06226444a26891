// ErrorFileRows.h - where git names the files of a failure.
#pragma once

#include <span>
#include <string_view>

namespace neb {

/// A line that begins with `beginning` names files between `before` and `after`, once or several
/// times. If `before` is empty, the name begins after `beginning`; if `after` is empty, it ends
/// with the line. Letter case does not matter, because git changed it now and then.
struct ErrorFileMention {
    std::string_view errorClass;
    std::string_view beginning, before, after;
};

/// A line that contains `heading` precedes a list of files, each on a line after `indentation`.
/// The case of letters does not matter.
struct ErrorFileList {
    std::string_view errorClass;
    std::string_view heading, indentation;
};

/// Returns the mentions in order of precedence: in one line, only the first that matches and others
/// with the same beginning count. Thread-safe.
[[nodiscard]] std::span<const ErrorFileMention> errorFileMentions();

/// Returns the lists. Thread-safe.
[[nodiscard]] std::span<const ErrorFileList> errorFileLists();

}  // namespace neb
