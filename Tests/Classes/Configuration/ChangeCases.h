// ChangeCases.h - requests of the types from 1000 on that change something, for the matrix of
// RequestMatrix.h.
#pragma once

#include <vector>

#include "Classes/Configuration/RequestMatrix.h"

namespace neb::test {

std::vector<RequestCase> changeCases();

}  // namespace neb::test
