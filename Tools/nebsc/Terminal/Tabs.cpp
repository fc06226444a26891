#include "Terminal/Tabs.h"

#include "Platform/Text.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

std::string expandTabs(std::string_view line) {
    std::string result;
    forEachField(line, '\t', [&](std::string_view part) {
        const bool isFirst = part.data() == line.data();
        result.append(isFirst ? 0 : columnsOfTab(columnsOf(result)), ' ').append(part);
    });
    return result;
}

}  // namespace neb::nebsc
