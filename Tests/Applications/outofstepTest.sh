#!/bin/bash
# What outofstep prints by each method is what its page shows: the lines between the page's fences.
# usage: outofstepTest.sh OUTOFSTEP README.md
set -euo pipefail
program=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

outofstep() {
    local code=0
    echo "\$ outofstep circle.zp $1"
    "$program" "$folder/circle.zp" "$1" 2>&1 || code=$?
    [ $code = "$2" ] || echo "exit code $code"
}

diff --unified <(sed -n '/^```$/,/^```$/ {/^```/d; p}' "$2") \
    <(outofstep binary 0; echo; outofstep binary-debug 1)

diff --unified - <(outofstep text 0; outofstep text-debug 1) << 'EXPECTED'
$ outofstep circle.zp text
wrote: radius 2.5, colour 7, name wheel
read:  radius 2.5, colour 7, name wheel
$ outofstep circle.zp text-debug
wrote: radius 2.5, colour 7, name wheel
outofstep: Packet file type mismatch:
outofstep:    got: Short (68)
outofstep:    expected: Int (69)
outofstep: ioPacketFile: Fatal error.  Aborting.
outofstep: the reader is out of step with its writer
EXPECTED

diff - <("$program" "$folder/none/circle.zp" 2>&1) << EXPECTED
wrote: radius 2.5, colour 7, name wheel
outofstep: $folder/none/circle.zp: cannot be written and read
EXPECTED

cd "$folder"
for wrong in --help "circle.zp xml" ""; do # the words of each
    code=0
    "$program" $wrong 2> usage || code=$?
    test "$code $(cut -c 1-16 usage)" = "2 usage: outofstep"
done
test ! -e --help
