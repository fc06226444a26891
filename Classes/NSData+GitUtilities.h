// NSData+GitUtilities.h - cutting a tool's output at its NUL bytes.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace neb {

/// The texts between the NUL bytes, in order. Bytes behind the last NUL are a text too; two NUL
/// bytes in a row make an empty one; a piece that is no UTF-8 is left out. Nothing for no bytes.
[[nodiscard]] std::vector<std::string> git_componentsSeparatedByNULLTerminator(
    std::string_view data);

/// The same texts, one after the other, without a copy of any: `visit` is called with each while
/// `data` is walked through.
void git_forEachComponentSeparatedByNULLTerminator(
    std::string_view data, const std::function<void(std::string_view)>& visit);

}  // namespace neb
