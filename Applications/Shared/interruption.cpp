// SPDX-License-Identifier: MIT

#include "Shared/interruption.h"

#include <unistd.h>

#include <atomic>
#include <iterator>

namespace app {

namespace {

constexpr int signals[] = {SIGHUP, SIGINT, SIGTERM};

/// All that the signal handler may use.
char temporaryFile[4096];

void deleteAndEnd(int signal) {
    unlink(temporaryFile);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

std::atomic<bool> isInterrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free); // what a signal handler may use

} // namespace

HeldSignals::HeldSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals)
        sigaddset(&set, signal);
    sigprocmask(SIG_BLOCK, &set, &before_);
}

HeldSignals::~HeldSignals() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

Interruption::Interruption(const std::string& file) {
    // A file with a longer name could not have been opened.
    const bool fits = file.size() < sizeof temporaryFile;
    temporaryFile[fits ? file.copy(temporaryFile, file.size()) : 0] = '\0';
    struct sigaction action = {};
    action.sa_handler = deleteAndEnd;
    for (std::size_t i = 0; i < std::size(signals); ++i) {
        sigaction(signals[i], nullptr, &before_[i]);
        if (before_[i].sa_handler != SIG_IGN) // as under nohup
            sigaction(signals[i], &action, nullptr);
    }
}

Interruption::~Interruption() {
    for (std::size_t i = 0; i < std::size(signals); ++i)
        sigaction(signals[i], &before_[i], nullptr);
}

void Interruption::holdBack() {
    held_.emplace();
}

InterruptFlag::InterruptFlag() {
    isInterrupted = false;
    struct sigaction action = {};
    action.sa_handler = [](int) { isInterrupted = true; };
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, nullptr, &before_);
    if (before_.sa_handler != SIG_IGN)
        sigaction(SIGINT, &action, nullptr);
}

InterruptFlag::~InterruptFlag() {
    sigaction(SIGINT, &before_, nullptr);
}

bool InterruptFlag::isSet() const {
    return isInterrupted;
}

void InterruptFlag::clear() {
    isInterrupted = false;
}

} // namespace app
