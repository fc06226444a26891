// ExtensionCases.h - requests of the types from 1000 on, for the matrix of RequestMatrix.h.
#pragma once

#include <vector>

#include "Classes/Configuration/RequestMatrix.h"

namespace neb::test {

std::vector<RequestCase> extensionCases();

}  // namespace neb::test
