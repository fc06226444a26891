#include "Completion/RepositoryNames.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "CommandFrame/BranchQueries.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/Text.h"
#include "Session/Deadline.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"
#include "Session/SettingName.h"

namespace neb::nebsc {

namespace {

constexpr std::chrono::seconds timeLimit{1};

constexpr const char* branchPrefix = "refs/heads/";
constexpr const char* tagPrefix = "refs/tags/";
constexpr const char* remotePrefix = "refs/remotes/";

/// Returns whether the reference is the HEAD of a remote, an alias of one of its branches.
bool isHEADOfRemote(std::string_view reference) {
    return reference.starts_with(remotePrefix) && reference.ends_with("/HEAD");
}

}  // namespace

RepositoryNames::RepositoryNames(const HostSession& session)
    : _session(session),
      _end(std::chrono::steady_clock::now() + timeLimit),
      _folder(findCurrentFolder().path.value_or("/")) {}

// ---- queries ----------------------------------------------------------------------------------

NEBSourceControlResult RepositoryNames::recordsOf(std::int32_t type) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = _folder;
    auto request = NEBSourceControlRequest::initWithType(type, tree, std::nullopt, std::nullopt);
    request->repositoryToAuthenticate = tree;
    const RequestResult requestResult =
        _session.perform(request, [this](NEBSourceControlOperation& operation) {
            const auto cancel = [&operation] { operation.cancel(); };
            const Interruption::Work work(_interruption, cancel);
            const Deadline deadline(_end, cancel);
            operation.start();
        });
    return requestResult.outcome && !requestResult.outcome->error
               ? requestResult.outcome->result.value_or(NEBSourceControlResult{})
               : NEBSourceControlResult{};
}

std::string RepositoryNames::outputOf(std::vector<std::string> arguments) {
    ChildProcess process;
    const auto cancel = [&process] { process.cancel(); };
    const Interruption::Work work(_interruption, cancel);
    const Deadline deadline(_end, cancel);
    const ChildOutcome outcome = runGit(process, _session.trace(), std::move(arguments), _folder);
    return outcome.status.isSuccess() ? std::string(outcome.output) : std::string();
}

/// Returns the references with one of the prefixes, without it, in the order of the prefixes.
std::vector<Candidate> RepositoryNames::referencesBelow(const std::vector<std::string>& prefixes) {
    static const std::map<std::string_view, const char*> kinds{
        {branchPrefix, "branch"}, {tagPrefix, "tag"}, {remotePrefix, "remote-tracking branch"}};
    std::vector<std::string> arguments{"for-each-ref", "--format=%(refname)"};
    arguments.insert(arguments.end(), prefixes.begin(), prefixes.end());
    const std::string output = outputOf(std::move(arguments));
    std::vector<Candidate> names;
    for (const std::string& prefix : prefixes) {
        const auto kind = kinds.find(prefix);
        forEachField(output, '\n', [&](std::string_view reference) {
            if (reference.starts_with(prefix) && !isHEADOfRemote(reference)) {
                names.push_back({std::string(reference.substr(prefix.size())),
                                 kind == kinds.end() ? "" : kind->second});
            }
        });
    }
    return names;
}

// ---- names ------------------------------------------------------------------------------------

std::vector<Candidate> RepositoryNames::branches() {
    std::vector<Candidate> names;
    for (const NEBDictionary& record : recordsOf(NEBSourceControlRequestListBranches)) {
        if (std::string name = branchNameOf(record); !name.empty()) {
            names.push_back({std::move(name), "branch"});
        }
    }
    return names;
}

std::vector<Candidate> RepositoryNames::revisions() {
    auto names = referencesBelow({branchPrefix, tagPrefix, remotePrefix});
    if (!names.empty()) {
        names.push_back({"HEAD", "current commit"});
    }
    return names;
}

std::vector<Candidate> RepositoryNames::tags() {
    return referencesBelow({tagPrefix});
}

std::vector<Candidate> RepositoryNames::stashes() {
    std::vector<Candidate> names;
    for (const NEBDictionary& record : recordsOf(NEBSourceControlRequestStash)) {
        names.push_back({std::to_string(names.size()),
                         std::string(record.text(NEBSourceControlOperationSubjectKey))});
    }
    return names;
}

/// The list has two records per remote, one for fetch and one for push.
std::vector<Candidate> RepositoryNames::remotes() {
    std::vector<Candidate> names;
    for (const NEBDictionary& record : recordsOf(NEBSourceControlRequestListRemotes)) {
        const std::string name(record.text(NEBSourceControlOperationRemoteNameKey));
        const bool isKnown =
            std::any_of(names.begin(), names.end(),
                        [&name](const Candidate& other) { return other.text == name; });
        const bool isSubversion = record.value(NEBSourceControlOperationUsesGitSVNKey).isPresent();
        if (!name.empty() && !isKnown && !isSubversion) {
            names.push_back({name, textWithoutPasswords(
                                       record.text(NEBSourceControlOperationRemoteOriginKey))});
        }
    }
    return names;
}

/// Asks `git config`, as the list of remotes ends a URL at its first blank.
std::vector<Candidate> RepositoryNames::locations() {
    std::vector<Candidate> names;
    for (const std::string& setting :
         splitAtNUL(outputOf({"config", "-z", "--get-regexp", R"(^remote\.)"}))) {
        const std::size_t lineEnd = setting.find('\n');
        const std::string location =
            lineEnd == std::string::npos ? "" : setting.substr(lineEnd + 1);
        if (!location.empty() && isSettingOf("remote", "url", setting.substr(0, lineEnd)) &&
            textWithoutPasswords(location) == location) {
            constexpr std::string_view head = "remote.";
            constexpr std::string_view end = ".url";
            names.push_back(
                {location, setting.substr(head.size(), lineEnd - head.size() - end.size())});
        }
    }
    return names;
}

std::vector<Candidate> RepositoryNames::remoteBranches() {
    return referencesBelow({remotePrefix});
}

std::vector<Candidate> RepositoryNames::branchesOf(const std::string& remote) {
    return remote.empty() ? std::vector<Candidate>{}
                          : referencesBelow({remotePrefix + remote + "/"});
}

/// An entry is "MODE TYPE OBJECT" TAB "NAME" NUL.
std::vector<Candidate> RepositoryNames::entriesOf(const std::string& folder) {
    std::vector<Candidate> names;
    for (const std::string& entry :
         splitAtNUL(outputOf({"ls-tree", "--full-tree", "-z", folder}))) {
        const std::size_t tab = entry.find('\t');
        if (tab != std::string::npos && entry.find('\n') == std::string::npos) {
            const bool isFolder = entry.find(" tree ") < tab;
            names.push_back({entry.substr(tab + 1) + (isFolder ? "/" : ""), ""});
        }
    }
    return names;
}

/// Returns a folder of the index from the top. A relative one starts in the current folder; a
/// folder outside of the working copy stays relative.
std::string RepositoryNames::folderFromTop(const std::string& folder) {
    if (!folder.starts_with("./") && !folder.starts_with("../")) {
        return folder;
    }
    std::string prefix = outputOf({"rev-parse", "--show-prefix"});
    prefix.resize(std::min(prefix.size(), prefix.find('\n')));
    const std::string path = std::filesystem::path(prefix + folder).lexically_normal().string();
    return path == "./" ? "" : path;
}

/// An entry is "MODE OBJECT STAGE" TAB "NAME" NUL. The names are sorted.
std::vector<Candidate> RepositoryNames::entriesOfIndex(const std::string& folder,
                                                       std::string_view stage) {
    const std::string before = folderFromTop(folder);
    std::vector<Candidate> names;
    for (const std::string& entry : splitAtNUL(outputOf(
             {"ls-files", "--stage", "--full-name", "-z", "--", ":(top,literal)" + before}))) {
        const std::size_t tab = entry.find('\t');
        const std::string path = tab == std::string::npos ? "" : entry.substr(tab + 1);
        if (!path.starts_with(before) || !entry.substr(0, tab).ends_with(stage)) {
            continue;
        }
        const std::size_t slash = path.find('/', before.size());
        const std::size_t end = slash == std::string::npos ? path.size() : slash + 1;
        std::string name = path.substr(before.size(), end - before.size());
        if (!name.empty() && (names.empty() || names.back().text != name)) {
            names.push_back({std::move(name), ""});
        }
    }
    return names;
}

}  // namespace neb::nebsc
