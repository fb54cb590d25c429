#pragma once

// Clang's thread-safety attributes under the names this project uses. `make check` compiles with
// clang and turns a wrong access into an error; other compilers see nothing.
#if defined(__clang__)
#define THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define THREAD_ATTRIBUTE(x)
#endif

#define CAPABILITY(name) THREAD_ATTRIBUTE(capability(name))
#define SCOPED_CAPABILITY THREAD_ATTRIBUTE(scoped_lockable)
// A field that only code on the queue (or under the mutex) may touch.
#define OWNED_BY(x) THREAD_ATTRIBUTE(guarded_by(x))
// A function that must be called on the queue (or under the mutex).
#define RUNS_ON(...) THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define NOT_ON(...) THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ASSERTS_ON(x) THREAD_ATTRIBUTE(assert_capability(x))
#define ACQUIRES(...) THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASES(...) THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define UNCHECKED_THREADS THREAD_ATTRIBUTE(no_thread_safety_analysis)
