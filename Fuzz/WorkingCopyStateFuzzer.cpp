// Parses the state of a working copy.

#include "GitExtensions/GitWorkingCopyState.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

/// Returns the number of entries that a plain reader finds. A renamed path has a second piece.
std::size_t entryCountOf(const std::string& bytes) {
    std::vector<std::string> pieces = split(bytes, '\0');
    pieces.pop_back();  // not ended
    std::size_t count = 0;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const std::string& piece = pieces[i];
        if (piece.size() < 3 || piece.starts_with("# ")) {
            continue;
        }
        const char kind = piece.front();
        if (kind == '2') {
            ++i;
            count += i < pieces.size() ? 1 : 0;
        } else if (std::string_view("1u?!").find(kind) != std::string_view::npos) {
            ++count;
        }
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitWorkingCopyStateOperation operation(
        requestOf(neb::NEBSourceControlRequestWorkingCopyState));
    const auto records = parsed(operation, bytes).value();
    std::size_t entries = 0;
    for (const neb::NEBDictionary& record : records) {
        const auto kind = record.text(neb::NEBSourceControlOperationKindKey);
        require(!kind.empty(), "a record has a kind");
        entries += kind == "head" ? 0 : 1;
    }
    require(entries == entryCountOf(bytes), "there is a record for each entry");
    return 0;
}
