// NEBSourceControlErrorClasses.h - the table of error classes, with a sentence and advice for each.
//
//     for (const NEBSourceControlErrorClass& row : NEBSourceControlErrorClasses()) {
//         std::cout << row.name << ": " << row.description << '\n';
//     }
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
    /// A sentence that describes the failure. "%@" is the name of the source tree.
    std::string_view description;
    /// What to do about it, in one or two sentences, with commands of git in double quotes. Empty
    /// if nothing can be done or no advice is known.
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
