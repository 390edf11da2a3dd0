// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <mutex>

#include "Base/OS/process/zeOSForkAndCallImpl.h"
#include "Base/OS/process/zeOSStartAndWaitImpl.h"
#include "Base/OS/zeOSEnvironment.h"
#include "Base/OS/zeOSError.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSProcessManager.h"
#include "Base/Strings/zeUtilSplit.h"

namespace zeOS {
namespace {

using zeString::IString;
using zeUtil::Error;

enum ErrorCode {
    noExecutable = 2,
    notFound = 3,
    badDirectory = 7,
};

/// The process's way to another current directory and back. One at a time: of two that overlap, the
/// second would come back to where the first one went.
class DirectoryChange {
public:
    /// Does nothing if `directory` is empty.
    Error enter(const Filename& directory) {
        if (directory.path().isEmpty())
            return Error();
        lock_ = std::unique_lock(s_mutex);
        if (!::getcwd(before_, sizeof before_))
            return Error(badDirectory, L"Can't getcwd(): %S", getLastError().asWChar());
        if (!directory.setCwd())
            return Error(badDirectory, L"Can't chdir() to %S.  Reason: %S",
                         directory.path().asWChar(), getLastError().asWChar());
        return Error();
    }

    /// Goes back, if that is possible. Without this call the process stays where it is.
    void leave() {
        if (!lock_)
            return;
        [[maybe_unused]] const int result = ::chdir(before_);
        lock_.unlock();
    }

private:
    static inline std::mutex s_mutex;

    std::unique_lock<std::mutex> lock_; ///< Held if there is a way back.
    char before_[4096];
};

bool isExecutable(const IString& path) {
    return ::access(path.asUTF8(), X_OK) == 0;
}

/// The first part of a start, and what the child processes of the second need.
struct Start {
    DirectoryChange change;
    const ErrorTexts texts;
    Exec exec{texts};
    ForkAndCall child{exec, texts};

    /// Goes to the directory and finds the program from there.
    Error prepare(const ProcessManagerImpl& manager, const std::vector<IString>& args,
                  const Filename& directory) {
        if (Error error = change.enter(directory); error.code() != 0)
            return error;
        const ExecutableResult found = manager.locateExecutable(args);
        // The directory is not left then: callers rely on it.
        if (found.error.code() != 0)
            return found.error;
        if (exec.set(found.path, args))
            return Error();
        change.leave();
        return Error(CallResult::GeneralFailure, "An argument has no UTF-8 form.");
    }
};

class ProcessManagerUnixImpl final : public ProcessManagerImpl {
public:
    Error doStartAsync(const std::vector<IString>& args, const Filename& directory) override;
    SyncResult doStartSync(const std::vector<IString>& args, const Filename& directory) override;
    ExecutableResult locateExecutable(const std::vector<IString>& args) const override;
    StartResult startProcessImpl(const std::vector<IString>& args,
                                 const Filename& directory) override;
};

/// The program becomes the child of a process that ends at once, so that the system's first process
/// inherits it.
Error ProcessManagerUnixImpl::doStartAsync(const std::vector<IString>& args,
                                           const Filename& directory) {
    Start start;
    if (Error error = start.prepare(*this, args, directory); error.code() != 0)
        return error;
    ForkAndCall middle(start.child, start.texts);
    SyncResult result = startAndWait(middle);
    start.change.leave();
    return result.error;
}

SyncResult ProcessManagerUnixImpl::doStartSync(const std::vector<IString>& args,
                                               const Filename& directory) {
    Start start;
    if (Error error = start.prepare(*this, args, directory); error.code() != 0)
        return {-1, error};
    start.change.leave(); // before the start: the program runs in the caller's directory
    return startAndWait(start.child);
}

ExecutableResult ProcessManagerUnixImpl::locateExecutable(const std::vector<IString>& args) const {
    if (args.empty())
        return {IString(), Error(noExecutable, "no executable specified")};
    const IString& name = args[0];
    if (!Filename(name).dirname().isEmpty()) {
        if (isExecutable(name))
            return {name, Error()};
    } else {
        IString searchPath;
        GetEnv(L"PATH", searchPath);
        if (searchPath.isEmpty())
            return {IString(), Error(notFound, "PATH environment variable not set.")};
        const std::vector<IString> parts =
            zeUtil::split(searchPath, Filename::pathSeparator(), true);
        if (parts.empty())
            return {IString(), Error(notFound, "PATH environment variable is empty.")};
        for (const IString& part : parts)
            if (const Filename file(part, name); isExecutable(file.path()))
                return {file.path(), Error()};
    }
    return {IString(), Error(notFound, L"%S: program not found.", name.asWChar())};
}

StartResult ProcessManagerUnixImpl::startProcessImpl(const std::vector<IString>& args,
                                                     const Filename& directory) {
    Start start;
    if (Error error = start.prepare(*this, args, directory); error.code() != 0)
        return {-1, error};
    int processId = -1;
    const CallResult result = start.child(processId);
    start.change.leave();
    return {processId, result.error()};
}

} // namespace

ProcessManager* createProcessManager() {
    return new ProcessManagerUnixImpl;
}

} // namespace zeOS
