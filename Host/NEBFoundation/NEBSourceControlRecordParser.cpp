#include "NEBFoundation/NEBSourceControlRecordParser.h"

#include <algorithm>
#include <utility>

#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/Text.h"

namespace neb {

std::size_t NEBSourceControlRecordParser::parse(const Data& output, std::size_t start,
                                                std::size_t limit,
                                                NEBSourceControlResult& records) {
    const std::string_view bytes = output;
    std::size_t position = start;
    while (records.size() < limit) {
        const std::size_t end = bytes.find(_separator, position + _searchedSize);
        if (end == std::string_view::npos || mustWait(bytes.substr(position))) {
            _searchedSize = std::min(end, bytes.size()) - position;
            break;
        }
        if (!std::exchange(_isPieceParsed, false)) {
            parsePiece(output, bytes.substr(position, end - position), records);
        }
        position = end + 1;
        _searchedSize = 0;
    }
    return position;
}

std::size_t NEBSourceControlRecordParser::parseWrittenPiece(const Data& output, std::size_t start,
                                                            NEBSourceControlResult& records) {
    const std::string_view piece = output.bytes().substr(start);
    if (_isPieceParsed || piece.empty() || !isWhole(piece)) {
        return start;
    }
    parsePiece(output, piece, records);
    _isPieceParsed = true;
    _searchedSize = 0;
    return output.size();
}

void NEBSourceControlRecordParser::parseToEnd(const Data& output, std::size_t start,
                                              NEBSourceControlResult& records) {
    if (records.capacity() == 0) {
        records.reserve(fieldCount(output.bytes().substr(start), _separator));
    }
    const std::size_t last = parse(output, start, std::string_view::npos, records);
    if (!_isPieceParsed) {
        parseLastPiece(output, output.bytes().substr(last), records);
    }
}

bool NEBSourceControlLineParser::mustWait(std::string_view rest) {
    // Whether this line is the only one decides about its line end.
    return _isFirst && rest.find('\n') + 1 == rest.size();
}

void NEBSourceControlLineParser::parsePiece(const Data& output, std::string_view piece,
                                            NEBSourceControlResult& records) {
    _isFirst = false;
    if (isUTF8(piece)) {
        parseLine(output, piece, records);
    } else {
        const Data text(textReplacingInvalidBytes(piece));
        parseLine(text, text, records);
    }
}

void NEBSourceControlLineParser::parseLastPiece(const Data& output, std::string_view piece,
                                                NEBSourceControlResult& records) {
    if (!_isFirst) {
        parsePiece(output, piece, records);
    } else if (!piece.empty()) {
        const Data text = NEBSourceControlTextData(piece);
        forEachField(text, '\n', [&](std::string_view line) { parseLine(text, line, records); });
    }
}

}  // namespace neb
