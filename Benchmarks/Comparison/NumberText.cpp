#include "NumberText.h"

#include <cmath>
#include <iomanip>
#include <sstream>

namespace neb::benchmarks {

std::string numberText(double value, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

std::string figureText(double value) {
    const double size = std::abs(value);
    return numberText(value, size >= 100 ? 0 : size >= 10 ? 1 : size >= 1 ? 2 : 3);
}

std::string countText(std::size_t count) {
    std::string text = std::to_string(count);
    for (std::size_t place = text.size(); place > 3;) {
        place -= 3;
        text.insert(place, ",");
    }
    return text;
}

std::string ratioText(double value) {
    return value < 10 ? numberText(value, 3) : figureText(value);
}

std::string spreadText(const Spread& spread) {
    return ratioText(spread.median) + " (" + ratioText(spread.least) + "–" +
           ratioText(spread.most) + ")";
}

}  // namespace neb::benchmarks
