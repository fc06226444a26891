// StandardLibrary.h - the options of the compiler that decide how types of the standard library are
// named and laid out.
//
// Code that passes such types to other code must be compiled with the same options. The constants
// are texts for people; two texts are equal if the options fit:
//
//     standardLibrary              libstdc++ (std::__cxx11)
//     standardLibraryDebugMode     off
//     runTimeTypes                 on
//
// The types of another library or namespace have other names, so most mistakes are found by the
// linker. The debug mode and the size of a class are not part of a name, and no tool finds them.
// What else changes the layout of types, such as -fpack-struct or another processor, shows in their
// sizes, which NEBFoundation/NEBSourceControlABIStamp.h compares.
#pragma once

#include <string_view>

namespace neb {

/// The standard library, and the namespace or mode that decides about the names of its types:
///
/// - libc++ has an inline namespace with the version of its binary interface, std::__1
/// - libstdc++ has a string that follows C++11, in std::__cxx11, and an older one that shares its
///   content with copies; _GLIBCXX_USE_CXX11_ABI chooses, see its manual, "Dual ABI"
/// - libstdc++ that was configured with an inline namespace has all types in std::__8
#if defined(_LIBCPP_ABI_NAMESPACE)
#define NEB_TEXT(name) #name
#define NEB_EXPANDED_TEXT(name) NEB_TEXT(name)
inline constexpr std::string_view standardLibrary =
    "libc++ (std::" NEB_EXPANDED_TEXT(_LIBCPP_ABI_NAMESPACE) ")";
#undef NEB_EXPANDED_TEXT
#undef NEB_TEXT
#elif _GLIBCXX_INLINE_VERSION
inline constexpr std::string_view standardLibrary = "libstdc++ (std::__8)";
#elif _GLIBCXX_USE_CXX11_ABI
inline constexpr std::string_view standardLibrary = "libstdc++ (std::__cxx11)";
#else
inline constexpr std::string_view standardLibrary = "libstdc++ (_GLIBCXX_USE_CXX11_ABI=0)";
#endif

/// The mode of the standard library that adds checks, and members for them, to its types. Modes
/// that only add checks, such as _GLIBCXX_ASSERTIONS, do not matter.
#if defined(_GLIBCXX_DEBUG)
inline constexpr std::string_view standardLibraryDebugMode = "on (_GLIBCXX_DEBUG)";
#elif defined(_LIBCPP_ENABLE_DEBUG_MODE) || (defined(_LIBCPP_DEBUG) && _LIBCPP_DEBUG > 0)
inline constexpr std::string_view standardLibraryDebugMode = "on (_LIBCPP_DEBUG)";
#else
inline constexpr std::string_view standardLibraryDebugMode = "off";
#endif

/// Whether types have the run-time information that exceptions and dynamic_cast need. A class
/// without it cannot be the base of one that has it.
#if defined(__GXX_RTTI)
inline constexpr std::string_view runTimeTypes = "on";
#else
inline constexpr std::string_view runTimeTypes = "off (-fno-rtti)";
#endif

}  // namespace neb
