// Parses the log, with and without changed files: one record per commit between NUL bytes. A commit
// whose header is not UTF-8 is reported as omitted.

#include <algorithm>

#include "GitOperations/GitLog.h"
#include "Property.h"
#include "ReferenceReader.h"

using namespace neb::fuzz;

namespace {

/// Reads a number of seconds, clamped to 32 bits.
neb::NEBDate expectedDate(const std::string& line) {
    ReferenceReader reader(line);
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

/// Returns the path as git quotes it with core.quotePath=true, or unchanged if it is UTF-8.
std::string expectedPath(const std::string& printed) {
    if (neb::isUTF8(printed)) {
        return printed;
    }
    std::string text;
    for (const char character : printed) {
        const int byte = static_cast<unsigned char>(character);
        if (byte < 128) {
            text += character;
        } else {
            text += {'\\', static_cast<char>('0' + byte / 64),
                     static_cast<char>('0' + byte / 8 % 8), static_cast<char>('0' + byte % 8)};
        }
    }
    return printed.front() == '"' ? text : '"' + text + '"';
}

/// Returns the list with quoted paths.
std::string expectedList(const std::string& bytes) {
    std::string list;
    for (const std::string& line : split(bytes, '\n')) {
        for (const std::string& column : split(line, '\t')) {
            list += expectedPath(column) + '\t';
        }
        list.back() = '\n';
    }
    list.pop_back();
    return list;
}

neb::NEBDictionary expectedFiles(const std::string& list) {
    neb::NEBDictionary files;
    for (const std::string& line : split(list, '\n')) {
        const std::vector<std::string> fields = split(line, '\t');
        if (fields.size() > 1) {
            files.set(fields[1], expectedStatus(fields[0]));
        }
    }
    return files;
}

neb::NEBDictionary expectedCommit(const std::string& block, bool withFiles) {
    const std::vector<std::string> parts = split(block, '\x01');
    ReferenceReader header(withoutLineEnds(parts.front()));
    const auto line = [&header] {
        std::string text = header.before('\n');
        header.pass('\n');
        return text;
    };
    neb::NEBDictionary record;
    record.set(neb::NEBSourceControlOperationRevisionKey, twelveCharactersOf(line()));
    record.set(neb::NEBSourceControlOperationAuthorKey, line());
    record.set(neb::NEBSourceControlOperationAuthorEmailKey, line());
    record.set(neb::NEBSourceControlOperationDateKey, expectedDate(line()));
    record.set(neb::NEBSourceControlOperationMessageKey, withoutLineEnds(header.rest()));
    const std::string files = withoutLineEnds(expectedList(parts.back()));
    if (withFiles && !files.empty()) {
        record.set(neb::NEBSourceControlOperationFilesKey, expectedFiles(files));
    }
    return record;
}

/// Whether the header is UTF-8. The last byte 1 ends it.
bool isHeaderText(const std::string& block) {
    const std::size_t end = block.rfind('\x01');
    return neb::isUTF8(block.substr(0, end));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    for (const bool withFiles : {false, true}) {
        neb::GitLogOperation operation(
            requestOf(18, {{neb::NEBSourceControlRequestOptionLogOutputFilesChanged, withFiles}}));
        std::vector<neb::NEBDictionary> expected;
        std::size_t omitted = 0;
        for (const std::string& block : split(bytes, '\0')) {
            if (!isHeaderText(block)) {
                ++omitted;
            } else if (!block.empty()) {
                expected.push_back(expectedCommit(block, withFiles));
            }
        }
        require(parsed(operation, bytes) == expected,
                "the records are those of the reference reader");
        require(operation.omittedRevisions().size() == omitted, "every omitted commit is reported");
    }
    return 0;
}
