// BlameQuery.h - a query for the lines of a file, and who last changed each.
//
// The records of a blame request lack the text of the lines.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "CommandFrame/EntryQuery.h"
#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// A commit that last changed a line.
struct BlamedCommit {
    /// The full id; zeros for lines that are not committed.
    std::string id;
    std::string author{};
    NEBDate date{};
};

/// A line of the file.
struct BlamedLine {
    /// Never null; valid as long as the query exists.
    const BlamedCommit* commit = nullptr;
    /// The number of the line, from 1 on.
    std::string number;
    /// The bytes of the line, without its end.
    std::string content{};
};

/// Lines of a file, from 1 on, both included.
struct LineRange {
    std::int64_t first = 1;
    /// Absent: to the end of the file.
    std::optional<std::int64_t> last{};
};

/// Returns the range of "FIRST,LAST", "FIRST,+COUNT", "FIRST", "FIRST," or ",LAST", as
/// git-blame(1) reads it; absent for any other text. Thread-safe.
[[nodiscard]] std::optional<LineRange> lineRangeIn(std::string_view text);

/// Not thread-safe, like all operations.
class BlameQuery : public EntryQuery<BlamedLine> {
public:
    /// Takes the only file and the starting revision of a blame request. A missing revision stands
    /// for the working copy, a missing range for all lines.
    BlameQuery(std::shared_ptr<NEBSourceControlRequest> request,
               const std::optional<LineRange>& range);

    [[nodiscard]] std::string className() const override { return "BlameQuery"; }

protected:
    [[nodiscard]] std::optional<BlamedLine> entryIn(std::string_view text) override;

private:
    std::map<std::string, BlamedCommit, std::less<>> _commits;
    /// The commit and the number of the line that comes next.
    BlamedCommit* _commit = nullptr;
    std::string _number;
};

}  // namespace neb::nebsc
