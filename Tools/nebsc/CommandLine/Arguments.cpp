#include "CommandLine/Arguments.h"

namespace neb::nebsc {

std::optional<std::string> Arguments::value(std::string_view name) const {
    const std::vector<std::string>& values = all(name);
    return values.empty() ? std::nullopt : std::optional(values.front());
}

const std::vector<std::string>& Arguments::all(std::string_view name) const {
    static const std::vector<std::string> none;
    const auto entry = _values.find(name);
    return entry == _values.end() ? none : entry->second;
}

}  // namespace neb::nebsc
