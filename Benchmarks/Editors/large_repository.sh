#!/bin/sh
# Creates a repository of COMMITS commits in FOLDER, whose last one has FILES files, and changes
# each of these files:
#   Benchmarks/Editors/large_repository.sh FOLDER FILES COMMITS
# The files lines1000 and lines10000 have so many lines, and are not changed.
set -eu
folder=$1
files=$2
commits=$3

# Prints the stream of git-fast-import(1).
history() {
    awk -v files="$files" -v commits="$commits" '
        function blob(path, content) {
            printf "M 100644 inline %s\ndata %d\n%s\n", path, length(content), content
        }
        BEGIN {
            for (number = 1; number <= commits; number++) {
                message = "Change " number "\n"
                printf "commit refs/heads/main\ncommitter Ann Example <ann@example.org> %d +0000\n",
                    1600000000 + number * 60
                printf "data %d\n%s", length(message), message
                blob("history/" number % 10 "/" number % 7, number "\n")
            }
            print "commit refs/heads/main"
            printf "committer Ann Example <ann@example.org> %d +0000\ndata 10\nAdd files\n",
                1600000000 + number * 60
            for (number = 1; number <= files; number++)
                blob(sprintf("d%03d/f%06d", number / 500, number), number "\n")
            for (count = 1000; count <= 10000; count *= 10) {
                lines = ""
                for (number = 1; number <= count; number++) lines = lines "line " number "\n"
                blob("lines" count, lines)
            }
        }'
}

git init --quiet --initial-branch=main "$folder"
cd "$folder"
git config user.name "Ann Example"
git config user.email ann@example.org
history | git fast-import --quiet
git reset --quiet --hard
git ls-files 'd*' | awk '{ print "x" >>$0; close($0) }'
