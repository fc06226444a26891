#include <algorithm>

#include "Doctor/Checks.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

constexpr const char* subject = "fsck";
/// If a pack is lost, git fsck prints thousands of messages.
constexpr std::size_t mostFindings = 50;

/// Returns the messages of git fsck(1). A line that begins with a blank continues the one before.
std::vector<std::string> messagesIn(std::string_view text) {
    std::vector<std::string> messages;
    forEachField(text, '\n', [&messages](std::string_view line) {
        const std::size_t begin = line.find_first_not_of(' ');
        if (begin == std::string_view::npos) {
            return;
        }
        if (begin > 0 && !messages.empty()) {
            messages.back().append(" ").append(line.substr(begin));
        } else {
            messages.emplace_back(line.substr(begin));
        }
    });
    return messages;
}

Health healthOf(std::string_view message, bool hasFailed) {
    const bool isWarning = message.starts_with("warning") || message.starts_with("notice");
    return hasFailed && !isWarning ? Health::problem : Health::note;
}

/// Returns whether the message reports a damaged index. Only git fsck(1) verifies its checksum.
bool isAboutIndex(std::string_view message) {
    return message.find("index file corrupt") != std::string_view::npos;
}

}  // namespace

void checkIntegrity(Examination& examination) {
    const ChildOutcome outcome =
        examination.queryWithoutTimeLimit({"fsck", "--full", "--no-dangling", "--no-progress"});
    const bool hasFailed = !outcome.status.isSuccess();
    std::vector<std::string> messages = messagesIn(outcome.errorOutput);
    const std::vector<std::string> others = messagesIn(outcome.output);
    messages.insert(messages.end(), others.begin(), others.end());
    for (std::size_t i = 0; i < messages.size() && i < mostFindings; ++i) {
        examination.add(healthOf(messages[i], hasFailed), subject, messages[i]);
    }
    if (messages.size() > mostFindings) {
        examination.add(hasFailed ? Health::problem : Health::note, subject,
                        (outcome.errorOutputWasCut ? "and at least " : "and ") +
                            std::to_string(messages.size() - mostFindings) + " more",
                        "'git fsck --full' prints all of them.");
    }
    if (!outcome.status.exitStatus()) {
        examination.add(Health::problem, subject,
                        "git fsck did not complete: " + outcome.status.description());
    } else if (hasFailed) {
        examination.add(Health::problem, subject,
                        "git fsck found damage: " + outcome.status.description(),
                        std::any_of(messages.begin(), messages.end(), isAboutIndex)
                            ? adviceOnDamagedIndex(examination)
                            : adviceOnLostObjects);
    } else if (messages.empty()) {
        examination.add(Health::ok, subject, "git fsck has read every object and found no damage");
    }
}

}  // namespace neb::nebsc
