#!/bin/sh
# Creates a repository of 100,000 commits with 5 changed files in FOLDER:
#   Tests/Editors/large_repository.sh FOLDER
# Copies the template in the folder $NEB_TEMPLATES if that is set, and creates it first if it is
# missing or was made by another version of the script.
set -eu
folder=$1
script=$(dirname "$0")/../../Benchmarks/Editors/large_repository.sh

create() {
    # The time of the test matters more than the size of the packs.
    GIT_CONFIG_COUNT=1 GIT_CONFIG_KEY_0=core.compression GIT_CONFIG_VALUE_0=0 \
        "$script" "$1" 5 100000
}

if [ -z "${NEB_TEMPLATES-}" ]; then
    create "$folder"
    exit
fi
template=$NEB_TEMPLATES/large-repository
mkdir -p "$NEB_TEMPLATES"
# The tests of both editors run at the same time.
exec 9>"$template.lock"
flock 9
if ! cmp -s "$script" "$template/.git/created-by"; then
    rm -rf "$template"
    create "$template" 9>&-
    cp "$script" "$template/.git/created-by"
fi
cp -R "$template" "$folder"
