#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Builds zeLinearBits.cpp with the sources of the library's Linear area by each compiler, without and
# with optimisation, and compares what the programs print: with each other, and the arithmetic with
# what is checked in. The programs are left in the working folder.
#
# usage: compareBits.sh SOURCE_DIR WORK_DIR COMPILER...

set -eu
source=$1
work=$2
shift 2
[ $# -gt 0 ] || { echo "compareBits.sh: no compiler to compare" >&2; exit 1; }
mkdir -p "$work"

# One translation unit: sources and program together.
{
    for file in "$source"/Components/Base/Linear/zeLinear*.cpp "$source"/Tests/Linear/zeLinearBits.cpp; do
        echo "#include \"$file\""
    done
} >"$work/all.cpp"

builds=
for compiler in "$@"; do
    for level in -O0 -O2; do
        build=$work/$(basename "$compiler")$level
        "$compiler" -std=c++20 $level -ffp-contract=off -I"$source/Components" "$work/all.cpp" -o "$build"
        "$build" >"$build.txt"
        builds="$builds $build"
    done
done

status=0
first=
for build in $builds; do
    if [ -z "$first" ]; then
        first=$build
        echo "$(basename "$build"):"
        cat "$build.txt"
        grep '^arithmetic' "$build.txt" | diff -u "$source/Tests/Linear/zeLinearBits.txt" - || status=1
    elif diff -u "$first.txt" "$build.txt"; then
        echo "$(basename "$build"): the same"
    else
        status=1
    fi
done
exit $status
