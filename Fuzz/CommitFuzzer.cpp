// Parses the message of git about a new commit: its id is the second word.

#include "GitOperations/GitCommit.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitCommitOperation operation(requestOf(3));
    const auto result = parsed(operation, bytes);
    const auto words = split(neb::_nebsc_stringFromData(bytes).value_or(""), ' ');
    require(result.has_value() == (words.size() > 1),
            "there is a record if there is a second word");
    if (result) {
        require(result->size() == 1 &&
                    *result->front().value(neb::NEBSourceControlOperationRevisionKey).string() ==
                        twelveCharactersOf(trimmedOf(words[1], "[] ")),
                "the revision is the second word");
    }
    return 0;
}
