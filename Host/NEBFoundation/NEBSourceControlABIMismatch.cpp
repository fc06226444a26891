#include "NEBFoundation/NEBSourceControlABIMismatch.h"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "NEBFoundation/NEBSourceControlABIStamp.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Text.h"

namespace neb {

namespace {

using FileHeader = ElfW(Ehdr);
using ProgramHeader = ElfW(Phdr);
using NoteHeader = ElfW(Nhdr);

/// Notes are short. A larger segment is damaged, or of another kind of file.
constexpr std::size_t largestNotes = std::size_t{1} << 20;

std::vector<std::string_view> linesOf(std::string_view stamp) {
    std::vector<std::string_view> lines;
    forEachLine(stamp.substr(0, stamp.find('\0')),
                [&lines](std::string_view line) { lines.push_back(line); });
    return lines;
}

/// Returns the value of the item, "unknown" if the line is one of another item.
std::string valueOf(std::string_view line, std::string_view item) {
    const bool isOfItem = line.starts_with(item) && line.substr(item.size()).starts_with('=');
    return std::string(isOfItem ? line.substr(item.size() + 1) : "unknown");
}

/// Reads bytes of a file at an offset. Returns whether there were enough.
bool readAt(const FileDescriptor& file, std::size_t offset, void* bytes, std::size_t count) {
    return ::pread(file.get(), bytes, count, static_cast<off_t>(offset)) ==
           static_cast<ssize_t>(count);
}

bool isOfThisMachine(const FileHeader& header) {
    constexpr unsigned char thisClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == thisClass && header.e_phentsize == sizeof(ProgramHeader);
}

std::size_t padded(std::size_t size) {
    return (size + 3) / 4 * 4;
}

/// Returns the stamp among the notes of a segment, which are headers, each followed by the owner
/// and the description.
std::string stampAmong(std::string_view notes) {
    const std::string_view owner(NEBSourceControlABIStamp.name,
                                 sizeof NEBSourceControlABIStamp.name);
    while (notes.size() >= sizeof(NoteHeader)) {
        NoteHeader note{};
        std::memcpy(&note, notes.data(), sizeof note);
        notes.remove_prefix(sizeof note);
        const std::size_t nameSize = padded(note.n_namesz);
        if (nameSize > notes.size() || note.n_descsz > notes.size() - nameSize) {
            break;
        }
        if (notes.substr(0, note.n_namesz) == owner) {
            const std::string_view stamp = notes.substr(nameSize, note.n_descsz);
            return std::string(stamp.substr(0, stamp.find('\0')));
        }
        notes.remove_prefix(std::min(nameSize + padded(note.n_descsz), notes.size()));
    }
    return {};
}

std::string stampInSegment(const FileDescriptor& file, const ProgramHeader& segment) {
    if (segment.p_type != PT_NOTE || segment.p_filesz > largestNotes) {
        return {};
    }
    std::string notes(segment.p_filesz, '\0');
    return readAt(file, segment.p_offset, notes.data(), notes.size()) ? stampAmong(notes) : "";
}

}  // namespace

std::string NEBSourceControlABIMismatch(std::string_view subject, std::string_view stamp) {
    const auto ours = linesOf(std::string_view(NEBSourceControlABIStamp.stamp));
    auto theirs = linesOf(stamp);
    theirs.resize(ours.size());
    const auto [our, their] = std::mismatch(ours.begin(), ours.end(), theirs.begin());
    if (our == ours.end()) {
        return {};
    }
    const std::string_view item = our->substr(0, our->find('='));
    return std::string(subject) + " does not fit the host library: its " + std::string(item) +
           " is " + valueOf(*their, item) + ", that of the host library is " + valueOf(*our, item) +
           ".";
}

NEBSourceControlFileStamp NEBSourceControlStampOfFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    FileHeader header{};
    if (!file.isOpen() || !readAt(file, 0, &header, sizeof header) || !isOfThisMachine(header)) {
        return {};
    }
    NEBSourceControlFileStamp found{.isLibrary = true, .stamp = {}};
    for (std::size_t i = 0; i < header.e_phnum && found.stamp.empty(); ++i) {
        ProgramHeader segment{};
        if (!readAt(file, header.e_phoff + i * sizeof segment, &segment, sizeof segment)) {
            break;
        }
        found.stamp = stampInSegment(file, segment);
    }
    return found;
}

}  // namespace neb
