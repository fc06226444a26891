// Parses the stages of paths in conflict.

#include "GitExtensions/GitUnfinishedOperation.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitConflictsOperation operation(
        requestOf(neb::NEBSourceControlRequestUnfinishedOperation));
    const auto records = parsed(operation, bytes).value();
    const std::size_t pieces = split(bytes, '\0').size() - 1;
    std::size_t stages = 0;
    for (const neb::NEBDictionary& record : records) {
        const auto* all = record.value(neb::NEBSourceControlOperationStagesKey).array();
        require(all != nullptr && !all->empty(), "a conflict has stages");
        require(!record.text(neb::NEBSourceControlOperationConflictKey).empty(),
                "the stages stand for a conflict");
        stages += all->size();
    }
    require(stages <= pieces, "each stage is a piece");
    return 0;
}
