// SPDX-License-Identifier: MIT

// Keeps files in a package, where each is added, replaced and read on its own. Every change goes
// into a copy, and a protected write puts the copy in the place of the old package, so that neither
// a crash nor a full disk costs an entry.
//
//     $ yes 'buy milk' | head --lines=500 > shopping
//     $ echo 'call Ada' > today; yes 'call everybody' | head --lines=500 > everybody
//     $ packages put notes.zpk shopping lists/shopping
//     $ packages put notes.zpk today calls/today
//     $ packages list notes.zpk
//     9 bytes, plain: calls/today
//     351 bytes, compressed: lists/shopping
//     $ packages get notes.zpk lists/shopping | tail --lines=1
//     buy milk
//     $ (ulimit -f 1; packages put notes.zpk everybody calls/today)
//     packages: Error writing entry: calls/today
//     $ packages get notes.zpk calls/today
//     call Ada
//     $ packages get notes.zpk calls/tomorrow
//     packages: there is no such entry
//     $ ls *.*
//     notes.zpk

#include <clocale>
#include <csignal>
#include <cstdio>
#include <string_view>

#include "Base/IO/ioBufferedStreamInput.h"
#include "Base/IO/ioPackageFile.h"
#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSProtectedWrite.h"

using zeString::IString;
using zeUtil::Error;

namespace {

/// Makes `package` a copy of the one at `path`, or a new one, at `copyPath`.
Error startCopy(ioPackageFile& package, const IString& path, const IString& copyPath) {
    if (!zeOS::doesFileExist(path))
        return package.open(copyPath);
    Error error = package.open(path);
    return error.code() == 0 ? package.write(copyPath) : error;
}

Error put(const IString& path, const IString& source, const IString& name) {
    zeOS::ProtectedWrite save{zeOS::Filename(path)};
    if (!save.init())
        return Error(1, "the package cannot be saved here");
    ioPackageFile copy;
    Error error = startCopy(copy, path, save.getTempFilename().path());
    if (error.code() == 0)
        error = copy.addEntry(source, name, true); // compressed if that makes it smaller
    if (error.code() == 0)
        error = copy.update();
    copy.close();
    if (error.code() != 0)
        save.invalidate();
    return save.finalize() || error.code() != 0 ? error : Error(1, "the package cannot be saved");
}

Error get(const ioPackageFile& package, const IString& name) {
    const ioPackageFileEntry* const entry = package.getEntry(name);
    if (!entry)
        return Error(1, "there is no such entry");
    ioBufferedStreamInput in;
    in.openPackageFileEntry(entry); // the bytes as they are stored
    if (entry->getCompressed()) {
        in.compress(true);
        in.checksum(true);
    }
    char block[4096];
    for (int got; (got = in.readData(block, sizeof block)) > 0;)
        std::fwrite(block, 1, static_cast<std::size_t>(got), stdout);
    const bool ended = in.getStatus() == streamEOF || in.getStatus() == streamCompressEnd;
    in.close();
    return ended ? Error() : Error(1, "the entry is damaged");
}

void list(const ioPackageFile& package) {
    for (const auto& [name, index] : package.getDirectory()) {
        const ioPackageFileEntry& entry = *package.getEntry(index);
        std::printf("%ld bytes, %s: %s\n", entry.getSize(),
                    entry.getCompressed() ? "compressed" : "plain", name.asMultibyte());
    }
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");
    std::signal(SIGXFSZ, SIG_IGN); // a limit on the size of files is an error like others
    const std::string_view command = argc > 2 ? argv[1] : "";
    Error error;
    if (command == "put" && argc == 5) {
        error = put(argv[2], argv[3], argv[4]);
    } else if ((command == "get" && argc == 4) || (command == "list" && argc == 3)) {
        ioPackageFile package;
        error = package.open(argv[2]);
        if (error.code() == 0 && command == "get")
            error = get(package, argv[3]);
        else if (error.code() == 0)
            list(package);
    } else {
        std::fputs("usage: packages put PACKAGE FILE NAME | get PACKAGE NAME | list PACKAGE\n",
                   stderr);
        return 2;
    }
    if (error.code() != 0)
        std::fprintf(stderr, "packages: %s\n", error.message());
    return error.code() == 0 ? 0 : 1;
}
