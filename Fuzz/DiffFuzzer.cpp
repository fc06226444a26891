// Parses a diff: one text, or names with their states.

#include "GitOperations/GitDiff.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Property.h"
#include "ReferenceReader.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    const std::string text = *neb::_nebsc_stringFromData(bytes);
    neb::GitDiffOperation whole(requestOf(30));
    neb::GitDiffOperation names(
        requestOf(30, {{neb::NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true}}));
    const auto content = parsed(whole, bytes);
    const auto states = parsed(names, bytes);
    if (bytes.empty()) {
        require(!content && !states, "an empty diff has no result");
        return 0;
    }
    require(content && content->size() == 1 &&
                content->front() ==
                    neb::NEBDictionary{{neb::NEBSourceControlOperationContentKey, text}},
            "a diff is one text");
    require(states == expectedStates(split(text, '\n')),
            "the records are those of the reference reader");
    return 0;
}
