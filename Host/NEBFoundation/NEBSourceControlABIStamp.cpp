#include "NEBFoundation/NEBSourceControlABIStamp.h"

#include <array>

#include "NEBFoundation/NEBSourceControlABIMismatch.h"

namespace neb {

const char* NEBSourceControlMismatchOfHostStamp(const char* stamp) {
    thread_local std::array<char, 1024> sentence;
    const std::string mismatch = NEBSourceControlABIMismatch("This program", stamp);
    sentence[mismatch.copy(sentence.data(), sentence.size() - 1)] = '\0';
    return mismatch.empty() ? nullptr : sentence.data();
}

}  // namespace neb
