#include "GitOperations/GitCheckout.h"

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"

namespace neb {

GitCheckoutOperation::GitCheckoutOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    std::vector<std::string> arguments{"checkout"};
    const NEBSourceControlRequest& asked = *this->request();
    if (asked.type == NEBSourceControlRequestCheckout) {
        if (asked.destination.isPresent()) {
            arguments.push_back(asked.destination.description());
        }
        arguments.emplace_back("--merge");
    } else {
        arguments.insert(arguments.end(), {"-f", "--"});
        appendFiles(arguments);
    }
    setArguments(std::move(arguments));
}

void GitCheckoutOperation::parseData() {
    if (!data()) {
        return;
    }
    NEBDictionary record;
    if (auto notice = _nebsc_stringFromData(errorData())) {
        record.set(NEBSourceControlOperationContentKey, std::move(*notice));
    }
    setResult({{std::move(record)}});
}

}  // namespace neb
