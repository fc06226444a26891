#include "NEBFoundation/NEBSourceControlABIStamp.h"

#include "NEBFoundation/NEBSourceControlABIMismatch.h"

namespace neb {

const char* NEBSourceControlMismatchOfHostStamp(const char* stamp) {
    thread_local std::string sentence;
    sentence = NEBSourceControlABIMismatch("This program", stamp);
    return sentence.empty() ? nullptr : sentence.c_str();
}

}  // namespace neb
