// The log, with and without files: one record for each piece of text
// between NUL bytes that is not empty.

#include <algorithm>

#include "GitOperations/GitLog.h"
#include "PlainReader.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

/// A number of seconds, held within 32 bits.
neb::NEBDate plainDate(const std::string& line) {
    PlainReader reader(line);
    reader.passSpace();
    std::string digits = reader.number();
    const bool isNegative = digits.starts_with('-');
    digits.erase(0, digits.find_first_of("0123456789"));
    long long seconds = 0;
    for (const char digit : digits) {
        seconds = std::min(seconds * 10 + (digit - '0'), 1LL << 40);
    }
    return neb::NEBDate(std::chrono::seconds(
        std::clamp<long long>(isNegative ? -seconds : seconds, -(1LL << 31), (1LL << 31) - 1)));
}

neb::NEBDictionary plainFiles(const std::string& list) {
    neb::NEBDictionary files;
    for (const std::string& line : piecesOf(list, '\n')) {
        const std::vector<std::string> fields = piecesOf(line, '\t');
        if (fields.size() > 1) {
            files.set(fields[1], plainStatus(fields[0]));
        }
    }
    return files;
}

neb::NEBDictionary plainCommit(const std::string& block, bool withFiles) {
    const std::vector<std::string> parts = piecesOf(block, '\x01');
    PlainReader header(withoutLineEnds(parts.front()));
    const auto line = [&header] {
        std::string text = header.before('\n');
        header.pass('\n');
        return text;
    };
    neb::NEBDictionary record;
    record.set(neb::NEBSourceControlOperationRevisionKey, twelveCharactersOf(line()));
    record.set(neb::NEBSourceControlOperationAuthorKey, line());
    record.set(neb::NEBSourceControlOperationAuthorEmailKey, line());
    record.set(neb::NEBSourceControlOperationDateKey, plainDate(line()));
    record.set(neb::NEBSourceControlOperationMessageKey, withoutLineEnds(header.rest()));
    const std::string files = withoutLineEnds(parts.back());
    if (withFiles && !files.empty()) {
        record.set(neb::NEBSourceControlOperationFilesKey, plainFiles(files));
    }
    return record;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    for (const bool withFiles : {false, true}) {
        neb::GitLogOperation operation(
            requestOf(18, {{neb::NEBSourceControlRequestOptionLogOutputFilesChanged, withFiles}}));
        std::vector<neb::NEBDictionary> expected;
        for (const std::string& block : piecesOf(bytes, '\0')) {
            if (!block.empty() && neb::isUTF8(block)) {
                expected.push_back(plainCommit(block, withFiles));
            }
        }
        require(parsed(operation, bytes) == expected, "a log is what a plain reader reads");
    }
    return 0;
}
