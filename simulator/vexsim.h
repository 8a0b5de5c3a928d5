/*
 * The simulated switch, as a program drives it that was not linked against it.
 *
 * A host that loads its vexlib provider at run time looks these functions up by name (dlsym); a provider that
 * has none of them is a real library. Valid C and C++. All may be called from any thread, none from inside a
 * notification.
 *
 * Functions that can fail return -1 and put one line of text into `error` (cut to `size` bytes, always
 * terminated; null and 0 where nobody wants it).
 */
#ifndef SIMULATOR_VEXSIM_H
#define SIMULATOR_VEXSIM_H

#include <stddef.h>
#include <stdint.h>

#include "common/export.h"

DC_BEGIN_C

/** Replaces the switch by that of a switch file. 0, or -1 and nothing changed. */
DC_EXPORT int32_t vexsim_load_switch(const char* path, char* error, size_t size);

/** Reads and checks a whole scenario file, without starting it. 0, or -1 and nothing changed. */
DC_EXPORT int32_t vexsim_load_scenario(const char* path, char* error, size_t size);

/** Starts the scenario on a thread of its own; a scenario that is running goes on. */
DC_EXPORT void vexsim_start_scenario(void);

/** 1 when no scenario is running, 0 while one is. */
DC_EXPORT int32_t vexsim_scenario_done(void);

/**
 * Waits at most that many milliseconds for the end of the scenario and for the delivery of its notifications.
 * 1 when it has ended, 0 when time was up, -1 when a step could not be carried out, which ended it.
 */
DC_EXPORT int32_t vexsim_wait_scenario(int32_t timeoutMs, char* error, size_t size);

/** Appends every call, notification and step from now on to a file; an empty path ends that. 0 or -1. */
DC_EXPORT int32_t vexsim_write_transcript(const char* path, char* error, size_t size);

DC_END_C

#endif
