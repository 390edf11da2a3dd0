// SPDX-License-Identifier: MIT

#include "Base/OS/process/zeOSForkAndCallImpl.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeOS {
namespace {

using zeString::IString;

/// The room that the longest text before it leaves a system's text in CallResult::message.
constexpr std::size_t maxReason =
    sizeof CallResult::message - sizeof "Can't fcntl() pre-fork pipe: ";

/// As much of `text` as fits into `size` bytes, in whole characters of the locale's encoding.
std::string wholeCharacters(const char* text, std::size_t size) {
    const std::size_t length = std::strlen(text);
    if (length <= size)
        return text;
    std::mbstate_t state = {};
    std::size_t end = 0;
    for (;;) {
        std::size_t n = std::mbrlen(text + end, length - end, &state);
        if (n > length - end) { // not a character
            n = 1;
            state = {};
        }
        if (end + n > size)
            return std::string(text, end);
        end += n;
    }
}

bool encode(const IString& text, std::string& bytes) {
    bool ok = false;
    bytes = text.asUTF8(&ok);
    return ok;
}

} // namespace

zeUtil::Error CallResult::error() const {
    return *message ? zeUtil::Error(code, "%s", message) : zeUtil::Error(code, "");
}

ErrorTexts::ErrorTexts() {
    std::transform(std::begin(known), std::end(known), texts_.begin(), [](int error) {
        const char* const text = std::strerror(error);
        return wholeCharacters(text && *text ? text : "unknown error", maxReason);
    });
}

CallResult ErrorTexts::failure(CallResult::Code code, const char* what, int error) const {
    CallResult result;
    result.code = code;
    stpcpy(stpcpy(result.message, what), text(error));
    return result;
}

const char* ErrorTexts::text(int error) const {
    for (std::size_t i = 0; i < std::size(known); ++i)
        if (known[i] == error)
            return texts_[i].c_str();
    const char* const english = strerrordesc_np(error);
    return english ? english : "unknown error";
}

Callable::~Callable() = default;

bool Exec::set(const IString& path, const std::vector<IString>& args) {
    bool ok = encode(path, path_);
    arguments_.resize(args.size());
    argv_.clear();
    for (std::size_t i = 0; i < args.size(); ++i) {
        ok = encode(args[i], arguments_[i]) && ok;
        argv_.push_back(arguments_[i].data());
    }
    argv_.push_back(nullptr);
    return ok;
}

CallResult Exec::operator()(int&) {
    sigset_t childSignal;
    sigset_t before;
    sigemptyset(&childSignal);
    sigaddset(&childSignal, SIGCHLD);
    sigprocmask(SIG_UNBLOCK, &childSignal, &before);
    ::execv(path_.c_str(), argv_.data());
    const int error = errno;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return texts_->failure(CallResult::ExecFailed, "exec() failed: ", error);
}

CallResult ForkAndCall::operator()(int& processId) {
    int ends[2];
    // Close-on-exec from the start: a program that another thread starts at this moment would keep
    // the pipe open, and the parent would wait for that program's end.
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return texts_->failure(CallResult::GeneralFailure, "Can't create pre-fork pipe: ", errno);
    zeUtil::Descriptor readEnd(ends[0]);
    zeUtil::Descriptor writeEnd(ends[1]);
    if (::fcntl(writeEnd.get(), F_SETFD, FD_CLOEXEC) == -1)
        return texts_->failure(CallResult::GeneralFailure, "Can't fcntl() pre-fork pipe: ", errno);

    processId = ::fork();
    if (processId == -1) {
        const CallResult::Code code = errno == EAGAIN   ? CallResult::OutOfProcesses
                                      : errno == ENOMEM ? CallResult::OutOfMemory
                                                        : CallResult::GeneralFailure;
        return texts_->failure(code, "fork() failed: ", errno);
    }
    if (processId == 0) {
        readEnd.close();
        runChild(writeEnd.get());
    }
    writeEnd.close();
    return receive(readEnd.get());
}

/// Ends by `_exit`: what the parent has buffered is the parent's to write.
void ForkAndCall::runChild(int pipe) {
    int processId = -1;
    const CallResult result = (*inner_)(processId);
    if (result.code == CallResult::Success)
        _exit(0);
    // Whole or not at all: a pipe takes as much in one piece.
    [[maybe_unused]] const ssize_t count =
        zeUtil::retried([&] { return ::write(pipe, &result, sizeof result); });
    _exit(-1);
}

CallResult ForkAndCall::receive(int pipe) const {
    CallResult result;
    char* const bytes = reinterpret_cast<char*>(&result);
    std::size_t count = 0;
    while (count < sizeof result.code) {
        const ssize_t n =
            zeUtil::retried([&] { return ::read(pipe, bytes + count, sizeof result - count); });
        if (n < 0)
            return texts_->failure(CallResult::GeneralFailure, "Cannot read from pipe: ", errno);
        if (n == 0)
            break;
        count += static_cast<std::size_t>(n);
    }
    result.message[sizeof result.message - 1] = '\0';
    return result;
}

} // namespace zeOS
