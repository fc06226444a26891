// NEBSourceControlErrorClasses.h - the classes of failure, with a sentence and advice for each.
#pragma once

#include <span>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/Export.h"

namespace neb {

/// A class of failure. All texts are in English and live as long as the library is loaded.
struct NEBSourceControlErrorClass {
    /// The value of NEBSourceControlError::errorClass, such as "remote-ahead".
    std::string_view name;
    /// A sentence that says what happened. "%@" is the source tree's name.
    std::string_view description;
    /// What to do about it, one or two sentences; commands in it are git's, in double quotes. Empty
    /// where there is nothing to do, or nothing known.
    std::string_view advice = {};
};

/// All classes, each once; related ones are next to each other. Thread-safe.
[[nodiscard]] NEB_EXPORT std::span<const NEBSourceControlErrorClass> NEBSourceControlErrorClasses();

/// Returns the class of that name, or null if no class has it. Thread-safe.
[[nodiscard]] NEB_EXPORT const NEBSourceControlErrorClass* NEBSourceControlErrorClassNamed(
    std::string_view name);

/// Adds the advice of the error's class as its recovery suggestion. An error that has a suggestion
/// keeps it, and one without a description gets none. Thread-safe.
NEB_EXPORT void NEBSourceControlAddAdvice(NEBSourceControlError& error);

}  // namespace neb
