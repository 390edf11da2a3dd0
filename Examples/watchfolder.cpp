// SPDX-License-Identifier: MIT

// Takes files out of a folder as they arrive. A polling thread watches the folder and posts a
// message for each new file; the main thread, which does all the work, sleeps in between. The file
// `stop` ends the program.
//
//     $ mkdir inbox && echo "Hello, world" > inbox/greeting
//     $ (echo Goodbye > letter; mv letter inbox; sleep 0.1; touch inbox/stop) & watchfolder inbox
//     greeting: 13 bytes
//     letter: 8 bytes
//     stop: the end
//     $ ls inbox
//     $ watchfolder missing
//     watchfolder: missing: No such file or directory

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "Base/Thread/zeThreadMessage.h"
#include "Base/Thread/zeThreadMessageReceiver.h"
#include "Base/Thread/zeThreadMessageSender.h"
#include "Base/Thread/zeThreadPollingThread.h"

namespace {

/// What the main thread does with the folder. No other thread touches it, so that it needs no lock.
class Inbox {
public:
    explicit Inbox(std::filesystem::path folder) : folder_(std::move(folder)) {}

    void take(const std::string& name) {
        const std::filesystem::path file = folder_ / name;
        std::error_code error;
        const auto size = std::filesystem::file_size(file, error);
        if (name == "stop")
            std::printf("stop: the end\n");
        else if (!error)
            std::printf("%s: %ju bytes\n", name.c_str(), size);
        std::filesystem::remove(file, error);
        isStopped = isStopped || name == "stop";
    }

    void fail(const std::string& reason) {
        std::fprintf(stderr, "watchfolder: %s: %s\n", folder_.c_str(), reason.c_str());
        hasFailed = true;
    }

    bool isStopped = false;
    bool hasFailed = false;

private:
    std::filesystem::path folder_;
};

/// One call of Inbox, which the watching thread posts and the main thread makes.
class Call : public zeThread::Message {
public:
    Call(Inbox& inbox, void (Inbox::*operation)(const std::string&), std::string text)
        : inbox_(inbox), operation_(operation), text_(std::move(text)) {}
    void dispatch() override { (inbox_.*operation_)(text_); }

private:
    Inbox& inbox_;
    void (Inbox::*operation_)(const std::string&);
    std::string text_; // a copy: the message shares nothing with its sender
};

/// Looks into the folder again and again, on a thread of its own.
class Watcher : public zeThread::PollingThread {
public:
    Watcher(std::filesystem::path folder, Inbox& inbox)
        : folder_(std::move(folder)), inbox_(inbox) {}

    bool poll() override {
        std::set<std::string> names;
        std::error_code error;
        using Files = std::filesystem::directory_iterator;
        for (Files file(folder_, error); !error && file != Files(); file.increment(error))
            names.insert(file->path().filename().string());
        if (error) {
            getSender().send(new Call(inbox_, &Inbox::fail, error.message()));
            return false; // the thread ends
        }
        for (const std::string& name : names)
            if (!known_.contains(name))
                getSender().send(new Call(inbox_, &Inbox::take, name));
        known_ = std::move(names);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return true;
    }

private:
    const std::filesystem::path folder_;
    Inbox& inbox_; // not used here, only named in messages
    std::set<std::string> known_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: watchfolder FOLDER\n");
        return 2;
    }
    Inbox inbox(argv[1]);
    zeThread::MessageReceiver receiver;
    Watcher watcher(argv[1], inbox);
    bool isOver = false;
    watcher.getSigTerminated().connectOwned([&](zeThread::PollingThread*) { isOver = true; });
    if (const zeUtil::Error error = watcher.start(receiver); error.code() != 0) {
        std::fprintf(stderr, "watchfolder: %s\n", error.message());
        return 1;
    }
    while (!isOver) { // until the watcher has reported its end: only then may it be destroyed
        receiver.wait();
        receiver.dispatch();
        if (inbox.isStopped)
            watcher.terminateAsync();
    }
    return inbox.hasFailed ? 1 : 0;
}
