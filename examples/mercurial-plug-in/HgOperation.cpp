#include "HgOperation.h"

#include <charconv>
#include <cstdint>
#include <utility>

namespace {

/// HGPLAIN keeps the output independent of the settings of the user, who keeps all others, and
/// "+strictflags" keeps values from being read as options; see `hg help environment`.
constexpr std::string_view variables[] = {
    "HGPLAIN=+strictflags",  "HGPLAINEXCEPT=", "HGENCODING=UTF-8",
    "HGENCODINGMODE=strict", "HGEDITOR=true",
};

constexpr NEBSourceControlProgramMessage messages[] = {
    {"abort: no repository found in ", NEBSourceControlNotARepositoryErrorClass.text(),
     "The folder is not in a Mercurial repository.",
     "Choose a folder inside a repository, or create one with \"hg init\" or \"hg clone\"."},
    {"abort: unknown revision ", NEBSourceControlRevisionUnknownErrorClass.text(),
     "There is no such branch, tag or commit.",
     "\"hg log\", \"hg branches\" and \"hg tags\" list the names.",
     NEBSourceControlFileMissingAtRevisionError},
    {"hg: parse error", NEBSourceControlRevisionUnknownErrorClass.text(),
     "The revision is not one that Mercurial can read.", "\"hg help revisions\" lists the forms.",
     NEBSourceControlFileMissingAtRevisionError},
    {"ambiguous identifier", NEBSourceControlRevisionAmbiguousErrorClass.text(),
     "The id stands for more than one commit.", "Write more digits of the id."},
    {"timed out waiting for lock held by", NEBSourceControlIndexLockedErrorClass.text(),
     "The repository is locked by another hg process.",
     "Wait until the other process has ended, then try again."},
    {"abort: no username supplied", NEBSourceControlIdentityUnknownErrorClass.text(),
     "The commit has no author: your name and e-mail address are not configured.",
     "Set ui.username in Mercurial's configuration and try again."},
    {"abort: empty commit message", NEBSourceControlMessageEmptyErrorClass.text(),
     "The commit has no message; nothing was committed.", "Enter a message and try again."},
    {"unresolved merge conflicts", NEBSourceControlConflictUnresolvedErrorClass.text(),
     "There are conflicts that are not resolved.",
     "Resolve them, mark the files with \"hg resolve --mark\", then try again."},
    {" hook exited with status ", NEBSourceControlLocalHookRefusedErrorClass.text(),
     "A hook of the repository refused the operation.", "Fix what the hook reports."},
    {" not under root ", NEBSourceControlPathOutsideErrorClass.text(),
     "The path is outside the repository.", "Choose a path inside the repository."},
    {"no such file in rev ", NEBSourceControlPathUnknownErrorClass.text(),
     "The commit has no such file.", "\"hg files --rev REVISION\" lists its files.",
     NEBSourceControlFileMissingAtRevisionError},
    {": No such file or directory", NEBSourceControlPathUnknownErrorClass.text(),
     "There is no such file.", "Check the path; \"hg files\" lists the tracked files."},
    {"file is untracked", NEBSourceControlPathUnknownErrorClass.text(),
     "Mercurial does not track the file.", "\"hg files\" lists the tracked files."},
    {"Permission denied", NEBSourceControlPermissionDeniedErrorClass.text(),
     "The operating system denied access to a file or folder.", "Check its owner and mode."},
    {"No space left on device", NEBSourceControlDiskFullErrorClass.text(), "The disk is full.",
     "Free some space, then try again."},
    {"requires features unknown to this Mercurial",
     NEBSourceControlRepositoryFormatUnknownErrorClass.text(),
     "The format of the repository is not supported by this Mercurial.",
     "Install a newer Mercurial."},
    {"config error", NEBSourceControlConfigurationBrokenErrorClass.text(),
     "Mercurial's configuration cannot be read.", "Fix the line that Mercurial names."},
    {"nothing changed", NEBSourceControlNothingToCommitErrorClass.text(),
     "There is nothing to commit.", "\"hg status\" shows the changes."},
};

/// Returns the name as a string of the revset language, which stands for the commit of that name;
/// see `hg help revisions`. The suffixes of its ancestors, such as "^" and "~2", remain operators.
std::string quoted(std::string_view name) {
    std::size_t end = name.size();
    for (std::size_t at = name.find_last_not_of("0123456789");
         at != std::string_view::npos && at > 0 && (name[at] == '^' || name[at] == '~');
         at = name.substr(0, at).find_last_not_of("0123456789")) {
        end = at;
    }
    std::string text = "'";
    for (const char character : name.substr(0, end)) {
        text.append(character == '\'' || character == '\\' ? "\\" : "") += character;
    }
    return text + "'" + std::string(name.substr(end));
}

constexpr NEBSourceControlProgram hg{.name = "hg", .variables = variables, .messages = messages};

}  // namespace

HgOperation::HgOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : NEBSourceControlProgramOperation(std::move(request), hg) {}

/// ui.timeout is in seconds; 0 makes hg fail at once.
void HgOperation::main() {
    const auto wait = std::chrono::ceil<std::chrono::seconds>(limits().lockWait);
    std::vector<std::string> all{"--config", "ui.timeout=" + std::to_string(wait.count())};
    all.insert(all.end(), arguments().begin(), arguments().end());
    setArguments(std::move(all));
    NEBSourceControlProgramOperation::main();
}

std::string HgOperation::revisionOf(const NEBValue& value, std::string_view otherwise) {
    if (!value.isPresent()) {
        return std::string(otherwise);
    }
    const std::string name = value.description();
    if (name == NEBSourceControlHEADRevisionName.text() ||
        name == NEBSourceControlBASERevisionName.text()) {
        return ".";
    }
    return name == NEBSourceControlLocalRevisionName.text() ? "wdir()" : quoted(name);
}

void HgOperation::appendFiles(std::vector<std::string>& arguments, std::string_view kind) const {
    arguments.emplace_back("--");
    for (const NEBValue& file : request()->files.value_or(std::vector<NEBValue>())) {
        arguments.push_back(std::string(kind) + ":" + file.description());
    }
}

std::string textOf(std::string_view bytes) {
    return *_nebsc_stringFromData(Data(bytes));
}

std::string_view takeLine(std::string_view& rest) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return line;
}

NEBDate dateOf(std::string_view hgdate) {
    std::int64_t seconds = 0;
    std::from_chars(hgdate.data(), hgdate.data() + hgdate.size(), seconds);
    return NEBDate(NEBDate::duration(seconds));
}
