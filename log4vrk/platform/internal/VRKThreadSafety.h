// Annotations that let clang prove which lock guards what (-Wthread-safety). Other compilers see nothing.

#pragma once

#if defined(__clang__)
#define VRK_ANNOTATE(x) __attribute__((x))
#else
#define VRK_ANNOTATE(x)
#endif

#define VRK_CAPABILITY(name) VRK_ANNOTATE(capability(name))
#define VRK_SCOPED_CAPABILITY VRK_ANNOTATE(scoped_lockable)
#define VRK_GUARDED_BY(lock) VRK_ANNOTATE(guarded_by(lock))
#define VRK_PT_GUARDED_BY(lock) VRK_ANNOTATE(pt_guarded_by(lock))
#define VRK_REQUIRES(...) VRK_ANNOTATE(requires_capability(__VA_ARGS__))
#define VRK_ACQUIRE(...) VRK_ANNOTATE(acquire_capability(__VA_ARGS__))
#define VRK_ACQUIRE_SHARED(...) VRK_ANNOTATE(acquire_shared_capability(__VA_ARGS__))
#define VRK_RELEASE(...) VRK_ANNOTATE(release_capability(__VA_ARGS__))
#define VRK_TRY_ACQUIRE(...) VRK_ANNOTATE(try_acquire_capability(__VA_ARGS__))
#define VRK_TRY_ACQUIRE_SHARED(...) VRK_ANNOTATE(try_acquire_shared_capability(__VA_ARGS__))
#define VRK_RETURN_CAPABILITY(lock) VRK_ANNOTATE(lock_returned(lock))
#define VRK_NO_THREAD_SAFETY_ANALYSIS VRK_ANNOTATE(no_thread_safety_analysis)
