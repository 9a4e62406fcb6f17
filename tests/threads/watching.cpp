// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "threads/watching.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

std::atomic<int> s_endless{0};

thread_local threads::Seen* t_seen;
thread_local int t_server;
thread_local bool t_hurries;
thread_local timespec t_now; // what this thread read from a clock last

class Endless {
public:
    explicit Endless(const char* what) {
        if (t_seen != nullptr) {
            t_seen->waits.insert(what);
        }
        ++s_endless;
    }
    ~Endless() { --s_endless; }
    Endless(const Endless&) = delete;
    Endless& operator=(const Endless&) = delete;
    Endless(Endless&&) = delete;
    Endless& operator=(Endless&&) = delete;
};

bool InAHurry() {
    return t_seen != nullptr || t_hurries;
}

void Note(const std::string& wait) {
    if (t_seen != nullptr) {
        t_seen->waits.insert(wait);
    }
}

// Limits are whole seconds from the clock's time, which the library has just read.
void NoteLimit(const char* what, const timespec* until) {
    if (t_seen != nullptr) {
        t_seen->waits.insert(what + std::to_string(until->tv_sec - t_now.tv_sec) + " s at most");
    }
}

} // namespace

namespace threads {

Seen Watch(const std::function<void()>& call, int server) {
    Seen seen;
    t_server = server;
    t_seen = &seen;
    call();
    t_seen = nullptr;
    return seen;
}

void Hurry() {
    t_hurries = true;
}

int EndlessWaits() {
    return s_endless;
}

} // namespace threads

// The linker sends the program's own references here and gives the originals these names.
extern "C" {

int __real_clock_gettime(clockid_t clock, timespec* now);
int __real_poll(pollfd* entries, nfds_t count, int limit);
int __real_pthread_cond_clockwait(pthread_cond_t* cond, pthread_mutex_t* lock, clockid_t clock,
                                  const timespec* until);
int __real_pthread_cond_timedwait(pthread_cond_t* cond, pthread_mutex_t* lock, const timespec* until);
int __real_pthread_cond_wait(pthread_cond_t* cond, pthread_mutex_t* lock);
int __real_pthread_join(pthread_t thread, void** result);
int __real_pthread_mutex_lock(pthread_mutex_t* lock);
int __real_sem_clockwait(sem_t* semaphore, clockid_t clock, const timespec* until);
int __real_sem_timedwait(sem_t* semaphore, const timespec* until);
int __real_sem_wait(sem_t* semaphore);
ssize_t __real_send(int fd, const void* bytes, size_t count, int flags);
int __real_usleep(useconds_t time);

int __wrap_clock_gettime(clockid_t clock, timespec* now);
int __wrap_poll(pollfd* entries, nfds_t count, int limit);
int __wrap_pthread_cond_clockwait(pthread_cond_t* cond, pthread_mutex_t* lock, clockid_t clock,
                                  const timespec* until);
int __wrap_pthread_cond_timedwait(pthread_cond_t* cond, pthread_mutex_t* lock, const timespec* until);
int __wrap_pthread_cond_wait(pthread_cond_t* cond, pthread_mutex_t* lock);
int __wrap_pthread_join(pthread_t thread, void** result);
int __wrap_pthread_mutex_lock(pthread_mutex_t* lock);
int __wrap_sem_clockwait(sem_t* semaphore, clockid_t clock, const timespec* until);
int __wrap_sem_timedwait(sem_t* semaphore, const timespec* until);
int __wrap_sem_wait(sem_t* semaphore);
ssize_t __wrap_send(int fd, const void* bytes, size_t count, int flags);
int __wrap_usleep(useconds_t time);

int __wrap_clock_gettime(clockid_t clock, timespec* now) {
    const int result = __real_clock_gettime(clock, now);
    t_now = *now;
    return result;
}

int __wrap_poll(pollfd* entries, nfds_t count, int limit) {
    if (t_seen != nullptr && limit > 0) {
        Note("for room, " + std::to_string(limit) + " ms at a time");
    }
    return __real_poll(entries, count, limit);
}

int __wrap_pthread_cond_clockwait(pthread_cond_t* cond, pthread_mutex_t* lock, clockid_t clock,
                                  const timespec* until) {
    NoteLimit("for a result, ", until);
    return InAHurry() ? ETIMEDOUT : __real_pthread_cond_clockwait(cond, lock, clock, until);
}

int __wrap_pthread_cond_timedwait(pthread_cond_t* cond, pthread_mutex_t* lock, const timespec* until) {
    NoteLimit("for a result, ", until);
    return InAHurry() ? ETIMEDOUT : __real_pthread_cond_timedwait(cond, lock, until);
}

int __wrap_pthread_cond_wait(pthread_cond_t* cond, pthread_mutex_t* lock) {
    const Endless endless("for a result, without limit");
    return __real_pthread_cond_wait(cond, lock);
}

int __wrap_pthread_join(pthread_t thread, void** result) {
    Note("for a thread's end");
    return __real_pthread_join(thread, result);
}

int __wrap_pthread_mutex_lock(pthread_mutex_t* lock) {
    if (t_seen != nullptr) {
        threads::Seen* seen = t_seen;
        t_seen = nullptr; // whatever finding the name takes
        seen->locks.insert(threads::LockName(lock));
        t_seen = seen;
    }
    return __real_pthread_mutex_lock(lock);
}

int __wrap_sem_clockwait(sem_t* semaphore, clockid_t clock, const timespec* until) {
    NoteLimit("for the answer, ", until);
    if (InAHurry()) {
        errno = ETIMEDOUT;
        return -1;
    }
    return __real_sem_clockwait(semaphore, clock, until);
}

int __wrap_sem_timedwait(sem_t* semaphore, const timespec* until) {
    NoteLimit("for the answer, ", until);
    if (InAHurry()) {
        errno = ETIMEDOUT;
        return -1;
    }
    return __real_sem_timedwait(semaphore, until);
}

int __wrap_sem_wait(sem_t* semaphore) {
    const Endless endless("without limit");
    return __real_sem_wait(semaphore);
}

ssize_t __wrap_send(int fd, const void* bytes, size_t count, int flags) {
    if ((flags & MSG_DONTWAIT) == 0) {
        Note(fd == t_server ? "while the server reads no commands"
                            : "while the server does not read the descriptor");
    }
    return __real_send(fd, bytes, count, flags);
}

int __wrap_usleep(useconds_t time) {
    if (InAHurry()) {
        return sched_yield();
    }
    return __real_usleep(time);
}

} // extern "C"
