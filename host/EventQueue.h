#pragma once

#include <condition_variable>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "host/json_text.h"
#include "report/clock.h"

class DataCacheEvent;

namespace host {

/** An event of the cache, as it was when the callback ran. */
struct HostEvent {
    report::WallTime time;
    std::string text;  ///< as datacache::eventText() gives it
    Json fields;       ///< "type", "class", "wwn" where there is one, and the class's own, in their order
};

/**
 * What other threads tell the main thread: events of the cache, that the cache has started, that a signal
 * asks the tool to end. The callback runs with the access lock held and on little stack, so all that it does
 * is to copy the event into here.
 */
class EventQueue {
  public:
    /** The tool's one queue; never destroyed, because the cache's threads outlive main(). */
    static EventQueue& instance();

    /** The host callback. */
    static void callback(DataCacheEvent* event);

    void setStarted();
    /** Asks for the end, because of this signal. */
    void interrupt(int signal);

    /** Waits for something new, at most so many milliseconds, and takes the events. */
    std::vector<HostEvent> wait(int milliseconds);

    bool started() const;
    /** The signal that asks for the end, or 0. */
    int interrupted() const;

  private:
    void add(HostEvent event);

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<HostEvent> _events;
    bool _news = false;
    bool _started = false;
    int _interrupted = 0;
};

/** Prints an event on one line and flushes: as text with the local time, or as JSON with "time" in front. */
void printEvent(std::ostream& out, const HostEvent& event, bool json);

}  // namespace host
