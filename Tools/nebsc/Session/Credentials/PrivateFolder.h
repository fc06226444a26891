// PrivateFolder.h - the folder of a CredentialService, with its socket and the link that git
// starts.
#pragma once

#include <string>

namespace neb::nebsc {

/// Returns a new folder that only the user can enter, whose path leaves room for the name of a
/// socket; empty if the system refuses one. It is in the folder for files of the session
/// (XDG_RUNTIME_DIR) or for temporary files.
[[nodiscard]] std::string newPrivateFolder();

/// Removes socket, link and folder. A folder with other files stays.
void removePrivateFolder(const std::string& folder);

/// Removes the private folders of this user that killed processes left: no process listens at the
/// socket, and they are older than a minute, so none is still being made.
void removeAbandonedPrivateFolders();

}  // namespace neb::nebsc
