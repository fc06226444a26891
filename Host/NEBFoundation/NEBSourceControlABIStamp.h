// NEBSourceControlABIStamp.h - what a host, the host library and a plug-in must have in common.
//
// They share classes of C++, so they must be built for the same contract version, with the same
// standard library in the same mode, and with types of the same size. The stamp is a text that
// states all of this:
//
//     contract version=7
//     standard library=libstdc++ (std::__cxx11)
//     debug mode=off
//     …
//
// The order and the names of the lines belong to the contract version: two stamps with the same
// version have the same lines, and a stamp with other lines is one of another version. A line can
// have any value; only equal values fit.
//
// Everything that is compiled with this header has the stamp of its compiler options. A host is
// compared with the host library by NEBSourceControlHostMismatch(), a plug-in by
// NEBSourceControlPlugIn::load(). Only C types are passed for that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "LOMFoundation/LOMAssertion.h"
#include "LOMFoundation/LOMFilePath.h"
#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlCommandLog.h"
#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlLimits.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRecordCursor.h"
#include "NEBFoundation/NEBSourceControlRemote.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "NEBFoundation/NEBSourceControlScheduler.h"
#include "NEBFoundation/NEBSourceControlSourceTree.h"
#include "NEBFoundation/NEBValue.h"
#include "Platform/ConstantLines.h"
#include "Platform/Data.h"
#include "Platform/Export.h"
#include "Platform/Operation.h"
#include "Platform/OperationQueue.h"
#include "Platform/StandardLibrary.h"
#include "Platform/TerminationStatus.h"

namespace neb {

/// The version of the host contract, the first line of the stamp. It increases when hosts or
/// plug-ins that were built against an older host library cannot be used any more;
/// docs/compatibility.md states when that is.
inline constexpr std::uint32_t NEBSourceControlContractVersion = 8;

/// A stamp as a note of an ELF file, see elf(5), "Notes". A host library reads it from the file of
/// a plug-in without running any of its code. A constant expression creates it.
///
/// A note consists of a header of three numbers, the name of its owner and a description. Both
/// texts have a length that is a multiple of four bytes, so nothing is between them:
///
///     offset 0   the length of the owner's name
///     offset 4   the length of the description
///     offset 8   a number that the owner defines
///     offset 12  "NEBHost" and a zero byte
///     offset 20  the stamp
struct NEBSourceControlABINote {
    /// The lines "NAME=VALUE", in the order in which they are compared, and zeros behind them.
    static constexpr std::size_t capacity = 1024;

    std::uint32_t nameSize = sizeof name;
    std::uint32_t stampSize = capacity;
    /// The only type of note with this owner.
    std::uint32_t type = 1;
    /// The owner of the note.
    char name[8] = "NEBHost";
    /// The lines. Programs that are compared read nothing else of the note.
    char stamp[capacity] = {};
};

/// Returns the stamp of the code that is compiled. It begins with what is most likely to differ and
/// easiest to understand: another standard library also has types of other sizes. The types are
/// those whose members are accessed on both sides, in inline functions or directly.
constexpr NEBSourceControlABINote NEBSourceControlABINoteOfThisCode() {
    NEBSourceControlABINote note;
    ConstantLines stamp(note.stamp);
    stamp.append("contract version", NEBSourceControlContractVersion);
    stamp.append("standard library", standardLibrary);
    stamp.append("debug mode", standardLibraryDebugMode);
    stamp.append("run-time type information", runTimeTypes);
    stamp.append("size of a pointer", sizeof(void*));
    stamp.append("size of std::string", sizeof(std::string));
    stamp.append("size of std::vector", sizeof(std::vector<NEBValue>));
    stamp.append("size of std::function", sizeof(NEBSourceControlRecordSink));
    stamp.append("size of NEBValue", sizeof(NEBValue));
    stamp.append("size of NEBDictionary", sizeof(NEBDictionary));
    stamp.append("size of NEBSourceControlError", sizeof(NEBSourceControlError));
    stamp.append("size of NEBSourceControlRequest", sizeof(NEBSourceControlRequest));
    stamp.append("size of NEBSourceControlRepository", sizeof(NEBSourceControlRepository));
    stamp.append("size of NEBSourceControlRemote", sizeof(NEBSourceControlRemote));
    stamp.append("size of Operation", sizeof(Operation));
    stamp.append("size of OperationQueue", sizeof(OperationQueue));
    stamp.append("size of NEBSourceControlOperation", sizeof(NEBSourceControlOperation));
    stamp.append("size of NEBSourceControlCommand", sizeof(NEBSourceControlCommand));
    stamp.append("size of NEBSourceControlCommandRun", sizeof(NEBSourceControlCommandRun));
    stamp.append("size of NEBSourceControlLimits", sizeof(NEBSourceControlLimits));
    stamp.append("size of NEBSourceControlRecordCursor", sizeof(NEBSourceControlRecordCursor));
    stamp.append("size of NEBSourceControlScheduler", sizeof(NEBSourceControlScheduler));
    stamp.append("size of TerminationStatus", sizeof(TerminationStatus));
    stamp.append("size of Data", sizeof(Data));
    stamp.append("size of LOMFilePath", sizeof(LOMFilePath));
    stamp.append("size of LOMAssertionReport", sizeof(LOMAssertionReport));
    return note;
}

/// The stamp of the code that is compiled. Each translation unit has its own, because compilers
/// keep no variable in a section that several units share. The linker keeps it only in files with
/// code that refers to it: in a plug-in, and in a host that loads one. The description of a plug-in
/// refers to it.
[[gnu::section(".note.NEBHost")]] alignas(4) static constexpr NEBSourceControlABINote
    NEBSourceControlABIStamp = NEBSourceControlABINoteOfThisCode();

/// Compares the stamp of a host, a text that ends with a zero byte, with the stamp of the host
/// library. Returns null if they are equal, else a sentence that names the first difference and
/// lives until the next call on the same thread. Thread-safe. Call NEBSourceControlHostMismatch().
[[nodiscard]] NEB_EXPORT const char* NEBSourceControlMismatchOfHostStamp(const char* stamp);

/// Returns null if the program was built with headers and options that fit the host library which
/// it runs with, else a sentence that names both sides and lives until the next call on the same
/// thread. A program that is refused must not use any other part of the library.
/// NEBSourceControlPlugIn::load() calls it. Thread-safe.
[[gnu::visibility("hidden")]] inline const char* NEBSourceControlHostMismatch() {
    return NEBSourceControlMismatchOfHostStamp(NEBSourceControlABIStamp.stamp);
}

}  // namespace neb
