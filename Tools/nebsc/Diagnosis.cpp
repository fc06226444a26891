#include "Diagnosis.h"

#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

#include "Deadline.h"
#include "GitProgram.h"
#include "GitVersion.h"
#include "LOMFoundation/LOMDeveloperPaths.h"
#include "LockFiles.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "Platform/PathString.h"
#include "Presentation.h"
#include "ProgramSearch.h"
#include "ShellText.h"
#include "UnfinishedWork.h"
#include "UserSettings.h"
#include "WorkingCopyPlace.h"

namespace neb::nebsc {

namespace {

constexpr auto timeForEachGit = std::chrono::seconds(5);
/// Between two programs of one git, nobody may have its lock open.
constexpr auto ageOfFreshLock = std::chrono::seconds(10);

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// git's words for why it did not answer, else how it ended.
std::string reasonOf(const ChildOutcome& outcome) {
    if (outcome.duration >= timeForEachGit) {
        return "no answer within " + std::to_string(timeForEachGit.count()) + " s";
    }
    std::string_view words = outcome.errorOutput;
    words = words.substr(0, words.find('\n'));
    if (words.starts_with("fatal: ")) {
        words.remove_prefix(7);
    }
    return words.empty() ? outcome.status.description() : std::string(words);
}

/// The command that makes git trust a folder: git has written it, ready to be pasted.
std::string lineOfTrust(std::string_view words) {
    constexpr std::string_view command = "git config --global --add safe.directory ";
    const std::size_t place = words.find(command);
    if (place == std::string_view::npos) {
        return std::string(command) + "FOLDER, with the folder that \"git status\" names.";
    }
    words.remove_prefix(place);
    return std::string(words.substr(0, words.find('\n')));
}

/// The ".git" in the folder or in the nearest one above it; empty where there is none.
std::string remainsOfRepository(const std::string& folder) {
    for (std::filesystem::path place = folder;; place = place.parent_path()) {
        if (std::string path = (place / ".git").string(); isAnythingAt(path)) {
            return path;
        }
        if (place == place.parent_path()) {
            return "";
        }
    }
}

class Doctor {
public:
    Doctor(Interruption& interruption, const Trace& trace, const std::string& folder)
        : _interruption(interruption), _trace(trace), _folder(folder) {}

    std::vector<Finding> examine(const PlugInFile& plugIn);

private:
    [[nodiscard]] ChildOutcome ask(std::vector<std::string> arguments);
    void add(Health health, std::string subject, std::string text, std::string advice = {}) {
        _findings.push_back({health, std::move(subject), std::move(text), std::move(advice)});
    }

    void examineGit();
    void examinePlugIn(const PlugInFile& plugIn);
    void examineRepository();
    void examineContents();
    void examineUnfinished(const std::string& gitFolder);
    void examineLocks(const std::vector<std::string>& gitFolders);
    [[nodiscard]] bool readSettings();
    void examineSettings();
    void examineCredentials();
    void examineCredentialHelper(const Setting& setting);
    void examineKeys();
    void examineSubversion();
    [[nodiscard]] bool isReachable(const std::string& program) const {
        return program.find('/') != std::string::npos
                   ? isProgram(pathByExpandingTilde(program))
                   : isProgramIn(_programs + ":" + variable("PATH"), program);
    }

    Interruption& _interruption;
    const Trace& _trace;
    const std::string& _folder;
    std::vector<Finding> _findings;
    bool _hasGit = false;
    std::string _programs;     // where git's own programs are; empty where it is not known
    std::string _workingCopy;  // its top; empty outside of one
    UserSettings _settings;
};

ChildOutcome Doctor::ask(std::vector<std::string> arguments) {
    ChildProcess process;
    const Interruption::Work work(_interruption, [&process] { process.cancel(); });
    const Deadline deadline(std::chrono::steady_clock::now() + timeForEachGit,
                            [&process] { process.cancel(); });
    return runGit(process, _trace, std::move(arguments), _folder);
}

// ---- git and the plug-in ----------------------------------------------------------------------

void Doctor::examineGit() {
    const std::string path = LOMDeveloperPaths::defaultPaths()
                                 .binSearchPathForPlatform(std::nullopt)
                                 .pathOfProgram("git");
    const ChildOutcome outcome = ask({"--version"});
    const std::string text = answerOf(outcome).value_or("");
    const auto version = gitVersionIn(text);
    if (!outcome.status.started()) {
        add(Health::problem, "git", "there is none: " + outcome.status.description(),
            "Install git, or put the folder that it is in into PATH.");
        return;
    }
    if (!outcome.status.isSuccess()) {
        const bool isSetting =
            NEBSourceControlErrorClassOfText(outcome.errorOutput) == "configuration-broken";
        add(Health::problem, "git", path + " tells no version: " + reasonOf(outcome),
            isSetting ? "Mend the line, or take it out."
                      : "See what \"git --version\" says in a shell.");
        return;
    }
    if (!version) {
        add(Health::problem, "git", path + " tells no version: " + inQuotes(text),
            "Install git anew, or put the folder of another into PATH.");
        return;
    }
    _hasGit = true;
    std::string missing;
    for (const std::string_view feature : featuresMissingIn(*version)) {
        missing.append(missing.empty() ? "" : "; ").append(feature);
    }
    if (missing.empty()) {
        add(Health::ok, "git", path + ", " + text);
    } else {
        add(Health::problem, "git", path + ", " + text + ", lacks " + missing,
            "Install git " + oldestGitWithAllFeatures().text() + " or newer.");
    }
    const ChildOutcome programs = ask({"--exec-path"});
    if (!programs.status.isSuccess()) {
        add(Health::problem, "git",
            "it does not tell where its programs are: " + reasonOf(programs));
        return;
    }
    _programs = answerOf(programs).value_or("");
    if (isReachable("git-remote-https")) {
        add(Health::ok, "https", "git can talk with repositories over HTTPS");
    } else {
        add(Health::note, "https", "git has no program for repositories over HTTPS",
            "Install git with its support for curl.");
    }
}

void Doctor::examinePlugIn(const PlugInFile& plugIn) {
    if (!plugIn.load.plugIn) {
        add(Health::problem, "plug-in", plugIn.load.failure,
            "Build or install NEBGit anew, or name its file with --plugin.");
        return;
    }
    add(Health::ok, "plug-in",
        plugIn.path + ", " + plugIn.load.plugIn->name() + " " + plugIn.load.plugIn->version() +
            ", contract version " + std::to_string(NEBSourceControlContractVersion));
}

// ---- the working copy -------------------------------------------------------------------------

void Doctor::examineRepository() {
    const ChildOutcome outcome = ask({"rev-parse", "--path-format=absolute", "--git-dir"});
    if (!outcome.status.isSuccess()) {
        const std::string_view words = outcome.errorOutput;
        const auto errorClass = NEBSourceControlErrorClassOfText(words);
        if (errorClass == "owner-not-trusted") {
            add(Health::problem, "repository",
                "it belongs to somebody else, and so git does not trust it",
                "If you do: " + lineOfTrust(words));
        } else if (const std::string remains = remainsOfRepository(_folder);
                   errorClass == "not-a-repository" && !remains.empty()) {
            add(Health::problem, "repository",
                remains + " is there, but is no repository to git: " + reasonOf(outcome),
                "See whether its HEAD, objects and refs are there, or what a file .git names.");
        } else if (errorClass == "not-a-repository") {
            add(Health::note, "repository", _folder + " lies in none",
                "\"nebsc init\" makes one, \"nebsc clone\" copies one.");
        } else {
            add(Health::problem, "repository", "git cannot read it: " + reasonOf(outcome));
        }
        return;
    }
    std::vector<std::string> folders{answerOf(outcome).value_or("")};
    const auto common = answerOf(ask({"rev-parse", "--path-format=absolute", "--git-common-dir"}));
    if (common && *common != folders.front()) {
        folders.push_back(*common);
    }
    _workingCopy = answerOf(ask({"rev-parse", "--show-toplevel"})).value_or("");
    add(Health::ok, "repository",
        _workingCopy.empty() ? folders.front() + ", without a working copy here"
                             : "working copy " + _workingCopy + ", whose owner git trusts");
    examineLocks(folders);
    examineContents();
    examineUnfinished(folders.front());
}

/// What every command needs: the index and the latest commit.
void Doctor::examineContents() {
    if (!_workingCopy.empty()) {
        // No file is called so; git reads all of the index to know.
        const ChildOutcome index = ask({"ls-files", "--", ":(top,literal).git"});
        if (!index.status.isSuccess()) {
            add(Health::problem, "index", "git cannot read it: " + reasonOf(index),
                "\"rm .git/index\" and \"git reset\" make it anew; what was staged is forgotten.");
        }
    }
    const ChildOutcome head = ask({"rev-parse", "--verify", "--quiet", "HEAD"});
    if (!head.status.isSuccess()) {
        add(Health::note, "commits", "there is none yet on the current branch");
        return;
    }
    // What is missing is allowed to be, so that git fetches nothing from where a repository says.
    const ChildOutcome commit =
        ask({"rev-list", "--max-count=1", "--missing=allow-any", "HEAD", "--"});
    if (commit.status.isSuccess()) {
        add(Health::ok, "commits", "the latest one can be read");
    } else {
        add(Health::problem, "commits", "the latest one cannot be read: " + reasonOf(commit),
            "\"git fsck\" tells what is missing; another copy of the repository may have it.");
    }
}

void Doctor::examineUnfinished(const std::string& gitFolder) {
    for (const UnfinishedWork& row : unfinishedWorkIn(gitFolder)) {
        add(Health::note, "unfinished", std::string(row.work) + " is under way",
            std::string(row.advice));
    }
}

void Doctor::examineLocks(const std::vector<std::string>& gitFolders) {
    const std::vector<LockFile> locks = findLockFiles(gitFolders, _workingCopy);
    if (locks.empty()) {
        add(Health::ok, "locks", "there are none");
    }
    for (const LockFile& lock : locks) {
        const std::string what = lock.path + ", " + textOfAge(lock.age) + " old";
        if (lock.holders.empty() && lock.age < ageOfFreshLock) {
            add(Health::note, "lock", what + "; whoever made it may be at work",
                "Look again in a moment.");
            continue;
        }
        if (lock.holders.empty()) {
            add(Health::problem, "lock", what + "; no process holds it: it was left behind",
                "Remove it with: rm " + shellQuoted(lock.path));
            continue;
        }
        std::string holders;
        for (const std::string& holder : lock.holders) {
            holders.append(holders.empty() ? "" : ", ").append(holder);
        }
        add(Health::note, "lock", std::string(what).append("; held by ").append(holders),
            "Wait for its end.");
    }
}

// ---- settings ---------------------------------------------------------------------------------

/// False, and a finding, where they cannot be had.
bool Doctor::readSettings() {
    const ChildOutcome outcome = ask({"config", "--list", "--show-scope", "-z"});
    if (!outcome.status.isSuccess()) {
        add(Health::problem, "settings", "git does not tell them: " + reasonOf(outcome));
        return false;
    }
    _settings = UserSettings(outcome.output);
    return true;
}

void Doctor::examineSettings() {
    bool isAny = false;
    for (const NEBSourceControlPinnedSetting& pinned : NEBSourceControlPinnedSettings()) {
        const std::string own = _settings.lastValue(pinned.key);
        if (!own.empty() && !isSameSetting(own, pinned.value)) {
            isAny = true;
            add(Health::note, "setting",
                std::string(pinned.key) + " is " + inQuotes(withoutSecrets(own)) +
                    ", but counts as " + inQuotes(pinned.value) + " for what is read here");
        }
    }
    if (!isAny) {
        add(Health::ok, "settings", "none of yours is passed over");
    }
}

// ---- credentials ------------------------------------------------------------------------------

/// A helper is a shell's text behind "!", a path, or the end of a program's name. Its words may
/// hold what nobody else is to see, so the program is all that is shown.
void Doctor::examineCredentialHelper(const Setting& setting) {
    const std::string which = "helper of the " + setting.scope + " configuration";
    if (setting.value.starts_with('!')) {
        add(Health::note, "credentials", which + ": a text for the shell");
        return;
    }
    const std::string word = setting.value.substr(0, setting.value.find(' '));
    const bool isPath = word.starts_with('/');  // to git "~" is no path here
    const std::string program = isPath ? word : "git-credential-" + word;
    if (isReachable(program)) {
        add(Health::ok, "credentials", which + ": " + program);
    } else {
        add(Health::problem, "credentials", which + ": there is no program " + inQuotes(program),
            "Install it, or take it out of the configuration: git config --" + setting.scope +
                " --edit");
    }
}

void Doctor::examineCredentials() {
    const std::vector<Setting> helpers = _settings.credentialHelpers();
    if (helpers.empty()) {
        add(Health::note, "credentials", "no helper is configured, so passwords cannot be found",
            "A helper is for instance: git config --global credential.helper cache");
    }
    for (const Setting& helper : helpers) {
        examineCredentialHelper(helper);
    }
}

void Doctor::examineKeys() {
    const std::string socket = variable("SSH_AUTH_SOCK");
    struct stat attributes {};
    if (socket.empty()) {
        add(Health::note, "ssh agent", "none is told of in SSH_AUTH_SOCK",
            "\"ssh-add\" gives an agent a key with a passphrase.");
    } else if (::stat(socket.c_str(), &attributes) == 0 && S_ISSOCK(attributes.st_mode)) {
        add(Health::ok, "ssh agent", socket);
    } else {
        add(Health::note, "ssh agent", socket + " is not there, though SSH_AUTH_SOCK names it",
            "Start the agent anew.");
    }
    std::string askpass = variable("GIT_ASKPASS");
    askpass = askpass.empty() ? _settings.lastValue("core.askpass") : askpass;
    askpass = askpass.empty() ? variable("SSH_ASKPASS") : askpass;
    if (!askpass.empty() && !isReachable(askpass)) {
        add(Health::problem, "askpass", "there is no program " + inQuotes(askpass),
            "Take it out of GIT_ASKPASS, core.askPass or SSH_ASKPASS, or install it.");
    } else if (!askpass.empty()) {
        add(Health::ok, "askpass", askpass);
    }
    if (!isReachable("ssh") && variable("GIT_SSH").empty() && variable("GIT_SSH_COMMAND").empty() &&
        _settings.lastValue("core.sshcommand").empty()) {
        add(Health::note, "ssh", "there is no program \"ssh\"",
            "Install it for repositories over ssh.");
    }
}

void Doctor::examineSubversion() {
    if (isReachable("git-svn")) {
        add(Health::ok, "git-svn", "there is one");
    } else {
        add(Health::note, "git-svn", "there is none",
            "Install git-svn for repositories of Subversion.");
    }
}

std::vector<Finding> Doctor::examine(const PlugInFile& plugIn) {
    examineGit();
    examinePlugIn(plugIn);
    if (_hasGit) {
        examineRepository();
        if (readSettings()) {
            examineSettings();
            examineCredentials();
        }
        examineKeys();
        if (!_programs.empty()) {
            examineSubversion();
        }
    }
    return std::move(_findings);
}

}  // namespace

std::vector<Finding> diagnose(Interruption& interruption, const Trace& trace,
                              const PlugInFile& plugIn, const std::string& folder) {
    return Doctor(interruption, trace, folder).examine(plugIn);
}

}  // namespace neb::nebsc
