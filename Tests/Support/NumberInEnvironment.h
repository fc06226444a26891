// NumberInEnvironment.h - numbers that change how much a test does.
#pragma once

#include <cstdlib>
#include <string>

namespace neb::test {

/// Returns the number in the environment variable `name`, or `otherwise` if it is not set.
inline unsigned long numberInEnvironment(const char* name, unsigned long otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? std::strtoul(text, nullptr, 10) : otherwise;
}

}  // namespace neb::test
