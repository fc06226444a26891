// Parses the files and hunks of a patch.

#include "GitExtensions/GitChanges.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

/// Requires that the counts of a file are those of its lines.
void requireCounts(const neb::NEBDictionary& file) {
    const auto* hunks = file.value(neb::NEBSourceControlOperationHunksKey).array();
    if (hunks == nullptr) {
        require(file.contains(neb::NEBSourceControlOperationIsBinaryKey), "a file has hunks");
        return;
    }
    std::int64_t added = 0;
    std::int64_t deleted = 0;
    for (const neb::NEBValue& hunk : *hunks) {
        for (const neb::NEBValue& line :
             *hunk.dictionary()->value(neb::NEBSourceControlOperationLinesKey).array()) {
            const neb::Data* raw = line.bytes();
            const std::string text =
                raw != nullptr ? std::string(raw->bytes()) : line.description();
            added += text.starts_with('+') ? 1 : 0;
            deleted += text.starts_with('-') ? 1 : 0;
        }
    }
    require(file.value(neb::NEBSourceControlOperationAddedLinesKey).integer() == added,
            "the count of added lines is theirs");
    require(file.value(neb::NEBSourceControlOperationDeletedLinesKey).integer() == deleted,
            "the count of deleted lines is theirs");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitChangesOperation operation(requestOf(neb::NEBSourceControlRequestChanges));
    const auto records = parsed(operation, bytes).value();
    std::size_t marks = 0;
    for (const std::string& line : split(bytes, '\n')) {
        marks += line.starts_with("diff --git ") ? 1 : 0;
    }
    require(records.size() <= marks, "each file begins with a mark");
    for (const neb::NEBDictionary& record : records) {
        require(!record.text(neb::NEBSourceControlOperationStateKey).empty(), "a file has a state");
        requireCounts(record);
    }
    return 0;
}
