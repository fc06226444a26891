// The log, with and without files: one record for each piece between NUL bytes
// that is not empty and whose header is UTF-8; the others are named.

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

/// The text as git spells a path with core.quotePath=true; one that is UTF-8 stays.
std::string plainPath(const std::string& printed) {
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

/// The list with each path spelled so.
std::string plainList(const std::string& bytes) {
    std::string list;
    for (const std::string& line : piecesOf(bytes, '\n')) {
        for (const std::string& column : piecesOf(line, '\t')) {
            list += plainPath(column) + '\t';
        }
        list.back() = '\n';
    }
    list.pop_back();
    return list;
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
    const std::string files = withoutLineEnds(plainList(parts.back()));
    if (withFiles && !files.empty()) {
        record.set(neb::NEBSourceControlOperationFilesKey, plainFiles(files));
    }
    return record;
}

/// Whether all in front of the last byte that ends a header is UTF-8.
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
        for (const std::string& block : piecesOf(bytes, '\0')) {
            if (!isHeaderText(block)) {
                ++omitted;
            } else if (!block.empty()) {
                expected.push_back(plainCommit(block, withFiles));
            }
        }
        require(parsed(operation, bytes) == expected, "a log is what a plain reader reads");
        require(operation.omittedRevisions().size() == omitted, "what is left out is named");
    }
    return 0;
}
