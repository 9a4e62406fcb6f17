// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A mutex that needs no construction and no destruction, with annotations that clang checks
// (-Wthread-safety): what a lock guards is written on the member.
#ifndef VYM_THREAD_H
#define VYM_THREAD_H

#include <features.h>
#include <pthread.h>
#include <time.h>

#if defined(__clang__)
#define VYM_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VYM_THREAD_ANNOTATION(x)
#endif

#define VYM_GUARDED_BY(lock) VYM_THREAD_ANNOTATION(guarded_by(lock))
#define VYM_REQUIRES(lock) VYM_THREAD_ANNOTATION(requires_capability(lock))
#define VYM_EXCLUDES(lock) VYM_THREAD_ANNOTATION(locks_excluded(lock))

namespace vym {

// Trivially destructible on purpose: threads of the application may still use the library while the
// process exits, and a profile's calls must be harmless after its done.
class VYM_THREAD_ANNOTATION(capability("mutex")) mutex {
public:
    constexpr mutex() = default;
    mutex(const mutex&) = delete;
    mutex& operator=(const mutex&) = delete;

    void lock() VYM_THREAD_ANNOTATION(acquire_capability()) { pthread_mutex_lock(&m_mutex); }
    void unlock() VYM_THREAD_ANNOTATION(release_capability()) { pthread_mutex_unlock(&m_mutex); }

private:
    friend class condition;
    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
};

// Waiting for what another thread does under a mutex. A wait may end for nothing: look again.
class condition {
public:
    constexpr condition() = default;
    condition(const condition&) = delete;
    condition& operator=(const condition&) = delete;

    // What until_after() counts on: monotonic where it can be waited on, because an embedded system
    // sets its wall clock while it boots.
#if defined(__GLIBC_PREREQ) && __GLIBC_PREREQ(2, 30)
    static constexpr clockid_t kClock = CLOCK_MONOTONIC;
#else
    static constexpr clockid_t kClock = CLOCK_REALTIME;
#endif

    static timespec until_after(int seconds) {
        timespec until = {};
        clock_gettime(kClock, &until);
        until.tv_sec += seconds;
        return until;
    }

    void wait(mutex& held) VYM_REQUIRES(held) {
        pthread_cond_wait(&m_cond, &held.m_mutex);
    }
    // Returns 0, or ETIMEDOUT once `until` has passed.
    int wait_until(mutex& held, const timespec& until) VYM_REQUIRES(held) {
#if defined(__GLIBC_PREREQ) && __GLIBC_PREREQ(2, 30)
        return pthread_cond_clockwait(&m_cond, &held.m_mutex, kClock, &until);
#else
        return pthread_cond_timedwait(&m_cond, &held.m_mutex, &until);
#endif
    }
    void notify_all() {
        pthread_cond_broadcast(&m_cond);
    }

private:
    pthread_cond_t m_cond = PTHREAD_COND_INITIALIZER;
};

class VYM_THREAD_ANNOTATION(scoped_lockable) lock_guard {
public:
    explicit lock_guard(mutex& held) VYM_THREAD_ANNOTATION(acquire_capability(held)) : m_held(held) {
        held.lock();
    }
    ~lock_guard() VYM_THREAD_ANNOTATION(release_capability()) { m_held.unlock(); }
    lock_guard(const lock_guard&) = delete;
    lock_guard& operator=(const lock_guard&) = delete;

private:
    mutex& m_held;
};

} // namespace vym

#endif
