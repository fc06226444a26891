// A difference, as one text and as names with their states.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "GitOperations/GitDiff.h"
#include "Platform/Text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    for (const bool namesOnly : {false, true}) {
        neb::GitDiffOperation operation(neb::NEBSourceControlRequest::initWithType(
            30, nullptr, std::nullopt,
            neb::NEBDictionary{
                {neb::NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, namesOnly}}));
        operation.setData(bytes);
        operation.parseData();
        if (operation.result().has_value() != !bytes.empty()) {
            std::abort();
        }
        for (const neb::NEBDictionary& record :
             operation.result().value_or(neb::NEBSourceControlResult())) {
            const neb::NEBConstant key = namesOnly ? neb::NEBSourceControlOperationPathKey
                                                   : neb::NEBSourceControlOperationContentKey;
            if (!neb::isUTF8(*record.value(key).string())) {
                std::abort();
            }
        }
    }
    return 0;
}
