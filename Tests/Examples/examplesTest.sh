#!/bin/bash
# Runs the commands in the opening comment of each example, and compares what they print with what the
# comment says. An indented line that begins with "$" is a command, those behind it are its output.
# usage: examplesTest.sh SOURCE_DIR BINARY_DIR
set -euo pipefail
PATH=$(realpath "$2"):$PATH
export LC_ALL=C.UTF-8
unset ZE_IPV6_ONLY # the commands connect by IPv4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Connections need the loopback interface, which a container can lack. Nobody listens on port 1.
network=$( (: < /dev/tcp/127.0.0.1/1) 2>&1 || true)

count=0
for source in "$1"/*.cpp; do
    name=$(basename "$source" .cpp)
    if grep -q zeTCP "$source" && [[ $network != *refused* && -n $network ]]; then
        printf 'no loopback interface: %s was not run\n' "$name"
        continue
    fi
    expected=$(sed -n '/^#include/q; s|^//     ||p' "$source")
    mkdir "$folder/$name"
    found=$(
        cd "$folder/$name"
        grep '^\$ ' <<< "$expected" | while IFS= read -r command; do
            printf '%s\n' "$command"
            # Without standard error in between, as on a terminal: the examples write it unbuffered.
            bash -c "${command#\$ }" 2>&1 < /dev/null || true
        done
    )
    diff --unified --label "$name.cpp" --label "printed by $name" \
        <(printf '%s\n' "$expected") <(printf '%s\n' "$found")
    count=$((count + 1))
done
[ "$count" -gt 5 ]

# Wrong use is explained on standard error, and help that was asked for on standard output.
for name in saveload versions filters outofstep protectedsave packages text catalog findfile messages \
    watchfolder programs ballot senddocument; do
    code=0
    "$name" 2> "$folder/usage" || code=$?
    [ "$code $(cut -c 1-6 "$folder/usage" | head -1)" = "2 usage:" ]
done
[ "$(outofstep --help | head -1 | cut -c 1-16)" = "usage: outofstep" ]
