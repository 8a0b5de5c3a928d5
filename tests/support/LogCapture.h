#pragma once

#include <cstddef>
#include <string>
#include <vector>

/**
 * Every line that the process logs while this object lives, in order, from all threads. The log files are
 * redirected into a folder of the process, so that tests that run side by side do not share them.
 */
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /** The messages since the last call, without time stamp and line end: "2 DCACHE: ..." with the level in
     * front. */
    std::vector<std::string> take();
};
