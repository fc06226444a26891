// Parses the remotes: name TAB location SPACE direction.

#include "GitOperations/GitRemote.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

neb::NEBDictionary expectedRecordOf(const std::string& line) {
    const std::string name = split(line, '\t').front();
    const std::string rest = line.substr(std::min(name.size() + 1, line.size()));
    const std::string location = split(rest, ' ').front();
    const std::string direction = rest.substr(std::min(location.size() + 1, rest.size()));
    neb::NEBDictionary record;
    if (!name.empty()) {
        record.set(neb::NEBSourceControlOperationRemoteNameKey, name);
    }
    if (!location.empty()) {
        record.set(neb::NEBSourceControlOperationRemoteOriginKey, location);
    }
    if (direction == "(fetch)" || direction == "(push)") {
        record.set(neb::NEBSourceControlOperationTypeKey, trimmedOf(direction, "()"));
    }
    return record;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitListStandardRemotesOperation operation(requestOf(24));
    const auto remotes = parsed(operation, bytes);
    require(remotes.has_value() == !bytes.empty(), "there is a result if there is output");
    if (remotes) {
        const auto lines = split(*neb::_nebsc_stringFromData(bytes), '\n');
        require(remotes->size() == lines.size(), "there is one record per line");
        for (std::size_t i = 0; i < lines.size(); ++i) {
            require((*remotes)[i] == expectedRecordOf(lines[i]),
                    "the record has the fields of the line");
        }
    }
    return 0;
}
