// GitPatch.h - reads a patch of git; see "Generating patch text with -p" in git-diff(1).
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlRecordParser.h"

namespace neb {

/// Parses the output of `git diff --patch --full-index --src-prefix=a/ --dst-prefix=b/` without
/// combined differences. Makes a record per file, as GitChanges.h describes it.
class GitPatchParser : public NEBSourceControlRecordParser {
public:
    GitPatchParser() : NEBSourceControlRecordParser('\n') {}

protected:
    void parsePiece(const Data& output, std::string_view line,
                    NEBSourceControlResult& records) override;
    /// What no line end ends is incomplete.
    void parseLastPiece(const Data& output, std::string_view line,
                        NEBSourceControlResult& records) override;

private:
    void beginFile(std::string_view names);
    void parseFileLine(std::string_view line);
    void beginHunk(const Data& output, std::string_view line);
    void addHunkLine(const Data& output, std::string_view line);
    void finishHunk();
    void finishFile(NEBSourceControlResult& records);

    bool _isInFile = false;
    NEBDictionary _file;
    std::string_view _state;  // one of the constants of the source
    bool _isBinary = false;
    std::vector<NEBValue> _hunks;
    std::int64_t _addedLines = 0;
    std::int64_t _deletedLines = 0;

    bool _isInHunk = false;
    NEBDictionary _hunk;
    std::vector<NEBValue> _lines;
    std::int64_t _missingOldLines = 0;  // of the hunk
    std::int64_t _missingNewLines = 0;
};

}  // namespace neb
