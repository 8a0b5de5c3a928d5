#pragma once

#include <dlfcn.h>

#include <cstdint>

#include "host/request.h"

namespace host {

/** Looks a control up in a loaded library; null where it has none. */
template <typename Function>
void find(Function*& function, void* provider, const char* name) {
    function = reinterpret_cast<Function*>(dlsym(provider, name));
}

/** Calls a control, whose last two arguments take its message. */
template <typename Function, typename... Arguments>
int32_t control(Function* function, Arguments... arguments) {
    char message[1024] = "";
    const int32_t result = function(arguments..., message, sizeof message);
    if (result < 0) throw HostInputError(message);
    return result;
}

}  // namespace host
