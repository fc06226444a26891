// The status of a working copy, read as a plain reader does it.

#include "GitOperations/GitStatus.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "PlainReader.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitStatusOperation operation(requestOf(15));
    const auto records = parsed(operation, bytes);
    require(records == plainStates(piecesOf(*neb::_nebsc_stringFromData(bytes), '\n')),
            "a status is what a plain reader reads");
    return 0;
}
