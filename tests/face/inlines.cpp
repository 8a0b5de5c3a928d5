// A host that uses each public template and inline function, linked against the shared library and nothing
// else of ours.
#include <cstdio>
#include <cstdlib>

#include "common/NORV_Except.h"
#include "common/version.h"
#include "datacache/CacheReader.h"
#include "datacache/cim_words.h"
#include "datacache/event_text.h"
#include "simulator/vexsim.h"
#include "zoning/ZoningSession.h"

using namespace datacache;

/** Not an item of the library. */
struct OwnItem {
    int value = 0;
};

// Every member of a list of elements of our own; of the library's elements, whose count of ids it keeps, the
// list.
template class Element<OwnItem>;
template class List<Element<OwnItem>>;
template class List<Element<SwitchCache>>;

namespace {

void expect(bool good, const char* what) {
    if (good) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::exit(1);
}

size_t unknownFields = 0;

template <typename Event, typename... Arguments>
void useEvent(const Arguments&... arguments) {
    const Event event(arguments...);
    const DataCacheEvent& base = event;
    size_t fields = 0;
    visitFields(base, [&fields](const EventField& field) {
        const int values = (field.name() != nullptr) + (field.flag() != nullptr) +
                           (field.number() != nullptr) + (field.text() != nullptr) +
                           (field.list() != nullptr);
        const bool known = field.kind() <= EventFieldKind::List;
        expect(values == (known ? 1 : 0) && !field.words().empty(), field.label());
        ++(known ? fields : unknownFields);
    });
    expect(dynamic_cast<const Event*>(&base) != nullptr && eventText(base).find(eventName(base.type)) == 0,
           "an event is of its class");
    expect(fields == sizeof...(arguments), "an event has its fields");
}

/** Events that are made of the same arguments. */
template <typename... Events, typename... Arguments>
void useEach(const Arguments&... arguments) {
    (useEvent<Events>(arguments...), ...);
}

void useEvents() {
    const Wwn name(0x10000011, 0x22334455);
    const std::vector<unsigned short> status(1, 2);
    const std::string text = "text";
    const uint16_t number = 1;
    useEach<DCEventCIMChange, DCEventDataCacheUpdateComplete>();
    useEach<DCEventFabricAdd, DCEventFabricRemove, DCEventZoningDBChange>(name);
    useEach<DCEventFabricChange>(name, true);
    useEach<DCEventSwitchAdd, DCEventSwitchRemove>(name, name);
    useEach<DCEventSwitchStatusChange>(name, name, status, status);
    useEach<DCEventPortAdd, DCEventPortRemove>(name, name, true);
    useEach<DCEventPortStatusChange>(name, name, name, status, status);
    useEach<DCEventBladeAdd, DCEventBladeRemove, DCEventCPUAdd, DCEventCPURemove, DCEventFanAdd,
            DCEventPowerSupplyAdd>(name, number);
    useEach<DCEventFanRemove, DCEventPowerSupplyRemove, DCEventPowerSupplyFail>(name, number, number);
    useEach<DCEventUserAcctAdd, DCEventUserAcctRemove, DCEventUserPasswdChg, DCEventUserLoginFailure>(name,
                                                                                                      text);
    useEach<DCEventActiveZonesetChange>(name, text, text);
    useEach<DCEventEnvEvent>(name, text, text, text);
}

}  // namespace

int main(int argc, char** argv) {
    char error[512] = "one argument: a switch file of a fabric";
    expect(argc >= 2 && vexsim_load_switch(argv[1], error, sizeof error) == 0, error);
    expect(datacacheVersion() == DATACACHE_VERSION && DATACACHE_VERSION >= DATACACHE_MAKE_VERSION(1, 0, 0),
           "the version");

    const Wwn name(0x10000011, 0x22334455);
    expect(name == Wwn("1000001122334455") && name != Wwn() && Wwn().isNull(), "names are compared");
    expect(ZoningOutcome().done(), "an outcome is done");
    TransceiverState().clear(0);
    const NORV_Except exception(__FILE__, __func__, __LINE__, EXCEPT_CRITICAL, "%d", 1);
    expect(NORV_Except(exception).line == exception.line, "an exception is copied");
    useEvents();
    expect(unknownFields == (argc == 2 ? 0 : 1), "a later library has one field more");
    List<Element<SwitchCache>>().add(Element<SwitchCache>::alloc(new SwitchCache, true));

    const uint16_t next = Element<SwitchCache>::nextid;
    DataCache::init();
    { const AccessGuard guard; }
    const CacheReader cache;
    expect(cache && cache->evaluateCaches() && &*cache == DataCache::instance, "a pass reads the switch");
    const uint16_t switches = cache.fabric().getSwitchCount();
    expect(switches > 1 && Element<SwitchCache>::nextid == next + switches,
           "library and host count ids together");
    return 0;
}
