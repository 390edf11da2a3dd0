#!/bin/bash
# Takes a model into documents and out again, and shows what happens to damaged ones.
# usage: demo.sh BUILD_DIR [MODEL.obj]
set -euo pipefail

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
    echo "usage: demo.sh BUILD_DIR [MODEL.obj]" >&2
    exit 2
fi
scenefile=$(realpath "$1")/Applications/scenefile/scenefile
model=${2+$(realpath "$2")}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

say() {
    printf '\n# %s\n' "$*"
}

bold= plain=
if [ -t 1 ]; then
    bold=$'\033[1m' plain=$'\033[0m'
fi

run() {
    echo "$bold\$ $*$plain"
    "$@"
}

scenefile() {
    "$scenefile" "$@"
}

# A command that must fail with the exit code for bad input.
refuse() {
    local code=0
    run "$@" || code=$?
    echo "exit code $code"
    [ $code = 1 ]
}

# Runs scenefile with the arguments after the first, which names the document that it saves, and kills
# it as soon as the temporary file of the save exists. On a busy machine that may be too late: it is
# tried again.
kill_in_save() {
    local document=$1 code=0 attempt
    shift
    cp "$document" before
    echo "$bold\$ scenefile $* & kill -KILL \$!$plain"
    for attempt in 1 2 3 4 5; do
        "$scenefile" "$@" > printed &
        until compgen -G '*.0.tmp' || ! kill -0 $!; do :; done > /dev/null 2>&1
        kill -KILL $! 2> /dev/null || true
        wait $! 2> /dev/null && code=0 || code=$?
        [ $code = 0 ] || break
        cp before "$document"
    done
    cat printed
    echo "exit code $code"
    [ $code = 137 ] # SIGKILL
}

if [ -n "$model" ]; then
    say "Takes a copy of your model."
    run cp "$model" model.obj
else
    say "Makes a model: a ring on a slab, with materials, groups, normals, a line and a point."
    run scenefile generate model.obj
fi

say "Imports it, as a binary document and as a text document."
run scenefile import model.obj model.binary --method binary
run scenefile import model.obj model.text --method text

say "Shows what is in a document, with counts and sizes."
run scenefile show model.binary

say "Reads both documents whole, and checks every reference and every index."
run scenefile verify model.binary
run scenefile verify model.text

for method in binary text; do
    say "Exports the $method document and imports the result again: the same document, byte for byte."
    run scenefile export model.$method again.obj
    run scenefile import again.obj again.$method --method $method
    run cmp model.$method again.$method
done

say "The same document compressed, encrypted and guarded by a checksum: it exports the same model."
run scenefile import model.obj model.small --compress --encrypt --checksum
run scenefile verify model.small
run scenefile export model.small small.obj
run scenefile export model.binary again.obj
run cmp small.obj again.obj
say "Five bytes of it are overwritten. The checksum detects it."
run dd of=model.small bs=1 seek=500 conv=notrunc status=none <<< demo
refuse scenefile verify model.small

say "Turns, scales and moves the model in its document, and shows the new bounds."
run cp model.binary moved.binary
run scenefile transform moved.binary --rotate 90,x --scale 2 --translate 0,0,5
run scenefile show moved.binary
say "The opposite steps in the opposite order undo that: the same document, byte for byte."
run scenefile transform moved.binary --translate 0,0,-5 --scale 0.5 --rotate -90,x
run cmp model.binary moved.binary
say "A transform that makes the model flat is refused, and the old document stays."
refuse scenefile transform moved.binary --scale 1e-20
run cmp model.binary moved.binary

for method in binary text; do
    say "Cuts 20 bytes off the $method document. It is refused, and the file that the export would replace stays."
    run truncate --size=-20 again.$method
    run cp again.obj kept.obj
    refuse scenefile export again.$method kept.obj
    run cmp again.obj kept.obj
done

say "A model with a bad face is refused with its line, and the old document stays."
run cp model.binary kept.binary
run cp again.obj bad.obj
run tee --append bad.obj <<< "f 1 2 1000000000"
refuse scenefile import bad.obj kept.binary
run cmp model.binary kept.binary

say "Saves a larger model over an existing document. The digest tells that it was replaced."
run scenefile hash kept.binary
run scenefile generate large.obj --segments 400
run scenefile import large.obj kept.binary
run scenefile hash kept.binary

say "The program is killed while it saves over that document: the old one is still there, and sound."
digest=$(scenefile hash kept.binary | cut --delimiter=' ' --fields=1)
kill_in_save kept.binary import large.obj kept.binary --method text
run cmp before kept.binary
run scenefile hash kept.binary --expect "$digest"
run scenefile verify kept.binary
say "The file that the kill left was noted. Without it, the next save works as any other."
run rm kept*.0.tmp
run scenefile import model.obj kept.binary
run scenefile verify kept.binary

say "Done."
