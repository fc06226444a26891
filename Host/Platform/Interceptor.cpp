#include "Platform/Interceptor.h"

#include <charconv>
#include <utility>

namespace neb {

namespace {

std::shared_ptr<Interceptor>& interceptorOfThread() {
    thread_local std::shared_ptr<Interceptor> interceptor;
    return interceptor;
}

/// The text of a failure: its number, a blank, and its description.
std::string textOf(const std::optional<FileFailure>& failure) {
    return failure ? std::to_string(failure->errorNumber) + " " + failure->description : "";
}

std::optional<FileFailure> failureIn(std::string_view text) {
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [blank, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || blank == end) {
        return std::nullopt;
    }
    return FileFailure{number, std::string(blank + 1, end)};
}

}  // namespace

std::shared_ptr<Interceptor> Interceptor::ofThread() {
    return interceptorOfThread();
}

Interceptor::Scope::Scope(std::shared_ptr<Interceptor> interceptor)
    : _former(std::exchange(interceptorOfThread(), std::move(interceptor))) {}

Interceptor::Scope::~Scope() {
    interceptorOfThread() = std::move(_former);
}

std::string interceptedText(std::string_view question, std::string_view subject,
                            const std::function<std::string()>& ask) {
    const auto interceptor = Interceptor::ofThread();
    return interceptor ? interceptor->answer(question, subject, ask) : ask();
}

bool interceptedFact(std::string_view question, std::string_view subject,
                     const std::function<bool()>& ask) {
    const auto interceptor = Interceptor::ofThread();
    if (!interceptor) {
        return ask();
    }
    return !interceptor
                ->answer(question, subject, [&ask] { return std::string(ask() ? "yes" : ""); })
                .empty();
}

std::optional<FileFailure> interceptedChange(
    std::string_view question, std::string_view subject,
    const std::function<std::optional<FileFailure>()>& ask) {
    const auto interceptor = Interceptor::ofThread();
    return interceptor
               ? failureIn(interceptor->answer(question, subject, [&ask] { return textOf(ask()); }))
               : ask();
}

}  // namespace neb
