#include "GitExtensions/GitExtension.h"

namespace neb {

GitReadingOperation::GitReadingOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    setMayFetchObjects(asked.option(NEBSourceControlRequestOptionFetchMissingObjects).boolValue());
}

void GitNULRecordParser::parseLastPiece(const Data& /*output*/, std::string_view /*piece*/,
                                        NEBSourceControlResult& records) {
    finish(records);
}

}  // namespace neb
