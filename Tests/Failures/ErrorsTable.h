// ErrorsTable.h - docs/errors.md, which the tests of the failures write and compare.
#pragma once

#include <map>
#include <string>

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlError.h"

namespace neb::test {

/// The table in the document. With the variable NEB_WRITE_ERRORS_TABLE set, nothing is compared,
/// and write() puts a new table in the old one's place, from what compare() was told by then.
class ErrorsTable {
public:
    static ErrorsTable& instance();

    /// Compares the failure's row with what has come of it. What git's own texts go into counts
    /// only with the git of which the document was made.
    void compare(const Failure& failure, const NEBSourceControlError& error);
    /// Compares which failures the document has, their order and the sums below the table.
    void compareRows() const;
    /// Compares the table of the classes with classTable(); each class must have a code.
    void compareClasses() const;
    /// Writes the document where that is asked for; some failures may not have come about.
    void write() const;

private:
    ErrorsTable();

    bool _isWritten;
    std::string _document;                        // as it is
    std::map<std::string, std::string> _newRows;  // by how they are brought about
};

}  // namespace neb::test
