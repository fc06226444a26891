// HgOperation.h - the base of operations that run one hg command.
#pragma once

#include <NEBFoundation/NEBPlugIn.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

using namespace neb;

/// Runs `hg` in the folder of the request's source tree.
class HgOperation : public NEBSourceControlProgramOperation {
public:
    explicit HgOperation(std::shared_ptr<NEBSourceControlRequest> request);

    /// hg waits for a lock of another process itself; passes on how long it may.
    void main() override;

protected:
    /// Returns the revision as an expression of hg: "." for the commit of the working copy,
    /// "wdir()" for its files, other names quoted; `otherwise` if the request has none.
    [[nodiscard]] static std::string revisionOf(const NEBValue& value, std::string_view otherwise);
    /// Appends "--" and the files as patterns that stand for themselves. `kind` is that of
    /// `hg help patterns`: "relpath", absolute or relative to the location, or "path", relative to
    /// the top of the repository.
    void appendFiles(std::vector<std::string>& arguments, std::string_view kind = "relpath") const;
};

/// Returns the bytes as UTF-8, with U+FFFD for invalid ones, and without a line end behind them.
[[nodiscard]] std::string textOf(std::string_view bytes);

/// Returns the text up to the next line end, and removes both from `rest`.
[[nodiscard]] std::string_view takeLine(std::string_view& rest);

/// Returns the date of "SECONDS OFFSET"; see `hg help templates`, hgdate.
[[nodiscard]] NEBDate dateOf(std::string_view hgdate);

/// Calls a function for each NUL-terminated record of an output, which must not be empty.
class HgRecordParser final : public NEBSourceControlRecordParser {
public:
    using Function = void (*)(std::string_view piece, NEBSourceControlResult& records);

    explicit HgRecordParser(Function function)
        : NEBSourceControlRecordParser('\0'), _function(function) {}

protected:
    void parsePiece(const Data& /*output*/, std::string_view piece,
                    NEBSourceControlResult& records) override {
        if (!piece.empty()) {
            _function(piece, records);
        }
    }

private:
    Function _function;
};
