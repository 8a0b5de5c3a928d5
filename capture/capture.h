/*
 * A recording turned into a switch file for the simulator: what the switch last said, as the switch that says
 * the same.
 *
 * Each answer goes where a switch file has a word for it; what no section can say stands under [sml], a key
 * that failed is a [[fault]]. The text is loaded into the simulated switch's own model and every captured key
 * compared, so it always loads and answers as the switch did. What no switch file can say is a remark.
 */
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "recording/Reader.h"

namespace capture {

struct SwitchFile {
    std::string text;
    std::vector<std::string> remarks; /**< what could not be captured, a sentence each */

    /** What was captured. */
    size_t ports = 0;
    size_t switches = 0; /**< of the fabric, the captured one included */
    size_t zones = 0;    /**< configured */
    size_t keys = 0;     /**< under [sml] */
    size_t faults = 0;
};

/** `masked`: names, addresses, communities and serial numbers are replaced, the same text by the same mask.
 */
SwitchFile switchFile(const recording::Recording& recording, bool masked);

}  // namespace capture
