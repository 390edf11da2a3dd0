// SPDX-License-Identifier: MIT

/// @file
/// usage: makePackage PACKAGE [+NAME FILE | =NAME FILE | -NAME]...
///
/// Adds the file under the name, compressed if that makes it smaller ("+") or as it is ("="), or
/// deletes the entry ("-"), in this order, and writes the directory. For formatsTest.py.

#include <clocale>
#include <cstdio>

#include "Base/IO/ioPackageFile.h"

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");
    ioPackageFile package;
    zeUtil::Error error = package.open(argc > 1 ? argv[1] : "");
    for (int i = 2; error.code() == 0 && i < argc; ++i) {
        const zeString::IString name(argv[i] + 1);
        if (argv[i][0] == '-')
            error = package.deleteEntry(name);
        else if (++i < argc)
            error = package.addEntry(argv[i], name, argv[i - 1][0] == '+');
    }
    if (error.code() == 0)
        error = package.update();
    if (error.code() != 0)
        std::fprintf(stderr, "makePackage: %s\n", error.message());
    return error.code();
}
