// NumberText.h - figures as people read them.
#pragma once

#include <cstddef>
#include <string>

#include "Rounds.h"

namespace neb::benchmarks {

/// With so many digits behind the point: "1.030".
std::string numberText(double value, int digits);
/// With the digits that count: "0.103", "1.03", "25.3", "1250".
std::string figureText(double value);
/// "200,000".
std::string countText(std::size_t count);
/// With a thousandth where that counts: "1.031", "25.3".
std::string ratioText(double value);
/// The median, and the least and the most: "1.031 (1.010–1.082)".
std::string spreadText(const Spread& spread);

}  // namespace neb::benchmarks
