// Parses settings: three pieces each.

#include "GitExtensions/GitSettings.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitSettingListOperation operation(requestOf(neb::NEBSourceControlRequestSettings));
    std::vector<std::string> pieces = split(bytes, '\0');
    pieces.pop_back();  // not ended
    std::vector<std::string> values;
    for (std::size_t i = 2; i < pieces.size(); i += 3) {
        const std::size_t end = pieces[i].find('\n');
        const std::string name = pieces[i].substr(0, end);
        if (name == "user.name" || name == "user.email") {
            values.push_back(end == std::string::npos ? "" : pieces[i].substr(end + 1));
        }
    }
    const auto records = parsed(operation, bytes).value();
    require(records.size() == values.size(), "there is a record for each requested setting");
    for (std::size_t i = 0; i < records.size(); ++i) {
        require(records[i].text(neb::NEBSourceControlOperationValueKey) ==
                    neb::textReplacingInvalidBytes(values[i]),
                "the value is behind the first line end");
    }
    return 0;
}
