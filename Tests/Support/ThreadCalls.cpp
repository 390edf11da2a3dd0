// SPDX-License-Identifier: MIT

#include "Support/ThreadCalls.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <random>
#include <thread>

#include <gtest/gtest.h>

namespace {

std::atomic<int> failing = ThreadFaults::callCount;
std::atomic<std::size_t> failingPlace = 0;
std::atomic<int> failingError = 0;
std::atomic<std::size_t> callsMade = 0;

std::atomic<bool> yielding = false;

std::atomic<long> locksHeld = 0;

/// Keeps errno.
void giveWay() {
    if (!yielding)
        return;
    static std::atomic<unsigned int> seeds = 1;
    thread_local std::minstd_rand random(seeds++);
    const int before = errno;
    const auto dice = random() % 64;
    if (dice < 8)
        sched_yield();
    else if (dice == 8)
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 40));
    errno = before;
}

/// The function behind ours: the sanitizer's, where there is one, or the C library's. It allocates
/// nothing: a test may let allocations fail.
template<class Function>
Function* genuine(const char* name) {
    char interceptor[64];
    std::snprintf(interceptor, sizeof interceptor, "__interceptor_%s", name);
    void* found = dlsym(RTLD_DEFAULT, interceptor);
    if (!found) // Conditions have an older form, too, which a search by name alone could find.
        found = dlvsym(RTLD_NEXT, name, "GLIBC_2.3.2");
    return reinterpret_cast<Function*>(found ? found : dlsym(RTLD_NEXT, name));
}

/// Makes the call, unless it is to fail: by its result, or by errno if it is one of a semaphore.
template<class Function, class... Arguments>
int unlessFailing(ThreadFaults::Call which, Function* call, Arguments... arguments) {
    if (failing != which || ++callsMade != failingPlace)
        return call(arguments...);
    errno = failingError;
    return which >= ThreadFaults::onSemInit ? -1 : failingError.load();
}

/// Makes the call, and gives way before and after it. A result of 0 takes so many `locks`.
template<class Function, class... Arguments>
int betweenYields(int locks, Function* call, Arguments... arguments) {
    giveWay();
    const int result = call(arguments...);
    if (result == 0)
        locksHeld += locks;
    giveWay();
    return result;
}

std::ptrdiff_t threads() {
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/task"), directory_iterator());
}

double now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(time).count();
}

} // namespace

ThreadFaults::ThreadFaults(Call call, std::size_t n, int error) {
    callsMade = 0;
    failingPlace = n;
    failingError = error;
    failing = call;
}

ThreadFaults::~ThreadFaults() {
    failing = callCount;
}

std::size_t ThreadFaults::calls() const {
    return callsMade;
}

RandomYields::RandomYields() {
    yielding = true;
}

RandomYields::~RandomYields() {
    yielding = false;
}

ThreadsAndLocks::ThreadsAndLocks() {
    // A sanitizer has a thread of its own from the first start of one.
    std::thread([] {}).join();
    static const auto started = now();
    while (now() < started + 0.01)
        sched_yield();
    threads_ = threads();
    locks_ = locks();
}

ThreadsAndLocks::~ThreadsAndLocks() {
    // A thread that was waited for can still be on the system's list for a moment.
    for (const double end = now() + 5; threads() != threads_ && now() < end;)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(threads(), threads_) << "threads";
    EXPECT_EQ(locks(), locks_) << "locks held";
}

long ThreadsAndLocks::locks() {
    return locksHeld;
}

StressTime::StressTime(double usual) {
    const char* const seconds = std::getenv("ZEBASE_STRESS_SECONDS");
    end_ = now() + (seconds ? std::atof(seconds) : usual);
}

bool StressTime::isLeft() const {
    return now() < end_;
}

extern "C" {

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* arg) noexcept {
    static const auto call = genuine<decltype(pthread_create)>("pthread_create");
    *thread = 0; // undefined after a failure
    const int error = unlessFailing(ThreadFaults::onCreate, call, thread, attributes, body, arg);
    giveWay();
    return error;
}

int pthread_join(pthread_t thread, void** result) {
    static const auto call = genuine<decltype(pthread_join)>("pthread_join");
    const int error = call(thread, result); // in any case: nobody else would
    return unlessFailing(
        ThreadFaults::onJoin, +[](int joined) { return joined; }, error);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static const auto call = genuine<decltype(pthread_mutex_lock)>("pthread_mutex_lock");
    return betweenYields(1, call, mutex);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
    static const auto call = genuine<decltype(pthread_mutex_trylock)>("pthread_mutex_trylock");
    return betweenYields(1, call, mutex);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    static const auto call = genuine<decltype(pthread_mutex_unlock)>("pthread_mutex_unlock");
    return betweenYields(-1, call, mutex);
}

int pthread_cond_init(pthread_cond_t* condition, const pthread_condattr_t* attributes) noexcept {
    static const auto call = genuine<decltype(pthread_cond_init)>("pthread_cond_init");
    return unlessFailing(ThreadFaults::onCondInit, call, condition, attributes);
}

int sem_init(sem_t* semaphore, int shared, unsigned int value) noexcept {
    static const auto call = genuine<decltype(sem_init)>("sem_init");
    return unlessFailing(ThreadFaults::onSemInit, call, semaphore, shared, value);
}

int sem_wait(sem_t* semaphore) {
    static const auto call = genuine<decltype(sem_wait)>("sem_wait");
    giveWay();
    return unlessFailing(ThreadFaults::onSemWait, call, semaphore);
}

int sem_trywait(sem_t* semaphore) noexcept {
    static const auto call = genuine<decltype(sem_trywait)>("sem_trywait");
    return betweenYields(0, call, semaphore);
}

int sem_post(sem_t* semaphore) noexcept {
    static const auto call = genuine<decltype(sem_post)>("sem_post");
    return betweenYields(0, call, semaphore);
}

} // extern "C"
