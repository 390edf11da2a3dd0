#!/bin/bash
# What zepackage keeps, refuses and prints, and what scenefile reads in a package.
# usage: zepackageTest.sh ZEPACKAGE SCENEFILE MAN_PAGE
set -euo pipefail
program=$1 scenefile=$2 manual=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# ends CODE ARGUMENT...: runs it, and compares the exit status.
ends() {
    local expected=$1 code=0
    shift
    "$program" "$@" > out 2> err < /dev/null || code=$?
    [ $code = "$expected" ] || { echo "zepackage $*: exit status $code"; cat err; exit 1; }
}
prints() { diff - "$1"; }
# is VALUE EXPECTED
is() { [ "$1" = "$2" ] || { echo "not '$2' but '$1'"; exit 1; }; }
says() { prints err <<< "zepackage: $1"; }
# forge NAME NEW: gives the entry NAME of the package `bad` another name, of the same length.
forge() { LC_ALL=C sed -i "s|$1|$2|" bad; }
start() { head -c "$2" < <(yes "$1" 2> /dev/null || true); }

# A folder comes back byte for byte, with its dates: sizes about those of blocks, names of all kinds.
mkdir -p tree/deep/er tree/%s
for size in 0 1 4095 4096 4097 65536 100000; do
    head -c $size /dev/urandom > tree/deep/random$size
    start 'the same again' $size > tree/deep/er/text$size
done
printf x > $'tree/new\nline\e[31m'
printf x > 'tree/%s/Schön "it"'
find tree -type f -exec touch -d '2001-02-03 04:05:06' {} +
(cd tree && find . -type f -print0 | cut -zc 3- | LC_ALL=C sort -z | tr '\0' '\n') > names
for compress in '' --compress; do
    ends 0 create p . --force -C tree $compress
    ends 0 verify p && prints out <<< 'p: sound: 16 entries of 355652 bytes'
    rm -rf again && mkdir again
    ends 0 extract p --directory=again
    diff -r tree again
    is "$(find again -type f -newermt '2001-02-03 04:05:07' | wc -l)" 0
    ends 0 list p && prints out < names
done
[ "$(stat -c %s p)" -lt 200000 ] # half of it is compressed
ends 0 cat p deep/er && cmp out <(cat tree/deep/er/*)
ends 0 list p deep/random1 deep
is "$(head -1 out)" deep/random1 # in the order of the arguments, and once
is "$(wc -l < out)" 14
ends 0 list p --json && python3 -c '
import json
entries = json.load(open("out"))["entries"]
assert len(entries) == 16 and "new\nline\x1b[31m" in [entry["name"] for entry in entries]
assert sum(entry["compressed"] for entry in entries) == 5'
ends 0 list p --verbose %s && grep -q '^           1   2001-02-03 04:05 %s/Sch' out
ends 0 delete p deep/ -v && prints err < <(grep ^deep names)
before=$(stat -c %s p)
ends 0 compact p
[ "$(stat -c %s p)" -lt "$before" ]
printf replaced > 'tree/%s/Schön "it"'
ends 0 add p ./%s//../%s -C tree --verbose && prints err <<< '%s/Schön "it"'
ends 0 cat p %s && is "$(cat out)" replaced
ends 0 delete p %s $'new\nline\e[31m' && ends 0 compact p && ends 0 list p && prints out < /dev/null
ends 0 list p --json && prints out <<< $'{\n  "package": "p",\n  "entries": []\n}'

# What is no file in a folder is left out, and so is the package itself; the rest of the path stays.
mkdir -p odd/empty && echo a > odd/a && mkfifo odd/fifo && ln -s a odd/link && ln -s odd also
ends 0 create odd/p odd/a
ends 0 add odd/p "$PWD/also"
prints <(LC_ALL=C sort err | sed "s|$PWD|HERE|") << 'EXPECTED'
zepackage: HERE/also/empty: left out: an empty folder
zepackage: HERE/also/fifo: left out: neither a file nor a folder
zepackage: HERE/also/link: left out: neither a file nor a folder
zepackage: HERE/also/p: left out: the package itself
EXPECTED
ends 0 list odd/p && prints out < <(printf '%s\n' odd/a "${PWD#/}/also/a" | LC_ALL=C sort)

# Messages. The package stays as it is, whatever is refused.
echo b > 'a\b' && echo a > a && echo c > con && mkdir sub && echo a > sub/a && cp odd/p locked
printf 'x' > $'bad\xff' && cp odd/p kept
while IFS='|' read -r code line message; do
    eval "ends $code $line"
    is "$(head -1 err)" "zepackage: $message"
    cmp kept odd/p
done << 'LINES'
1|list none|none: cannot be opened: No such file or directory
1|list odd|odd: it is not a package, but a folder
1|list odd/fifo|odd/fifo: it is not a package, but a device, a pipe or a socket
1|add odd/fifo a|odd/fifo: it is not a package, but a device, a pipe or a socket
1|verify a|a: it is not a package, or its directory of entries is damaged
1|delete a x|a: it is not a package, or its directory of entries is damaged
1|create odd/p a|odd/p: exists already; --force replaces it
1|create odd a --force|odd: cannot be written: not a regular file
1|create no/p a|no/p: cannot be written: No such file or directory
1|create new odd/empty|odd/empty: left out: an empty folder
1|create "" a|: cannot be written: No such file or directory
1|create $'new\xff' a|new\xff: cannot be written: its name is not UTF-8
1|add odd/p none|none: cannot be read: No such file or directory
1|add odd/p ""|: cannot be read: No such file or directory
1|add odd/p odd/fifo|odd/fifo: it is neither a file nor a folder
1|add odd/p $'bad\xff'|bad\xff: its name is not UTF-8
1|add odd/p 'a\b'|a\b: a package cannot keep its name
1|add odd/p con|odd/p: cannot be written: ./con: its name is empty, or reserved for a device on other systems
1|add odd/p ../sub/a sub/a -C odd|sub/a: cannot be read: No such file or directory
1|add odd/p a ../a -C sub|sub/../a and sub/a would become one entry, a
1|delete odd/p odd/a odd/x|odd/x: there is no such entry
1|cat odd/p a/|a/: there is no such entry
1|extract odd/p -C none|none: cannot be opened: No such file or directory
2||a command is missing
2|unpack odd/p|there is no command 'unpack'
2|cat odd/p|cat takes PACKAGE NAME...
2|compact odd/p a|compact takes PACKAGE
2|list -|a package is changed in place, and cannot be standard input or output (a file of that name is ./-)
2|list odd/p --compress|list takes no option --compress
2|list odd/p --nonsense|Option does not exist or is ambiguous: --nonsense
2|list odd/p --json=1|option --json takes no value
2|list odd/p -vx|Option does not exist or is ambiguous: -x
2|list odd/p --=x|there is no option --=x
2|extract odd/p -C|Insufficient arguments when processing option: directory
LINES
is "$(echo new*)" 'new*'
ends 0 create -vfCsub new a ./a && prints err <<< a # joined options; one file, named twice
("$program" list new && "$program" list none && : || "$program" list new) > both 2>&1 # one file for all
is "$(cat both)" $'a\nzepackage: none: cannot be opened: No such file or directory\na'
cp new $'new\xff' && ends 0 list $'new\xff' --json && python3 -m json.tool out > json
ends 0 --help
[ "$(wc -L < out)" -le 80 ]
for option in $(grep -o '^  -., --[a-z]*' out | sed 's/.*--//'); do
    grep -q -- "\\\\-\\\\-$option" "$manual"
done
ends 0 --version
"$program" --help > /dev/full 2> err && exit 1
says 'standard output: cannot be written'
"$program" cat odd/p odd/a > /dev/full 2> err && exit 1
says 'standard output: cannot be written: No space left on device'
flock locked "$program" delete locked odd/a 2> err && exit 1
says 'locked: another zepackage is changing it'
ends 0 delete -- locked odd/a # and now nobody is

# Packages from elsewhere: nothing is written outside, links that lie there are not followed, and one
# bad entry does not keep the others back.
mkdir -p e/l e/xx/y in && for name in e/top e/xx/y/zz e/l/n e/plain e/esc e/zz; do echo "$name" > $name; done
ends 0 create bad e/top e/xx/y/zz e/l/n e/plain e/esc e/zz
forge e/top ../up && forge e/xx/y/zz e/../../z && forge e/esc $'e/\e[m' && forge e/zz /zzz
echo outside > z && echo outside > n && ln -s .. in/e
ends 1 extract bad -C in
prints err << 'EXPECTED'
zepackage: e/\x1b[m: cannot be made: e is a link or a file where a folder must be
zepackage: e/../../z: left out: its name leads to another folder
zepackage: e/l/n: cannot be made: e is a link or a file where a folder must be
zepackage: e/plain: cannot be made: e is a link or a file where a folder must be
EXPECTED
is "$(ls in)" $'e\nup\nzzz'
is "$(cat z n)" $'outside\noutside'
rm in/e && mkdir -p in/e && ln -s ../../z in/e/plain && ln -s ../../z in/e/l
ends 1 extract bad -C in && grep -q '^zepackage: e/plain: exists already; --force replaces it$' err
ends 1 extract bad -C in --force
is "$(cat in/e/plain z)" $'e/plain\noutside'
forge e/plain $'e/\xf4\x90\x80\x80p' && ends 0 list bad --json && python3 -m json.tool out > json
if command -v script > /dev/null; then # a terminal does not get commands from names
    script --quiet --command "'$program' list bad" /dev/null < /dev/null > out && grep -qF 'e/\x1b[m' out
fi

# Damage: the entry is named and not extracted, the others are. Cut anywhere, a package is refused.
start text 20000 > tree/text
ends 0 create bad tree/text a --compress --force
place=$("$program" list bad --json | grep -o '"tree/text", "offset": [0-9]*' | grep -o '[0-9]*$')
printf '\xff\xff\xff\xff' | dd of=bad bs=1 seek=$((place + 60)) conv=notrunc status=none
ends 1 verify bad && says 'tree/text: it is damaged or cut off'
rm -rf in && mkdir in && ends 1 extract bad -C in
is "$(find in -type f)" in/a
echo mine > in/tree/text # not replaced by what is damaged
ends 1 extract bad -C in --force && is "$(cat in/tree/text; ls -A in/tree)" $'mine\ntext'
for size in 0 1 60 84 85 $(($(stat -c %s bad) - 1)); do
    head -c "$size" bad > cut
    ends 1 list cut && says 'cut: it is not a package, or its directory of entries is damaged'
done

# A document in a package, plain and compressed, is read in place; a file with a colon comes first.
"$scenefile" generate ring.obj > out
for filters in '' '--compress --checksum --encrypt' '--method text'; do
    "$scenefile" import ring.obj ring.zd $filters > out
    "$scenefile" show ring.zd | tail -n +2 > shown
    for compress in '' --compress; do
        ends 0 create q:x ring.zd --force $compress
        "$scenefile" show q:x:ring.zd | tail -n +2 | prints shown
        "$scenefile" verify q:x:ring.zd > out
        "$scenefile" export q:x:ring.zd again.obj > out && cmp again.obj ring.obj
    done
done
cp ring.zd q:x:ring.obj && "$scenefile" verify q:x:ring.obj > out
while IFS='|' read -r code line message; do
    status=0
    "$scenefile" $line > out 2> err || status=$?
    is "$status $(head -1 err)" "$code scenefile: $message"
done << 'LINES'
1|show q:x:none|q:x: has no entry none
1|show ring.obj:x|ring.obj: is not a package, or its directory of entries is damaged
1|show odd:x|odd:x does not exist.
1|transform q:x:ring.zd --scale 2|q:x:ring.zd: an entry of a package is read only
2|export q:x:ring.zd q:x|q:x and q:x are the same file
LINES
