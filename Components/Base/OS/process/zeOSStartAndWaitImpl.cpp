// SPDX-License-Identifier: MIT

#include "Base/OS/process/zeOSStartAndWaitImpl.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <mutex>

#include "Base/OS/process/zeOSForkAndCallImpl.h"
#include "Base/OS/zeOSError.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeOS {
namespace {

using zeUtil::Error;

/// Keeps SIGCHLD away from the calling thread.
class ChildSignalBlock {
public:
    ChildSignalBlock() {
        sigemptyset(&childSignal_);
        sigaddset(&childSignal_, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &childSignal_, &before_);
    }
    ChildSignalBlock(const ChildSignalBlock&) = delete;
    ChildSignalBlock& operator=(const ChildSignalBlock&) = delete;
    ~ChildSignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    /// Takes the signal off if it is pending. It never waits: another thread may have got it, or it
    /// may have become one with that of another process.
    void takePending() const {
        const timespec atOnce = {};
        zeUtil::retried([&] { return sigtimedwait(&childSignal_, nullptr, &atOnce); });
    }

private:
    sigset_t childSignal_;
    sigset_t before_;
};

void dummyHandler(int) {}

/// Has a handler of SIGCHLD installed while any object lives, so that the system keeps ended
/// children until they are waited for, even if the application ignores the signal. The objects of
/// all threads share it, and the last one puts the application's back: each on its own, they would
/// restore one another's.
class ChildSignalHandler {
public:
    ChildSignalHandler() {
        const std::lock_guard lock(s_mutex);
        struct sigaction dummy = {};
        dummy.sa_handler = &dummyHandler;
        isCounted_ = s_count > 0 || sigaction(SIGCHLD, &dummy, &s_application) == 0;
        if (isCounted_)
            ++s_count;
    }
    ChildSignalHandler(const ChildSignalHandler&) = delete;
    ChildSignalHandler& operator=(const ChildSignalHandler&) = delete;
    ~ChildSignalHandler() {
        const std::lock_guard lock(s_mutex);
        if (isCounted_ && --s_count == 0)
            sigaction(SIGCHLD, &s_application, nullptr);
    }

    bool isInstalled() const { return isCounted_; }

private:
    static inline std::mutex s_mutex;
    static inline int s_count = 0;                     ///< Guarded by s_mutex.
    static inline struct sigaction s_application = {}; ///< Guarded by s_mutex.

    bool isCounted_;
};

SyncResult failure(const wchar_t* format, int error) {
    return {-1, Error(CallResult::GeneralFailure, format, errorText(error).asWChar())};
}

} // namespace

SyncResult startAndWait(Callable& callable) {
    const ChildSignalBlock signalBlock;
    const ChildSignalHandler handler;
    if (!handler.isInstalled())
        return failure(L"Can't install a handler for SIGCHLD: %S", errno);

    int processId = -1;
    const CallResult result = callable(processId);
    if (processId == -1)
        return {-1, result.error()};

    // First the process, then its signal, which has come by then: waiting for the signal could take
    // for ever. A child that failed is waited for too, or it would stay a zombie.
    int status = 0;
    const bool hasEnded =
        zeUtil::retried([&] { return waitpid(processId, &status, 0); }) == processId;
    const int waitError = errno;
    signalBlock.takePending();
    if (result.code != CallResult::Success)
        return {-1, result.error()};
    if (!hasEnded)
        return failure(L"Can't wait for the process: %S", waitError);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Error()};
}

} // namespace zeOS
