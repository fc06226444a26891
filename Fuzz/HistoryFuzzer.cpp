// Parses commits with their changed files.

#include "GitExtensions/GitHistory.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitHistoryOperation operation(
        requestOf(neb::NEBSourceControlRequestHistory,
                  {{neb::NEBSourceControlRequestOptionLogOutputFilesChanged, true}}));
    const auto records = parsed(operation, bytes).value();
    std::size_t marks = 0;
    for (const std::string& piece : split(bytes, '\0')) {
        marks += piece.starts_with("commit ") ? 1 : 0;
    }
    require(records.size() <= marks, "each commit begins with a mark");
    for (const neb::NEBDictionary& record : records) {
        const auto* files = record.value(neb::NEBSourceControlOperationChangesKey).array();
        require(files == nullptr || !files->empty(), "no files are absent");
    }
    return 0;
}
