// Parses the status of a working copy.

#include "GitOperations/GitStatus.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Property.h"
#include "ReferenceReader.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitStatusOperation operation(requestOf(15));
    const auto records = parsed(operation, bytes);
    require(records == expectedStates(split(*neb::_nebsc_stringFromData(bytes), '\n')),
            "the records are those of the reference reader");
    return 0;
}
