#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"

#include <algorithm>
#include <array>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorDetails.h"
#include "NEBFoundation/NEBSourceControlErrorStatements.h"

namespace neb {

namespace {

/// Holds where `first` stands in the text and, unless that is empty, `second` somewhere behind it.
/// In small letters, as the text is when it is looked at.
struct Sign {
    std::string_view first, second = {};
};

/// What a person is told where the text of git says less.
struct Sentence {
    std::string_view description = {};  // "%@" is the source tree's name
    std::string_view suggestion = {};
};

struct Row {
    std::string_view errorClass;
    std::int64_t code;
    /// Any of them shows the class.
    std::array<Sign, 7> signs;
    /// Without a description, the text itself is the error's.
    Sentence sentence = {};
};

constexpr std::int64_t generic = NEBSourceControlGenericError;
constexpr std::int64_t missingAtRevision = NEBSourceControlFileMissingAtRevisionError;
constexpr std::int64_t notReachable = NEBSourceControlNotReachableError;
constexpr std::int64_t authentication = NEBSourceControlAuthenticationError;
constexpr std::int64_t uncommitted = NEBSourceControlUncommittedChangesError;
constexpr std::int64_t remoteAhead = NEBSourceControlRemoteAheadError;
constexpr std::int64_t targetExists = NEBSourceControlRenameTargetExistsError;
constexpr std::int64_t sourceEmpty = NEBSourceControlSourceDirectoryEmptyError;
constexpr std::int64_t notVersioned = NEBSourceControlNotVersionedError;
constexpr std::int64_t branchRemoval = NEBSourceControlBranchRemovalError;
constexpr std::int64_t noTracking = NEBSourceControlTrackingBranchNotFoundError;
constexpr std::int64_t fastForward = NEBSourceControlFastForwardError;
constexpr std::int64_t binaryMerge = NEBSourceControlBinaryMergeError;
constexpr std::int64_t noPermission = NEBSourceControlNoPermissionError;

constexpr Sentence uncommittedChanges{
    "The operation could not be performed because the working copy \"%@\" has uncommitted changes.",
    ""};
constexpr Sentence notTheLatest{
    "The operation could not be performed because \"%@\" does not have the latest remote changes.",
    "Pull the remote changes and try again."};

/// The first row that a text shows decides: what is special stands before what is general, and the
/// cause before what only accompanies it. In a comment, the git version that brought a text in or
/// did away with it, where one did.
constexpr Row rows[] = {
    // a hook's own words stand before this, and must not choose
    {"message-empty",
     generic,
     {{{"empty commit message.", "not committing merge; use '"}}},
     {"The commit has no message; nothing was committed."}},
    {NEBSourceControlLocalHookErrorClass.text(),
     generic,
     {{{"not committing merge; use '"}}},
     {"A hook of the repository refused the merge; it is made, but not committed."}},
    {NEBSourceControlLocalHookErrorClass.text(),
     generic,
     {{{"ref updates aborted by hook"}}},
     {"A hook of the repository refused to change a branch or tag."}},
    {"other-tools", generic, {{{": clean filter '", "' failed"}, {": smudge filter ", " failed"}}}},
    // the machine
    {"disk-full",
     generic,
     {{{"no space left on device"},
       {"disk quota exceeded"},
       {"out of diskspace"},
       {"tar: ", ": wrote only "}}}},  // what still had room, of the last block
    {"owner-not-trusted",
     generic,
     {{{"detected dubious ownership in repository"},
       {"unsafe repository ("}}}},  // 2.35.2 and its siblings only
    {"configuration-broken",
     generic,
     {{{"bad config line"},
       {"bad numeric config value"},
       {"bad boolean config value"},
       {"bad config variable"}}}},
    {"configuration-broken",
     generic,
     {{{"exceeded maximum include depth"},
       {"bad config value for"},
       {"unable to parse ", "from command-line config"}}}},
    {"index-damaged",
     generic,
     {{{"index file corrupt"},
       {"index file smaller than expected"},
       {"unable to map index file"},
       {"error: bad signature 0x"},
       {"cache entry has null sha1"}}}},
    {"repository-format-unknown",
     generic,
     {{{"expected git repo version"}, {"unknown repository extension"}}}},
    {"objects-damaged",
     generic,
     {{{"fatal: bad object head"},  // nobody named a revision
       {"error: bad tree object head"},
       {"error: unable to unpack ", " header"},
       {"failed to traverse parents of commit"},
       {"unable to read tree "},
       {"error: unable to read sha1 file of "},
       {"error: invalid object "}}}},
    // before what git says when a filter of its own does not answer
    {"other-tools", generic, {{{"git-lfs", "not found"}}}},
    {"program-missing", generic, {{{": not found", "the remote end hung up unexpectedly"}}}},
    // the way to the far end
    {"ssh-key-refused",
     authentication,
     {{{"permission denied (", "publickey"},
       {"permission denied (", "password"},
       {"permission denied (", "keyboard-interactive"},
       {"permission denied (", "gssapi"}}}},
    {"ssh-host-key", notReachable, {{{"host key verification failed"}}}},
    {"permission-denied",
     noPermission,
     {{{"permission denied"},
       {"insufficient permission for adding an object"},
       {"read-only file system"}}}},
    {"index-locked", generic, {{{"index.lock': file exists"}}}},
    {"credentials-refused", authentication, {{{"authentication failed for '"}}}},
    {"credentials-needed",
     authentication,
     {{{"could not read username for"},
       {"could not read password for"},
       {"authentication realm: <"}}}},  // Subversion
    {"certificate-untrusted",
     authentication,
     {{{"ssl certificate problem"},  // OpenSSL
       {"server certificate verification failed"},
       {"error setting certificate verify locations"},
       {"certificate subject name ", "match"}}}},  // both
    {"tls-failed",
     notReachable,
     {{{"gnutls_handshake() failed"}, {"ssl_connect"}, {"ssl routines"}}}},
    {"host-unknown",
     notReachable,
     {{{"could not resolve host"},
       {"could not resolve proxy"},
       {"unable to look up "},
       {"resolving timed out"}}}},
    {"repository-not-found",
     notReachable,
     {{{"repository '", "' not found"},
       {"does not appear to be a git repository"},
       {"repository '", "' does not exist"},
       {"/info/refs not valid: "},
       {"error: repository not found"}}}},
    {"http-refused",
     generic,
     {{{"the requested url returned error: 4"}, {"rate limited by"}}}},  // the latter since 2.54
    {"server-failed", notReachable, {{{"the requested url returned error: 5"}}}},
    {"host-unreachable",
     notReachable,
     {{{"failed to connect to"},
       {"connect to server"},
       {"connection refused"},
       {"connection timed out"},
       {"operation timed out"},
       {"network is unreachable"},
       {"no route to host"}}}},
    {"host-unreachable", notReachable, {{{"ssl connection timeout"}, {"host is down"}}}},
    // a push that was refused; the reason stands in brackets behind the branch
    {"push-stale",
     remoteAhead,
     {{{"[rejected]", "(stale info)"}, {"[rejected]", "(remote ref updated since checkout)"}}},
     notTheLatest},
    {"remote-ahead",
     remoteAhead,
     {{{"[rejected]", "(fetch first)"},
       {"(non-fast-forward)", "failed to push some refs"},  // a fetch says the first part too
       {"merge the remote changes (e.g. '"},                // until 1.8.3
       {"transaction is out of date"}}},                    // Subversion
     notTheLatest},
    {"diverged", generic, {{{"[rejected]", "(non-fast-forward)"}}}},
    {"remote-hook-refused",
     generic,
     {{{"[remote rejected]", "hook declined)"}, {"a repository hook failed"}}}},  // Subversion
    {"branch-checked-out-there",
     generic,
     {{{"[remote rejected]", "(branch is currently checked out)"}}}},
    {"tag-exists",
     generic,
     {{{"[rejected]", "(already exists)"}, {"[rejected]", "(would clobber existing tag)"}}}},
    {"nothing-to-push-from", generic, {{{"src refspec ", "does not match any"}}}},
    {"remote-refused", generic, {{{"[remote rejected]"}}}},
    {"connection-cut",
     notReachable,
     {{{"the remote end hung up unexpectedly"},
       {"early eof"},
       {"rpc failed"},
       {"connection reset by peer"},
       {"connection closed by "},  // OpenSSH
       {"empty reply from server"},
       {"transfer closed with "}}}},
    // the state of the working copy
    {"local-changes",
     uncommitted,
     {{{"your local changes to the following files would be overwritten by"},
       {"cannot continue with staged changes in the following files"},
       {"you have local changes to '", "cannot switch branches"},
       {"your local changes to '", "would be overwritten by"}}},
     uncommittedChanges},
    {"untracked-in-the-way",
     generic,
     {{{"untracked working tree file", "would be overwritten by"},
       {"untracked working tree file", "would be removed by"},
       {"updating the following directories would lose untracked files"}}}},
    {"conflict-unresolved",
     generic,
     {{{"because you have unmerged files"}, {"you need to resolve your current index first"}}}},
    {"conflict-unresolved",
     generic,
     {{{"warning: path '", "' is unmerged"}}},
     {"Files that are in conflict stay as they were.", "Settle them and add them."}},
    {"merge-unfinished",
     generic,
     {{{"you have not concluded your merge"},
       {"you have not concluded your cherry-pick"},
       {"cannot do a partial commit during a "}}}},
    {"merge-unfinished",
     generic,
     {{{"there is already a rebase-"}}},
     {"A rebase was begun here and is not finished.",
      "\"git rebase --continue\" goes on with it, \"git rebase --abort\" takes it back."}},
    {"needs-clean-tree",
     uncommitted,
     {{{"you have unstaged changes"},
       {"index contains uncommitted changes"},
       {"update-index --refresh:"},            // Subversion
       {"cannot dcommit with a dirty index"},  // Subversion
       {"cannot rebase: "}}},
     uncommittedChanges},
    {"conflict", binaryMerge, {{{"cannot merge binary files"}}}},
    {"conflict",
     generic,
     {{{"could not apply "}}}},  // a rebase, which goes on otherwise than a merge
    {"conflict",
     generic,
     {{{"conflict ("}, {"automatic merge failed"}}},
     {"There are conflicts that could not be settled automatically.",
      "Settle them in the files, add these, and commit."}},
    {"no-commits-yet",
     generic,
     {{{"does not have any commits yet"},
       {"yet to be born"},
       {"bad default revision '"},
       {"no such ref: head"}}}},
    {"not-a-repository", generic, {{{"not a git repository"}, {"invalid gitfile format"}}}},
    {"no-work-tree", generic, {{{"must be run in a work tree"}}}},
    {"reference-in-the-way", generic, {{{"cannot lock ref '", "cannot create '"}}}},
    {"ref-locked",
     generic,
     {{{"cannot lock ref '"},
       {"cannot lock the ref '"},
       {"could not lock config file"},
       {".lock': file exists"}}}},
    // names that git does not know, or knows already
    {"path-unknown",
     missingAtRevision,
     {{{"exists on disk, but not in"},
       {"path '", "' does not exist in"},
       {"path '", "' does not exist ("},
       {"no such path "},
       {"cannot lstat '", "no such file or directory"}}}},
    {"remote-branch-unknown",
     generic,
     {{{"couldn't find remote ref"},
       {"remote branch ", "not found in upstream"},
       {"the requested upstream branch '", "does not exist"}}}},
    {"path-unknown",
     notVersioned,
     {{{"did not match any file"},
       {"not under version control, source="},
       {"bad source, source="}}}},
    {"path-ignored", generic, {{{"paths are ignored by one of your .gitignore files"}}}},
    {"path-invalid", generic, {{{"empty string is not a valid pathspec"}}}},
    {"path-outside", generic, {{{"' is outside repository"}, {"' is beyond a symbolic link"}}}},
    {"path-in-submodule", generic, {{{"pathspec '", "' is in submodule '"}}}},
    {"revision-unknown",
     missingAtRevision,
     {{{"unknown revision or path not in the working tree"},
       {"bad revision '"},
       {"not a valid object name"},
       {"not a valid commit name"},
       {"not something we can merge"},
       {"invalid reference: "},
       {"reference is not a tree: "}}}},
    {"revision-unknown",
     missingAtRevision,
     {{{"fatal: bad object "},
       {"not a tree object"},
       {"is not a valid branch point"},
       {"needed a single revision"},
       {"both revision and filename"}}}},
    {"branch-not-merged", branchRemoval, {{{"is not fully merged"}}}},
    {"branch-exists", generic, {{{"a branch named '", "' already exists"}}}},
    {"branch-in-use",
     branchRemoval,
     {{{"cannot delete branch '", "used by worktree at"},
       {"cannot delete branch '", "checked out at"}}}},
    {"branch-in-use",
     generic,
     {{{"used by worktree at"},  // 2.43
       {"is already checked out at"},
       {"refusing to fetch into branch '", "checked out at"}}}},
    {"branch-name-invalid", generic, {{{"is not a valid branch name"}, {"invalid refspec '"}}}},
    {"branch-unknown",
     branchRemoval,
     {{{"error: branch '", "' not found"}, {"remote-tracking branch '", "' not found"}}}},
    {"remote-unknown", generic, {{{"no such remote"}, {"no remote configured to list refs from"}}}},
    {"remote-name-invalid", generic, {{{"is not a valid remote name"}}}},
    {"remote-exists",
     generic,
     {{{"error: remote ", " already exists"}, {"fatal: remote ", " already exists"}}}},
    {"no-push-destination",
     generic,
     {{{"no configured push destination"}, {"no remote repository specified"}}}},
    {"no-upstream",
     noTracking,
     {{{"has no upstream branch"},
       {"there is no tracking information for the current branch"},
       {"because this is not the default configured remote"},
       {"no remote for the current branch"},
       {"no default upstream defined for the current branch"}}}},
    {"destination-exists",
     targetExists,
     {{{"destination exists, source="},
       {"destination already exists, source="},
       {"cannot move directory over file, source="}}}},
    {"destination-exists", generic, {{{"already exists and is not an empty directory"}}}},
    {"destination-missing",
     generic,
     {{{"destination directory does not exist, source="},
       {"renaming '", "' failed: no such file or directory"},
       {"invalid path '", "': no such file or directory"}}}},
    {"source-directory-empty", sourceEmpty, {{{"source directory is empty"}}}},
    // histories
    {"diverged", fastForward, {{{"not possible to fast-forward"}}}},
    {"diverged", generic, {{{"need to specify how to reconcile divergent branches"}}}},
    {"unrelated-histories",
     generic,
     {{{"refusing to merge unrelated histories"}, {"...", ": no merge base"}}}},
    // commits
    {"nothing-to-commit",
     generic,
     {{{"no changes added to commit"}}},
     {"There is nothing to commit: no change has been added.",
      "Add the changes that belong to the commit, or name their files."}},
    {"nothing-to-commit",
     generic,
     {{{"nothing added to commit"}}},
     {"There is nothing to commit: all that is new are files that are not tracked yet.",
      "Add the files that belong to the commit."}},
    {"nothing-to-commit", generic, {{{"nothing to commit"}}}, {"There is nothing to commit."}},
    {"identity-unknown",
     generic,
     {{{"please tell me who you are"},
       {"empty ident name"},
       {"no email was given and auto-detection is disabled"},
       {"no name was given and auto-detection is disabled"},
       {"unable to auto-detect email address"},
       {"name consists only of disallowed characters"}}},
     {"The commit has no author: your name or your e-mail address is not configured.",
      "Set user.name and user.email in git's configuration and try again."}},
    {"message-empty",
     generic,
     {{{"aborting commit due to empty commit message"}}},
     {"The commit has no message; nothing was committed."}},
    {"signing-failed", generic, {{{"failed to sign the data"}}}},
    // the rest
    {"transport-forbidden", generic, {{{"transport '", "' not allowed"}}}},
    {"transport-unknown",
     generic,
     {{{"unable to find remote helper for '"}, {"git: 'remote-' is not a git command"}}}},
    {"objects-damaged",
     generic,
     {{{"object file ", " is empty"},
       {"loose object ", " is corrupt"},
       {"packed object ", " is corrupt"},
       {"could not parse head commit"},
       {"does not point to a valid object"}}}},
    {"other-tools",
     generic,
     {{{"no url found for submodule path"},
       {"fetched in submodule path '", "but it did not contain"},
       {"git-lfs"},
       {"patch does not apply"}}}},
    {"program-missing",
     generic,
     {{{"cannot run ", "no such file or directory"}, {"' is not a git command."}}}},
    // accompanies whatever kept a commit from being written, and stands alone where that is untold
    {"signing-failed", generic, {{{"failed to write commit object"}}}},
    {"remote-refused", generic, {{{"fatal: remote error: "}}}},
    // accompanies most failures on the way to the far end, and stands alone where no cause is told
    {"remote-unreadable", notReachable, {{{"could not read from remote repository"}}}},
};

bool shows(std::string_view text, const Sign& sign) {
    const std::size_t place = sign.first.empty() ? std::string_view::npos : text.find(sign.first);
    return place != std::string_view::npos &&
           (sign.second.empty() ||
            text.find(sign.second, place + sign.first.size()) != std::string_view::npos);
}

const Row* firstRowShownBy(std::string_view text) {
    const auto* row = std::find_if(std::begin(rows), std::end(rows), [text](const Row& candidate) {
        return std::any_of(candidate.signs.begin(), candidate.signs.end(),
                           [text](const Sign& sign) { return shows(text, sign); });
    });
    return row != std::end(rows) ? row : nullptr;
}

const Row* rowOfText(std::string_view text) {
    const std::string statements = NEBSourceControlStatementsInText(text);
    const Row* row = firstRowShownBy(NEBSourceControlStatementsWithoutAsides(statements));
    return row != nullptr ? row : firstRowShownBy(statements);
}

}  // namespace

std::string_view NEBSourceControlErrorClassOfText(std::string_view text) {
    const Row* row = rowOfText(text);
    return row != nullptr ? row->errorClass : NEBSourceControlUnknownErrorClass.text();
}

NEBSourceControlError NEBSourceControlErrorFromText(std::string_view text,
                                                    const NEBSourceControlRequest& request) {
    const Row* row = rowOfText(text);
    NEBSourceControlError error;
    error.code = row != nullptr ? row->code : generic;
    error.errorClass = row != nullptr ? row->errorClass : NEBSourceControlUnknownErrorClass.text();
    error.text = text;
    error.hints = NEBSourceControlHintsInText(text);
    error.remoteLines = NEBSourceControlRemoteLinesInText(text);
    error.files = NEBSourceControlFilesInText(text, *error.errorClass);
    const Sentence sentence = row != nullptr ? row->sentence : Sentence{};
    error.userInfo.set(NEBLocalizedDescriptionKey,
                       sentence.description.empty()
                           ? std::string(text)
                           : formattedText(sentence.description, {request.sourceTreeName()}));
    const std::string suggestion = sentence.suggestion.empty()
                                       ? NEBSourceControlAdviceOfHints(error.hints)
                                       : std::string(sentence.suggestion);
    if (!suggestion.empty()) {
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, suggestion);
    }
    return error;
}

}  // namespace neb
