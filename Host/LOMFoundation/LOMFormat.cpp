#include "LOMFoundation/LOMFormat.h"

namespace neb {

std::string formattedText(std::string_view format, const std::vector<std::string>& arguments) {
    std::string text;
    std::size_t next = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const std::string_view specifier = format.substr(i, 2);
        if (specifier != "%@" && specifier != "%s") {
            text += format[i];
            continue;
        }
        text += next < arguments.size() ? std::string_view(arguments[next]) : absentValueText;
        ++next;
        ++i;
    }
    return text;
}

}  // namespace neb
