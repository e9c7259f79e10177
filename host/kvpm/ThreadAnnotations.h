#pragma once

/// Marks for clang's thread-safety analysis; they mean nothing to other compilers.
#if defined(__clang__) && defined(VESK_THREAD_SAFETY)
#define KVPM_ANNOTATION(x) __attribute__((x))
#else
#define KVPM_ANNOTATION(x)
#endif

#define KVPM_CAPABILITY(name) KVPM_ANNOTATION(capability(name))
#define KVPM_SCOPED_CAPABILITY KVPM_ANNOTATION(scoped_lockable)
#define KVPM_GUARDED_BY(lock) KVPM_ANNOTATION(guarded_by(lock))
#define KVPM_REQUIRES(...) KVPM_ANNOTATION(requires_capability(__VA_ARGS__))
#define KVPM_ACQUIRE(...) KVPM_ANNOTATION(acquire_capability(__VA_ARGS__))
#define KVPM_TRY_ACQUIRE(...) KVPM_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define KVPM_RELEASE(...) KVPM_ANNOTATION(release_capability(__VA_ARGS__))
#define KVPM_NO_ANALYSIS KVPM_ANNOTATION(no_thread_safety_analysis)
