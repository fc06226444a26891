// A library that is not a plug-in.

#include "Platform/Export.h"

extern "C" NEB_EXPORT int somethingElse() {
    return 1;
}
