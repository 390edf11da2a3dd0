// SPDX-License-Identifier: MIT

/// @file
/// The local file behind a zeOS::File.

#pragma once

#include <cstdio>

#include "Base/OS/zeOSFileTransport.h"
#include "Base/OS/zeOSFilename.h"

namespace zeOS {

/// The local disk, by the C library's buffered files.
class LocalFileTransport : public FileTransport {
public:
    /// What transportId() gives.
    static constexpr const wchar_t* id = L"LocalFileTransport";

    explicit LocalFileTransport(const zeString::IString& name) : name_(name) {}
    ~LocalFileTransport() override;

    zeUtil::Error read(void* buffer, unsigned long count, unsigned long* done) override;
    zeUtil::Error write(const void* buffer, unsigned long count, unsigned long* done) override;
    zeUtil::Error open(int mode) override;
    zeUtil::Error openTemp(int mode) override;
    zeUtil::Error close() override;
    zeUtil::Error makeDirectory() override;
    zeUtil::Error makeTempDirectory() override;
    zeUtil::Error makeDirectoryAll() override;
    zeUtil::Error readDir(std::vector<zeString::IString>& names, bool fullNames) override;
    zeUtil::Error moveTo(FileTransport& dest) override;
    zeUtil::Error deleteSelf() override;
    bool isDirectory() const override;
    bool isOpen() const override { return file_ != nullptr; }
    zeString::IString getFullName() const override { return name_; }
    zeString::IString getNameTitle() const override;
    zeString::IString getNameBase() const override;
    wchar_t getSeparator() const override { return Filename::separator(); }
    zeString::IString transportId() const override { return id; }
    zeUtil::Error query(FileStatus& status) const override;
    zeUtil::Error queryOwnerGroup(FileStatus& status) override;

private:
    zeString::IString name_;
    std::FILE* file_ = nullptr;
    // The answer of isDirectory(), which is kept once there was one.
    mutable bool directoryKnown_ = false;
    mutable bool directoryValue_ = false;
};

} // namespace zeOS
