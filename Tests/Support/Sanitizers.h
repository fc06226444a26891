// Sanitizers.h - whether the tests are built with a sanitizer that rules out some of them.
#pragma once

namespace neb::test {

// These sanitizers reserve terabytes of address space and must be loaded before other libraries.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool hasSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool hasSanitizer = true;
#else
inline constexpr bool hasSanitizer = false;
#endif
#else
inline constexpr bool hasSanitizer = false;
#endif

}  // namespace neb::test
