// The entries of a folder: one record for each piece of text between NUL bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "GitOperations/GitList.h"
#include "NSData+GitUtilities.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    neb::GitListFilesOperation operation(
        neb::NEBSourceControlRequest::initWithType(17, nullptr, std::nullopt, std::nullopt));
    operation.setData(bytes);
    operation.parseData();
    if (operation.result()->size() != neb::git_componentsSeparatedByNULLTerminator(bytes).size()) {
        std::abort();
    }
    for (const neb::NEBDictionary& record : *operation.result()) {
        if (!record.value(neb::NEBSourceControlOperationNameKey).isString() ||
            !record.value(neb::NEBSourceControlOperationIsLeafKey).boolean()) {
            std::abort();
        }
    }
    return 0;
}
