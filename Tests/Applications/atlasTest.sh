#!/bin/bash
# What atlas prints and how it ends.
# usage: atlasTest.sh ATLAS
set -euo pipefail
program=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# ends CODE ARGUMENT...: runs it with the standard input given, and compares the exit status.
ends() {
    local expected=$1 code=0
    shift
    "$program" "$@" > out 2> err || code=$?
    [ $code = "$expected" ] || { echo "atlas $*: exit status $code"; cat err; exit 1; }
}
prints() { diff - "$1"; }

ends 0 -- 64x32 16x16 32x8
prints out << 'EXPECTED'
64x64
0 0 64x32
0 40 16x16
0 32 32x8
EXPECTED

printf '# sprites\n5x3 a name\r\n\n4x4' | ends 0 --power-of-two --input - -s picture.svg -out list.txt
[ ! -s out ]
prints list.txt << 'EXPECTED'
8x8
0 0 5x3 a name
0 3 4x4
EXPECTED
[ "$(grep -c '<rect' picture.svg)" = 3 ]

ends 0 --bound 10x7 -- 4x7 6x3 && prints out <<< $'10x7\n0 0 4x7\n4 0 6x3'
ends 0 --input /dev/null && prints out <<< 0x0
ends 0 --help && grep -q '^usage: atlas' out
ends 0 --version

# How much it says. A catalog's text is not a format, and may leave arguments out.
ends 0 --verbose --output list.txt -- 4x4
sed -i 's/[0-9.]* seconds/N seconds/' err && prints err << 'EXPECTED'
packing 1 rectangles
    N seconds
writing list.txt
    N seconds
EXPECTED
ends 0 --trace -- 4x4 && grep -q '^ *[0-9.]* Start trace: pack packing 1 rectangles$' err
ends 0 --quiet --verbose --quiet -- 4x4 && [ ! -s err ]
cat > german << 'CATALOG'
atlas.left_over = "{1} Bildpunkte von {1} {2} %s%n bleiben \"übrig\""
shared.options = "Optionen:"
atlas.help_power_of_two = "Seiten sind Zweierpotenzen"
CATALOG
ends 1 --messages german --bound 8x8 -- 8x8 1x2
prints err <<< 'atlas: 2 Bildpunkte von 2 {2} %s%n bleiben "übrig"'
ends 0 --help --messages german && grep -q '^Optionen:' out && grep -q '^    Seiten sind' out
echo 'atlas.left = over' > bad
ends 1 --messages bad && grep -q '^atlas: String file parsing error encountered, line 1, file bad: Expected quotes' err

# Bad sizes, each named with its place; a file that was there before stays.
echo before > kept.svg
while IFS='|' read -r list message; do
    printf -- "$list" | ends 1 --svg kept.svg
    prints err <<< "atlas: standard input:$message"
done << 'LISTS'
5x5\n5|2: a size is WIDTHxHEIGHT, each from 1 to 65535
0x5|1: a size is WIDTHxHEIGHT, each from 1 to 65535
-1x5|1: a size is WIDTHxHEIGHT, each from 1 to 65535
65536x5|1: a size is WIDTHxHEIGHT, each from 1 to 65535
5x99999999999999999999|1: a size is WIDTHxHEIGHT, each from 1 to 65535
5x5\0x|1: a size is WIDTHxHEIGHT, each from 1 to 65535
5x5x5|1: a size is WIDTHxHEIGHT, each from 1 to 65535
32768x32767\n40x1000|2: more than 1000000 rectangles, or 2^30 pixels in all of them
%5000d|1: the line is too long
LISTS
{ yes 1x1 || true; } 2> /dev/null | ends 1
prints err <<< "atlas: standard input:1000001: more than 1000000 rectangles, or 2^30 pixels in all of them"
ends 1 --bound 8x8 -- 8x8 1x2 && prints err <<< "atlas: the bound is too small: 2 pixels are left over"
ends 1 --input none && prints err <<< "atlas: none does not exist."
{ echo before; "$program" --input none || true; echo behind; } &> log # one file, one position
printf '%s\n' before "atlas: none does not exist." behind | prints log
ends 1 --input . && prints err <<< "atlas: . exists but is not a file."
ends 1 --svg none/kept.svg -- 1x1 && prints err <<< "atlas: Directory for none/kept.svg does not exist."
prints kept.svg <<< before
ends 1 --svg $'\xff' -- 1x1 && prints err <<< 'atlas: \xff: is not UTF-8'
"$program" --help > /dev/full 2> err && exit 1
prints err <<< "atlas: standard output: cannot be written"

for wrong in --nonsense "--bound 5" --bound --bound=5x5 5x5 "-- x" "--bound 5x5 --power-of-two -- 1x1"; do # the words of each
    ends 2 $wrong
    grep -q "Try 'atlas --help'" err
done
