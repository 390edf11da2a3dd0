// SPDX-License-Identifier: MIT

#include "Support/SystemFaults.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

namespace {

constexpr const char* names[] = {
    "open",        "openat",    "close",   "read",     "write",    "fsync",       "fopen",
    "fdopen",      "fread",     "fgets",   "fwrite",   "fclose",   "rename",      "unlink",
    "unlinkat",    "mkdir",     "rmdir",   "mkostemp", "tempnam",  "opendir",     "fdopendir",
    "readdir",     "stat",      "lstat",   "fstat",    "access",   "getcwd",      "chdir",
    "statvfs",     "pipe2",     "fcntl",   "fork",     "execv",    "waitpid",     "sigaction",
    "lseek",       "ftruncate", "mkdirat", "socket",   "bind",     "listen",      "accept4",
    "connect",     "send",      "recv",    "select",   "shutdown", "getsockname", "getaddrinfo",
    "getnameinfo", "renameat",
};
static_assert(std::size(names) == SystemFaults::callCount);

SystemFaults* active = nullptr;

std::FILE* failedStream = nullptr; // whose fgets failed, until the next fclose

/// Lies in memory that child processes share.
std::atomic<std::size_t>& callCounter() {
    static auto* const counter = static_cast<std::atomic<std::size_t>*>(
        mmap(nullptr, sizeof(std::atomic<std::size_t>), PROT_READ | PROT_WRITE,
             MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    return *counter;
}

std::size_t callsToLive = 0; // 0: for ever
int killReport = -1;
int killSignal = 0;

void countToDeath(SystemFaults::Call call) {
    if (callsToLive == 0 || --callsToLive > 0)
        return;
    // Not through write(), which would come here again.
    syscall(SYS_write, killReport, names[call], std::strlen(names[call]));
    kill(getpid(), killSignal);
}

std::atomic<void*> found[SystemFaults::callCount];

/// The C library's function behind ours.
void* genuineFunction(std::size_t call) {
    if (!found[call])
        found[call] = dlsym(RTLD_NEXT, names[call]);
    return found[call];
}

/// Once the program has other threads, a child process must not look for any.
[[maybe_unused]] const bool areFound = [] {
    for (std::size_t call = 0; call < SystemFaults::callCount; ++call)
        genuineFunction(call);
    return true;
}();

/// Makes the call itself.
template<class Result, class... Arguments>
Result genuine(SystemFaults::Call call, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Arguments...)>(genuineFunction(call))(arguments...);
}

/// Returns `failure` where the call is to fail, else what the C library answers.
template<class Result, class... Arguments>
Result answer(SystemFaults::Call call, Result failure, Arguments... arguments) {
    if (SystemFaults::next(call).error)
        return failure;
    return genuine<Result>(call, arguments...);
}

/// The same for a call that moves bytes, at most as many as the answer allows.
template<class Bytes, class... Flags>
ssize_t moved(SystemFaults::Call call, int fd, Bytes* bytes, size_t n, Flags... flags) {
    const auto [error, limit] = SystemFaults::next(call);
    return error ? -1 : genuine<ssize_t>(call, fd, bytes, std::min(n, limit), flags...);
}

/// The same for a call of the resolver, which returns its error.
template<class... Arguments>
int answerOfResolver(SystemFaults::Call call, Arguments... arguments) {
    const int error = SystemFaults::next(call).error;
    if (error)
        return error < 0 ? error : EAI_SYSTEM;
    return genuine<int>(call, arguments...);
}

/// Passes on a descriptor that a call returned.
int opened(SystemFaults::Call call, int fd) {
    SystemFaults::noteOpened(call, fd);
    return fd;
}

std::FILE* opened(SystemFaults::Call call, std::FILE* file) {
    if (file)
        SystemFaults::noteOpened(call, fileno(file));
    return file;
}

/// Fails, for a call that has done its work and cannot be made again.
template<class Result>
Result failAfterwards(int error, Result failure) {
    errno = error;
    return failure;
}

} // namespace

const char* SystemFaults::name(Call call) {
    return names[call];
}

SystemFaults::SystemFaults(Call call, std::vector<Answer> answers)
    : call_(call), answers_(std::move(answers)) {
    callCounter() = 0;
    active = this;
}

SystemFaults::SystemFaults(std::vector<std::size_t> places, int error)
    : places_(std::move(places)), error_(error) {
    callCounter() = 0;
    active = this;
}

SystemFaults::~SystemFaults() {
    active = nullptr;
}

std::size_t SystemFaults::calls() const {
    return callCounter();
}

void SystemFaults::killAt(std::size_t n, int report, int signal) {
    callsToLive = n;
    killSignal = signal;
    killReport = report;
}

SystemFaults::Answer SystemFaults::next(Call call) {
    countToDeath(call);
    Answer answer;
    if (active && active->call_ == callCount) {
        if (active->failsByPlace(++callCounter()))
            answer.error = active->error_;
    } else if (active && active->call_ == call) {
        const std::size_t n = callCounter()++;
        if (n < active->answers_.size())
            answer = active->answers_[n];
    }
    if (answer.error)
        errno = answer.error;
    return answer;
}

bool SystemFaults::failsByPlace(std::size_t n) const {
    return std::find(places_.begin(), places_.end(), n) != places_.end();
}

void SystemFaults::noteOpened(Call call, int fd) {
    if (active && fd >= 0 && !(syscall(SYS_fcntl, fd, F_GETFD) & FD_CLOEXEC))
        active->inherited_ += std::string(names[call]) + " ";
}

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (SystemFaults::next(SystemFaults::onOpen).error)
        return -1;
    return opened(SystemFaults::onOpen,
                  static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode)));
}

int openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (SystemFaults::next(SystemFaults::onOpenat).error)
        return -1;
    return opened(SystemFaults::onOpenat,
                  static_cast<int>(syscall(SYS_openat, folder, path, flags, mode)));
}

int close(int fd) {
    const int error = SystemFaults::next(SystemFaults::onClose).error;
    if (error == EINTR)
        return -1;
    const int result = genuine<int>(SystemFaults::onClose, fd);
    return error ? failAfterwards(error, -1) : result;
}

ssize_t read(int fd, void* destination, size_t n) {
    return moved(SystemFaults::onRead, fd, destination, n);
}

ssize_t write(int fd, const void* source, size_t n) {
    return moved(SystemFaults::onWrite, fd, source, n);
}

int fsync(int fd) {
    return answer(SystemFaults::onFsync, -1, fd);
}

FILE* fopen(const char* path, const char* mode) {
    return opened(SystemFaults::onFopen, answer<FILE*>(SystemFaults::onFopen, nullptr, path, mode));
}

FILE* fdopen(int fd, const char* mode) noexcept {
    return answer<FILE*>(SystemFaults::onFdopen, nullptr, fd, mode);
}

size_t fread(void* destination, size_t size, size_t n, FILE* file) {
    const auto [error, limit] = SystemFaults::next(SystemFaults::onFread);
    if (error)
        return 0;
    const size_t count = std::min(n, limit / size);
    return genuine<size_t>(SystemFaults::onFread, destination, size, count, file);
}

size_t fwrite(const void* source, size_t size, size_t n, FILE* file) {
    const auto [error, limit] = SystemFaults::next(SystemFaults::onFwrite);
    if (error)
        return 0;
    const size_t count = std::min(n, limit / size);
    return genuine<size_t>(SystemFaults::onFwrite, source, size, count, file);
}

char* fgets(char* destination, int size, FILE* file) {
    if (!SystemFaults::next(SystemFaults::onFgets).error)
        return genuine<char*>(SystemFaults::onFgets, destination, size, file);
    failedStream = file;
    return nullptr;
}

int ferror(FILE* file) noexcept {
    static const auto inLibrary = reinterpret_cast<int (*)(FILE*)>(dlsym(RTLD_NEXT, "ferror"));
    return file == failedStream || inLibrary(file);
}

int fclose(FILE* file) {
    failedStream = nullptr;
    const int error = SystemFaults::next(SystemFaults::onFclose).error;
    const int result = genuine<int>(SystemFaults::onFclose, file);
    return error ? failAfterwards(error, EOF) : result;
}

int rename(const char* from, const char* to) noexcept {
    return answer(SystemFaults::onRename, -1, from, to);
}

int renameat(int folder, const char* from, int target, const char* to) noexcept {
    return answer(SystemFaults::onRenameat, -1, folder, from, target, to);
}

int unlink(const char* path) noexcept {
    return answer(SystemFaults::onUnlink, -1, path);
}

int unlinkat(int folder, const char* path, int flags) noexcept {
    return answer(SystemFaults::onUnlinkat, -1, folder, path, flags);
}

int mkdir(const char* path, mode_t mode) noexcept {
    return answer(SystemFaults::onMkdir, -1, path, mode);
}

int rmdir(const char* path) noexcept {
    return answer(SystemFaults::onRmdir, -1, path);
}

int mkostemp(char* name, int flags) {
    return opened(SystemFaults::onMkostemp, answer(SystemFaults::onMkostemp, -1, name, flags));
}

char* tempnam(const char* folder, const char* prefix) noexcept {
    return answer<char*>(SystemFaults::onTempnam, nullptr, folder, prefix);
}

DIR* opendir(const char* path) {
    return answer<DIR*>(SystemFaults::onOpendir, nullptr, path);
}

DIR* fdopendir(int fd) {
    return answer<DIR*>(SystemFaults::onFdopendir, nullptr, fd);
}

dirent* readdir(DIR* folder) {
    return answer<dirent*>(SystemFaults::onReaddir, nullptr, folder);
}

int stat(const char* path, struct stat* status) noexcept {
    return answer(SystemFaults::onStat, -1, path, status);
}

int lstat(const char* path, struct stat* status) noexcept {
    return answer(SystemFaults::onLstat, -1, path, status);
}

int fstat(int fd, struct stat* status) noexcept {
    return answer(SystemFaults::onFstat, -1, fd, status);
}

int access(const char* path, int mode) noexcept {
    return answer(SystemFaults::onAccess, -1, path, mode);
}

char* getcwd(char* buffer, size_t size) noexcept {
    return answer<char*>(SystemFaults::onGetcwd, nullptr, buffer, size);
}

int chdir(const char* path) noexcept {
    return answer(SystemFaults::onChdir, -1, path);
}

int statvfs(const char* path, struct statvfs* status) noexcept {
    return answer(SystemFaults::onStatvfs, -1, path, status);
}

int pipe2(int ends[2], int flags) noexcept {
    const int result = answer(SystemFaults::onPipe2, -1, ends, flags);
    for (int i = 0; result == 0 && i < 2; ++i)
        SystemFaults::noteOpened(SystemFaults::onPipe2, ends[i]);
    return result;
}

int fcntl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return answer(SystemFaults::onFcntl, -1, fd, command, argument);
}

pid_t fork() noexcept {
    return answer(SystemFaults::onFork, -1);
}

int execv(const char* path, char* const arguments[]) noexcept {
    return answer(SystemFaults::onExecv, -1, path, arguments);
}

pid_t waitpid(pid_t child, int* status, int options) {
    return answer(SystemFaults::onWaitpid, -1, child, status, options);
}

int sigaction(int signal, const struct sigaction* action, struct sigaction* before) noexcept {
    return answer(SystemFaults::onSigaction, -1, signal, action, before);
}

off_t lseek(int fd, off_t offset, int whence) noexcept {
    return answer<off_t>(SystemFaults::onLseek, -1, fd, offset, whence);
}

int ftruncate(int fd, off_t length) noexcept {
    return answer(SystemFaults::onFtruncate, -1, fd, length);
}

int mkdirat(int folder, const char* path, mode_t mode) noexcept {
    return answer(SystemFaults::onMkdirat, -1, folder, path, mode);
}

int socket(int domain, int type, int protocol) noexcept {
    return opened(SystemFaults::onSocket,
                  answer(SystemFaults::onSocket, -1, domain, type, protocol));
}

int bind(int fd, const sockaddr* address, socklen_t size) noexcept {
    return answer(SystemFaults::onBind, -1, fd, address, size);
}

int listen(int fd, int backlog) noexcept {
    return answer(SystemFaults::onListen, -1, fd, backlog);
}

int accept4(int fd, sockaddr* address, socklen_t* size, int flags) {
    return opened(SystemFaults::onAccept4,
                  answer(SystemFaults::onAccept4, -1, fd, address, size, flags));
}

int connect(int fd, const sockaddr* address, socklen_t size) {
    return answer(SystemFaults::onConnect, -1, fd, address, size);
}

ssize_t send(int fd, const void* source, size_t n, int flags) {
    return moved(SystemFaults::onSend, fd, source, n, flags);
}

ssize_t recv(int fd, void* destination, size_t n, int flags) {
    return moved(SystemFaults::onRecv, fd, destination, n, flags);
}

int select(int n, fd_set* readable, fd_set* writable, fd_set* exceptional, timeval* timeout) {
    return answer(SystemFaults::onSelect, -1, n, readable, writable, exceptional, timeout);
}

int shutdown(int fd, int how) noexcept {
    return answer(SystemFaults::onShutdown, -1, fd, how);
}

int getsockname(int fd, sockaddr* address, socklen_t* size) noexcept {
    return answer(SystemFaults::onGetsockname, -1, fd, address, size);
}

int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** list) {
    return answerOfResolver(SystemFaults::onGetaddrinfo, node, service, hints, list);
}

int getnameinfo(const sockaddr* address, socklen_t size, char* host, socklen_t hostSize,
                char* service, socklen_t serviceSize, int flags) {
    return answerOfResolver(SystemFaults::onGetnameinfo, address, size, host, hostSize, service,
                            serviceSize, flags);
}

} // extern "C"
