#include "Tuning/Tuner.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>

#include "Platform/ErrnoText.h"
#include "Platform/PathString.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view unreadableSettings = "git cannot read the settings of the repository";

/// Returns the folders that "git update-index --test-untracked-cache" uses and that it leaves
/// behind if a signal ends it.
std::set<fs::path> testFoldersIn(const std::string& folder) {
    std::set<fs::path> folders;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (entry.path().filename().string().starts_with("mtime-test-")) {
            folders.insert(entry.path());
        }
    }
    return folders;
}

void removeFoldersExcept(const std::set<fs::path>& kept, const std::string& folder) {
    for (const fs::path& left : testFoldersIn(folder)) {
        if (!kept.contains(left)) {
            std::error_code ignored;
            fs::remove_all(left, ignored);
        }
    }
}

}  // namespace

std::optional<std::string> Tuner::open() {
    _lock = FileDescriptor(
        ::open(_repository.commonFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (_lock.isOpen() && ::flock(_lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return "another 'nebsc tune' is changing " + inQuotes(_repository.commonFolder);
    }
    auto read = readTuningRecord(pathOfTuningRecord(_repository.commonFolder));
    if (const std::string* failure = std::get_if<std::string>(&read)) {
        return *failure;
    }
    _record = std::get<TuningRecord>(std::move(read));
    return std::nullopt;
}

// ---- git --------------------------------------------------------------------------------------

ChildOutcome Tuner::outcomeOf(std::vector<std::string> arguments, const std::string& folder) {
    ChildProcess process;
    const Interruption::Work work(_interruption, [&process] { process.cancel(); });
    // Writing the index runs the hook post-index-change.
    return runGitProcesses(process, _trace, {std::move(arguments)},
                           {.folder = folder,
                            .variables = variablesAgainstFetching(),
                            .traits = {.mayRunHooks = true}});
}

std::optional<std::string> Tuner::run(std::vector<std::string> arguments,
                                      const std::string& folder) {
    const std::set<fs::path> testFolders = testFoldersIn(folder);
    const ChildOutcome outcome = outcomeOf(std::move(arguments), folder);
    if (outcome.status.isSuccess()) {
        return std::nullopt;
    }
    removeFoldersExcept(testFolders, folder);
    return reasonOf(outcome);
}

std::optional<std::vector<std::string>> Tuner::valuesOf(const std::string& key) {
    constexpr int noValue = 1;
    const ChildOutcome outcome =
        outcomeOf({"config", "--local", "--null", "--get-all", key}, _folder);
    return outcome.status.isSuccess() || outcome.status.exitStatus() == noValue
               ? std::optional(splitAtNUL(outcome.output))
               : std::nullopt;
}

std::optional<std::string> Tuner::save() const {
    return writeTuningRecord(pathOfTuningRecord(_repository.commonFolder), _record);
}

// ---- apply ------------------------------------------------------------------------------------

std::optional<StepRecord> Tuner::newRecord(const SlowCause& cause, const Slowness& slowness,
                                           const std::string& folder) {
    StepRecord step{.cause = std::string(cause.name),
                    .folder = folder,
                    .isComplete = false,
                    .formerState = slowness.formerState,
                    .settings = {},
                    .files = {}};
    for (const GitSetting& setting : cause.settings) {
        const std::string key(setting.key);
        auto values = valuesOf(key);
        if (!values) {
            return std::nullopt;
        }
        step.settings.push_back({.key = key, .formerValues = std::move(*values)});
    }
    for (const std::string_view file : cause.files) {
        step.files.push_back(
            {.path = std::string(file),
             .existed = isAnythingAt(pathByAppendingComponent(_repository.commonFolder, file)),
             .fingerprint = {}});
    }
    return step;
}

std::optional<std::string> Tuner::change(const SlowCause& cause, const FormerState& formerState) {
    for (const std::vector<std::string>& call : cause.calls(formerState)) {
        if (auto failure = run(call, _folder)) {
            return failure;
        }
    }
    for (const GitSetting& setting : cause.settings) {
        if (auto failure = run({"config", "--local", "--replace-all", std::string(setting.key),
                                std::string(setting.value)},
                               _folder)) {
            return failure;
        }
    }
    return std::nullopt;
}

std::optional<std::string> Tuner::apply(const SlowCause& cause, const Slowness& slowness) {
    const std::string folder = cause.isInWorkingCopy ? _repository.workingCopy : "";
    StepRecord* known = _record.find(cause.name, folder);
    const bool isNew = known == nullptr;
    // The state before the first time is what --undo restores.
    std::optional<StepRecord> step = isNew ? newRecord(cause, slowness, folder) : *known;
    if (!step) {
        return std::string(unreadableSettings);
    }
    step->isComplete = false;
    (isNew ? _record.steps.emplace_back() : *known) = *step;
    if (auto failure = save()) {
        if (isNew) {
            _record.steps.pop_back();
        }
        return failure;
    }
    if (auto failure = change(cause, slowness.formerState)) {
        if (isNew && !_interruption.hasOccurred()) {
            const UndoResult undone = undo(*step);
            *failure += undone.failure ? "; undoing it failed too: " + *undone.failure : "";
        }
        return failure;
    }
    StepRecord& done = *_record.find(cause.name, folder);
    done.isComplete = true;
    for (FileRecord& file : done.files) {
        file.fingerprint =
            fingerprintOf(pathByAppendingComponent(_repository.commonFolder, file.path));
    }
    return save();
}

// ---- undo -------------------------------------------------------------------------------------

std::optional<std::string> Tuner::restoreSetting(const GitSetting& setting,
                                                 const SettingRecord& former, UndoResult& result) {
    const std::optional<std::vector<std::string>> current = valuesOf(former.key);
    if (!current) {
        return std::string(unreadableSettings);
    }
    if (*current == former.formerValues) {
        return std::nullopt;
    }
    if (*current != std::vector{std::string(setting.value)}) {
        result.notes.push_back("the setting " + former.key + " was changed since and stays");
        return std::nullopt;
    }
    if (auto failure = run({"config", "--local", "--unset-all", former.key}, _folder)) {
        return failure;
    }
    for (const std::string& value : former.formerValues) {
        if (auto failure = run({"config", "--local", "--add", former.key, value}, _folder)) {
            return failure;
        }
    }
    return std::nullopt;
}

bool Tuner::removeFiles(const SlowCause& cause, const StepRecord& step, UndoResult& result) const {
    bool isUnchanged = true;
    for (const FileRecord& file : step.files) {
        const std::string path = pathByAppendingComponent(_repository.commonFolder, file.path);
        const std::string current = fingerprintOf(path);
        const bool isOfCause =
            std::find(cause.files.begin(), cause.files.end(), file.path) != cause.files.end();
        if (current.empty() || !isOfCause) {
            continue;
        }
        if (step.isComplete && current != file.fingerprint) {
            isUnchanged = false;
            result.notes.push_back("git has written " + file.path + " again since, and it stays");
        } else if (!file.existed && ::unlink(path.c_str()) != 0) {
            result.failure = inQuotes(path) + " could not be removed: " + textOfErrno(errno);
        }
    }
    return isUnchanged;
}

std::optional<std::string> Tuner::restore(const SlowCause& cause, const StepRecord& step,
                                          UndoResult& result) {
    for (const SettingRecord& former : step.settings) {
        const auto setting =
            std::find_if(cause.settings.begin(), cause.settings.end(),
                         [&former](const GitSetting& one) { return one.key == former.key; });
        if (setting == cause.settings.end()) {
            result.notes.push_back("the setting " + former.key + " is unknown and stays");
        } else if (auto failure = restoreSetting(*setting, former, result)) {
            return failure;
        }
    }
    if (!removeFiles(cause, step, result) || result.failure) {
        return result.failure;
    }
    if (!step.folder.empty() && !isFolder(step.folder)) {
        result.notes.push_back("the working copy " + inQuotes(step.folder) + " is gone");
        return std::nullopt;
    }
    for (const std::vector<std::string>& call : cause.undoCalls(step.formerState)) {
        if (auto failure = run(call, step.folder.empty() ? _folder : step.folder)) {
            return failure;
        }
    }
    return std::nullopt;
}

UndoResult Tuner::undo(const StepRecord& step) {
    UndoResult result;
    const SlowCause* cause = slowCauseNamed(step.cause);
    if (cause == nullptr) {
        result.failure = "this nebsc does not know the step";
        return result;
    }
    if (!cause->lasting.empty()) {
        result.notes.emplace_back(cause->lasting);
    }
    result.failure = restore(*cause, step, result);
    if (!result.failure) {
        std::erase_if(_record.steps, [name = step.cause, folder = step.folder](const auto& one) {
            return one.cause == name && one.folder == folder;
        });
        result.failure = save();
    }
    return result;
}

}  // namespace neb::nebsc
