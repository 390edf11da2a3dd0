#!/bin/bash
# usage: fixed-directories.sh CMAKE COMPILER SOURCE_DIR BUILD_DIR
# What pkg-config says where the directories of libraries and headers are absolute: those, wherever its file is.
set -euo pipefail
cmake=$1 compiler=$2 source=$3 build=$4

"$cmake" -S "$source" -B "$build" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_INSTALL_PREFIX=/opt/ze \
    -DCMAKE_INSTALL_LIBDIR=/opt/ze/fixed/lib -DCMAKE_INSTALL_INCLUDEDIR=/opt/ze/fixed/include \
    -DZEBASE_TESTS=OFF -DZEBASE_APPLICATIONS=OFF -DZEBASE_EXAMPLES=OFF > /dev/null
diff - <(pkg-config --cflags --libs "$build/zeBase.pc" | xargs --max-args=1) << 'EXPECTED'
-std=c++20
-I/opt/ze/fixed/include/zeBase
-L/opt/ze/fixed/lib
-lzeBase
EXPECTED
