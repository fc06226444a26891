// Arguments.h - the values that a command line gives to parameters.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

/// Values by the long names of the parameters: "--message", "FILE".
class Arguments {
public:
    /// A flag that is given has one empty value.
    void set(std::string_view name, std::vector<std::string> values) {
        _values.insert_or_assign(std::string(name), std::move(values));
    }
    void add(std::string_view name, std::string value) {
        _values[std::string(name)].push_back(std::move(value));
    }

    [[nodiscard]] bool has(std::string_view name) const { return !all(name).empty(); }
    /// Returns the first value; absent if the parameter is not given.
    [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
    /// Returns all values in order; empty if the parameter is not given. Valid until the object
    /// changes.
    [[nodiscard]] const std::vector<std::string>& all(std::string_view name) const;

    /// Returns how many arguments, options not counted, follow "--"; absent without a "--".
    [[nodiscard]] std::optional<std::size_t> countAfterDashes() const { return _countAfterDashes; }
    void setCountAfterDashes(std::optional<std::size_t> count) { _countAfterDashes = count; }

private:
    std::map<std::string, std::vector<std::string>, std::less<>> _values;
    std::optional<std::size_t> _countAfterDashes;
};

}  // namespace neb::nebsc
