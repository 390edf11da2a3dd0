// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "Base/OS/zeOSAppOutput.h"
#include "Support/TempFolder.h"

/// The application's streams `status` and `log`, caught in files; both are closed afterwards, with
/// level and indent 0.
class StatusCapture {
public:
    explicit StatusCapture(int level = 0) {
        for (zeOS::AppOutputStream* stream : {&output.status, &output.log}) {
            stream->open(zeString::IString(path(*stream).c_str()), false);
            stream->setLevel(level);
        }
    }
    StatusCapture(const StatusCapture&) = delete;
    StatusCapture& operator=(const StatusCapture&) = delete;
    ~StatusCapture() {
        for (zeOS::AppOutputStream* stream : {&output.status, &output.log}) {
            stream->open(zeString::IString(path(*stream).c_str()), true);
            stream->setLevel(0);
            stream->setIndentLevel(0);
            stream->close();
        }
    }

    /// What was printed so far.
    std::string status() const { return folder_.read("status"); }
    std::string log() const { return folder_.read("log"); }

    zeOS::AppOutput& output = zeOS::AppOutput::getInstance();

private:
    std::string path(const zeOS::AppOutputStream& stream) const {
        return folder_.path(&stream == &output.status ? "status" : "log");
    }

    TempFolder folder_{TempFolder::memory()};
};
