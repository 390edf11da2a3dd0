#!/bin/bash
# SPDX-License-Identifier: MIT
# abi-layout.py notices a field added, and two virtual operations exchanged.
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/Base"
tools=$(dirname "$(realpath "$0")")

layout() { # FIELDS VIRTUALS
    echo "struct Shape { $2 virtual ~Shape(); int first; $1 };" > "$folder/Base/shape.h"
    echo '#include "Base/shape.h"
          Shape::~Shape() = default; void Shape::draw(int) {} void Shape::move(int) {}' > "$folder/shape.cpp"
    g++ -g -shared -fPIC -I "$folder" "$folder/shape.cpp" -o "$folder/libshape.so"
    "$tools/abi-layout.py" "$folder/libshape.so"
}

draw='virtual void draw(int);' move='virtual void move(int);'
plain=$(layout '' "$draw $move")
grep --quiet 'class Shape: 16 bytes' <<< "$plain"
[ "$plain" = "$(layout '' "$draw $move")" ]
[ "$plain" != "$(layout 'char second;' "$draw $move")" ] # which fits into the padding
[ "$plain" != "$(layout '' "$move $draw")" ]
