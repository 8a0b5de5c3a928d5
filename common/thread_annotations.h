#pragma once

/**
 * Thread-safety annotations, checked by clang's -Wthread-safety and invisible to every other compiler.
 *
 * A POSIX mutex with a fixed, exported name cannot be annotated itself, so each lock has a token (LockToken)
 * that stands for it in annotations; the RAII guard of that lock is the only code that joins the two. Each
 * such guard is a class of its own, as the analysis cannot follow a lock that is a template's argument.
 */
#if defined(__clang__)
#define DC_ATTRIBUTE(x) __attribute__((x))
#else
#define DC_ATTRIBUTE(x)
#endif

#define DC_CAPABILITY(name) DC_ATTRIBUTE(capability(name))
#define DC_SCOPED_CAPABILITY DC_ATTRIBUTE(scoped_lockable)
#define DC_GUARDED_BY(lock) DC_ATTRIBUTE(guarded_by(lock))
#define DC_PT_GUARDED_BY(lock) DC_ATTRIBUTE(pt_guarded_by(lock))
#define DC_REQUIRES(lock) DC_ATTRIBUTE(requires_capability(lock))
#define DC_ACQUIRE(...) DC_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define DC_RELEASE(...) DC_ATTRIBUTE(release_capability(__VA_ARGS__))
#define DC_EXCLUDES(lock) DC_ATTRIBUTE(locks_excluded(lock))
#define DC_NO_THREAD_SAFETY_ANALYSIS DC_ATTRIBUTE(no_thread_safety_analysis)

/**
 * Says that a function takes the recursive lock itself, whether or not its caller holds it already. The
 * analysis has no word for a recursive lock, so this is for the reader; the guard inside the function is what
 * is checked.
 */
#define DC_TAKES(lock)

/** The stand-in for one POSIX mutex in annotations. Tokens are declared, never defined: nothing reads them.
 */
struct DC_CAPABILITY("mutex") LockToken {};
