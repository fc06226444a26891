#include "Platform/TerminationStatus.h"

#include <cstring>
#include <utility>

namespace neb {

TerminationStatus::TerminationStatus(Kind kind, int number, std::string reason)
    : _kind(kind), _number(number), _reason(std::move(reason)) {}

TerminationStatus TerminationStatus::notStarted(std::string reason) {
    return {Kind::notStarted, 0, std::move(reason)};
}

TerminationStatus TerminationStatus::exited(int exitStatus) {
    return {Kind::exited, exitStatus, {}};
}

TerminationStatus TerminationStatus::signalled(int signalNumber) {
    return {Kind::signalled, signalNumber, {}};
}

TerminationStatus TerminationStatus::unknown(std::string reason) {
    return {Kind::unknown, 0, std::move(reason)};
}

std::optional<int> TerminationStatus::exitStatus() const {
    return _kind == Kind::exited ? std::optional(_number) : std::nullopt;
}

std::optional<int> TerminationStatus::signalNumber() const {
    return _kind == Kind::signalled ? std::optional(_number) : std::nullopt;
}

std::string TerminationStatus::description() const {
    switch (_kind) {
        case Kind::exited:
            return "exit status " + std::to_string(_number);
        case Kind::signalled:
            return "signal " + std::to_string(_number) + " (" + ::strsignal(_number) + ")";
        case Kind::notStarted:
        case Kind::unknown:
            break;
    }
    return _reason;
}

}  // namespace neb
