// ErrorsTable.h - the tables of docs/errors.md, which the tests of the failures compare or write.
#pragma once

#include <map>
#include <string>

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlError.h"

namespace neb::test {

/// The tables in the document. If the variable NEB_WRITE_ERRORS_TABLE is set, nothing is compared,
/// and write() replaces the tables by those of the errors that compare() has received.
class ErrorsTable {
public:
    static ErrorsTable& instance();

    /// Compares the row of the failure with its error. Messages of git are compared only with the
    /// version of git that the document was made with.
    void compare(const Failure& failure, const NEBSourceControlError& error);
    /// Compares the list of failures, their order and the sums below the table.
    void compareRows() const;
    /// Compares the table of classes with classTable(); each class must have a code.
    void compareClasses() const;
    /// Writes the document if requested. Failures that were not run are left out.
    void write() const;

private:
    ErrorsTable();

    bool _isWritten;
    std::string _document;                        // current content
    std::map<std::string, std::string> _newRows;  // by Failure::how
};

}  // namespace neb::test
