#include "Platform/PathString.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view fileScheme = "file:";

std::optional<unsigned> hexDigit(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    const char lower = lowercaseASCII(digit);
    if (lower >= 'a' && lower <= 'f') {
        return lower - 'a' + 10;
    }
    return std::nullopt;
}

/// Decodes %XX. A "%" without two hexadecimal digits after it is kept.
std::string decodedEscapes(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const auto high = hexDigit(text[i + 1]);
            const auto low = hexDigit(text[i + 2]);
            if (high && low) {
                decoded += static_cast<char>(*high * 16 + *low);
                i += 2;
                continue;
            }
        }
        decoded += text[i];
    }
    return decoded;
}

void removeTrailingSlashes(std::string_view& path) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
}

std::string homeDirectory() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(1U << 14);
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr) {
        return found->pw_dir;
    }
    return "/";
}

}  // namespace

bool isAbsolutePath(std::string_view path) {
    return !path.empty() && (path.front() == '/' || path.front() == '~');
}

std::string pathByAppendingComponent(std::string_view base, std::string_view component) {
    if (base.empty()) {
        return std::string(component);
    }
    while (!base.empty() && base.back() == '/') {
        base.remove_suffix(1);
    }
    while (!component.empty() && component.front() == '/') {
        component.remove_prefix(1);
    }
    std::string path;
    path.reserve(base.size() + 1 + component.size());
    return path.append(base).append("/").append(component);
}

std::string_view lastPathComponentIn(std::string_view path) {
    removeTrailingSlashes(path);
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

std::string lastPathComponent(std::string_view path) {
    return std::string(lastPathComponentIn(path));
}

std::string pathByDeletingLastComponent(std::string_view path) {
    removeTrailingSlashes(path);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) {
        return {};
    }
    std::string_view folder = path.substr(0, slash + 1);
    removeTrailingSlashes(folder);
    return std::string(folder);
}

bool liesWithin(std::string_view path, std::string_view folder) {
    return path == folder || folder == "/" ||
           (path.starts_with(folder) && path[folder.size()] == '/');
}

std::string pathByExpandingTilde(std::string_view path) {
    if (path == "~") {
        return homeDirectory();
    }
    if (path.substr(0, 2) == "~/") {
        return pathByAppendingComponent(homeDirectory(), path.substr(2));
    }
    return std::string(path);
}

std::optional<std::string> pathOfFileURL(std::string_view url) {
    if (!equalIgnoringASCIICase(url.substr(0, fileScheme.size()), fileScheme)) {
        return std::nullopt;
    }
    std::string_view rest = url.substr(fileScheme.size());
    if (rest.substr(0, 2) == "//") {
        const std::size_t slash = rest.find('/', 2);
        rest = slash == std::string_view::npos ? std::string_view{} : rest.substr(slash);
    }
    rest = rest.substr(0, rest.find_first_of("?#"));
    if (rest.empty() || rest.front() != '/') {
        return std::nullopt;
    }
    removeTrailingSlashes(rest);
    std::string path = decodedEscapes(rest);
    if (path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    return path;
}

std::optional<std::string> pathOfLocation(std::string_view location) {
    if (isAbsolutePath(location)) {
        return std::string(location);
    }
    return pathOfFileURL(location);
}

}  // namespace neb
