#!/bin/bash
# usage: install-and-move.sh CMAKE BUILD_DIR SOURCE_DIR STAGE
# Installs the build and moves the installation to STAGE: nothing in it may speak of another place.
set -euo pipefail
cmake=$1 build=$2 source=$3 stage=$4

rm -rf "$stage" "$stage.before"
"$cmake" --install "$build" --prefix "$stage.before" > /dev/null
mv "$stage.before" "$stage"

if grep -rIlF -e "$source" -e "$build" -e "$stage" "$stage"; then
    echo "the installed files above hold absolute paths" >&2
    exit 1
fi
