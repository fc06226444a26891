#include "Classes/Configuration/World.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <regex>
#include <stdexcept>

#include "Classes/Configuration/Variables.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"
#include "Support/RequestRun.h"

namespace neb::test {

namespace {

namespace fs = std::filesystem;

/// $1 is the object format. Each commit has another date, so that sorting by date is well defined.
/// Importing the histories needs a tenth of the processes that committing needs.
constexpr std::string_view worldScript = R"SH(
n=0
commit() { n=$((n + 1)); echo "commit $1"; echo "mark :$n"
    echo "author Ann Example <ann@example.org> $((1600000000 + n * 60)) +0000"
    echo "committer Ann Example <ann@example.org> $((1600000000 + n * 60)) +0000"
    text "$2"; shift 2; for line in "$@"; do echo "$line"; done; }
text() { printf 'data <<END\n%s\nEND\n' "$1"; }
file() { echo "M 100644 inline $1"; text "$2"; }
root=$PWD
mkdir tmp dump
git init -q --template= --object-format="$1" repository
cd repository
{
    commit refs/heads/main 'First é'
    file a.c "$(printf 'one\ntwo\nthree')"
    file dir/b.c b
    file 'sp ace.txt' blank
    file é.txt e
    file long.c "$(seq 1 40)"
    file old.c "$(seq 50 90)"
    file .gitattributes '*.txt diff=conv'
    file .mailmap 'Ann Mapped <ann@example.org>'
    commit refs/heads/done Done 'from :1'
    file done.c done
    commit refs/heads/topic Topic 'from :1'
    file topic.c topic
    commit refs/heads/rival Rival 'from :1'
    file a.c "$(printf 'one\nrival\nthree')"
    commit refs/heads/main Second 'from :1'
    file a.c "$(printf 'one\nTWO\nthree')"
    commit refs/heads/main "Merge branch 'done'" 'from :5' 'merge :2'
    file done.c done
    commit refs/heads/main Move 'from :6' 'R long.c moved.c'
    commit refs/stash 'WIP on main' 'from :7' 'merge :7'
    file a.c stashed
    commit refs/notes/commits Notes
    echo 'N inline :5'
    text 'a note'
    printf 'tag v1\nfrom :1\ntagger Ann Example <ann@example.org> 1600000000 +0000\n'
    text version
    printf 'reset refs/remotes/origin/%s\nfrom %s\n\n' main :7 topic :3
} >../dump/repository
git fast-import --quiet <../dump/repository
git reset -q --hard
mkdir -p .git/logs/refs .git/info .git/hooks
stash=$(cat .git/refs/stash)
echo "$(echo "$stash" | tr 0-9a-f 0) $stash Ann Example <ann@example.org> 1600000480 +0000	WIP" \
    >.git/logs/refs/stash
cat >>.git/config <<END
[remote "origin"]
	url = $root/remote.git
	fetch = +refs/heads/*:refs/remotes/origin/*
END
cp -R .git ../remote.git
cat >>.git/config <<END
[branch "main"]
	remote = origin
	merge = refs/heads/main
END
cd ../remote.git
rm -rf index logs refs/stash refs/notes refs/remotes refs/tags/* refs/heads/rival refs/heads/done
git config core.bare true
n=0
{
    commit refs/heads/main News 'from refs/heads/main^0'
    file news.c news
    commit refs/heads/main 'More news'
    file a.c "$(printf 'one\nTWO\nthree\nnews')"
    printf 'reset refs/heads/news\nfrom refs/heads/main\n\n'
} >../dump/remote
git fast-import --quiet <../dump/remote
rm -r ../dump
)SH";

std::string runShell(const std::string& folder, std::vector<std::string> arguments) {
    ChildProcess process;
    const ChildOutcome outcome =
        process.run({{.launchPath = "/bin/sh",
                      .arguments = std::move(arguments),
                      .currentDirectoryPath = folder,
                      .environment = NEBSourceControlInheritedEnvironment()}})[0];
    if (!outcome.status.isSuccess()) {
        throw std::runtime_error("the script failed: " + outcome.status.description() + ": " +
                                 std::string(outcome.errorOutput) + std::string(outcome.output));
    }
    return std::string(outcome.output);
}

std::string errorText(const std::optional<NEBSourceControlError>& error) {
    if (!error) {
        return "none";
    }
    return error->domain + " " + std::to_string(error->code) + " " +
           error->errorClass.value_or("(no class)") + "\n" +
           error->localizedDescription().value_or("(no description)") + "\n" +
           error->localizedRecoverySuggestion().value_or("(no suggestion)");
}

/// The repositories of an object format that the script created, of which all worlds are copies.
const TemporaryFolder& originalWorld(const std::string& objectFormat) {
    static std::map<std::string, TemporaryFolder> originals;
    const auto [original, isNew] = originals.try_emplace(objectFormat);
    if (isNew) {
        runShell(original->second.path(),
                 {"-e", "-c", std::string(worldScript), "sh", objectFormat});
    }
    return original->second;
}

}  // namespace

World::World(std::string_view objectFormat) {
    const TemporaryFolder& original = originalWorld(std::string(objectFormat));
    fs::copy(original.path(), path(), fs::copy_options::recursive);
    for (const char* name : {"repository/.git/config", "remote.git/config"}) {
        std::string config = original.read(name);
        config.replace(config.find(original.path()), original.path().size(), path());
        _folder.write(name, config);
    }
    // The index holds the inodes of the original's files.
    runShell(repository(), {"-c", "git update-index -q --refresh"});
}

std::string World::run(std::string_view script) const {
    return runShell(repository(), {"-e", "-c", std::string(script)});
}

std::map<std::string, std::string> World::content() const {
    std::map<std::string, std::string> content;
    for (const auto& entry : fs::recursive_directory_iterator(path())) {
        const std::string name = fs::relative(entry.path(), path()).string();
        std::string& told = content[withoutPlace(name)];
        if (!entry.is_regular_file()) {
            told = "no plain file";
        } else if (entry.path().filename() == "index") {
            told = runShell(entry.path().parent_path(), {"-c", "git ls-files -s -t"});
        } else if (name.find("/objects/") != std::string::npos) {
            told = "an object";  // its path is the hash of its content
        } else {
            const auto mode = static_cast<unsigned>(entry.status().permissions());
            told = std::to_string(mode) + " " + withoutPlace(_folder.read(name));
        }
    }
    return content;
}

std::string World::withoutPlace(std::string text) const {
    const std::string place = path();
    for (std::size_t at = text.find(place); at != std::string::npos; at = text.find(place, at)) {
        text.replace(at, place.size(), "<world>");
    }
    const bool isTemporary = text.find("tmp/") != std::string::npos;
    return isTemporary ? std::regex_replace(text, std::regex("[0-9A-F]{16}-"), "<random>-") : text;
}

void PrintTo(const Outcome& outcome, std::ostream* stream) {
    *stream << "error: " << outcome.error << "\n"
            << outcome.text << "\n"
            << (outcome.hasResult ? "" : "no result\n");
    for (const std::string& record : outcome.records) {
        *stream << record << "\n";
    }
}

namespace {

Outcome outcomeOf(const World& world, const NEBSourceControlOperation& operation,
                  const NEBSourceControlResult& records) {
    const auto& error = operation.error();
    Outcome outcome{.error = world.withoutPlace(errorText(error)),
                    .text = world.withoutPlace(error ? error->text.value_or("") : ""),
                    .records = {},
                    .hasResult = operation.result().has_value()};
    for (const NEBDictionary& record : records) {
        outcome.records.push_back(world.withoutPlace(NEBValue(record).description()));
    }
    return outcome;
}

}  // namespace

Outcome outcomeOf(const World& world, const std::shared_ptr<NEBSourceControlRequest>& request) {
    const Variables temporary(VariableList{{"TMPDIR", world.path("tmp")}});
    const auto operation = perform(request);
    return outcomeOf(world, *operation, operation->result().value_or(NEBSourceControlResult()));
}

Outcome outcomeWithSink(const World& world,
                        const std::shared_ptr<NEBSourceControlRequest>& request) {
    const Variables temporary(VariableList{{"TMPDIR", world.path("tmp")}});
    NEBSourceControlResult records;
    const auto operation = performWithSink(request, records);
    EXPECT_EQ(operation->deliveredRecordCount(), records.size());
    EXPECT_THAT(operation->result().value_or(NEBSourceControlResult()), testing::IsEmpty());
    return outcomeOf(world, *operation, records);
}

}  // namespace neb::test
