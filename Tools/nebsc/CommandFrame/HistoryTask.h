// HistoryTask.h - what the commands about history and content have in common: revisions and files
// among a command's words, and plain sentences for what is not there.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CommandFrame/CommandTask.h"

namespace neb::nebsc {

/// All that is here asks git, so it is good from validate() on.
class HistoryTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    /// What a command's words name.
    struct Words {
        /// Two for a range.
        std::vector<std::string> revisions;
        /// As findFile() returns them.
        std::vector<std::string> files;
        /// What stands between the two revisions of a range, ".." or "..."; empty without a range.
        std::string dots;
        /// Why the words cannot be understood; the rest does not count then.
        std::optional<CommandOutput> refused;
    };

    /// Tells revisions from files in the words of the parameters "REVISION" and "FILE", the way
    /// that git does: the revisions come first; what stands behind "--" is a file; without it each
    /// word must be one of the two and not both. "A..B" and "A...B" are a range, HEAD where a side
    /// is missing.
    ///
    /// A revision named like a file at the top of the working copy is answered as its commit's
    /// name, as git itself could not tell; so is one named "0", which as an end means none.
    [[nodiscard]] Words readWords(std::size_t mostRevisions, std::size_t mostFiles);

    /// Finds the file that the word names: its absolute path, or its path from the top of the tree
    /// where there is no working copy, as in a bare repository.
    [[nodiscard]] PathSearch findFile(const std::string& word) const;

    /// A request with the words' files, and their revisions as its starting and ending one.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> requestAboutWords(
        std::int32_t type, const Words& words) const;

    /// The reply where the revision stands for no commit; nothing where it does, and for one that
    /// begins with "-", which the request refuses. Where git could not tell, in its words.
    [[nodiscard]] std::optional<CommandOutput> refusalOfRevision(const std::string& revision);
    /// The reply where the current branch has no commit; nothing where it has, and where there is
    /// no repository, which the request says better.
    [[nodiscard]] std::optional<CommandOutput> refusalWithoutCommits();
    /// The reply for a path that does not lie in the working copy.
    [[nodiscard]] std::optional<CommandOutput> refusalOfPathOutside(const std::string& path) const;

    /// The reply for a path in the repository's own folder, in which nobody but git writes.
    [[nodiscard]] std::optional<CommandOutput> refusalInsideRepository(const std::string& path);

    /// As git takes the revision without a doubt: see readWords().
    [[nodiscard]] std::string unmistakable(const std::string& revision);
    /// A path that findFile() returned, in the working copy, as seen from its top; empty for the
    /// top itself.
    [[nodiscard]] std::string pathFromTop(const std::string& path) const;
    /// The word for a path in git's language of objects: "REVISION:path", "REVISION:" for the top.
    [[nodiscard]] std::string objectAt(const std::string& revision, const std::string& path) const {
        return revision + ":" + pathFromTop(path);
    }
    /// "blob", "tree" or, for a submodule, "commit"; empty when the revision has nothing at the
    /// path, and nothing when git could not tell.
    [[nodiscard]] std::optional<std::string> typeOfEntry(const std::string& revision,
                                                         const std::string& path);

private:
    void makeRangeUnmistakable(std::vector<std::string>& revisions);
    /// Whether the file is on disk or tracked; without a working copy, in the latest revision of
    /// the words.
    [[nodiscard]] bool isThere(const std::string& file, const Words& words);
    [[nodiscard]] bool isNameAtTop(const std::string& word) const;
    /// The commit's name; the revision as it is where it stands for none.
    [[nodiscard]] std::string commitOf(const std::string& revision);
    [[nodiscard]] bool isRevision(const std::string& word);
    [[nodiscard]] std::optional<std::vector<std::string>> revisionsIn(const std::string& word);
    [[nodiscard]] std::optional<CommandOutput> take(const std::string& word, bool mustBeRevision,
                                                    Words& words);
    [[nodiscard]] std::optional<CommandOutput> takeFile(const std::string& word, bool mustBeThere,
                                                        Words& words);
};

}  // namespace neb::nebsc
