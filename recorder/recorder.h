/*
 * The recorder, as a program drives it that loads it itself. A process into which it is preloaded, or that is
 * linked against it before vexlib, needs none of this: the environment says what to do (docs/recording.md).
 * Valid C and C++.
 */
#ifndef RECORDER_RECORDER_H
#define RECORDER_RECORDER_H

#include <stddef.h>
#include <stdint.h>

#include "common/export.h"

DC_BEGIN_C

/**
 * Records all calls from now on into the file `path`, which is replaced, and passes them on to `provider`,
 * the handle of a library that was loaded with dlopen. Before the first call. 0, or -1 and one line of text
 * in `error` (cut to `size` bytes, always terminated) where the file cannot be written or the provider lacks
 * a function.
 */
DC_EXPORT int32_t vexrecord_start(void* provider, const char* path, char* error, size_t size);

DC_END_C

#endif
