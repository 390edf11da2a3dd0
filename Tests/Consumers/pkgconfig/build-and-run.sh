#!/bin/bash
# usage: build-and-run.sh COMPILER LIBDIR OUTPUT_DIR
# Builds the program beside this script with what pkg-config says about zeBase, and runs it.
set -euo pipefail
compiler=$1 libdir=$2 out=$3

export PKG_CONFIG_PATH=$libdir/pkgconfig
mkdir -p "$out"
read -ra flags <<< "$(pkg-config --cflags --libs zeBase)"
"$compiler" "$(dirname "$0")/main.cpp" -o "$out/consumer" "${flags[@]}"
LD_LIBRARY_PATH=$libdir "$out/consumer"
