// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSProcessManager.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFilename.h"
#include "Support/FaultTrial.h"
#include "Support/Locale.h"

#include "OS/files/FileFixture.h"

using zeOS::Filename;
using zeOS::StartResult;
using zeOS::SyncResult;
using zeString::IString;
using zeUtil::Error;

namespace {

using Arguments = std::vector<IString>;
enum Kind { Sync, Async, Own };
namespace fs = std::filesystem;

const char* longText = nullptr; ///< What strerror returns in place of its own text.

std::atomic<int> signalsSeen = 0;

void countSignal(int) {
    ++signalsSeen;
}

/// An application with a handler of SIGCHLD, in a folder of its own. Whatever is started, its
/// handler stays, is never called, and no child is left.
class Processes : public FileFixture {
protected:
    Processes() {
        // What the test inherited is not for its children, which count what they hold.
        for (int fd = 3; fd < 1024; ++fd)
            fcntl(fd, F_SETFD, FD_CLOEXEC);
    }
    void SetUp() override {
        fs::current_path(folder.path());
        makeProgram("words", "\1 only words");
        signalsSeen = 0;
        struct sigaction action = {};
        action.sa_handler = &countSignal;
        action.sa_flags = SA_RESTART;
        sigaction(SIGCHLD, &action, nullptr);
    }
    void TearDown() override {
        expectNoTrace();
        std::signal(SIGCHLD, SIG_DFL);
        fs::current_path("/");
        setenv("PATH", path_.c_str(), 1);
    }

    void makeProgram(const char* name, const char* content) {
        folder.write(name, content);
        fs::permissions(folder.path(name), fs::perms::owner_all);
    }

    void expectNoTrace() {
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
        struct sigaction action = {};
        sigaction(SIGCHLD, nullptr, &action);
        EXPECT_EQ(action.sa_handler, &countSignal);
        EXPECT_TRUE(action.sa_flags & SA_RESTART);
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        EXPECT_FALSE(sigismember(&mask, SIGCHLD));
        EXPECT_EQ(signalsSeen, 0);
    }

    /// Starts a program, and waits for it unless its start is asynchronous: "error" or "exit code".
    std::string start(Kind kind, const Arguments& args, const IString& directory = IString()) {
        SyncResult result = {-1, Error()};
        if (kind == Async)
            return text(manager->startAsync(args, directory));
        if (kind == Sync) {
            result = manager->startSync(args, directory);
        } else {
            auto& starter = dynamic_cast<zeOS::ProcessManagerImpl&>(*manager);
            const StartResult started = starter.startProcessImpl(args, directory);
            result.error = started.error;
            if (started.processId != -1)
                result.exitCode = waitForOwn(started.processId);
        }
        EXPECT_TRUE(kind == Own || result.error == Error() || result.exitCode == -1);
        return result.error == Error() ? std::to_string(result.exitCode) : text(result.error);
    }

    static int waitForOwn(pid_t child) {
        int status = 0;
        EXPECT_EQ(wait4(child, &status, 0, nullptr), child);
        while (signalsSeen == 0) // which comes to the application here
            std::this_thread::yield();
        signalsSeen = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// What a started program reports: directory, parent, SIGCHLD, arguments. A pipe with a name
    /// waits until it has done so.
    std::vector<std::string> reported(Kind kind, const Arguments& args = {},
                                      const IString& directory = IString()) {
        mkfifo(folder.path("report").c_str(), 0600);
        std::string bytes;
        std::thread reader([&] {
            while (bytes.empty()) // SIGCHLD interrupts the opening
                bytes = folder.read("report");
        });
        Arguments all = {STARTED_PROGRAM, L"report", at("report")};
        all.insert(all.end(), args.begin(), args.end());
        EXPECT_EQ(start(kind, all, directory), kind == Async ? "" : "0");
        reader.join();
        std::vector<std::string> items;
        for (std::size_t at = 0; at < bytes.size(); at += items.back().size() + 1)
            items.emplace_back(bytes.c_str() + at);
        return items;
    }

    const std::unique_ptr<zeOS::ProcessManager> manager{zeOS::createProcessManager()};

private:
    const std::string path_ = std::getenv("PATH");
};

/// An application's own.
struct OwnManager : zeOS::ProcessManager {
    Error doStartAsync(const Arguments&, const Filename&) override { return Error(); }
    SyncResult doStartSync(const Arguments&, const Filename&) override { return {0, Error()}; }
};

/// Ends with how many of what the manager of the process promises do not hold: it is `first`, or
/// one of its own for nullptr, and no other comes after it.
[[noreturn]] void checkManager(OwnManager* first) {
    using Manager = zeOS::ProcessManager;
    int wrong = first && !Manager::setInstance(first);
    Manager* const manager = Manager::getInstance();
    static OwnManager late;
    wrong += Manager::setInstance(&late) || Manager::getInstance() != manager;
    _exit(wrong + (first && manager != first));
}

} // namespace

/// Stands before the C library's.
extern "C" char* strerror(int error) noexcept {
    static const auto genuine = reinterpret_cast<char* (*)(int)>(dlsym(RTLD_NEXT, "strerror"));
    return longText ? const_cast<char*>(longText) : genuine(error);
}

TEST(ProcessManagerDeathTest, IsTheApplicationsIfThatComesFirst) {
    OwnManager own;
    for (OwnManager* const first : {&own, static_cast<OwnManager*>(nullptr)})
        EXPECT_EXIT(checkManager(first), testing::ExitedWithCode(0), "");
}

TEST_F(Processes, EndWithTheExitCodeOrWithTheReasonThatThereIsNone) {
    makeProgram("script", "#!/bin/sh\nexit 7\n");
    makeProgram("orphan", "#!/no/such/interpreter\n");
    folder.write("plain", "#!/bin/sh\n");
    makeFolder("bin/script");
    makeFolder("folder");
    setenv("PATH", (":" + folder.path("no") + ":" + folder.path() + ":").c_str(), 1);
    const std::string refused = "6: exec() failed: ";
    const struct {
        Arguments args;
        std::string result;
    } rows[] = {
        {{}, "2: no executable specified"},
        {{at("script")}, "7"},
        {{L"script"}, "7"},
        {{L"/bin/sh", L"-c", L"exit 255"}, "255"},
        {{L"/bin/sh", L"-c", L"kill -9 $$"}, "-1"},
        {{L"Sch\u00F6n"}, "3: Sch?n: program not found."},
        {{L"no/script"}, "3: no/script: program not found."},
        {{L"plain"}, "3: plain: program not found."},
        {{L"./plain", L"x"}, "3: ./plain: program not found."},
        {{L"folder"}, refused + "Permission denied"},
        {{L""}, refused + "Permission denied"}, // the first folder of PATH itself
        {{L"./orphan"}, refused + "No such file or directory"},
        {{L"words"}, refused + "Exec format error"},
        {{L"script", IString(1u << 18, L'x')}, refused + "Argument list too long"},
        {{L"script", IString(wchar_t(0xD800))}, "1: An argument has no UTF-8 form."},
    };
    for (const auto& [args, result] : rows) {
        SCOPED_TRACE(result);
        const bool isStarted = result.find(':') == std::string::npos;
        for (const Kind kind : {Sync, Async, Own})
            EXPECT_EQ(start(kind, args), isStarted && kind == Async ? "" : result);
    }

    const std::string notSet = "3: PATH environment variable not set.";
    const std::pair<std::string, std::string> paths[] = {
        {folder.path("bin") + ":" + folder.path(), refused + "Permission denied"},
        {"::", "3: PATH environment variable is empty."},
        {"", notSet},
    };
    for (const auto& [path, result] : paths) {
        setenv("PATH", path.c_str(), 1);
        EXPECT_EQ(start(Sync, {L"script"}), result);
    }
    unsetenv("PATH");
    EXPECT_EQ(start(Sync, {L"script"}), notSet);
    EXPECT_EQ(start(Sync, {L"./script"}), "7");
}

TEST_F(Processes, GetTheirArgumentsAsTheyAre) {
    std::vector<std::string> texts = {"", "a b ", "\xE2\x82\xAC \xF0\x9F\x98\x80",
                                      std::string(100000, 'x')};
    for (int c = 1; c < 128; ++c)
        texts.emplace_back(1, static_cast<char>(c));
    Arguments args;
    for (const std::string& text : texts)
        args.push_back(wide(text));
    std::vector<std::string> items = reported(Sync, args);
    ASSERT_GE(items.size(), 3u);
    items.erase(items.begin(), items.begin() + 3);
    EXPECT_EQ(items, texts);
}

TEST_F(Processes, RunAndAreFoundWhereTheirKindOfStartPutsThem) {
    const std::string here = folder.path();
    const std::string there = folder.path("there");
    makeFolder("there");
    fs::copy(STARTED_PROGRAM, folder.path("there/tool"));
    const Arguments tool = {L"./tool", L"exit", L"5"};
    const char* const found[] = {"6: exec() failed: No such file or directory", "", "5"};
    for (const Kind kind : {Sync, Async, Own}) {
        const std::vector<std::string> report = reported(kind, {}, L"there");
        ASSERT_EQ(report.size(), 3u);
        EXPECT_EQ(report[0], kind == Sync ? here : there);
        EXPECT_EQ(report[1] == std::to_string(getpid()), kind != Async);
        EXPECT_EQ(report[2], "0");
        EXPECT_EQ(start(kind, tool, L"there"), found[kind]);
        EXPECT_EQ(fs::current_path(), here);
        // Not found: the process stays in the directory, for every kind of start.
        EXPECT_EQ(start(kind, {L"./none"}, L"there"), "3: ./none: program not found.");
        EXPECT_EQ(fs::current_path(), there);
        fs::current_path("..");
        EXPECT_EQ(start(kind, tool, L"no/folder"),
                  "7: Can't chdir() to no/folder.  Reason: No such file or directory");
        EXPECT_EQ(fs::current_path(), here);
    }
}

TEST_F(Processes, LeaveBufferedOutputToTheirParent) {
    FILE* const file = fopen(folder.path("output").c_str(), "w");
    fputs("once", file);
    for (const wchar_t* program : {L"./words", L"/bin/true"})
        for (const Kind kind : {Sync, Async, Own})
            start(kind, {program});
    fclose(file);
    EXPECT_EQ(folder.read("output"), "once");
}

TEST_F(Processes, AreWaitedForEvenIfTheApplicationIgnoresTheirEnd) {
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(start(Sync, {L"/bin/sh", L"-c", L"exit 3"}), "3");
    EXPECT_EQ(reported(Async).at(2), "0");
    EXPECT_EQ(std::signal(SIGCHLD, SIG_IGN), SIG_IGN);
    SetUp();
}

TEST_F(Processes, StartFromManyThreadsAtOnce) {
    constexpr int threadCount = 4;
    constexpr int startCount = 250;
    std::atomic<bool> isOver = false;
    // SIGCHLD can come to this thread, and to the one that waits for the others.
    std::thread bystander([&] {
        while (!isOver)
            std::this_thread::yield();
    });
    std::vector<std::thread> starters;
    for (int t = 0; t < threadCount; ++t)
        starters.emplace_back([&, t] {
            for (int i = 0; i < startCount; ++i) {
                const std::string code = std::to_string((t * startCount + i) % 250);
                EXPECT_EQ(start(Sync, {STARTED_PROGRAM, L"exit", wide(code)}), code);
                if (i % 50 == 0) {
                    EXPECT_EQ(start(Sync, {L"./words"}), "6: exec() failed: Exec format error");
                    EXPECT_EQ(start(Async, {L"/bin/true"}), "");
                }
            }
        });
    for (std::thread& thread : starters)
        thread.join();
    isOver = true;
    bystander.join();
}

TEST_F(Processes, ThatCannotBeMadeAreErrors) {
    makeFolder("there");
    setenv("PATH", "/bin", 1);
    const std::string noPipe = "1: Can't create pre-fork pipe: ";
    const std::string noFlag = "1: Can't fcntl() pre-fork pipe: ";
    const std::string noFork = "fork() failed: ";
    const std::string noHandler = "1: Can't install a handler for SIGCHLD: ";
    using Faults = SystemFaults;
    // How many calls of a name are there in a synchronous, asynchronous and plain start, and what
    // is the result if one of them fails? The second chdir() and sigaction() do not change it.
    const struct {
        Faults::Call call;
        int error;
        std::size_t count[3];
        std::string result;
    } rows[] = {
        {Faults::onGetcwd, EACCES, {1, 1, 1}, "7: Can't getcwd(): Permission denied"},
        {Faults::onChdir, EIO, {2, 2, 2}, "7: Can't chdir() to there.  Reason: Input/output error"},
        {Faults::onAccess, EIO, {1, 1, 1}, "3: sh: program not found."},
        {Faults::onPipe2, EMFILE, {1, 2, 1}, noPipe + "Too many open files"},
        {Faults::onPipe2, EDOM, {1, 2, 1}, noPipe + "Numerical argument out of domain"},
        {Faults::onFcntl, EINTR, {1, 2, 1}, noFlag + "Interrupted system call"},
        {Faults::onFork, EAGAIN, {1, 2, 1}, "5: " + noFork + "Resource temporarily unavailable"},
        {Faults::onFork, ENOMEM, {1, 2, 1}, "4: " + noFork + "Cannot allocate memory"},
        {Faults::onFork, ENOSYS, {1, 2, 1}, "1: " + noFork + "Function not implemented"},
        {Faults::onExecv, 4095, {1, 1, 1}, "6: exec() failed: unknown error"},
        {Faults::onRead, EIO, {1, 2, 1}, "1: Cannot read from pipe: Input/output error"},
        {Faults::onRead, EINTR, {1, 2, 1}, "0"},
        {Faults::onClose, EIO, {3, 6, 3}, "0"},
        {Faults::onWaitpid, EINTR, {1, 1, 0}, "0"},
        {Faults::onWaitpid, EIO, {1, 1, 0}, "1: Can't wait for the process: Input/output error"},
        {Faults::onSigaction, EINVAL, {2, 2, 0}, noHandler + "Invalid argument"},
    };
    FaultTrial trial;
    std::string result;
    for (const auto& row : rows)
        for (const Kind kind : {Sync, Async, Own}) {
            SCOPED_TRACE(row.result + " of start " + std::to_string(kind));
            trial.prepare = [&] { SetUp(); };
            trial.operation = [&] { result = start(kind, {L"sh", L"-c", L"exit 0"}, L"there"); };
            trial.check = [&](const Fault& fault) {
                const bool isLate = fault.n == 2 && (row.call == Faults::onChdir ||
                                                     row.call == Faults::onSigaction);
                const std::string success = kind == Async ? "" : "0";
                EXPECT_EQ(result,
                          fault.n == 0 || isLate || row.result == "0" ? success : row.result);
                // A process that could not be waited for stays, and so does a handler.
                if (row.call == Faults::onWaitpid && row.error == EIO)
                    while (waitpid(-1, nullptr, 0) > 0)
                        signalsSeen = 0;
                if (row.call == Faults::onSigaction)
                    SetUp();
                expectNoTrace();
            };
            EXPECT_EQ(trial.run(row.call, {row.error}), row.count[kind]);
        }
    trial.report("starting programs");
}

TEST_F(Processes, SayWhyTheyFailedThroughAnInterruptedPipe) {
    FaultTrial trial;
    std::string result;
    trial.operation = [&] { result = start(Async, {L"./words"}); };
    trial.check = [&](const Fault&) { EXPECT_EQ(result, "6: exec() failed: Exec format error"); };
    EXPECT_EQ(trial.run(SystemFaults::onWrite, {EINTR}), 2u);
    EXPECT_EQ(trial.run(SystemFaults::onRead, {EINTR}, 3), 2u);
    trial.report("reporting why a program does not run");
}

TEST_F(Processes, CutLongReasonsBetweenCharacters) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    std::string letters = "\xC3\xB6";
    while (letters.size() < 400)
        letters += letters;
    for (const std::string begin : {"", "x"}) {
        const std::string all = begin + letters;
        longText = all.c_str();
        const std::string result = start(Async, {L"./words"});
        longText = nullptr;
        const std::string expected = "6: exec() failed: " + all;
        EXPECT_EQ(result, expected.substr(0, result.size()));
        EXPECT_GT(result.size(), 220u);
        EXPECT_LE(result.size(), 255u + std::strlen("6: "));
        EXPECT_EQ(result.back(), '\xB6');
    }
    longText = "";
    EXPECT_EQ(start(Sync, {L"./words"}), "6: exec() failed: unknown error");
    longText = nullptr;
    std::setlocale(LC_CTYPE, "C");
}
