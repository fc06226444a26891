// NEBSourceControlErrorCatalogue.h - the host's own translation of what git says when it fails.
//
// git rewords its messages from version to version; the catalogue knows a failure by the texts of
// all of them. It serves after a plug-in's own translation, and it gives every error its class.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

/// The class of failure that the text shows, "unknown" rather than a guess. What the far end said
/// (the lines that begin with "remote:") counts for nothing, and a warning only where nothing else
/// tells. Of what git said in more than 64 KiB, the first and the last 32 count. From any thread.
[[nodiscard]] NEB_EXPORT std::string_view NEBSourceControlErrorClassOfText(std::string_view text);

/// Returns the text as an error of its class, with the class's code (-1 where it has none). The
/// description is a sentence for people, see NEBSourceControlErrorClasses.h; for the class
/// "unknown" and the codes -200 and -300 it is the text itself. The suggestion is the catalogue's
/// advice for this text, else the advice of the class, else git's hints, else absent. The error's
/// text, hints, remote lines and files are set; how a child ended is not. `request` gives the name
/// of the source tree. Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlErrorFromText(std::string_view text, const NEBSourceControlRequest& request);

/// The same without remote lines and files, for a caller that reads them from more than this text.
/// From any thread.
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlErrorWithoutDetails(std::string_view text, const NEBSourceControlRequest& request);

}  // namespace neb
