#include <algorithm>
#include <cstdlib>
#include <set>

#include "host/areas.h"
#include "host/switch_key.h"
#include "switchlib/NORV_Vex_Lib.h"

namespace {

/** Walks are driven by what the switch answers, so they need an end of their own. */
constexpr int longestWalk = 4096;

using Value = char[VEX_SML_VALUE_SIZE];

Json linksOf(const std::string& record) {
    Json links = Json::array();
    const int count = get_lsdb_record_link_count(record.c_str());
    for (int i = 0; i < count && i < longestWalk; ++i) {
        const std::string number = std::to_string(i);
        Value local{};
        Value remote{};
        const bool known = get_lsdb_record_link_local_information(record.c_str(), number.c_str(), local) &&
                           get_lsdb_record_link_remote_information(record.c_str(), number.c_str(), remote);
        if (!known) break;
        links.push_back({{"record", record}, {"link", i}, {"localPort", local}, {"neighbor", remote}});
    }
    return links;
}

int portCount() {
    const std::string text = readKey("Oper.Switch.MaxPorts").value_or("");
    return static_cast<int>(std::clamp(std::strtol(text.c_str(), nullptr, 10), 0L, 256L));
}

void append(Json& rows, const Json& more) {
    for (const Json& row : more) rows.push_back(row);
}

}  // namespace

Json lsdbArea() {
    Json records = Json::array();
    Json links = Json::array();
    std::set<std::string> seen;  // a walk that comes back to where it was ends there
    Value value{};
    for (bool more = get_first_lsdb_record(value) != nullptr; more && seen.size() < longestWalk;) {
        const std::string record = value;
        if (!seen.insert(record).second) break;
        const Json own = linksOf(record);
        records.push_back({{"record", record}, {"links", own.size()}});
        append(links, own);
        more = get_next_lsdb_record(record.c_str(), value) != nullptr;
    }

    Json devices = Json::array();
    for (int number = 0, count = portCount(); number < count; ++number) {
        const std::string port = std::to_string(number);
        seen.clear();
        bool more = get_first_attached_port(port.c_str(), value) != nullptr;
        while (more && seen.size() < longestWalk) {
            const std::string entry = value;
            if (!seen.insert(entry).second) break;
            devices.push_back({{"port", port}, {"device", entry}});
            more = get_next_attached_port(port.c_str(), entry.c_str(), value) != nullptr;
        }
    }
    return {{"area", "lsdb"}, {"records", records}, {"links", links}, {"attachedDevices", devices}};
}
