#include <filesystem>

#include "Commands.h"
#include "HistoryTask.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"
#include "Presentation.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// The shell splits the request's folder at blanks and expands wildcards in it; so written, each
/// character stands for itself alone. A folder's name may hold a blank and a TAB in one place: that
/// is let pass.
std::string literalPattern(std::string_view path) {
    std::string pattern;
    for (const char character : path) {
        switch (character) {
            case ' ':
            case '\t':
                pattern += "[[:blank:]]";
                break;
            case '*':
            case '?':
            case '[':
                pattern.append("[").append(1, character).append("]");
                break;
            default:
                pattern += character;
        }
    }
    return pattern;
}

class ListTask : public HistoryTask {
public:
    using HistoryTask::HistoryTask;

protected:
    std::optional<Reply> look() override;
    std::shared_ptr<NEBSourceControlRequest> request() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void conclude(const Outcome& outcome, Reply& reply) override;

private:
    [[nodiscard]] const std::string& folder() const {
        return paths("DIR").empty() ? currentFolder() : paths("DIR").front();
    }
};

std::optional<Reply> ListTask::look() {
    if (auto refused = refusalWithoutWorkingCopy()) {
        return refused;
    }
    if (auto refused = refusalOfPathOutside(folder())) {
        return refused;
    }
    if (!isUTF8(folder())) {
        return refusal("The folder's path " + inQuotes(folder()) +
                           " is no UTF-8; what it holds cannot be listed.",
                       exitFailed);
    }
    return refusalWithoutCommits();
}

/// With "./" in front the top is a folder like any other, and no name looks like an option.
std::shared_ptr<NEBSourceControlRequest> ListTask::request() {
    const std::string path = pathFromTop(folder());
    return requestAbout(NEBSourceControlRequestList,
                        {path.empty() ? "." : "./" + literalPattern(path)});
}

std::string ListTask::textOfResult(const NEBSourceControlResult& records) {
    const bool isColoured = isInColour();
    std::string lines;
    for (const NEBDictionary& record : records) {
        const std::string name =
            printable(record.value(NEBSourceControlOperationNameKey).string().value_or(""));
        if (record.value(NEBSourceControlOperationIsLeafKey).boolValue()) {
            lines += name + "\n";
        } else {
            lines += (isColoured ? coloured(name + "/", Colour::cyan) : name + "/") + "\n";
        }
    }
    return lines;
}

/// An empty listing may mean anything; this says what.
void ListTask::conclude(const Outcome& outcome, Reply& reply) {
    if (outcome.result && !outcome.result->empty()) {
        return;
    }
    const std::string type = typeOfEntry("HEAD", folder()).value_or("");
    std::error_code ignored;
    const bool isFolderOnDisk = fs::is_directory(fs::symlink_status(folder(), ignored));
    const std::string name = inQuotes(arguments().value("DIR").value_or("."));
    if (type == "tree" && isFolderOnDisk) {
        if (!isJSON()) {
            reply.standardError += printable(name) +
                                   " has no entries to show: none, or none on disk too whose name "
                                   "is UTF-8 and does not "
                                   "begin with \".\".\n";
        }
    } else if (type == "tree") {
        reply = refusal("The folder " + name +
                            " is in the latest commit, but not on disk; only what is in both can "
                            "be listed.",
                        exitFailed);
    } else if (!type.empty()) {
        reply = refusal(name + " is no folder in the latest commit, but a " +
                            (type == "blob" ? "file." : "submodule."),
                        exitFailed, "path-invalid");
    } else if (isAnythingAt(folder())) {
        reply = refusal(name + " is on disk, but not in the latest commit.", exitFailed,
                        "path-unknown");
    } else {
        reply =
            refusal("There is no folder " + name + ", neither on disk nor in the latest commit.",
                    exitFailed, "path-unknown");
    }
}

constexpr Parameter parameters[] = {
    {"DIR", "The folder, the current one unless given", Takes::folder},
};

Reply run(const CommandCall& call) {
    return ListTask(call).run();
}

}  // namespace

constinit const Command listCommand{
    .name = "ls",
    .group = lookGroup,
    .summary = "List what the latest commit holds of a folder",
    .details =
        "Folders and submodules have a \"/\" behind their names. What is not on disk any more,\n"
        "and what begins with \".\", is left out.\n\n"
        "Examples:\n"
        "  nebsc ls        the current folder\n"
        "  nebsc ls src    the folder src\n",
    .parameters = parameters,
    .activity = "Listing",
    .isPaged = true,
    .run = run,
};

}  // namespace neb::nebsc
