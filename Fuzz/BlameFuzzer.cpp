// Parses the blame of a file: one record per line.

#include "GitOperations/GitBlame.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/DateFormatter.h"
#include "Property.h"
#include "ReferenceReader.h"

using namespace neb::fuzz;

namespace {

neb::NEBDictionary expectedLine(const std::string& line) {
    ReferenceReader reader(line);
    const std::string revision = twelveCharactersOf(reader.before('\t'));
    reader.pass('\t');
    reader.pass('(');
    reader.passSpace();
    const std::string author = reader.before('\t');
    reader.pass('\t');
    const std::string date = reader.before('\t');
    reader.pass('\t');
    const std::string number = reader.before(')');

    neb::NEBDictionary record;
    const auto setIfRead = [&record](neb::NEBConstant key, const std::string& text) {
        if (!text.empty()) {
            record.set(key, text);
        }
    };
    setIfRead(neb::NEBSourceControlOperationRevisionKey, revision);
    setIfRead(neb::NEBSourceControlOperationAuthorKey, author);
    setIfRead(neb::NEBSourceControlOperationLineNumberKey, number);
    if (const auto instant = neb::DateFormatter().dateFromString(date)) {
        record.set(neb::NEBSourceControlOperationDateKey, *instant);
    }
    return record;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitBlameOperation operation(requestOf(28));
    const auto records = parsed(operation, bytes);
    if (bytes.empty()) {
        require(!records, "empty output has no result");
        return 0;
    }
    std::vector<neb::NEBDictionary> expected;
    for (const std::string& line : split(*neb::_nebsc_stringFromData(bytes), '\n')) {
        expected.push_back(expectedLine(line));
    }
    require(records == expected, "the records are those of the reference reader");
    return 0;
}
