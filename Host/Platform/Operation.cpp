#include "Platform/Operation.h"

namespace neb {

void Operation::start() {
    main();
    setFinished();
}

}  // namespace neb
