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

namespace {

void expect(bool good, const char* what) {
    if (good) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::exit(1);
}

/** Every member of the list and of its elements, of an item of our own or of the library's. */
template <typename Item>
void useList() {
    using E = Element<Item>;
    List<E> list;
    List<E> other;
    const uint16_t next = E::nextid;
    E* const first = E::alloc(new Item, true);
    expect(first->id() == (next == 0 ? 2 : next) && E::nextid == first->id() + 1, "ids are counted");
    list.add_head(first);
    list.add(new E(new Item));
    list.insert_before(new E(new Item, true), first);
    list.insert_after(new E(new Item, true), list.get_last());
    expect(
        list.size() == 4 && first->index() == 2 && first->get_prev() == list.get_first() && !list.is_empty(),
        "four elements");
    expect(list.find(first->id()) == first && first->get_next()->item() != nullptr, "elements are found");
    delete list.remove(first->id());
    E* const last = list.get_last();
    list.remove(last);
    delete last->item();
    last->item(new Item);
    last->delete_item() = true;
    other.add(last);
    list.take(&other);
    list.purge_list(true);
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

void useEvents() {
    const Wwn name(0x10000011, 0x22334455);
    const std::vector<unsigned short> status(1, 2);
    const std::string text = "text";
    const uint16_t number = 1;
    useEvent<DCEventFabricAdd>(name);
    useEvent<DCEventFabricRemove>(name);
    useEvent<DCEventFabricChange>(name, true);
    useEvent<DCEventSwitchAdd>(name, name);
    useEvent<DCEventSwitchRemove>(name, name);
    useEvent<DCEventSwitchStatusChange>(name, name, status, status);
    useEvent<DCEventBladeAdd>(name, number);
    useEvent<DCEventBladeRemove>(name, number);
    useEvent<DCEventPortAdd>(name, name, true);
    useEvent<DCEventPortRemove>(name, name, true);
    useEvent<DCEventPortStatusChange>(name, name, name, status, status);
    useEvent<DCEventFanAdd>(name, number);
    useEvent<DCEventFanRemove>(name, number, number);
    useEvent<DCEventPowerSupplyAdd>(name, number);
    useEvent<DCEventPowerSupplyRemove>(name, number, number);
    useEvent<DCEventPowerSupplyFail>(name, number, number);
    useEvent<DCEventCPUAdd>(name, number);
    useEvent<DCEventCPURemove>(name, number);
    useEvent<DCEventUserAcctAdd>(name, text);
    useEvent<DCEventUserAcctRemove>(name, text);
    useEvent<DCEventActiveZonesetChange>(name, text, text);
    useEvent<DCEventZoningDBChange>(name);
    useEvent<DCEventUserPasswdChg>(name, text);
    useEvent<DCEventUserLoginFailure>(name, text);
    useEvent<DCEventEnvEvent>(name, text, text, text);
    useEvent<DCEventCIMChange>();
    useEvent<DCEventDataCacheUpdateComplete>();
}

struct OwnItem {
    int value = 0;
};

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
    useList<OwnItem>();
    useList<SwitchCache>();

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
