#include "JSON/Schema/TypeMembers.h"

#include <algorithm>
#include <iterator>

namespace neb::nebsc {

namespace {

using Kind = ValueKind;

constexpr ValueDescription optionValues[] = {
    {"RepositoryPath", Kind::string},
    {"WorkingCopyPath", Kind::string},
    {"Branch", Kind::string},
    {"RemoteName", Kind::string},
    {"Force", Kind::boolean},
    {"SourceLocation", Kind::string},
    {"Message", Kind::string},
    {"AllowEmptyCommit", Kind::boolean},
    {"LogOutputLimit", Kind::integer},
    {"LogOutputFilesChanged", Kind::boolean},
    {"DiffFileNameAndStatusOnly", Kind::boolean},
    {"DiffFromCommonAncestor", Kind::boolean},
    {"PullByFastForwarding", Kind::boolean},
    {"FetchMissingObjects", Kind::boolean},
    {"UntrackedFiles", Kind::string},
    {"IgnoredFiles", Kind::boolean},
    {"StartingRevisions", Kind::strings},
    {"ExcludedRevisions", Kind::strings},
    {"AllReferences", Kind::boolean},
    {"Order", Kind::string},
    {"Reverse", Kind::boolean},
    {"FirstParent", Kind::boolean},
    {"RewriteParents", Kind::boolean},
    {"Follow", Kind::boolean},
    {"SearchMessage", Kind::string},
    {"SearchAuthor", Kind::string},
    {"SearchContent", Kind::string},
    {"IgnoreCase", Kind::boolean},
    {"Since", Kind::string},
    {"Until", Kind::string},
    {"LineCounts", Kind::boolean},
    {"Staged", Kind::boolean},
    {"ContextLines", Kind::integer},
    {"IgnoreWhiteSpace", Kind::boolean},
    {"FirstLine", Kind::integer},
    {"LastLine", Kind::integer},
    {"Content", Kind::text},
    {"DetectMoves", Kind::boolean},
    {"DetectCopies", Kind::boolean},
    {"Stage", Kind::integer},
    {"ApplyFilters", Kind::boolean},
    {"Recursive", Kind::boolean},
    {"OmitSizes", Kind::boolean},
    {"SettingNames", Kind::strings},
    {"Action", Kind::string},
    {"DryRun", Kind::boolean},
    {"Patch", Kind::text},
    {"IncludeUntracked", Kind::boolean},
    {"Amend", Kind::boolean},
    {"All", Kind::boolean},
    {"Author", Kind::text},
    {"SignOff", Kind::boolean},
    {"KeepIndex", Kind::boolean},
    {"RestoreIndex", Kind::boolean},
    {"SetUpstream", Kind::boolean},
    {"ForceWithLease", Kind::booleanOrString},
    {"Tags", Kind::boolean},
    {"Strategy", Kind::string},
    {"ResetMode", Kind::string},
    {"Mainline", Kind::integer},
    {"Initialize", Kind::boolean},
    {"FollowBranch", Kind::boolean},
    {"CreateBranch", Kind::boolean},
    {"Value", Kind::text},
    {"Scope", Kind::string},
};

constexpr ValueDescription recordValues[] = {
    {"Path", Kind::string},
    {"WCStatus", Kind::integer},
    {"Name", Kind::string},
    {"IsLeaf", Kind::boolean},
    {"Revision", Kind::string},
    {"Author", Kind::string},
    {"AuthorEmail", Kind::string},
    {"Date", Kind::date},
    {"Message", Kind::string},
    {"Files", Kind::statesOfPaths},
    {"LineNumber", Kind::string},
    {"Content", Kind::string},
    {"RemoteName", Kind::string},
    {"RemoteOrigin", Kind::string},
    {"RepositoryRoot", Kind::string},
    {"Type", Kind::string},
    {"UsesGitSVN", Kind::boolean},
    {"NameBytes", Kind::bytes},
    {"PathBytes", Kind::bytes},
    {"OriginalPath", Kind::string},
    {"OriginalPathBytes", Kind::bytes},
    {"Kind", Kind::string},
    {"ObjectID", Kind::string},
    {"ObjectType", Kind::string},
    {"Mode", Kind::string},
    {"Size", Kind::integer},
    {"Subject", Kind::string},
    {"Body", Kind::string},
    {"Time", Kind::integer},
    {"TimeOffset", Kind::integer},
    {"PeeledID", Kind::string},
    {"SymbolicTarget", Kind::string},
    {"IsCurrent", Kind::boolean},
    {"Upstream", Kind::string},
    {"UpstreamBytes", Kind::bytes},
    {"UpstreamIsGone", Kind::boolean},
    {"Ahead", Kind::integer},
    {"Behind", Kind::integer},
    {"Worktree", Kind::string},
    {"WorktreeBytes", Kind::bytes},
    {"State", Kind::string},
    {"IndexState", Kind::string},
    {"WorkingTreeState", Kind::string},
    {"Similarity", Kind::integer},
    {"Conflict", Kind::string},
    {"Stages", Kind::records, "Stage Mode ObjectID"},
    {"Stage", Kind::integer},
    {"HEADMode", Kind::string},
    {"IndexMode", Kind::string},
    {"WorkingTreeMode", Kind::string},
    {"HEADObjectID", Kind::string},
    {"IndexObjectID", Kind::string},
    {"StashCount", Kind::integer},
    {"IsSubmodule", Kind::boolean},
    {"SubmoduleCommitChanged", Kind::boolean},
    {"SubmoduleModified", Kind::boolean},
    {"SubmoduleHasUntracked", Kind::boolean},
    {"Parents", Kind::strings},
    {"References", Kind::strings},
    {"IsHEAD", Kind::boolean},
    {"IsGrafted", Kind::boolean},
    {"AuthorTime", Kind::integer},
    {"AuthorTimeOffset", Kind::integer},
    {"Committer", Kind::string},
    {"CommitterEmail", Kind::string},
    {"CommitterTime", Kind::integer},
    {"CommitterTimeOffset", Kind::integer},
    {"Changes", Kind::records,
     "Path OriginalPath State Similarity OldMode NewMode OldObjectID NewObjectID "
     "AddedLines DeletedLines IsBinary"},
    {"OldMode", Kind::string},
    {"NewMode", Kind::string},
    {"OldObjectID", Kind::string},
    {"NewObjectID", Kind::string},
    {"AddedLines", Kind::integer},
    {"DeletedLines", Kind::integer},
    {"IsBinary", Kind::boolean},
    {"Hunks", Kind::records, "OldStart OldCount NewStart NewCount Heading Lines"},
    {"OldStart", Kind::integer},
    {"OldCount", Kind::integer},
    {"NewStart", Kind::integer},
    {"NewCount", Kind::integer},
    {"Heading", Kind::string},
    {"Lines", Kind::strings},
    {"FirstLine", Kind::integer},
    {"OriginalLine", Kind::integer},
    {"LineCount", Kind::integer},
    {"PreviousID", Kind::string},
    {"IsBoundary", Kind::boolean},
    {"IsUncommitted", Kind::boolean},
    {"ContentBytes", Kind::bytes},
    {"Source", Kind::string},
    {"SourceBytes", Kind::bytes},
    {"Reason", Kind::string},
    {"RemoteLines", Kind::strings},
    {"Step", Kind::integer},
    {"StepCount", Kind::integer},
    {"Onto", Kind::string},
    {"URL", Kind::string},
    {"Description", Kind::string},
    {"Branch", Kind::string},
    {"BranchBytes", Kind::bytes},
    {"IsMain", Kind::boolean},
    {"IsBare", Kind::boolean},
    {"IsDetached", Kind::boolean},
    {"IsLocked", Kind::boolean},
    {"LockReason", Kind::string},
    {"IsPrunable", Kind::boolean},
    {"PruneReason", Kind::string},
    {"Value", Kind::string},
    {"ValueBytes", Kind::bytes},
    {"Scope", Kind::string},
    {"Origin", Kind::string},
    {"OriginBytes", Kind::bytes},
};

constexpr TypeMembers typeMembers[] = {
    {0, "destination files", "RepositoryPath WorkingCopyPath", ""},  // add
    {1, "destination", "SourceLocation", ""},                        // create branch
    {2, "destination", "Force", ""},                                 // delete branch
    {3, "files", "Message AllowEmptyCommit RepositoryPath WorkingCopyPath", "Revision"},  // commit
    {4, "files", "", ""},                                                                 // ignore
    {5, "files", "", ""},                                                                 // remove
    {6, "files destination", "RepositoryPath WorkingCopyPath", ""},  // add files
    {7, "files", "", "Content"},                                     // revert
    {8, "destination", "", ""},                                      // make directory
    {9, "endingRevision destination", "", ""},                       // merge
    {10, "files destination", "", ""},                               // copy
    {11, "files destination", "", ""},                               // move
    {13, "remote destination endingRevision repositoryToAuthenticate",
     "PullByFastForwarding RemoteName Branch RepositoryPath WorkingCopyPath", "Content"},  // update
    {14, "destination", "", "Content"},        // checkout
    {15, "destination", "", "Path WCStatus"},  // status
    {17, "files", "Branch", "Name IsLeaf"},    // list
    {18, "startingRevision endingRevision files",
     "Branch LogOutputLimit LogOutputFilesChanged RepositoryPath WorkingCopyPath",
     "Revision Author AuthorEmail Date Message Files"},  // log
    {19, "files", "", "RemoteOrigin RepositoryRoot"},    // info
    {20, "files startingRevision destination", "RepositoryPath WorkingCopyPath",
     "Path"},  // export files
    {21, "files startingRevision destination", "RepositoryPath WorkingCopyPath", "Path"},  // export
    {22, "destination startingRevision", "RepositoryPath WorkingCopyPath", ""},  // export tree
    {24, "", "RepositoryPath WorkingCopyPath",
     "RemoteName RemoteOrigin Type UsesGitSVN"},     // list remotes
    {25, "repositoryToAuthenticate", "", "Name"},    // list branches
    {26, "", "", "Name"},                            // current branch
    {27, "", "RepositoryPath WorkingCopyPath", ""},  // create repository
    {28, "files startingRevision", "RepositoryPath WorkingCopyPath",
     "Revision Author Date LineNumber"},                         // blame
    {29, "destination repositoryToAuthenticate", "Branch", ""},  // clone
    {30, "startingRevision endingRevision destination files",
     "DiffFileNameAndStatusOnly DiffFromCommonAncestor RepositoryPath WorkingCopyPath",
     "Content Path WCStatus"},                                         // diff
    {31, "files", "RepositoryPath WorkingCopyPath", "Revision Name"},  // list remote branches
    {32, "files", "RepositoryPath WorkingCopyPath",
     "Revision Name"},  // list remote branches (second form)
    {33, "remote destination repositoryToAuthenticate", "RemoteName Branch", "Content"},  // push
    {34, "destination files", "RepositoryPath WorkingCopyPath", ""},       // add remote
    {35, "destination", "RepositoryPath WorkingCopyPath", ""},             // remove remote
    {36, "destination", "RemoteName Branch", ""},                          // track remote branch
    {37, "remote repositoryToAuthenticate", "RemoteName", ""},             // fetch
    {38, "", "Branch RepositoryPath WorkingCopyPath", "RemoteName Name"},  // tracking branch name
    {39, "startingRevision endingRevision", "", "Revision"},               // merge base
    {1000, "files",
     "UntrackedFiles IgnoredFiles RepositoryPath WorkingCopyPath FetchMissingObjects",
     "Kind ObjectID Name Upstream Ahead Behind StashCount Path IndexState "
     "WorkingTreeState HEADMode IndexMode WorkingTreeMode HEADObjectID IndexObjectID "
     "OriginalPath Similarity Conflict Stages IsSubmodule SubmoduleCommitChanged "
     "SubmoduleModified SubmoduleHasUntracked"},  // working copy state
    {1001, "startingRevision endingRevision files",
     "StartingRevisions ExcludedRevisions AllReferences LogOutputLimit Order Reverse "
     "FirstParent RewriteParents Follow SearchMessage SearchAuthor SearchContent IgnoreCase "
     "Since Until LogOutputFilesChanged LineCounts RepositoryPath WorkingCopyPath "
     "FetchMissingObjects",
     "ObjectID Parents References IsHEAD IsGrafted Author AuthorEmail AuthorTime "
     "AuthorTimeOffset Committer CommitterEmail CommitterTime CommitterTimeOffset Subject "
     "Body Changes"},  // history
    {1002, "files startingRevision",
     "Stage ApplyFilters RepositoryPath WorkingCopyPath FetchMissingObjects",
     "Content"},  // content
    {1003, "files startingRevision",
     "Content FirstLine LastLine IgnoreWhiteSpace DetectMoves DetectCopies RepositoryPath "
     "WorkingCopyPath FetchMissingObjects",
     "FirstLine LineCount Lines OriginalLine OriginalPath IsUncommitted ObjectID Author "
     "AuthorEmail AuthorTime AuthorTimeOffset Committer CommitterEmail CommitterTime "
     "CommitterTimeOffset Subject PreviousID IsBoundary"},  // annotation
    {1004, "files startingRevision endingRevision",
     "Staged DiffFromCommonAncestor ContextLines IgnoreWhiteSpace RepositoryPath "
     "WorkingCopyPath FetchMissingObjects",
     "Path State OriginalPath Similarity OldMode NewMode OldObjectID NewObjectID "
     "AddedLines DeletedLines Hunks IsBinary"},                         // changes
    {1005, "files", "Patch Force RepositoryPath WorkingCopyPath", ""},  // stage
    {1006, "files", "Patch Force RepositoryPath WorkingCopyPath", ""},  // unstage
    {1007, "files", "Patch IncludeUntracked DryRun Force RepositoryPath WorkingCopyPath",
     "Path State"},  // discard
    {1008, "destination", "RepositoryPath WorkingCopyPath FetchMissingObjects",
     "Name ObjectID ObjectType PeeledID Subject Time TimeOffset SymbolicTarget Worktree "
     "IsCurrent Upstream UpstreamIsGone Ahead Behind"},  // references
    {1009, "startingRevision files",
     "Action Message IncludeUntracked KeepIndex RestoreIndex RepositoryPath "
     "WorkingCopyPath",
     "Name ObjectID Subject Time TimeOffset Path State Kind OldObjectID Conflict Stages"},  // stash
    {1010, "", "RepositoryPath WorkingCopyPath",
     "Kind ObjectID Step StepCount Branch Onto Path Conflict Stages"},  // unfinished operation
    {1011, "files",
     "Message All Amend Author SignOff AllowEmptyCommit RepositoryPath WorkingCopyPath",
     "ObjectID"},  // create commit
    {1012, "destination repositoryToAuthenticate",
     "RemoteName Branch SetUpstream ForceWithLease Tags DryRun Action RepositoryPath "
     "WorkingCopyPath",
     "Kind Name Source State Reason OldObjectID NewObjectID RemoteLines"},  // publish
    {1013, "destination repositoryToAuthenticate",
     "RemoteName Branch Strategy RepositoryPath WorkingCopyPath",
     "Kind OldObjectID ObjectID Path Conflict Stages"},  // integrate
    {1014, "startingRevision",
     "Action Mainline ResetMode DryRun Force RepositoryPath WorkingCopyPath",
     "Kind OldObjectID ObjectID Path Conflict Stages State"},  // pick
    {1015, "destination startingRevision", "Action Message Force RepositoryPath WorkingCopyPath",
     "Name ObjectID"},  // tag
    {1016, "files repositoryToAuthenticate",
     "Action Initialize Recursive FollowBranch Force RepositoryPath WorkingCopyPath",
     "Name Path URL Branch IndexObjectID ObjectID Description State"},  // submodules
    {1017, "destination startingRevision",
     "Action Branch CreateBranch DryRun Force RepositoryPath WorkingCopyPath",
     "IsMain Worktree ObjectID Branch IsDetached IsBare IsLocked LockReason IsPrunable "
     "PruneReason Path State"},  // worktrees
    {1018, "", "Action SettingNames Value Scope All RepositoryPath WorkingCopyPath",
     "Kind Author AuthorEmail Name Value Scope Origin"},  // identity and settings
    {1019, "files startingRevision",
     "Recursive OmitSizes RepositoryPath WorkingCopyPath FetchMissingObjects",
     "Kind Name Path Mode ObjectID Size"},  // tree
    {1020, "", "Action RepositoryPath WorkingCopyPath",
     "Kind OldObjectID ObjectID Path Conflict Stages"},  // finish
    {1021, "destination", "Action Branch Force RepositoryPath WorkingCopyPath",
     "Name Source ObjectID Upstream"},  // change branch
};

}  // namespace

std::span<const ValueDescription> describedOptions() {
    return optionValues;
}

std::span<const ValueDescription> describedRecordKeys() {
    return recordValues;
}

const TypeMembers& membersOfType(std::int32_t type) {
    static constexpr TypeMembers none{};
    const auto* row = std::find_if(std::begin(typeMembers), std::end(typeMembers),
                                   [type](const TypeMembers& other) { return other.type == type; });
    return row != std::end(typeMembers) ? *row : none;
}

}  // namespace neb::nebsc
