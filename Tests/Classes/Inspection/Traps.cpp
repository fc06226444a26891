#include "Classes/Inspection/Traps.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace neb::test {

namespace {

namespace fs = std::filesystem;

/// A program that adds its name to the list of those that ran. A filter and a text conversion copy
/// the content; the others fail.
constexpr std::string_view trapProgram = R"(#!/bin/sh
name=${0##*/}
echo "$name" >>"${0%/*}/../fired"
case $name in
filter.*.clean | filter.*.smudge) cat ;;
*textconv) cat "$1" ;;
*) exit 1 ;;
esac
)";

/// "evil" has all drivers, "proc" a long-running filter, "plain" no driver. The empty name is one,
/// too.
constexpr std::string_view attributes = R"(* filter=evil diff=evil merge=evil
moved.c filter=proc
dir/b.c -filter diff=plain
done.c filter=
)";

/// Names the program $2 for each kind of access to the submodule.
constexpr std::string_view submoduleTraps = R"(
cd sub
git config core.fsmonitor "$1"
git config filter.inner.clean "$1"
echo '* filter=inner' >.git/info/attributes
printf '#!/bin/sh\nexec "%s"\n' "$1" >.git/hooks/post-index-change
chmod +x .git/hooks/post-index-change
echo t >s.c
)";

void writeFile(const std::string& path, std::string_view bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path) << bytes;
}

std::string programName(std::string_view setting) {
    std::string name(setting);
    std::ranges::replace(name, '/', '_');
    return name;
}

void replaceAll(std::string& text, std::string_view old, std::string_view replacement) {
    for (std::size_t at = text.find(old); at != std::string::npos;
         at = text.find(old, at + replacement.size())) {
        text.replace(at, old.size(), replacement);
    }
}

/// Returns the setting as lines of a configuration file.
std::string linesOf(std::string_view setting, std::string_view value) {
    const std::size_t first = setting.find('.');
    const std::size_t last = setting.rfind('.');
    std::string lines = "[" + std::string(setting.substr(0, first));
    if (last > first) {
        lines.append(" \"").append(setting.substr(first + 1, last - first - 1)).append("\"");
    }
    return lines.append("]\n")
        .append(setting.substr(last + 1))
        .append(" = ")
        .append(value)
        .append("\n");
}

// Why no request runs a program.
const std::string pinned = "each child has another value: no request needs the daemon";
const std::string changing = "git reads it only where it changes something";
const std::string internal = "each request that compares files has --no-ext-diff";
const std::string noTerminal = "git shows a pager only at a terminal";

std::string onlyOf(std::string_view command) {
    return std::string("only ").append(command).append(" reads it");
}

const std::string diffWithFilterOfUser =
    "printf 'x\\n' >>a.c; git -c 'filter.evil.clean=" + std::string(filterOfUser) + "' diff";

/// What git runs where it shows, compares, converts or signs something, or contacts a server.
std::vector<Trap> trapsOfContent() {
    return {
        {"core.fsmonitor", "PROGRAM", "git status", pinned},
        {"filter.evil.clean", "PROGRAM", "printf \"x\\n\" >>a.c; git diff"},
        {"filter..clean", "PROGRAM", "printf \"x\\n\" >>done.c; git diff"},
        {"filter.evil.smudge", "PROGRAM", "rm a.c; git checkout a.c"},
        {"filter.proc.process", "PROGRAM", "printf \"x\\n\" >>moved.c; git diff"},
        {"diff.evil.textconv", "PROGRAM", "git log -p"},
        {"diff.evil.command", "PROGRAM", "printf \"x\\n\" >>a.c; git diff", internal},
        {"diff.external", "PROGRAM", "printf \"x\\n\" >>dir/b.c; git diff", internal},
        {"merge.evil.driver", "PROGRAM %A %B", "git merge rival", changing},
        {"alias.trap", "!PROGRAM", "git trap", "a request runs commands of git alone"},
        {"core.editor", "PROGRAM", "git commit --allow-empty", changing},
        {"sequence.editor", "PROGRAM", "git rebase -i HEAD~1", changing},
        {"interactive.diffFilter", "PROGRAM",
         "printf 'x\\n' >>dir/b.c; script -qec 'git add -p' /dev/null", changing},
        {"credential.helper", "!PROGRAM",
         "printf \"protocol=ssh\\nhost=h\\n\" | git credential fill"},
        {"credential.http://demo.invalid.helper", "!PROGRAM",
         "printf 'protocol=http\\nhost=demo.invalid\\n' | git credential fill"},
        {"core.askPass", "PROGRAM", "printf 'protocol=https\\nhost=h\\n' | git credential fill"},
        {"gpg.program", "PROGRAM", "git commit -S --allow-empty -m x",
         std::string(unreachableBeforeGit240)},
        {"gpg.ssh.program", "PROGRAM",
         "git -c gpg.format=ssh -c user.signingKey=k commit -S --allow-empty -m x",
         std::string(unreachableBeforeGit240)},
        {"gpg.ssh.defaultKeyCommand", "PROGRAM",
         "git -c gpg.format=ssh commit -S --allow-empty -m x", changing},
        {"gpg.x509.program", "PROGRAM", "git -c gpg.format=x509 commit -S --allow-empty -m x",
         std::string(unreachableBeforeGit240)},
    };
}

/// The others.
std::vector<Trap> trapsOfCommands() {
    return {
        {"trailer.one.command", "PROGRAM", "echo s | git interpret-trailers --trailer one=x",
         "git runs it only for a trailer to add"},
        {"trailer.two.cmd", "PROGRAM", "echo s | git interpret-trailers --trailer two=x",
         "git runs it only for a trailer to add"},
        {"tar.evil.command", "PROGRAM", "git archive --format=evil HEAD",
         "an export uses the format \"tar\", which has no command"},
        {"man.evil.cmd", "PROGRAM", "git -c man.viewer=evil help -m git", onlyOf("git-help(1)")},
        {"browser.evil.cmd", "PROGRAM", "git web--browse --browser=evil http://localhost",
         onlyOf("git-web--browse(1)")},
        {"difftool.evil.cmd", "PROGRAM", "printf \"x\\n\" >>dir/b.c; git difftool -y -t evil",
         onlyOf("git-difftool(1)")},
        {"mergetool.evil.cmd", "PROGRAM", "git merge rival; git mergetool -y -t evil",
         onlyOf("git-mergetool(1)")},
        {"submodule.sub.update", "!PROGRAM",
         "git -C sub commit --allow-empty -m x; git submodule update", changing},
        {"remote.origin.receivepack", "PROGRAM", "git push origin HEAD:x", changing},
        {"core.sshCommand", "PROGRAM", "git ls-remote ssh://localhost/x"},
        {"core.alternateRefsCommand", "PROGRAM",
         "echo $PWD/../remote.git/objects >.git/objects/info/alternates; git fetch origin",
         changing},
        {"core.hooksPath", "HOOKS", "touch a.c; git status"},
        {"guitool.evil.cmd", "PROGRAM", "", onlyOf("git-gui(1), another package")},
        {"core.pager", "PROGRAM", "script -qec 'git shortlog HEAD' /dev/null", noTerminal},
        {"pager.log", "PROGRAM", "script -qec 'git log' /dev/null", noTerminal},
        {"hook.evil.command", "PROGRAM", "", "the hook is that of no event"},
        {"imap.tunnel", "PROGRAM",
         "printf 'From x\\nFrom: a\\nDate: Mon, 17 Sep 2001 00:00:00 +0000\\nSubject: s\\n\\ns\\n' "
         "| git -c imap.folder=x imap-send",
         onlyOf("git-imap-send(1)")},
        {"instaweb.httpd", "PROGRAM lighttpd", "git instaweb", onlyOf("git-instaweb(1)")},
        {"sendemail.smtpServer", "PROGRAM", "", onlyOf("git-send-email(1), another package")},
        {"sendemail.toCmd", "PROGRAM", "", onlyOf("git-send-email(1), another package")},
        {"lfs.extension.evil.clean", "PROGRAM", diffWithFilterOfUser},
        {"lfs.customtransfer.evil.path", "PROGRAM", diffWithFilterOfUser},
        {"uploadpack.packObjectsHook", "PROGRAM", "",
         "git reads it only from the files of the system and of the user"},
        {"gc.recentObjectsHook", "PROGRAM", "", changing},
        {"receive.procReceiveRefs", "refs/trap", "",
         "names no program; only git-receive-pack(1) reads it"},
    };
}

}  // namespace

const std::vector<Trap>& allTraps() {
    static const std::vector<Trap> traps = [] {
        std::vector<Trap> all = trapsOfContent();
        std::ranges::move(trapsOfCommands(), std::back_inserter(all));
        return all;
    }();
    return traps;
}

void addSubmodule(const World& world) {
    world.run(R"(
git init -q sub
cd sub
echo s >s.c
git add s.c
git commit -q -m Sub
cd ..
git config -f .gitmodules submodule.sub.path sub
git config -f .gitmodules submodule.sub.url ./sub
git config submodule.sub.url "$PWD/sub"
git -c advice.addEmbeddedRepo=false add sub .gitmodules
)");
}

std::string makeTrap(const World& world, std::string_view name) {
    const fs::path folder = world.path("traps");
    const fs::path program = folder / "program";
    if (!fs::exists(program)) {
        writeFile(program, trapProgram);
        fs::permissions(program, fs::perms::owner_all);
    }
    const fs::path trap = folder / programName(name);
    if (!fs::exists(trap)) {
        fs::create_symlink("program", trap);
    }
    return trap;
}

void setTraps(const World& world) {
    const std::string hook = world.path("hooks/post-index-change");
    writeFile(hook, "#!/bin/sh\nexec '" + makeTrap(world, "core.hooksPath") + "'\n");
    fs::permissions(hook, fs::perms::owner_all);
    std::string ofRepository;
    std::string ofWorktree;
    for (const Trap& trap : allTraps()) {
        std::string value = trap.value;
        replaceAll(value, "PROGRAM", makeTrap(world, trap.setting));
        replaceAll(value, "HOOKS", world.path("hooks"));
        (trap.setting.starts_with("filter.") ? ofWorktree : ofRepository) +=
            linesOf(trap.setting, value);
    }
    writeFile(world.repository(".git/traps"), ofRepository);
    writeFile(world.repository(".git/config.worktree"), ofWorktree);
    writeFile(world.repository(".git/info/attributes"), attributes);
    const std::string inner = makeTrap(world, "submodule");
    world.run("git config extensions.worktreeConfig true; git config include.path traps; set -- '" +
              inner + "'" + std::string(submoduleTraps));
    takeFiredTraps(world);
}

std::set<std::string> takeFiredTraps(const World& world) {
    std::ifstream file(world.path("fired"));
    std::set<std::string> names;
    for (std::string name; std::getline(file, name);) {
        names.insert(name);
    }
    fs::remove(world.path("fired"));
    return names;
}

}  // namespace neb::test
