// SPDX-License-Identifier: MIT

#include "Support/ThreadCalls.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>

namespace {

std::atomic<int> failing = ThreadFaults::callCount;
std::atomic<std::size_t> failingPlace = 0;
std::atomic<int> failingError = 0;
std::atomic<std::size_t> callsMade = 0;

std::atomic<bool> yielding = false;
std::atomic<std::size_t> yields = 0;

std::atomic<long> locksHeld = 0;

/// The error that a call is to fail with, or 0.
int nextError(ThreadFaults::Call call) {
    if (failing != call || ++callsMade != failingPlace)
        return 0;
    return failingError;
}

/// A number of the thread's own sequence.
std::uint64_t randomNumber() {
    static std::atomic<std::uint64_t> seeds = 1;
    thread_local std::uint64_t state = seeds++ * 0x9e3779b97f4a7c15u;
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
}

void giveWay() {
    if (!yielding)
        return;
    const int before = errno;
    const std::uint64_t dice = randomNumber() % 64;
    if (dice < 8)
        sched_yield();
    else if (dice == 8)
        std::this_thread::sleep_for(std::chrono::microseconds(randomNumber() % 40));
    if (dice <= 8)
        ++yields;
    errno = before;
}

/// The function behind ours: the sanitizer's, where there is one, or the C library's.
template<class Function>
Function* genuine(Function* sanitizers, const char* name) {
    // pthread_cond_t has an older form, whose functions a search by name alone could find.
    constexpr const char* conditionsSince = "GLIBC_2.3.2";
    if (sanitizers)
        return sanitizers;
    void* found = dlvsym(RTLD_NEXT, name, conditionsSince);
    return reinterpret_cast<Function*>(found ? found : dlsym(RTLD_NEXT, name));
}

/// Makes the call, and gives way before and after it.
template<class Function, class... Arguments>
auto betweenYields(Function* call, Arguments... arguments) {
    giveWay();
    const auto result = call(arguments...);
    giveWay();
    return result;
}

/// The same for a call that takes a lock if it returns 0.
template<class Function>
int locking(Function* call, pthread_mutex_t* mutex) {
    giveWay();
    const int error = call(mutex);
    if (error == 0)
        ++locksHeld;
    giveWay();
    return error;
}

/// Fails as calls of semaphores do.
int failedWith(int error) {
    errno = error;
    return -1;
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

std::size_t RandomYields::count() {
    return yields;
}

ThreadsAndLocks::ThreadsAndLocks() {
    // A sanitizer has a thread of its own from the first start of one.
    static const bool started = [] {
        std::thread([] {}).join();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return true;
    }();
    static_cast<void>(started);
    threads_ = threads();
    locks_ = locks();
}

ThreadsAndLocks::~ThreadsAndLocks() {
    // A thread that was waited for can still be on the system's list for a moment.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (threads() != threads_ && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(threads(), threads_) << "threads";
    EXPECT_EQ(locks(), locks_) << "locks held";
}

std::ptrdiff_t ThreadsAndLocks::threads() {
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/task"), directory_iterator());
}

long ThreadsAndLocks::locks() {
    return locksHeld;
}

namespace {

double now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(time).count();
}

} // namespace

StressTime::StressTime(double usual) : end_(now()) {
    const char* const seconds = std::getenv("ZEBASE_STRESS_SECONDS");
    end_ += seconds ? std::atof(seconds) : usual;
}

bool StressTime::isLeft() const {
    return now() < end_;
}

extern "C" {

[[gnu::weak]] decltype(pthread_create) __interceptor_pthread_create;
[[gnu::weak]] decltype(pthread_join) __interceptor_pthread_join;
[[gnu::weak]] decltype(pthread_mutex_lock) __interceptor_pthread_mutex_lock;
[[gnu::weak]] decltype(pthread_mutex_trylock) __interceptor_pthread_mutex_trylock;
[[gnu::weak]] decltype(pthread_mutex_unlock) __interceptor_pthread_mutex_unlock;
[[gnu::weak]] decltype(pthread_cond_init) __interceptor_pthread_cond_init;
[[gnu::weak]] decltype(pthread_cond_destroy) __interceptor_pthread_cond_destroy;
[[gnu::weak]] decltype(pthread_cond_wait) __interceptor_pthread_cond_wait;
[[gnu::weak]] decltype(pthread_cond_signal) __interceptor_pthread_cond_signal;
[[gnu::weak]] decltype(pthread_cond_broadcast) __interceptor_pthread_cond_broadcast;
[[gnu::weak]] decltype(sem_init) __interceptor_sem_init;
[[gnu::weak]] decltype(sem_destroy) __interceptor_sem_destroy;
[[gnu::weak]] decltype(sem_wait) __interceptor_sem_wait;
[[gnu::weak]] decltype(sem_trywait) __interceptor_sem_trywait;
[[gnu::weak]] decltype(sem_post) __interceptor_sem_post;

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* arg) noexcept {
    static const auto call = genuine(__interceptor_pthread_create, "pthread_create");
    if (const int error = nextError(ThreadFaults::onCreate))
        return error;
    return betweenYields(call, thread, attributes, body, arg);
}

int pthread_join(pthread_t thread, void** result) {
    static const auto call = genuine(__interceptor_pthread_join, "pthread_join");
    if (const int error = nextError(ThreadFaults::onJoin))
        return error;
    return call(thread, result);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static const auto call = genuine(__interceptor_pthread_mutex_lock, "pthread_mutex_lock");
    return locking(call, mutex);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
    static const auto call = genuine(__interceptor_pthread_mutex_trylock, "pthread_mutex_trylock");
    return locking(call, mutex);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    static const auto call = genuine(__interceptor_pthread_mutex_unlock, "pthread_mutex_unlock");
    --locksHeld;
    return betweenYields(call, mutex);
}

int pthread_cond_init(pthread_cond_t* condition, const pthread_condattr_t* attributes) noexcept {
    static const auto call = genuine(__interceptor_pthread_cond_init, "pthread_cond_init");
    if (const int error = nextError(ThreadFaults::onCondInit))
        return error;
    return call(condition, attributes);
}

int pthread_cond_destroy(pthread_cond_t* condition) noexcept {
    static const auto call = genuine(__interceptor_pthread_cond_destroy, "pthread_cond_destroy");
    if (const int error = nextError(ThreadFaults::onCondDestroy))
        return error;
    return call(condition);
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    static const auto call = genuine(__interceptor_pthread_cond_wait, "pthread_cond_wait");
    return betweenYields(call, condition, mutex);
}

int pthread_cond_signal(pthread_cond_t* condition) noexcept {
    static const auto call = genuine(__interceptor_pthread_cond_signal, "pthread_cond_signal");
    return betweenYields(call, condition);
}

int pthread_cond_broadcast(pthread_cond_t* condition) noexcept {
    static const auto call =
        genuine(__interceptor_pthread_cond_broadcast, "pthread_cond_broadcast");
    return betweenYields(call, condition);
}

int sem_init(sem_t* semaphore, int shared, unsigned int value) noexcept {
    static const auto call = genuine(__interceptor_sem_init, "sem_init");
    if (const int error = nextError(ThreadFaults::onSemInit))
        return failedWith(error);
    return call(semaphore, shared, value);
}

int sem_destroy(sem_t* semaphore) noexcept {
    static const auto call = genuine(__interceptor_sem_destroy, "sem_destroy");
    if (const int error = nextError(ThreadFaults::onSemDestroy))
        return failedWith(error);
    return call(semaphore);
}

int sem_wait(sem_t* semaphore) {
    static const auto call = genuine(__interceptor_sem_wait, "sem_wait");
    return betweenYields(call, semaphore);
}

int sem_trywait(sem_t* semaphore) noexcept {
    static const auto call = genuine(__interceptor_sem_trywait, "sem_trywait");
    return betweenYields(call, semaphore);
}

int sem_post(sem_t* semaphore) noexcept {
    static const auto call = genuine(__interceptor_sem_post, "sem_post");
    return betweenYields(call, semaphore);
}

} // extern "C"
