// Variables.h - temporary environment variables of this process.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace neb::test {

using VariableList = std::vector<std::pair<std::string, std::string>>;

/// Sets the variables, each named once, and restores the previous values in the destructor. No
/// other thread may run.
class Variables {
public:
    explicit Variables(const VariableList& variables) {
        for (const auto& [name, value] : variables) {
            const char* before = std::getenv(name.c_str());
            _before.emplace_back(name, before == nullptr ? std::optional<std::string>() : before);
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
    Variables(const Variables&) = delete;
    Variables& operator=(const Variables&) = delete;
    ~Variables() {
        for (const auto& [name, value] : _before) {
            if (value) {
                ::setenv(name.c_str(), value->c_str(), 1);
            } else {
                ::unsetenv(name.c_str());
            }
        }
    }

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> _before;
};

}  // namespace neb::test
