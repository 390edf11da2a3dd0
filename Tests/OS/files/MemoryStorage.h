// SPDX-License-Identifier: MIT

/// @file
/// A storage of names like "mem:a\b", which writes down what is asked of it and fails on demand.

#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileFactory.h"
#include "Base/OS/zeOSFileStatus.h"

struct MemoryStorage {
    std::map<std::string, std::optional<std::string>> entries; ///< nothing: a directory
    std::map<std::string, int> faults;                         ///< "read mem:a": its code
    std::vector<std::string> log;                              ///< "read mem:a"
    bool marksDirectories = false; ///< whether readDir() ends them with a separator
};

inline MemoryStorage memory;

class MemoryTransport : public zeOS::FileTransport {
public:
    explicit MemoryTransport(const std::string& name) : name_(name) {
        if (name_.back() == '\\')
            name_.pop_back();
    }

    using Error = zeUtil::Error;

    Error open(int mode) override {
        if (const auto fault = meets("open"))
            return *fault;
        memory.log.back() += " " + std::to_string(mode);
        if (mode & zeOS::File::ModeWrite)
            memory.entries[name_] = "";
        else if (!memory.entries.count(name_))
            return zeOS::File::getError(zeOS::File::ErrDoesNotExist);
        open_ = true;
        position_ = 0;
        return Error();
    }
    Error read(void* buffer, unsigned long count, unsigned long* done) override {
        *done = 0;
        if (const auto fault = meets("read"))
            return *fault;
        const std::string& content = *memory.entries.at(name_);
        *done = std::min(count, content.size() - position_);
        std::memcpy(buffer, content.data() + position_, *done);
        position_ += *done;
        return *done < count ? zeOS::File::getError(zeOS::File::ErrEndOfFile) : Error();
    }
    Error write(const void* buffer, unsigned long count, unsigned long*) override {
        if (const auto fault = meets("write"))
            return *fault;
        memory.log.back() += " " + std::to_string(count);
        memory.entries.at(name_)->append(static_cast<const char*>(buffer), count);
        return Error();
    }
    Error close() override {
        open_ = false;
        return meets("close").value_or(Error());
    }
    Error makeDirectory() override {
        if (const auto fault = meets("makeDirectory"))
            return *fault;
        if (!memory.entries.try_emplace(name_).second)
            return zeOS::File::getError(zeOS::File::ErrFileExists);
        return Error();
    }
    Error readDir(std::vector<zeString::IString>& names, bool fullNames) override {
        if (const auto fault = meets("readDir"))
            return *fault;
        const std::string prefix = fullNames ? name_ + "\\" : "";
        for (const char* name : {".", "..", ""})
            names.emplace_back((prefix + name).c_str());
        for (const auto& [name, content] : memory.entries)
            if (name.rfind(name_ + "\\", 0) == 0 && name.find('\\', name_.size() + 1) == name.npos)
                names.emplace_back((prefix + name.substr(name_.size() + 1) +
                                    (memory.marksDirectories && !content ? "\\" : ""))
                                       .c_str());
        return Error();
    }
    Error deleteSelf() override {
        if (const auto fault = meets("delete"))
            return *fault;
        const auto next = memory.entries.upper_bound(name_);
        if (next != memory.entries.end() && next->first.rfind(name_ + "\\", 0) == 0)
            return zeOS::File::getError(zeOS::File::ErrDirectoryNotEmpty);
        memory.entries.erase(name_);
        return Error();
    }
    bool isDirectory() const override {
        const auto found = memory.entries.find(name_);
        return found != memory.entries.end() && !found->second;
    }
    bool isOpen() const override { return open_; }
    zeString::IString getFullName() const override { return name_.c_str(); }
    zeString::IString getNameTitle() const override { return "title"; }
    zeString::IString getNameBase() const override { return "base"; }
    wchar_t getSeparator() const override { return L'\\'; }
    zeString::IString transportId() const override { return "MemoryTransport"; }
    Error query(zeOS::FileStatus& status) const override {
        status.setExists(memory.entries.count(name_) > 0);
        status.setIsDirectory(isDirectory());
        status.setIsWritable(true);
        return Error();
    }

private:
    std::optional<Error> meets(const std::string& call) const {
        memory.log.push_back(call + " " + name_);
        const auto fault = memory.faults.find(memory.log.back());
        if (fault == memory.faults.end())
            return std::nullopt;
        return zeOS::File::getError(fault->second);
    }

    std::string name_;
    bool open_ = false;
    unsigned long position_ = 0;
};

/// Serves "mem:", and what ends in ".mem" anywhere, as long as the process lives.
class MemoryFactory : public zeOS::FileTransportFactory {
public:
    static void registerOnce() {
        static MemoryFactory& factory = *new MemoryFactory;
        [[maybe_unused]] static const bool registered =
            (zeOS::FileFactory::getFileFactory()->registerTransport(&factory), true);
    }

    zeOS::FileTransport* create(const zeString::IString& name) override {
        const std::string narrow = name.asMultibyte();
        const bool isOurs = narrow.starts_with("mem:") || narrow.ends_with(".mem");
        return isOurs ? new MemoryTransport(narrow) : nullptr;
    }
};
