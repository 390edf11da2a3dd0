#!/bin/bash
# usage: install-and-move.sh CMAKE BUILD_DIR SOURCE_DIR STAGE
# Installs the build and moves the installation to STAGE: nothing in it may speak of another place. Another
# installation is taken back by the target `uninstall`, which leaves what is not its own.
set -euo pipefail
cmake=$1 build=$2 source=$3 stage=$4

rm -rf "$stage" "$stage.before" "$stage.back"
export DESTDIR=$stage.back
"$cmake" --install "$build" --prefix /usr > /dev/null
touch "$DESTDIR/usr/include/zeBase/Base/.not-ours"
"$cmake" --build "$build" --target uninstall > /dev/null
left=$(cd "$DESTDIR" && find . ! -type d)
if [ "$left" != ./usr/include/zeBase/Base/.not-ours ] || [ "$(find "$DESTDIR" -name 'zeBase' | wc -l)" != 1 ]; then
    echo "left by the uninstallation: $(find "$DESTDIR")" >&2
    exit 1
fi
unset DESTDIR

"$cmake" --install "$build" --prefix "$stage.before" > /dev/null
mv "$stage.before" "$stage"

if grep -rIlF -e "$source" -e "$build" -e "$stage" "$stage"; then
    echo "the installed files above hold absolute paths" >&2
    exit 1
fi
