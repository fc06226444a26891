// RequestMatrix.h - every type of request as it is asked in earnest, and some that must fail.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "Classes/Configuration/World.h"

namespace neb::test {

struct RequestCase {
    /// Of letters and digits, as a test's name is.
    std::string name;
    std::int32_t type;
    /// What is done in the world's repository before, a script of the shell.
    std::string preparation;
    /// Fills in what belongs to the case; the request is about the world's repository.
    void (*fill)(const World& world, NEBSourceControlRequest& request);
    /// git's words in the error are a status for people, which is as the user wants it.
    bool tellsStatus = false;
    /// What is done in the repository afterwards, a script of the shell, where what the request
    /// does depends on which of its steps is first.
    std::string settlement = {};
};

/// How a failed test names it.
void PrintTo(const RequestCase& requestCase, std::ostream* stream);

/// At least one of each type that has an operation.
const std::vector<RequestCase>& requestMatrix();

/// The case's request in the world, whose repository is prepared for it.
std::shared_ptr<NEBSourceControlRequest> preparedRequest(const World& world,
                                                         const RequestCase& requestCase);

}  // namespace neb::test
