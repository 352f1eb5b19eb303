/// Clang's thread-safety attributes (https://clang.llvm.org/docs/ThreadSafetyAnalysis.html); empty elsewhere.
#pragma once

#if defined(__clang__)
#define TD_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define TD_THREAD_ATTRIBUTE(x)
#endif

#define TD_CAPABILITY(name) TD_THREAD_ATTRIBUTE(capability(name))
#define TD_SCOPED_CAPABILITY TD_THREAD_ATTRIBUTE(scoped_lockable)
#define TD_GUARDED_BY(mutex) TD_THREAD_ATTRIBUTE(guarded_by(mutex))
#define TD_REQUIRES(...) TD_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define TD_EXCLUDES(...) TD_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define TD_ACQUIRE(...) TD_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define TD_RELEASE(...) TD_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define TD_TRY_ACQUIRE(...) TD_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define TD_NO_THREAD_SAFETY_ANALYSIS TD_THREAD_ATTRIBUTE(no_thread_safety_analysis)
