#pragma once

#include "common/Mutex.h"

namespace vexsim {

using datacache::Lock;
using datacache::Mutex;

}  // namespace vexsim
