// Parses the list of stashes.

#include "GitExtensions/GitStash.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitStashListOperation operation(requestOf(neb::NEBSourceControlRequestStash));
    const auto records = parsed(operation, bytes).value();
    require(records.size() == split(bytes, '\0').size() - 1, "a NUL byte ends each stash");
    std::size_t index = 0;
    for (const neb::NEBDictionary& record : records) {
        require(record.text(neb::NEBSourceControlOperationNameKey) ==
                    "stash@{" + std::to_string(index++) + "}",
                "the stashes have consecutive numbers");
    }
    return 0;
}
