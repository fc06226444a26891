#include "Doctor/Checks.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

constexpr const char* subject = "objects";

/// Returns whether git can read the shallow file; otherwise adds a finding.
bool checkShallowFile(Examination& examination) {
    const ChildOutcome outcome = examination.query({"rev-parse", "--is-shallow-repository"});
    if (!outcome.status.isSuccess()) {
        examination.add(Health::problem, subject,
                        "git cannot read the shallow file: " + reasonOf(outcome),
                        "Fix or remove the line in " + examination.gitPath("shallow"));
    }
    return outcome.status.isSuccess();
}

/// Returns advice for an error of git count-objects(1); may be empty.
std::string adviceOn(Examination& examination, std::string_view error) {
    if (error.find("alternate") != std::string_view::npos) {
        return "Correct or remove that folder in " + examination.gitPath("objects/info/alternates");
    }
    // A damaged pack index: "index file .git/objects/pack/NAME.idx is too small".
    constexpr std::string_view extension = ".idx";
    const std::size_t end = error.find(extension);
    const std::size_t folderEnd = error.rfind('/', end);
    if (end == std::string_view::npos || folderEnd == std::string_view::npos) {
        return "";
    }
    const std::string pack = examination.gitPath(
        "objects/pack/" + std::string(error.substr(folderEnd + 1, end - folderEnd - 1)));
    return "Recreate it with: rm -f " + shellQuoted(pack + ".idx") + " && git index-pack " +
           shellQuoted(pack + ".pack");
}

/// Adds a finding if the line of git count-objects(1) reports damage. Returns whether it does.
bool addIfDamage(Examination& examination, std::string_view line) {
    constexpr std::string_view error = "error: ";
    constexpr std::string_view warning = "warning: ";
    if (line.starts_with(error)) {
        line.remove_prefix(error.size());
        examination.add(Health::problem, subject, std::string(line), adviceOn(examination, line));
        return true;
    }
    if (line.starts_with("warning: no corresponding .pack: ")) {
        examination.add(Health::problem, subject, std::string(line.substr(warning.size())),
                        std::string("Its objects are missing. ") + adviceOnLostObjects);
        return true;
    }
    if (line.starts_with("warning: no corresponding .idx: ")) {
        examination.add(Health::problem, subject, std::string(line.substr(warning.size())),
                        "Recreate the pack index with: git index-pack PACK");
        return true;
    }
    return false;
}

/// Whether the line is about the reverse index of a pack (written by git 2.41 and newer), and
/// another line says the same about its index.
bool isRepeated(std::string_view line, std::string_view lines) {
    constexpr std::string_view extension = ".rev";
    return line.ends_with(extension) &&
           lines.find(std::string(line.substr(0, line.size() - extension.size())) + ".idx") !=
               std::string_view::npos;
}

}  // namespace

void checkObjects(Examination& examination) {
    bool isDamaged = !checkShallowFile(examination);
    // Opens the object database and all alternates, and lists the packs.
    const ChildOutcome count = examination.query({"count-objects", "-v"});
    forEachField(count.errorOutput, '\n', [&](std::string_view line) {
        if (!isRepeated(line, count.errorOutput)) {
            isDamaged = addIfDamage(examination, line) || isDamaged;
        }
    });
    if (!count.status.isSuccess() && !isDamaged) {
        isDamaged = true;
        examination.add(Health::problem, subject, "git cannot count them: " + reasonOf(count));
    }
    if (!isDamaged) {
        examination.add(Health::ok, subject, "all packs and alternates are complete");
    }
}

}  // namespace neb::nebsc
