#include "InputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"

namespace neb::nebsc {

namespace {

/// Reads to the end into `bytes`. Answers 0 or the errno of the failure.
int readAll(int descriptor, std::string& bytes) {
    constexpr std::size_t pieceSize = 65536;
    std::array<char, pieceSize> piece{};
    while (true) {
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count > 0) {
            bytes.append(piece.data(), static_cast<std::size_t>(count));
        } else if (count == 0) {
            return 0;
        } else if (errno != EINTR) {
            return errno;
        }
    }
}

InputReading failed(const std::string& what, int reason) {
    return {std::nullopt, what + " could not be read: " + textOfErrno(reason) + "."};
}

}  // namespace

InputReading readInput(const std::string& file) {
    std::string bytes;
    if (file == "-") {
        const int failure = readAll(STDIN_FILENO, bytes);
        return failure == 0 ? InputReading{std::move(bytes), {}}
                            : failed("Standard input", failure);
    }
    const FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    const int failure = descriptor.isOpen() ? readAll(descriptor.get(), bytes) : errno;
    return failure == 0 ? InputReading{std::move(bytes), {}}
                        : failed("The file \"" + file + "\"", failure);
}

}  // namespace neb::nebsc
