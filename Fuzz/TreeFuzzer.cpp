// Parses the entries of a tree with sizes: one record per NUL byte.

#include "GitExtensions/GitTree.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitTreeOperation operation(requestOf(neb::NEBSourceControlRequestTree));
    std::vector<std::string> entries = split(bytes, '\0');
    entries.pop_back();  // not ended
    const auto records = parsed(operation, bytes).value();
    require(records.size() == entries.size(), "each NUL byte ends a record");
    for (std::size_t i = 0; i < records.size(); ++i) {
        // Behind two fields and the TAB that ends the third.
        std::string rest = entries[i];
        for (int field = 0; field < 2; ++field) {
            const std::size_t blank = rest.find(' ');
            rest = blank == std::string::npos ? "" : rest.substr(blank + 1);
        }
        const std::size_t tab = rest.find('\t');
        const std::string path = tab == std::string::npos ? "" : rest.substr(tab + 1);
        require(records[i].text(neb::NEBSourceControlOperationPathKey) ==
                    neb::textReplacingInvalidBytes(path),
                "the path is behind the first TAB of the third field");
        const neb::Data* raw = records[i].value(neb::NEBSourceControlOperationPathBytesKey).bytes();
        require(neb::isUTF8(path) ? raw == nullptr : raw != nullptr && raw->bytes() == path,
                "other bytes are kept");
    }
    return 0;
}
