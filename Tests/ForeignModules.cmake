# A plug-in and a host, each compiled in several ways that do not fit the host library. They are
# named after what differs: OldStrings.so and OldStrings-host, …

# neb_foreign_module(NAME OPTIONS…): compiles both with the options.
function(neb_foreign_module name)
    add_library(${name} MODULE Modules/Foreign/PlugIn.cpp)
    add_executable(${name}-host Modules/Foreign/Host.cpp)
    foreach(target ${name} ${name}-host)
        target_compile_options(${target} PRIVATE ${ARGN})
        target_link_libraries(${target} PRIVATE neb_options NEBFoundation)
        set_target_properties(${target} PROPERTIES PREFIX "" BUILD_RPATH "$ORIGIN/../lib"
                              LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/test-modules
                              RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/test-modules)
    endforeach()
    set(module_targets ${module_targets} ${name} ${name}-host PARENT_SCOPE)
endfunction()

# Modes of libstdc++. That of libc++ needs a library that was built with it.
if(NOT NEB_LIBCXX AND NOT NEB_MUSL)
    neb_foreign_module(DebugMode -D_GLIBCXX_DEBUG)
    neb_foreign_module(OldStrings -D_GLIBCXX_USE_CXX11_ABI=0)
endif()

# The same headers with another contract version.
set(other_contract ${CMAKE_CURRENT_BINARY_DIR}/other-contract)
file(READ ${CMAKE_SOURCE_DIR}/Host/NEBFoundation/NEBSourceControlABIStamp.h header)
string(REGEX REPLACE "(ContractVersion) = [0-9]+" "\\1 = 1000" header "${header}")
file(CONFIGURE OUTPUT ${other_contract}/NEBFoundation/NEBSourceControlABIStamp.h
     CONTENT "${header}" @ONLY)
neb_foreign_module(OtherContract)
foreach(target OtherContract OtherContract-host)
    target_include_directories(${target} BEFORE PRIVATE ${other_contract})
endforeach()

# The other standard library. Sanitizers need that of the library.
find_path(libcxx v1/__config PATHS /usr/include/c++ NO_DEFAULT_PATH)
if(NEB_LIBCXX)
    neb_foreign_module(OtherLibrary)
    set_target_properties(OtherLibrary OtherLibrary-host PROPERTIES
                          COMPILE_OPTIONS "" LINK_OPTIONS "")
elseif(libcxx AND NOT NEB_SANITIZER AND NOT NEB_MUSL)
    # Compiles with either compiler.
    neb_foreign_module(OtherLibrary -nostdinc++ -isystem ${libcxx}/v1)
    target_link_options(OtherLibrary-host PRIVATE -nodefaultlibs)
    target_link_libraries(OtherLibrary-host PRIVATE c++ c++abi m c gcc_s gcc)
endif()
