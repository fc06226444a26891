// The entries of a folder: one record for each piece of text between NUL bytes.

#include "GitOperations/GitList.h"
#include "PlainReader.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

std::string lastComponentOf(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path.size() == 1 ? path : piecesOf(path, '/').back();
}

neb::NEBDictionary plainEntry(const std::string& entry) {
    PlainReader reader(entry);
    reader.number();  // the mode
    reader.passSpace();
    const std::string type = reader.beforeSpace();
    reader.passSpace();
    reader.beforeSpace();  // the object's name
    reader.pass('\t');
    return {{neb::NEBSourceControlOperationIsLeafKey, type == "blob"},
            {neb::NEBSourceControlOperationNameKey, lastComponentOf(reader.rest())}};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitListFilesOperation operation(requestOf(17));
    std::vector<std::string> entries = piecesOf(bytes, '\0');
    if (entries.back().empty()) {
        entries.pop_back();  // nothing stands behind the last NUL byte
    }
    std::vector<neb::NEBDictionary> expected;
    for (const std::string& entry : entries) {
        if (neb::isUTF8(entry)) {
            expected.push_back(plainEntry(entry));
        }
    }
    require(parsed(operation, bytes) == expected, "a listing is what a plain reader reads");
    return 0;
}
