#include "host/event_print.h"

#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>

#include "host/event_fields.h"

namespace {

/** Local time as HH:MM:SS.mmm, or in ISO 8601 with date and offset. */
std::string localTime(const timespec& time, bool iso) {
    tm local{};
    localtime_r(&time.tv_sec, &local);
    std::ostringstream text;
    text << std::put_time(&local, iso ? "%Y-%m-%dT%H:%M:%S." : "%H:%M:%S.") << std::setfill('0')
         << std::setw(3) << time.tv_nsec / 1'000'000;
    if (!iso) return text.str();
    text << std::put_time(&local, "%z");
    return text.str().insert(text.str().size() - 2, ":");  // +0100 as +01:00
}

}  // namespace

void printEvent(std::ostream& out, const HostEvent& event, bool json) {
    if (json) {
        Json line{{"time", localTime(event.time, true)}};
        line.update(event.fields);
        out << jsonLine(line) << std::endl;
    } else {
        out << localTime(event.time, false) << "  " << eventLine(event.fields) << std::endl;
    }
}
