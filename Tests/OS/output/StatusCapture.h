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
        output.status.open(folder_.path("status").c_str(), false);
        output.log.open(folder_.path("log").c_str(), false);
        output.setLevel(level);
    }
    StatusCapture(const StatusCapture&) = delete;
    StatusCapture& operator=(const StatusCapture&) = delete;
    ~StatusCapture() {
        output.setLevel(0);
        for (zeOS::AppOutputStream* stream : {&output.status, &output.log}) {
            stream->setIndentLevel(0);
            stream->close();
        }
    }

    /// What was printed so far.
    std::string status() const { return folder_.read("status"); }
    std::string log() const { return folder_.read("log"); }

    zeOS::AppOutput& output = zeOS::AppOutput::getInstance();

private:
    TempFolder folder_{TempFolder::memory()};
};
