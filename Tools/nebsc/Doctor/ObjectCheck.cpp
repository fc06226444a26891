#include "Doctor/Checks.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

constexpr const char* subject = "objects";

/// Whether git can read the shallow file.
bool checkShallowFile(Examination& examination) {
    const ChildOutcome outcome = examination.ask({"rev-parse", "--is-shallow-repository"});
    if (!outcome.status.isSuccess()) {
        examination.add(Health::problem, subject,
                        "git cannot read the list of commits without parents: " + reasonOf(outcome),
                        "Fix or remove the line in " + examination.gitPath("shallow"));
    }
    return outcome.status.isSuccess();
}

/// What to do about an error that git count-objects(1) reports.
std::string adviceOn(Examination& examination, std::string_view error) {
    if (error.find("alternate") != std::string_view::npos) {
        return "Correct or remove that folder in " + examination.gitPath("objects/info/alternates");
    }
    // A damaged index of a pack: "index file .git/objects/pack/NAME.idx is too small".
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

/// Whether the line of git count-objects(1) is about damage; adds it then.
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
                        std::string("Its objects are lost here. ") + adviceOnLostObjects);
        return true;
    }
    if (line.starts_with("warning: no corresponding .idx: ")) {
        examination.add(Health::problem, subject, std::string(line.substr(warning.size())),
                        "Recreate the index of the pack with: git index-pack PACK");
        return true;
    }
    return false;
}

}  // namespace

void checkObjects(Examination& examination) {
    bool isDamaged = !checkShallowFile(examination);
    // It opens the object database and all alternates, and lists the packs.
    const ChildOutcome count = examination.ask({"count-objects", "-v"});
    forEachPiece(count.errorOutput, '\n', [&](std::string_view line) {
        isDamaged = addIfDamage(examination, line) || isDamaged;
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
