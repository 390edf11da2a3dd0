// SPDX-License-Identifier: MIT

/// @file
/// Starting other programs: zeOS::ProcessManager.
///
/// A start returns when it is known whether the program runs. A program that is missing, or that
/// the system refuses to run, is an error with the system's text, and not a process that ends with
/// a strange exit code. startSync() then waits for the exit code; startAsync() leaves the program
/// to itself, and nobody has to wait for it.
///
/// **The arguments.** `args[0]` is the program, and the whole of `args` becomes its `argv`, encoded
/// in UTF-8. No shell is involved: blanks, quotes, newlines and `*` arrive as they are. A program
/// with a directory part ("./tool", "/bin/ls") is taken as it stands; any other is searched in the
/// directories of the environment's `PATH`, which is decoded in the locale's encoding. The first
/// name there that may be executed is taken, even if it is a directory, which then fails to run.
///
/// **The directory.** It is empty for the current one. Otherwise it becomes the current directory
/// **of the whole process** for the time of the start, so that other threads should not use
/// relative names meanwhile. Starts with a directory take turns. What it means differs:
///
/// | Start | Relative program names and `PATH` entries count from | The program runs in |
/// |---|---|---|
/// | startSync() | `directory` to find it, the caller's directory to run it | the caller's directory |
/// | startAsync(), ProcessManagerImpl::startProcessImpl() | `directory` | `directory` |
///
/// So a relative name that startSync() finds in `directory` fails to run, or is another file: give
/// it an absolute one. **If the program is not found, the process stays in `directory`** (kept for
/// compatibility): a caller that goes on sets its directory again.
///
/// **Errors.** The `error` of each start has one of these codes, with a message:
///
/// | Code | Meaning |
/// |---|---|
/// | 1 | No pipe to the new process, no handler for SIGCHLD, no answer, an argument without a UTF-8 form, or somebody else waited for the process. |
/// | 2 | `args` is empty. |
/// | 3 | The program was not found, or `PATH` is not set or empty. |
/// | 4 | No memory for a process. |
/// | 5 | No more processes are allowed. |
/// | 6 | The program was found, but the system does not run it. |
/// | 7 | The current directory could not be read, or `directory` not be entered. |
///
/// **What the program inherits**: environment, standard streams, file-mode mask and rights, and
/// each descriptor that is not close-on-exec; the library's own all are. SIGCHLD is unblocked.
/// Buffered output stays in this process: flush it first where the order of lines matters.
///
/// **SIGCHLD.** While startSync() waits, and for a moment in startAsync(), the calling thread
/// blocks SIGCHLD, and the process's handler for it is replaced by one that does nothing, even if
/// the signal was ignored; the last start that ends puts the old one back. It does not see the
/// processes started here. It may miss other children that end meanwhile, and system calls of other
/// threads may be interrupted (`EINTR`). So an application with children of its own looks for them
/// after a start, never waits for all children at once (`waitpid(-1)`) while one is under way, and
/// does not change the handler meanwhile.
///
/// Threads: any thread may start programs, also several at once; setInstance() and
/// setSharingStreams() belong to start-up.
///
/// @code
/// #include "Base/OS/zeOSFilename.h"
/// zeOS::ProcessManager* const manager = zeOS::ProcessManager::getInstance();
/// const zeOS::Filename here;
/// const zeOS::SyncResult ended = manager->startSync({L"sh", L"-c", L"exit 3"}, here);
/// assert(ended.error.code() == 0 && ended.exitCode == 3);
/// assert(manager->startSync({L"no such program"}, here).error.code() == 3);
/// assert(manager->startAsync({L"true"}, here).code() == 0);
/// @endcode

#pragma once

#include <vector>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

class Filename;

/// How a program that was waited for ended.
struct SyncResult {
    /// The exit code, 0 to 255; -1 if a signal ended the program, and after an error.
    long exitCode = -1;
    zeUtil::Error error; ///< Why there is no exit code.
};

/// A program that runs.
struct StartResult {
    /// The process, for the caller to wait for; -1 if none was made. A positive one beside an error
    /// has ended, or will soon, and must be waited for all the same.
    int processId = -1;
    zeUtil::Error error; ///< Why the program does not run.
};

/// Where a program is.
struct ExecutableResult {
    zeString::IString path; ///< The file to execute; empty after an error.
    zeUtil::Error error;    ///< Why there is none.
};

/// Starts programs: see the top of this file. An application that wants to start them in another
/// way derives from this class and calls setInstance().
class ZEBASE_API ProcessManager {
public:
    virtual ~ProcessManager();

    /// The manager of the process: that of setInstance(), else one of createProcessManager(), made
    /// by the first call. It is never deleted.
    static ProcessManager* getInstance();

    /// Makes `manager` the manager of the process, which must outlive all uses of it. False, and
    /// nothing changes, if there is one already.
    static bool setInstance(ProcessManager* manager);

    /// Starts a program and leaves it to itself: it becomes a child of the system's first process,
    /// which also waits for its end.
    zeUtil::Error startAsync(const std::vector<zeString::IString>& args, const Filename& directory);

    /// Starts a program and waits for its end, however long that takes.
    SyncResult startSync(const std::vector<zeString::IString>& args, const Filename& directory);

    /// Whether programs are to share this process's standard streams; true at first. The library
    /// does not look at it, and programs always share them: it is a note for managers of an
    /// application's own.
    bool isSharingStreams() const { return sharingStreams_; }
    /// Sets what isSharingStreams() returns.
    void setSharingStreams(bool sharing) { sharingStreams_ = sharing; }

protected:
    /// Does startAsync().
    virtual zeUtil::Error doStartAsync(const std::vector<zeString::IString>& args,
                                       const Filename& directory) = 0;
    /// Does startSync().
    virtual SyncResult doStartSync(const std::vector<zeString::IString>& args,
                                   const Filename& directory) = 0;

private:
    bool sharingStreams_ = true;
};

/// What the managers of createProcessManager() offer beyond a ProcessManager: the steps of a start,
/// for callers who want the process itself, to wait for it later or to send it signals.
///
/// @code
/// #include <memory>
/// #include <sys/wait.h>
/// #include "Base/OS/zeOSFilename.h"
/// const std::unique_ptr<zeOS::ProcessManager> manager(zeOS::createProcessManager());
/// auto& starter = dynamic_cast<zeOS::ProcessManagerImpl&>(*manager);
/// const zeOS::StartResult started = starter.startProcessImpl({L"true"}, zeOS::Filename());
/// assert(started.error.code() == 0);
/// assert(waitpid(started.processId, nullptr, 0) == started.processId);
/// @endcode
class ZEBASE_API ProcessManagerImpl : public ProcessManager {
public:
    ~ProcessManagerImpl() override;

    /// Finds the program `args[0]` as a start does. Errors: 2 and 3.
    virtual ExecutableResult locateExecutable(const std::vector<zeString::IString>& args) const = 0;

    /// Starts a program as a child of this process, and does not wait for it: that is for the
    /// caller, by `waitpid`. Neither the handler of SIGCHLD nor its mask is touched.
    virtual StartResult startProcessImpl(const std::vector<zeString::IString>& args,
                                         const Filename& directory) = 0;
};

/// A new manager that starts programs by `fork` and `execv`, a ProcessManagerImpl. The caller
/// deletes it.
ZEBASE_API ProcessManager* createProcessManager();

} // namespace zeOS
