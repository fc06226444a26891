// Parses the branches of a remote repository: object id TAB reference.

#include "GitOperations/GitBranch.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

neb::NEBDictionary expectedRecordOf(const std::string& line) {
    const auto columns = split(line, '\t');
    neb::NEBDictionary record;
    if (!columns.front().empty()) {
        record.set(neb::NEBSourceControlOperationRevisionKey, twelveCharactersOf(columns.front()));
    }
    const std::string reference = line.substr(std::min(columns.front().size() + 1, line.size()));
    for (std::size_t i = 0; i + 11 <= reference.size(); ++i) {
        if (reference.substr(i, 11) == "refs/heads/") {
            record.set(neb::NEBSourceControlOperationNameKey, reference.substr(i + 11));
            break;
        }
    }
    return record;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
    neb::LOMSetAssertionSink([](const neb::LOMAssertionReport&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitListRemoteBranchesOperation operation(requestOf(31));
    const auto heads = parsed(operation, bytes);
    require(heads.has_value(), "there is always a result");
    if (bytes.empty()) {
        require(heads->empty(), "empty output has no branches");
        return 0;
    }
    const auto lines = split(*neb::_nebsc_stringFromData(bytes), '\n');
    require(heads->size() == lines.size(), "there is one record per line");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        require((*heads)[i] == expectedRecordOf(lines[i]), "the record has the fields of the line");
    }
    return 0;
}
