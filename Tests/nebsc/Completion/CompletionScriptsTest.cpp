// The completion scripts in bash, zsh and fish.

#include <cstdlib>

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

constexpr const char* share = NEB_BUILD_FOLDER "/share/";

class CompletionScripts : public CommandTest {
protected:
    CompletionScripts() {
        repository.commitFile("my file.c", "a\n");
        repository.write("src/main.c", "");
        repository.write("price$.c", "");
        repository.write("fig.c", "");
        repository.git({"branch", "fix"});
        repository.git({"branch", "we$ird;(x)"});
        repository.git({"branch", "it's"});
        repository.git({"remote", "add", "origin", "https://example.org/x.git"});
        repository.git({"update-ref", "refs/remotes/origin/topic", "HEAD"});
    }
    /// Runs the shell with nebsc in its PATH and returns the output. Standard error must be empty.
    [[nodiscard]] std::string run(const std::string& shell, std::vector<std::string> words) const {
        const std::string path = std::getenv("PATH");
        const NebscOutcome outcome =
            runProgram("/usr/bin/env",
                       [&] {
                           words.insert(words.begin(), shell);
                           return words;
                       }(),
                       {.folder = repository.path(),
                        .variables = {{"PATH", std::string(NEB_BUILD_FOLDER "/bin:") + path},
                                      {"LC_ALL", "C.UTF-8"},
                                      {"TERM", "dumb"}}});
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.exitStatus, 0);
        return outcome.output;
    }
};

TEST_F(CompletionScripts, AreThoseThatTheProgramPrints) {
    const std::pair<const char*, std::string> files[] = {
        {"bash", "bash-completion/completions/nebsc"},
        {"zsh", "zsh/site-functions/_nebsc"},
        {"fish", "fish/vendor_completions.d/nebsc.fish"}};
    for (const auto& [shell, file] : files) {
        const TemporaryFolder folder;
        std::filesystem::copy_file(share + file, folder.path("script"));
        expectDone(nebsc({"completion", shell}), folder.read("script"));
        EXPECT_GT(folder.read("script").size(), 100U);
    }
    expectFailed(nebsc({"completion", "tcsh"}), HasSubstr("tcsh"), 2);
}

// ---- bash -------------------------------------------------------------------------------------

class BashCompletion : public CompletionScripts {
protected:
    /// Returns the candidates for the last word, in angle brackets. The words are split as by bash.
    [[nodiscard]] std::string complete(std::string_view line,
                                       const std::vector<std::string>& words) const {
        std::vector<std::string> arguments{
            "-c",
            ". \"$0\" && COMP_LINE=$1 && shift && COMP_POINT=${#COMP_LINE} && COMP_WORDS=(\"$@\") "
            "&& COMP_CWORD=$(($# - 1)) && _nebsc && printf '<%s>' \"${COMPREPLY[@]}\"",
            std::string(share) + "bash-completion/completions/nebsc", std::string(line)};
        arguments.insert(arguments.end(), words.begin(), words.end());
        return run("bash", arguments);
    }
};

TEST_F(BashCompletion, CompletesCommandsAndOptions) {
    EXPECT_EQ(complete("nebsc chec", {"nebsc", "chec"}), "<checkout>");
    EXPECT_EQ(complete("nebsc  branch  tr", {"nebsc", "branch", "tr"}), "<track><tracking>");
    EXPECT_EQ(complete("nebsc log --f", {"nebsc", "log", "--f"}),
              "<--files><--full><--first-parent><--follow>");
}

TEST_F(BashCompletion, QuotesNames) {
    EXPECT_EQ(complete("nebsc checkout we", {"nebsc", "checkout", "we"}), R"(<we\$ird\;\(x\)>)");
    EXPECT_EQ(complete("nebsc checkout we\\$i", {"nebsc", "checkout", "we\\$i"}),
              R"(<we\$ird\;\(x\)>)");
    EXPECT_EQ(complete("nebsc checkout \"we", {"nebsc", "checkout", "\"we"}), R"(<we\$ird;(x)>)");
    EXPECT_EQ(complete("nebsc checkout 'we", {"nebsc", "checkout", "'we"}), "<we$ird;(x)>");
    EXPECT_EQ(complete("nebsc checkout it", {"nebsc", "checkout", "it"}), R"(<it\'s>)");
}

TEST_F(BashCompletion, JoinsWordsThatBashSplits) {
    EXPECT_EQ(complete("nebsc push origin fix:", {"nebsc", "push", "origin", "fix", ":"}),
              "<topic>");
    EXPECT_EQ(complete("nebsc push origin fix:to", {"nebsc", "push", "origin", "fix", ":", "to"}),
              "<topic>");
    EXPECT_EQ(complete("nebsc log --branch=fi", {"nebsc", "log", "--branch", "=", "fi"}), "<fix>");
    EXPECT_EQ(complete("nebsc clone https://exa", {"nebsc", "clone", "https", ":", "//exa"}),
              "<//example.org/x.git>");
    EXPECT_EQ(complete("nebsc cat :m", {"nebsc", "cat", ":", "m"}), R"(<my\ file.c>)");
    EXPECT_EQ(complete("nebsc cat HEAD:", {"nebsc", "cat", "HEAD", ":"}), R"(<my\ file.c>)");
    EXPECT_EQ(complete("nebsc --plugin=sr", {"nebsc", "--plugin", "=", "sr"}), "<src>");
}

TEST_F(BashCompletion, CompletesFilesAndFolders) {
    EXPECT_EQ(complete("nebsc add my", {"nebsc", "add", "my"}), "<my file.c>");
    EXPECT_EQ(complete("nebsc add my\\ f", {"nebsc", "add", "my\\ f"}), "<my file.c>");
    EXPECT_EQ(complete("nebsc add src/", {"nebsc", "add", "src/"}), "<src/main.c>");
    EXPECT_EQ(complete("nebsc log fi", {"nebsc", "log", "fi"}), "<fix><fig.c>");
    EXPECT_EQ(complete("nebsc mkdir ", {"nebsc", "mkdir", ""}), "<src>");
    EXPECT_EQ(complete("nebsc -C s", {"nebsc", "-C", "s"}), "<src>");
    EXPECT_EQ(complete("nebsc -C src add ma", {"nebsc", "-C", "src", "add", "ma"}), "<main.c>");
    EXPECT_EQ(complete("nebsc -C .. -C repo", {"nebsc", "-C", "..", "-C", "repo"}),
              "<repository/>");
}

TEST_F(BashCompletion, CompletesFilesWithAnySettingForPatterns) {
    for (const char* setting : {"set -f", "shopt -s failglob", "GLOBIGNORE='*.c'"}) {
        EXPECT_EQ(run("bash", {"-c",
                               std::string(setting) +
                                   "; . \"$0\" && COMP_LINE='nebsc add my' && COMP_POINT=12 && "
                                   "COMP_WORDS=(nebsc add my) && COMP_CWORD=2 && _nebsc && "
                                   "printf '<%s>' \"${COMPREPLY[@]}\"; COMP_LINE='nebsc add zz'; "
                                   "COMP_WORDS=(nebsc add zz); _nebsc && echo ${#COMPREPLY[@]}",
                               std::string(share) + "bash-completion/completions/nebsc"}),
                  "<my file.c>0\n")
            << setting;
    }
}

TEST_F(BashCompletion, IgnoresTheTextAfterTheCursor) {
    EXPECT_EQ(run("bash", {"-c",
                           ". \"$0\" && COMP_LINE='nebsc checkout fixed' && COMP_POINT=16 && "
                           "COMP_WORDS=(nebsc checkout fixed) && COMP_CWORD=2 && _nebsc && "
                           "printf '<%s>' \"${COMPREPLY[@]}\"",
                           std::string(share) + "bash-completion/completions/nebsc"}),
              "<fix>");
}

TEST_F(BashCompletion, ExecutesNoTextOfTheLine) {
    EXPECT_EQ(complete("nebsc checkout $(touch made)", {"nebsc", "checkout", "$(touch made)"}),
              "<>");
    EXPECT_FALSE(isThere("made"));
}

TEST_F(BashCompletion, IsSilentIfTheProgramIsMissing) {
    EXPECT_EQ(complete("/nonexistent/nebsc ch", {"/nonexistent/nebsc", "ch"}), "<>");
}

TEST_F(BashCompletion, KeepsTheSettingsOfTheShell) {
    EXPECT_EQ(run("bash", {"-c",
                           ". \"$0\" && before=$(shopt -p; set +o) && COMP_LINE='nebsc add m' && "
                           "COMP_POINT=11 && COMP_WORDS=(nebsc add m) && COMP_CWORD=2 && _nebsc && "
                           "[ \"$before\" = \"$(shopt -p; set +o)\" ] && echo same",
                           std::string(share) + "bash-completion/completions/nebsc"}),
              "same\n");
}

// ---- zsh --------------------------------------------------------------------------------------

/// Types each line and a TAB into an interactive zsh and prints the resulting line.
constexpr const char* zshDriver = R"(
zmodload zsh/zpty
folder=$1 share=$2; shift 2
zpty shell "TERM=dumb zsh -f -i"
zpty -w shell "PS1= fpath=($share/zsh/site-functions \$fpath); autoload -U compinit; compinit -D -u"
zpty -w shell "report() { print -r -- \"\$BUFFER\" >|$folder/new; mv $folder/new $folder/line; BUFFER=; }"
zpty -w shell "zle -N report; bindkey '^X' report; : >$folder/line"
for line in "$@"; do
    for ((i = 0; i < 600; i++)); do
        [[ -e $folder/line ]] && break
        zpty -r -t shell output
        sleep 0.05
    done
    [[ -s $folder/line ]] && cat $folder/line
    rm $folder/line
    zpty -w -n shell "$line"$'\t\x18'
done
for ((i = 0; i < 600; i++)); do
    [[ -e $folder/line ]] && break
    zpty -r -t shell output
    sleep 0.05
done
cat $folder/line
zpty -d shell
)";

TEST_F(CompletionScripts, CompleteInZsh) {
    const TemporaryFolder folder;
    EXPECT_EQ(run("zsh", {"-f",
                          "-c",
                          zshDriver,
                          "zsh",
                          folder.path(),
                          share,
                          "nebsc chec",
                          "nebsc branch cre",
                          "nebsc log --fil",
                          "nebsc checkout we",
                          "nebsc checkout 'we",
                          "nebsc checkout it",
                          "nebsc push origin fix:to",
                          "nebsc log --branch=fi",
                          "nebsc clone http",
                          "nebsc add my",
                          "nebsc add pri",
                          "nebsc mkdir s",
                          "nebsc log fix",
                          "nebsc --plugin=fi",
                          "nebsc -C src add ma",
                          "nebsc -C .. add repo",
                          "nebsc help chec",
                          "nebsc nosuch "}),
              "nebsc checkout \n"
              "nebsc branch create \n"
              "nebsc log --files \n"
              "nebsc checkout we\\$ird\\;\\(x\\) \n"
              "nebsc checkout 'we$ird;(x)' \n"
              "nebsc checkout it\\'s \n"
              "nebsc push origin fix:topic \n"
              "nebsc log --branch=fix \n"
              "nebsc clone https://example.org/x.git \n"
              "nebsc add my\\ file.c \n"
              "nebsc add price\\$.c \n"
              "nebsc mkdir src/\n"
              "nebsc log fix \n"
              "nebsc --plugin=fig.c \n"
              "nebsc -C src add main.c \n"
              "nebsc -C .. add repository/\n"
              "nebsc help checkout \n"
              "nebsc nosuch \n");
}

// ---- fish -------------------------------------------------------------------------------------

class FishCompletion : public CompletionScripts {
protected:
    [[nodiscard]] std::string complete(const std::string& line) const {
        return run("fish", {"--no-config", "-c", "source $argv[1]; complete -C $argv[2]",
                            std::string(share) + "fish/vendor_completions.d/nebsc.fish", line});
    }
};

TEST_F(FishCompletion, CompletesCommandsAndOptions) {
    EXPECT_EQ(complete("nebsc chec"), "checkout\tSwitch to a branch or revision\n");
    EXPECT_THAT(complete("nebsc log --fi"), testing::StartsWith("--files\tShow the files"));
}

TEST_F(FishCompletion, CompletesNames) {
    EXPECT_EQ(complete("nebsc checkout we"), "we$ird;(x)\tbranch\n");
    EXPECT_EQ(complete("nebsc checkout 'we"), "we$ird;(x)\tbranch\n");
    EXPECT_EQ(complete("nebsc push origin fix:"), "fix:topic\n");
    EXPECT_EQ(complete("nebsc log --branch=fi"), "--branch=fix\tbranch\n");
    EXPECT_EQ(complete("nebsc cat :m"), ":my file.c\n");
    EXPECT_THAT(complete("nebsc clone https:"), HasSubstr("https://example.org/x.git\torigin\n"));
}

TEST_F(FishCompletion, CompletesFilesAndFolders) {
    EXPECT_EQ(complete("nebsc add my"), "my file.c\n");
    EXPECT_EQ(complete("nebsc mkdir s"), "src/\n");
    EXPECT_THAT(complete("nebsc log fi"),
                testing::AllOf(HasSubstr("fix\tbranch\n"), HasSubstr("fig.c\n")));
    EXPECT_EQ(complete("nebsc --plugin=fig"), "--plugin=fig.c\n");
}

TEST_F(FishCompletion, CompletesFilesWithSpecialCharacters) {
    for (const char* name : {"-dash", "~tilde", "it's", "qu\"ote", "back\\slash"}) {
        repository.write(name, "");
    }
    EXPECT_EQ(complete("nebsc add \"my"), "my file.c\n");
    EXPECT_EQ(complete("nebsc add 'my"), "my file.c\n");
    EXPECT_EQ(complete("nebsc add my\\ f"), "my file.c\n");
    EXPECT_EQ(complete("nebsc --plugin=\"my"), "--plugin=my file.c\n");
    EXPECT_EQ(complete("nebsc add -- -d"), "-dash\n");
    EXPECT_EQ(complete("nebsc add \"~t"), "~tilde\n");
    EXPECT_EQ(complete("nebsc add \"it'"), "it's\n");
    EXPECT_EQ(complete("nebsc add 'qu\""), "qu\"ote\n");
    EXPECT_EQ(complete("nebsc add back\\\\"), "back\\slash\n");
    EXPECT_EQ(complete("nebsc mkdir \"s"), "src/\n");
}

TEST_F(FishCompletion, IsSilentIfNothingIsKnown) {
    EXPECT_EQ(complete("nebsc nosuch "), "");
    EXPECT_EQ(complete("nebsc branch create "), "");
}

}  // namespace
}  // namespace neb::test
