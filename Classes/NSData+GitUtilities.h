// NSData+GitUtilities.h - splits the output of a tool at NUL bytes.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace neb {

/// Returns the texts between NUL bytes, in order, including the one after the last NUL unless it is
/// empty. Two NULs in a row make an empty text; a text that is not UTF-8 is left out.
[[nodiscard]] std::vector<std::string> git_componentsSeparatedByNULLTerminator(
    std::string_view data);

/// Calls `visit` with each of these texts in order, without copying them.
void git_forEachComponentSeparatedByNULLTerminator(
    std::string_view data, const std::function<void(std::string_view)>& visit);

}  // namespace neb
