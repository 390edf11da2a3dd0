// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSTempDirectory.h"

#include <cstdlib>

#include "Base/OS/zeOSFilename.h"

namespace zeOS {
namespace {

// Never destroyed: destructors of an application's statics may still use it.
zeString::IString& clientSpecifiedTmpDir() {
    static zeString::IString& directory = *new zeString::IString;
    return directory;
}

} // namespace

void setTempDirectory(const zeString::IString& dir) {
    clientSpecifiedTmpDir() = dir;
}

Filename getTempDirectory() {
    if (!clientSpecifiedTmpDir().isEmpty())
        return Filename(clientSpecifiedTmpDir());
    const char* fromEnvironment = std::getenv("TMPDIR");
    return Filename(zeString::IString(fromEnvironment ? fromEnvironment : "/tmp"));
}

} // namespace zeOS
