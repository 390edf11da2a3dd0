// SPDX-License-Identifier: MIT

#pragma once

#include <clocale>
#include <cstdlib>
#include <string>

#include "Support/TempFolder.h"

namespace support {

/// A locale of the given code set, made by localedef in a folder of its own, in force for character
/// types while the object lives; the "C" locale afterwards.
class MadeLocale {
public:
    explicit MadeLocale(const std::string& codeSet) {
        const std::string command = "cd '" + folder_.path() + "' && localedef -c -f " + codeSet +
                                    " -i POSIX ./" + codeSet + " >/dev/null 2>&1";
        const bool ran = std::system(command.c_str()) != -1; // its warnings make it return 1
        setenv("LOCPATH", folder_.path().c_str(), 1);
        isSet_ = ran && std::setlocale(LC_CTYPE, codeSet.c_str()) != nullptr;
    }
    ~MadeLocale() {
        std::setlocale(LC_CTYPE, "C");
        unsetenv("LOCPATH");
    }
    MadeLocale(const MadeLocale&) = delete;
    MadeLocale& operator=(const MadeLocale&) = delete;

    /// False where localedef or the code set is missing.
    bool isSet() const { return isSet_; }

private:
    TempFolder folder_;
    bool isSet_ = false;
};

} // namespace support
