// NumberText.h - numbers as text.
#pragma once

#include <cstddef>
#include <string>

#include "Rounds.h"

namespace neb::benchmarks {

/// Returns the number with that many decimals: "1.030".
std::string numberText(double value, int digits);
/// Returns the significant digits: "0.103", "1.03", "25.3", "1250".
std::string figureText(double value);
/// Returns "200,000".
std::string countText(std::size_t count);
/// Returns the number with thousandths if it is small: "1.031", "25.3".
std::string ratioText(double value);
/// Returns median, minimum and maximum: "1.031 (1.010–1.082)".
std::string spreadText(const Spread& spread);

}  // namespace neb::benchmarks
