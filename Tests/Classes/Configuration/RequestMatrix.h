// RequestMatrix.h - realistic requests of each type, including some that fail.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "Classes/Configuration/World.h"

namespace neb::test {

struct RequestCase {
    /// Letters and digits, for the name of a test.
    std::string name;
    std::int32_t type;
    /// A shell script that prepares the repository of the world.
    std::string preparation;
    /// Sets the values of the case; the request has the repository of the world.
    void (*fill)(const World& world, NEBSourceControlRequest& request);
    /// The error has a status for people, whose form the user configures.
    bool reportsStatus = false;
    /// A shell script that runs afterwards, if the effect depends on the order of concurrent steps.
    std::string settlement = {};
};

/// Prints the name of the case.
void PrintTo(const RequestCase& requestCase, std::ostream* stream);

/// Returns the cases, at least one for each type that has an operation.
const std::vector<RequestCase>& requestMatrix();

/// Prepares the repository of the world and returns the request of the case.
std::shared_ptr<NEBSourceControlRequest> preparedRequest(const World& world,
                                                         const RequestCase& requestCase);

}  // namespace neb::test
