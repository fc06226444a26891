// NEBSourceControlErrorCatalogue.h - the host's own translation of git's error messages.
//
// git rewords its messages from version to version, so the catalogue has the texts of all of them.
// The host consults it after the plug-in's own translation, and it gives every error its class.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

/// Returns the class of failure that git's text shows, or "unknown" if it shows none with
/// certainty. Messages from the remote (lines that begin with "remote:") never count, warnings and
/// hints only if no error does. Of a text longer than 64 KiB, the first and the last 32 KiB count.
/// The result lives as long as the library is loaded. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string_view NEBSourceControlErrorClassOfText(std::string_view text);

/// Returns git's text as an error of its class, with the class's code (-1 if it has none).
///
/// The description is a sentence for the user, see NEBSourceControlErrorClasses.h; for the class
/// "unknown" and the codes -200 and -300 it is the text itself. The recovery suggestion is the
/// first of these that exists: the catalogue's advice for this text, the advice of the class, git's
/// hints. Text, hints, remote lines and files of the error are set, the termination status is not.
/// `request` supplies the name of the source tree. Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlErrorFromText(std::string_view text, const NEBSourceControlRequest& request);

/// Like NEBSourceControlErrorFromText(), but leaves out remote lines and files, for a caller that
/// collects them from more than this text. Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlErrorWithoutDetails(std::string_view text, const NEBSourceControlRequest& request);

}  // namespace neb
