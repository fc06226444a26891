// The status of a working copy, and the pieces that other parsers share with it.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "GitOperations/GitStatus.h"
#include "NSData+GitUtilities.h"
#include "Platform/Text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    auto tree = std::make_shared<neb::NEBSourceControlWorkingTree>();
    tree->location = "/w";
    neb::GitStatusOperation operation(
        neb::NEBSourceControlRequest::initWithType(15, tree, std::nullopt, std::nullopt));
    operation.setData(bytes);
    operation.parseData();
    if (!operation.result()) {
        std::abort();
    }
    for (const std::string& component : neb::git_componentsSeparatedByNULLTerminator(bytes)) {
        if (!neb::isUTF8(component) || component.find('\0') != std::string::npos) {
            std::abort();
        }
    }
    return 0;
}
