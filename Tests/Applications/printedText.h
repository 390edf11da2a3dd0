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

    /// What was printed since the last call.
    std::string take() const {
        std::string text(static_cast<std::size_t>(lseek(file_.get(), 0, SEEK_END)), '\0');
        const ssize_t size = pread(file_.get(), text.data(), text.size(), 0);
        EXPECT_EQ(size, static_cast<ssize_t>(text.size()));
        EXPECT_EQ(ftruncate(file_.get(), 0), 0);
        return text;
    }

private:
    zeUtil::Descriptor file_;
};
