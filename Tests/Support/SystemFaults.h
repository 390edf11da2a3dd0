// SPDX-License-Identifier: MIT

/// @file
/// Stands between the library and the system: a test program that links SystemFaults.cpp has its
/// own calls of the names below, which fail where a test says so, or kill the process. What the C
/// library calls within itself does not pass here.
///
/// @code
/// SystemFaults faults(SystemFaults::onWrite, {{EINTR}, {ENOSPC}});
/// // The next write is interrupted, the one after it meets a full disk, the third works again.
/// @endcode
///
/// One thread, and one object at a time. Child processes meet the same faults until they become
/// another program. FaultTrial.h fails each call in turn.

#pragma once

#include <csignal>
#include <cstddef>
#include <string>
#include <vector>

class SystemFaults {
public:
    enum Call {
        onOpen,
        onOpenat,
        onClose,
        onRead,
        onWrite,
        onFsync,
        onFopen,
        onFdopen,
        onFread,
        onFgets,
        onFwrite,
        onFclose,
        onRename,
        onUnlink,
        onUnlinkat,
        onMkdir,
        onRmdir,
        onMkostemp,
        onTempnam,
        onOpendir,
        onFdopendir,
        onReaddir,
        onStat,
        onLstat,
        onFstat,
        onAccess,
        onGetcwd,
        onChdir,
        onStatvfs,
        onPipe2,
        onFcntl,
        onFork,
        onExecv,
        onWaitpid,
        onSigaction,
        onLseek,
        onFtruncate,
        onMkdirat,
        onSocket,
        onBind,
        onListen,
        onAccept4,
        onConnect,
        onSend,
        onRecv,
        onSelect,
        onShutdown,
        onGetsockname,
        onGetaddrinfo,
        onGetnameinfo,
        onRenameat,
        callCount
    };

    /// The function's own name.
    static const char* name(Call call);

    /// What one call meets: a failure with `error`, or, with error 0, at most `limit` bytes moved
    /// by a read, write, fread, fwrite, recv or send. Calls of the resolver return `error` itself
    /// where it is negative, as theirs are, else EAI_SYSTEM.
    ///
    /// A failing close or fclose releases what it was given before it reports, as Linux does. Only
    /// an interrupted close, which portable callers repeat, leaves it open: the repetition shows.
    struct Answer {
        int error = 0;
        std::size_t limit = static_cast<std::size_t>(-1);
    };

    /// From now on each `call` takes the next answer; after the last one the system answers.
    SystemFaults(Call call, std::vector<Answer> answers);

    /// From now on calls of every name are counted together, from 1, and those at `places` fail
    /// with `error`.
    SystemFaults(std::vector<std::size_t> places, int error);

    SystemFaults(const SystemFaults&) = delete;
    SystemFaults& operator=(const SystemFaults&) = delete;
    ~SystemFaults();

    /// How many calls were made, by child processes too.
    std::size_t calls() const;

    /// The names of the calls that returned a descriptor which a child process would inherit.
    const std::string& inherited() const { return inherited_; }

    /// Called with each descriptor that a call returned.
    static void noteOpened(Call call, int fd);

    /// From now on counts calls of every name, and kills the process instead of making the `n`-th
    /// (1 is the next), whose name it writes to the descriptor `report` first. Another signal than
    /// SIGKILL may be handled, or come to nothing; the call is made then.
    static void killAt(std::size_t n, int report, int signal = SIGKILL);

    /// The answer to a call that is being made: sets errno where it is a failure.
    static Answer next(Call call);

private:
    /// Whether the `n`-th call fails, where calls are counted together.
    bool failsByPlace(std::size_t n) const;

    Call call_ = callCount; ///< callCount: all calls are counted together
    std::vector<Answer> answers_;
    std::vector<std::size_t> places_;
    int error_ = 0;
    std::string inherited_;
};
