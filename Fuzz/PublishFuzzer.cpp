// Parses the references of a push.

#include "GitExtensions/GitPublish.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

class PushOperation : public neb::GitPushPorcelainOperation {
public:
    explicit PushOperation(std::shared_ptr<neb::NEBSourceControlRequest> request)
        : GitPushPorcelainOperation(std::move(request), {"push", "--porcelain"}) {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    PushOperation operation(requestOf(neb::NEBSourceControlRequestPublish));
    const auto records = parsed(operation, bytes).value();
    require(records.size() <= split(bytes, '\n').size(), "a line has at most one reference");
    for (const neb::NEBDictionary& record : records) {
        const std::string_view state = record.text(neb::NEBSourceControlOperationStateKey);
        require(!state.empty(), "a reference has a state");
        require(record.contains(neb::NEBSourceControlOperationOldObjectIDKey) ==
                    record.contains(neb::NEBSourceControlOperationNewObjectIDKey),
                "a reference has both ids or none");
        require(record.contains(neb::NEBSourceControlOperationReasonKey) <= (state == "rejected"),
                "only a refused reference has a reason");
    }
    return 0;
}
