#include "NEBFoundation/NEBSourceControlUnexpectedError.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "Platform/ThreadEnd.h"

namespace neb {

namespace {

/// Returns the name as in source code: "int". Empty if unknown.
std::string nameOfCurrentExceptionType() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    if (type == nullptr) {
        return {};
    }
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), &std::free);
    return name ? name.get() : type->name();
}

NEBSourceControlError unexpectedError(const std::string& description) {
    auto error = NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    error.errorClass = NEBSourceControlUnknownErrorClass;
    return error;
}

/// Has its own advice, as that of the class is about the memory of git.
NEBSourceControlError outOfMemoryError() {
    const NEBConstant errorClass = NEBSourceControlOutOfMemoryErrorClass;
    const NEBSourceControlErrorClass* row = NEBSourceControlErrorClassNamed(errorClass.text());
    auto error = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError, std::string(row->description),
        "Request less at once, or allow the process more memory.");
    error.errorClass = errorClass;
    return error;
}

}  // namespace

NEBSourceControlError NEBSourceControlErrorOfCurrentException() {
    try {
        throw;
    } catch (const ThreadEnd&) {
        throw;
    } catch (const std::bad_alloc&) {
        return outOfMemoryError();
    } catch (const std::length_error&) {  // a size that exceeds any memory
        return outOfMemoryError();
    } catch (const std::exception& exception) {
        return unexpectedError(std::string("The operation could not be completed: ") +
                               exception.what() + ".");
    } catch (...) {
        const std::string type = nameOfCurrentExceptionType();
        return unexpectedError("An exception" + (type.empty() ? "" : " of type \"" + type + "\"") +
                               " was thrown unexpectedly.");
    }
}

void NEBSourceControlStoreCurrentException(std::optional<NEBSourceControlError>* error) {
    try {
        auto unexpected = NEBSourceControlErrorOfCurrentException();
        if (error != nullptr) {
            *error = std::move(unexpected);
        }
    } catch (const std::bad_alloc&) {
        return;
    }
}

}  // namespace neb
