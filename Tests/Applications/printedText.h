// SPDX-License-Identifier: MIT

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilDescriptor.h"

/// A file without a name that a stream of messages prints to.
class PrintedText {
public:
    PrintedText() : file_(memfd_create("printed", MFD_CLOEXEC)) {}

    zeString::IString path() const {
        return ("/proc/self/fd/" + std::to_string(file_.get())).c_str();
    }

    /// What was printed since the last call, found out without any call that tests let fail.
    std::string take() const {
        std::string text;
        char buffer[4096];
        for (ssize_t size = 0; (size = pread(file_.get(), buffer, sizeof buffer, taken_)) > 0;
             taken_ += size)
            text.append(buffer, static_cast<std::size_t>(size));
        return text;
    }

private:
    zeUtil::Descriptor file_;
    mutable off_t taken_ = 0;
};
