// Parses the entries of a tree: one record per entry between NUL bytes.

#include "GitOperations/GitList.h"
#include "Property.h"
#include "ReferenceReader.h"

using namespace neb::fuzz;

namespace {

std::string lastComponentOf(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path.size() == 1 ? path : split(path, '/').back();
}

neb::NEBDictionary expectedEntry(const std::string& entry) {
    ReferenceReader reader(entry);
    reader.number();  // the mode
    reader.passSpace();
    const std::string type = reader.beforeSpace();
    reader.passSpace();
    reader.beforeSpace();  // the object id
    reader.pass('\t');
    return {{neb::NEBSourceControlOperationIsLeafKey, type == "blob"},
            {neb::NEBSourceControlOperationNameKey, lastComponentOf(reader.rest())}};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitListFilesOperation operation(requestOf(17));
    std::vector<std::string> entries = split(bytes, '\0');
    if (entries.back().empty()) {
        entries.pop_back();  // there is no entry after the last NUL byte
    }
    std::vector<neb::NEBDictionary> expected;
    for (const std::string& entry : entries) {
        if (neb::isUTF8(entry)) {
            expected.push_back(expectedEntry(entry));
        }
    }
    require(parsed(operation, bytes) == expected, "the records are those of the reference reader");
    return 0;
}
