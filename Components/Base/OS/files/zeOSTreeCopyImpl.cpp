// SPDX-License-Identifier: MIT

#include "Base/OS/files/zeOSTreeCopyImpl.h"

#include <memory>
#include <utility>
#include <vector>

#include "Base/OS/files/zeOSLocalFileTransportImpl.h"
#include "Base/OS/files/zeOSLocalPathImpl.h"
#include "Base/OS/zeOSFile.h"

namespace zeOS {
namespace {

using zeString::IString;

bool isLocal(const FileTransport& transport) {
    return transport.transportId() == LocalFileTransport::id;
}

void keepFirst(zeUtil::Error& result, const zeUtil::Error& error) {
    if (result.code() == File::ErrNone)
        result = error;
}

/// One entry and its copy.
struct CopyPair {
    std::unique_ptr<File> source;
    std::unique_ptr<File> copy;
};

/// A directory that is being copied.
struct CopyLevel {
    CopyPair own; ///< Null at the top, which the caller owns.
    FileTransport& source;
    FileTransport& dest;
    std::vector<IString> names;
    std::size_t next = 0; ///< The index of the entry to copy next.
    zeUtil::Error result; ///< The first failure.
};

class TreeCopy {
public:
    explicit TreeCopy(bool deleteSource) : deleteSource_(deleteSource) {}

    zeUtil::Error run(FileTransport& source, FileTransport& dest) {
        enter({}, source, dest);
        for (;;) {
            CopyLevel& level = levels_.back();
            if (level.next < level.names.size())
                copyEntry(level, level.names[level.next++]);
            else if (levels_.size() == 1)
                return level.result;
            else
                leave();
        }
    }

private:
    void enter(CopyPair own, FileTransport& source, FileTransport& dest) {
        levels_.push_back({std::move(own), source, dest, {}, 0, zeUtil::Error()});
        CopyLevel& level = levels_.back();
        if (!source.isDirectory() || !dest.isDirectory())
            level.result = File::getError(File::ErrNotDirectory);
        else if (isLocal(source))
            level.names = localEntries(source.getFullName());
        else if (level.result = source.readDir(level.names, false);
                 level.result.code() != File::ErrNone)
            level.names.clear();
    }

    void leave() {
        const CopyLevel left = std::move(levels_.back());
        levels_.pop_back();
        finish(*left.own.source, left.result);
    }

    void copyEntry(const CopyLevel& level, const IString& entry) {
        if (isNoEntry(entry))
            return;
        const wchar_t separator = level.source.getSeparator();
        IString target = plus(withSeparator(level.dest), entry);
        if (separator != level.dest.getSeparator() && target[target.last()] == separator)
            target[target.last()] = level.dest.getSeparator();
        CopyPair pair{std::make_unique<File>(plus(withSeparator(level.source), entry)),
                      std::make_unique<File>(target)};
        FileTransport& source = *pair.source->getTransport();
        FileTransport& dest = *pair.copy->getTransport();
        if (!isLocal(source) || !source.isDirectory()) {
            finish(*pair.source, pair.source->copyTo(*pair.copy));
            return;
        }
        zeUtil::Error refused = checkCopy(source, dest);
        if (refused.code() == File::ErrNone)
            refused = makeCopyTarget(dest);
        if (refused.code() == File::ErrNone)
            enter(std::move(pair), source, dest);
        else
            finish(*pair.source, refused);
    }

    /// Notes the result of an entry of the lowest level.
    void finish(File& source, const zeUtil::Error& copied) {
        zeUtil::Error& result = levels_.back().result;
        keepFirst(result, copied);
        if (deleteSource_ && levels_.size() == 1 && copied.code() == File::ErrNone)
            keepFirst(result, source.deleteSelf(File::DeleteNonRecursive));
    }

    const bool deleteSource_;
    std::vector<CopyLevel> levels_;
};

} // namespace

bool isNoEntry(const IString& entry) {
    return entry.isEmpty() || entry == L"." || entry == L"..";
}

IString withSeparator(const FileTransport& directory) {
    IString name = directory.getFullName();
    const wchar_t separator = directory.getSeparator();
    if (name.isEmpty() || name[name.last()] != separator)
        name.append(separator);
    return name;
}

zeUtil::Error checkCopy(const FileTransport& source, const FileTransport& dest) {
    if (source.isOpen() || dest.isOpen())
        return File::getError(File::ErrIsOpen);
    if (source.getFullName() == dest.getFullName())
        return File::getError(File::ErrNoOverwrite);
    return zeUtil::Error();
}

zeUtil::Error makeCopyTarget(FileTransport& dest) {
    zeUtil::Error made = dest.makeDirectory();
    return made.code() == File::ErrFileExists ? zeUtil::Error() : made;
}

zeUtil::Error copyEntries(FileTransport& source, FileTransport& dest, bool deleteSource) {
    return TreeCopy(deleteSource).run(source, dest);
}

} // namespace zeOS
