#include <algorithm>

#include "simulator/areas/Area.h"
#include "simulator/areas/TopologyWalk.h"
#include "simulator/areas/keys.h"

namespace vexsim {
namespace {

using Links = std::vector<TopologyWalk::Link>;

std::vector<std::string> split(const std::string& list) {
    std::vector<std::string> parts;
    for (size_t start = 0; start < list.size();) {
        const size_t end = std::min(list.find(',', start), list.size());
        if (end > start) parts.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

/** The domains that the fabric lists, so that a walk and the list agree; else what the file describes. */
std::vector<std::string> records(Switch& target) {
    const Reading list = target.read("Oper.Eport.LsdbRecordList.255");
    return list.status == Ok ? split(list.value) : target.part<TopologyWalk>().records;
}

Reading first(const std::vector<std::string>& entries) {
    if (entries.empty()) return {EndOfList, {}};
    return {Ok, entries.front()};
}

/** The entry after `entry`; an entry that is gone ends the walk, as one that was the last. */
Reading next(const std::vector<std::string>& entries, const std::string& entry) {
    const auto found = std::find(entries.begin(), entries.end(), entry);
    if (found == entries.end() || found + 1 == entries.end()) return {EndOfList, {}};
    return {Ok, *(found + 1)};
}

/** "RECORD.NumberOfLinks", "RECORD.Link.NUMBER.LocalPort" and "RECORD.Link.NUMBER.Neighbor". */
std::optional<Reading> readRecord(Switch& target, const std::string& tail) {
    const size_t dot = tail.find('.');
    if (dot == std::string::npos) return std::nullopt;
    const std::string record = tail.substr(0, dot);
    const std::string field = tail.substr(dot + 1);
    const std::vector<std::string> known = records(target);
    if (std::find(known.begin(), known.end(), record) == known.end()) return std::nullopt;

    const Links& links = target.part<TopologyWalk>().links[record];
    if (field == "NumberOfLinks") return Reading{Ok, std::to_string(links.size())};
    for (const auto& [suffix, end] : {std::pair(".LocalPort", &TopologyWalk::Link::local_port),
                                      std::pair(".Neighbor", &TopologyWalk::Link::neighbor)}) {
        const auto middle = keyMiddle(field, "Link.", suffix);
        if (!middle) continue;
        const std::optional<uint16_t> number = keyNumber(*middle);
        if (!number || *number >= links.size()) return Reading{EndOfList, {}};
        return Reading{Ok, links[*number].*end};
    }
    return std::nullopt;
}

/** "PORT.FirstNsEntry" and "PORT.NextNsEntry.ENTRY". */
std::optional<Reading> readNameServer(Switch& target, const std::string& tail) {
    const size_t dot = tail.find('.');
    if (dot == std::string::npos) return std::nullopt;
    const std::string field = tail.substr(dot + 1);
    const auto& devices = target.part<TopologyWalk>().devices;
    const auto port = devices.find(tail.substr(0, dot));
    const std::vector<std::string> entries =
        port == devices.end() ? std::vector<std::string>{} : port->second;
    if (field == "FirstNsEntry") return first(entries);
    if (const auto entry = keyTail(field, "NextNsEntry.")) return next(entries, *entry);
    return std::nullopt;
}

std::optional<Reading> readWalk(Switch& target, const std::string& key) {
    if (key == "Oper.Eport.FirstLsdbRecord") return first(records(target));
    if (const auto record = keyTail(key, "Oper.Eport.NextLsdbRecord.")) return next(records(target), *record);
    if (const auto tail = keyTail(key, "Oper.Eport.LsdbRecord.")) return readRecord(target, *tail);
    if (const auto tail = keyTail(key, "Oper.NameServerAll.")) return readNameServer(target, *tail);
    return std::nullopt;
}

Links readLinks(TableReader& table) {
    Links links;
    for (TableReader& link : table.tables("links")) {
        links.push_back({link.value("local_port"), link.value("neighbor")});
        link.finish();
    }
    return links;
}

void loadRecord(TableReader& table, Switch& target) {
    TopologyWalk& walk = target.part<TopologyWalk>();
    const std::string record = table.value("record");
    if (!walk.links.emplace(record, readLinks(table)).second) {
        table.fail("record", "record \"" + record + "\" is described twice");
    }
    walk.records.push_back(record);
}

void loadDevices(TableReader& table, Switch& target) {
    const std::string port = table.value("port");
    if (!target.part<TopologyWalk>().devices.emplace(port, table.texts("entries")).second) {
        table.fail("port", "port \"" + port + "\" is described twice");
    }
}

/** Names all links of a record: what it does not name is gone. */
Action readLinkChange(TableReader& table) {
    const std::string record = table.value("record");
    return [record, links = readLinks(table)](Switch& target) {
        const std::vector<std::string> known = records(target);
        if (std::find(known.begin(), known.end(), record) == known.end()) {
            throw StepError("the link state database has no record \"" + record + '"');
        }
        target.part<TopologyWalk>().links[record] = links;
        target.raise(VEX_EVENT_LSDB_CHANGE, record);
    };
}

}  // namespace

const Area& lsdbWalkArea() {
    static const Area area = [] {
        Area made;
        made.name = "lsdb_walk";
        made.sections = {{"lsdb", true, loadRecord}, {"name_server", true, loadDevices}};
        made.steps = {{"lsdb_links", readLinkChange}};
        made.read = readWalk;
        return made;
    }();
    return area;
}

}  // namespace vexsim
