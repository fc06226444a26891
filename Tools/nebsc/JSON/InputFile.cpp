#include "JSON/InputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"

namespace neb::nebsc {

namespace {

/// Reads to the end of the input, or until `bytes` has more than `maximumSize` bytes. Returns 0, or
/// the errno of the failure.
int readAll(int descriptor, std::size_t maximumSize, std::string& bytes) {
    constexpr std::size_t bufferSize = 65536;
    std::array<char, bufferSize> buffer{};
    while (bytes.size() <= maximumSize) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            bytes.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (count == 0) {
            return 0;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

InputReading failed(const std::string& what, int reason) {
    return {std::nullopt, what + " could not be read: " + textOfErrno(reason) + "."};
}

}  // namespace

InputReading readInput(const std::string& file, std::size_t maximumSize) {
    const bool isStandardInput = file == "-";
    const std::string subject = isStandardInput ? "Standard input" : "The file '" + file + "'";
    FileDescriptor opened;
    if (!isStandardInput) {
        opened = FileDescriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
        if (!opened.isOpen()) {
            return failed(subject, errno);
        }
    }
    std::string bytes;
    const int failure = readAll(isStandardInput ? STDIN_FILENO : opened.get(), maximumSize, bytes);
    if (failure != 0) {
        return failed(subject, failure);
    }
    if (bytes.size() > maximumSize) {
        return {std::nullopt,
                subject + " has more than " + std::to_string(maximumSize) + " bytes."};
    }
    return {std::move(bytes), {}};
}

}  // namespace neb::nebsc
