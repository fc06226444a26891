// Parses references: one record per NUL byte, one field per line.

#include "GitExtensions/GitReferences.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitReferencesOperation operation(requestOf(1008));
    std::vector<std::string> pieces = split(bytes, '\0');
    pieces.pop_back();  // not ended
    const auto records = parsed(operation, bytes).value();
    require(records.size() == pieces.size(), "each NUL byte ends a record");
    for (std::size_t i = 0; i < records.size(); ++i) {
        std::string piece = pieces[i];
        if (piece.starts_with('\n')) {
            piece.erase(0, 1);
        }
        const std::vector<std::string> lines = split(piece, '\n');
        const std::string& name = lines[0];
        require(records[i].text(neb::NEBSourceControlOperationNameKey) ==
                    neb::textReplacingInvalidBytes(name),
                "the first line is the name");
        const neb::Data* raw = records[i].value(neb::NEBSourceControlOperationNameBytesKey).bytes();
        require((raw == nullptr) == neb::isUTF8(name), "other bytes are kept");
        require(raw == nullptr || raw->bytes() == name, "the bytes are those of the name");
        const bool hasID = lines.size() > 1 && !lines[1].empty();
        require(records[i].contains(neb::NEBSourceControlOperationObjectIDKey) == hasID,
                "the second line is the id");
    }
    return 0;
}
