// GitExtension.h - the bases of the operations of the request types from 1000 on.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Runs a git command that only reads. git does not contact a server for objects that a partial
/// clone lacks, unless the request has NEBSourceControlRequestOptionFetchMissingObjects: the error
/// is then of the class "objects-missing" and names an object.
///
/// The options for a repository and a working copy replace the location of the source tree.
class GitReadingOperation : public GitOperation {
public:
    explicit GitReadingOperation(std::shared_ptr<NEBSourceControlRequest> request);

protected:
    /// Declares that the command needs this version of git: "2.36". The error of an older git,
    /// which does not know an option, says so.
    void setRequiredGit(std::string_view version) { _requiredGit = version; }
    /// Appends "--" and the files of the request.
    void appendPaths(std::vector<std::string>& arguments) const;
    /// Makes the operation fail, without running git, if the option has another value than these.
    /// For constructors.
    void requireOneOf(NEBConstant option, std::initializer_list<std::string_view> values);
    /// The same if the request does not name exactly one file.
    void requireFile();
    /// The same if gitAcceptsInteger() does not accept the option.
    void requireInteger(NEBConstant option, std::int64_t minimum);
    [[nodiscard]] std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const override;
    /// Runs git unless the constructor set an error.
    void main() override;

private:
    std::string_view _requiredGit;
};

/// Returns the error, of the class "request-invalid", of an option that has an unknown value or
/// lacks one.
[[nodiscard]] NEBSourceControlError gitErrorOfOption(const NEBSourceControlRequest& request,
                                                     NEBConstant option);

/// Whether the option is absent, or a decimal integer that is not below `minimum` and that git can
/// read, which is at most 2147483647. git takes other numbers for another value.
[[nodiscard]] bool gitAcceptsInteger(const NEBSourceControlRequest& request, NEBConstant option,
                                     std::int64_t minimum);

/// Returns a copy of the request without destination and files. Their names, if they look like
/// patterns, would make git take its pathspecs literally, such as ":/", the top.
[[nodiscard]] std::shared_ptr<NEBSourceControlRequest> gitRequestWithoutNames(
    const NEBSourceControlRequest& request);

/// Returns the path of the request's first file, relative to the location of the source tree if it
/// lies there, without "/" at its end; empty without a file.
[[nodiscard]] std::string gitPathFromTop(const NEBSourceControlRequest& request);

/// The same for any path.
[[nodiscard]] std::string gitPathFromTop(const NEBSourceControlRequest& request, std::string path);

/// Parses pieces that end with a NUL byte, as git prints with its option -z.
class GitNULRecordParser : public NEBSourceControlRecordParser {
public:
    GitNULRecordParser() : NEBSourceControlRecordParser('\0') {}

protected:
    /// Adds the records that are complete at the end of the output. The base implementation adds
    /// none.
    virtual void finish(NEBSourceControlResult& records) { static_cast<void>(records); }

    /// Calls finish(): what no NUL byte ends is incomplete.
    void parseLastPiece(const Data& output, std::string_view piece,
                        NEBSourceControlResult& records) final;
};

}  // namespace neb
