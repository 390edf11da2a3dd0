// SPDX-License-Identifier: MIT

/// @file
/// usage: protectedSave FILE TEMP_DIRECTORY rename|copy|default [N]
///
/// Saves new content in FILE; with N, kills itself instead of making its N-th system call. Prints
/// the name of that call, or, if it comes to its end, the name of the temporary file. Exit code:
/// the status of the save.

#include "OS/files/protectedSave.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Base/OS/zeOSTempDirectory.h"
#include "Support/SystemFaults.h"

int main(int argc, char** argv) {
    if (argc < 4)
        return 100;
    zeOS::setTempDirectory(argv[2]);
    const std::string strategy = argv[3];
    std::string temporary;
    int status;
    if (argc > 4)
        SystemFaults::killAt(std::strtoul(argv[4], nullptr, 10), STDOUT_FILENO);
    {
        zeOS::ProtectedWrite save(zeOS::Filename(argv[1], '/'));
        if (strategy == "copy")
            save.useCopyStrategy();
        status = saveNewContent(save).status;
        temporary = save.getTempFilename().path().asUTF8();
    }
    SystemFaults::killAt(0, -1);
    std::fputs(temporary.c_str(), stdout);
    return status;
}
