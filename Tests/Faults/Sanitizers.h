// Sanitizers.h - what a test cannot ask of a program that a sanitizer watches.
#pragma once

namespace neb::test {

// The sanitizers set aside address space by the terabyte, and want to be loaded before anything.
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
