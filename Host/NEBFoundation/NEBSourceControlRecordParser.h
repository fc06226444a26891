// NEBSourceControlRecordParser.h - turns the output of a child into records, as it arrives.
//
//     class NameParser : public NEBSourceControlRecordParser {
//     public:
//         NameParser() : NEBSourceControlRecordParser('\0') {}
//     protected:
//         void parsePiece(const Data& output, std::string_view piece,
//                         NEBSourceControlResult& records) override {
//             records.push_back({{NEBSourceControlOperationNameKey, NEBValue(output, piece)}});
//         }
//     };
#pragma once

#include <cstddef>
#include <string_view>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

/// Splits an output into pieces at a separator byte. How the output is cut into arriving parts does
/// not change the records. Knows no process and no file. One object per output; not thread-safe.
class NEB_EXPORT NEBSourceControlRecordParser {
public:
    explicit NEBSourceControlRecordParser(char separator) : _separator(separator) {}
    NEBSourceControlRecordParser(const NEBSourceControlRecordParser&) = delete;
    NEBSourceControlRecordParser& operator=(const NEBSourceControlRecordParser&) = delete;
    virtual ~NEBSourceControlRecordParser() = default;

    /// Parses the complete pieces of `output` from byte `start` on, and adds their records, until
    /// there are `limit` of them. Returns the position behind the last parsed piece: the next call
    /// must start with the byte there.
    std::size_t parse(const Data& output, std::size_t start, std::size_t limit,
                      NEBSourceControlResult& records);
    /// Parses the piece from byte `start` on, which no separator ends yet, if isWhole() says so.
    /// Called when the child has written no more for now. Returns the new position.
    std::size_t parseWrittenPiece(const Data& output, std::size_t start,
                                  NEBSourceControlResult& records);
    /// Parses everything from byte `start` on. The output ends there.
    void parseToEnd(const Data& output, std::size_t start, NEBSourceControlResult& records);

protected:
    /// Adds the records of one piece, which lies within `output` and has no separator.
    virtual void parsePiece(const Data& output, std::string_view piece,
                            NEBSourceControlResult& records) = 0;
    /// Adds the records of the piece behind the last separator; it may be empty. The base
    /// implementation calls parsePiece().
    virtual void parseLastPiece(const Data& output, std::string_view piece,
                                NEBSourceControlResult& records) {
        parsePiece(output, piece, records);
    }
    /// Whether the piece, which the child has just written, is known to be whole although no
    /// separator follows. What comes before the next separator then has no record. The base
    /// implementation returns false.
    [[nodiscard]] virtual bool isWhole(std::string_view piece) const {
        static_cast<void>(piece);
        return false;
    }
    /// Whether `rest`, which begins with a complete piece, must not be parsed yet. The base
    /// implementation returns false.
    [[nodiscard]] virtual bool mustWait(std::string_view rest) {
        static_cast<void>(rest);
        return false;
    }

private:
    char _separator;
    std::size_t _searchedSize = 0;  // the bytes from the next start on that have no separator
    bool _isPieceParsed = false;    // the piece that the next start continues
};

/// A parser of lines of text. Invalid UTF-8 is replaced by U+FFFD; the single line of an output
/// loses its line end like a text of _nebsc_stringFromData(). A listing has an empty line after its
/// last line end.
class NEB_EXPORT NEBSourceControlLineParser : public NEBSourceControlRecordParser {
public:
    NEBSourceControlLineParser() : NEBSourceControlRecordParser('\n') {}

protected:
    /// Adds the record of a line, which is UTF-8 and lies within `text`, without its line end.
    virtual void parseLine(const Data& text, std::string_view line,
                           NEBSourceControlResult& records) = 0;

    void parsePiece(const Data& output, std::string_view piece,
                    NEBSourceControlResult& records) final;
    void parseLastPiece(const Data& output, std::string_view piece,
                        NEBSourceControlResult& records) final;
    [[nodiscard]] bool mustWait(std::string_view rest) final;

private:
    bool _isFirst = true;
};

}  // namespace neb
