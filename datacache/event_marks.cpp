#include "datacache/event_marks.h"

#include <initializer_list>
#include <string>

#include "common/bounded_text.h"
#include "datacache/event_codes.h"
#include "datacache/event_texts.h"

namespace datacache {

namespace {

EventMarks marks(std::initializer_list<CacheArea> areas, bool allPorts = false) {
    EventMarks made;
    for (const CacheArea area : areas) made.areas.set(static_cast<size_t>(area));
    made.allPorts = allPorts;
    return made;
}

void add(PortSet& ports, int32_t port) {
    if (port >= 0 && port < static_cast<int32_t>(kPortRows)) ports.set(static_cast<size_t>(port));
}

}  // namespace

PortSet EventMarks::ports() const {
    PortSet told;
    if (allPorts) told.set();
    add(told, port);
    add(told, transceiver);
    return told;
}

EventMarks marksOf(const vex_event_s& event) {
    EventMarks made;
    switch (event.code) {
        case VEX_EVENT_FABRIC_CHANGE:
        case VEX_EVENT_LSDB_CHANGE:
            return marks({CacheArea::Fabric});
        case VEX_EVENT_ZONE_CHANGE:
            return marks({CacheArea::Zoning});
        case VEX_EVENT_PORT_ATTR_CHANGE:
        case VEX_EVENT_PORT_CFG_CHANGE:
            made = marks({CacheArea::Ports});
            made.port = event.source.word[2];
            return made;
        case VEX_EVENT_BLADE_INSERTED:
        case VEX_EVENT_BLADE_REMOVED:
        case VEX_EVENT_BLADE_STATE_CHANGE:
            return marks({CacheArea::Blades, CacheArea::Ports}, true);
        case VEX_EVENT_SWITCH_STATE_CHANGE:
            return marks({CacheArea::Switch});
        case VEX_EVENT_CHASSIS_OPERCHANGE:
            return marks({CacheArea::Chassis});
        case VEX_EVENT_USER_ACL_CHANGE:
            return marks({CacheArea::Accounts});  // work to do; the accounts are read when the host asks
        case VEX_EVENT_FEATURE_CHANGE:
        case VEX_EVENT_SERVICES_CFG_CHANGE:
            return marks({CacheArea::Chassis, CacheArea::Switch, CacheArea::Ports}, true);
        case VEX_EVENT_SWITCH_FAULT_CHANGE:
            return marks({CacheArea::Switch, CacheArea::Blades});
        case EVENT_MEDIA_INSERTED: {
            const MediaInserted media = parseMediaInserted(std::string(boundedText(event.text)));
            if (media.items == MediaInserted::kItems) made.transceiver = media.port;
            return made;
        }
        case EVENT_MEDIA_REMOVED: {
            const MediaRemoved media = parseMediaRemoved(std::string(boundedText(event.text)));
            if (media.items == MediaRemoved::kItems) made.transceiver = media.port;
            return made;
        }
        default:
            return made;
    }
}

}  // namespace datacache
