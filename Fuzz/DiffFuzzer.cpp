// A difference: one text, or names with their states, read as a plain reader does it.

#include "GitOperations/GitDiff.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "PlainReader.h"
#include "Property.h"

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
        require(!content && !states, "no difference is no result");
        return 0;
    }
    require(content && content->size() == 1 &&
                content->front() ==
                    neb::NEBDictionary{{neb::NEBSourceControlOperationContentKey, text}},
            "a difference is one text");
    require(states == plainStates(piecesOf(text, '\n')),
            "names and states are what a plain reader reads");
    return 0;
}
