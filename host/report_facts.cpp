#include "host/report_facts.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "datacache/DataCache.h"
#include "datacache/cim_words.h"
#include "host/areas.h"
#include "host/dot.h"
#include "report/calls.h"
#include "report/layout.h"
#include "report/log_lines.h"
#include "report/timeline.h"

namespace host {

namespace {

using recording::Recording;
using report::Secrets;

constexpr char kLogFile[] = "/tmp/cim.out";
constexpr size_t kMostEntries = 1000;
constexpr size_t kMostLogLines = 400;
constexpr off_t kMostLogBytes = 256 << 10;

Json platformFields() {
    constexpr bool little = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    utsname system{};
    uname(&system);
    return {{"platform", std::string(system.sysname) + ' ' + system.release + ", " + system.machine},
            {"wordSize", std::to_string(sizeof(void*) * 8) + " bits"},
            {"byteOrder", little ? "little endian" : "big endian"}};
}

/** The file that the library was loaded from, whose name ends in its version. */
std::string libraryName() {
    Dl_info info{};
    std::error_code error;
    const auto function = reinterpret_cast<void*>(&DataCache::health);
    if (dladdr(function, &info) == 0 || info.dli_fname == nullptr) return "";
    return std::filesystem::canonical(info.dli_fname, error).filename();
}

Json madeFields(const HostRequest& request) {
    Json made{{"reportMade", report::localTime(report::now())},
              {"tool", "datacache-host " HOST_VERSION},
              {"library", libraryName()}};
    made.update(platformFields());
    made["switchLibrary"] = request.provider;
    for (const auto& [name, file] : {std::pair("switchFile", request.switchFile),
                                     {"scenario", request.scenario},
                                     {"recording", request.replay}}) {
        if (!file.empty()) made[name] = file;
    }
    made["secrets"] = request.unmasked ? "shown" : "masked";
    return made;
}

Json recordingFields(const Recording& recording) {
    const recording::Header& header = recording.header;
    size_t calls = 0;
    size_t notifications = 0;
    uint64_t end = 0;
    Json fields{{"platform", header.platform},
                {"wordSize", std::to_string(header.wordSize) + " bits"},
                {"byteOrder", header.bigEndian ? "big endian" : "little endian"},
                {"begun", header.time},
                {"masked", header.masked}};
    for (const recording::Record& record : recording.records) {
        if (record.kind == recording::Record::Kind::Call) ++calls;
        if (record.kind == recording::Record::Kind::Notification) ++notifications;
        if (record.kind == recording::Record::Kind::End) fields["endedAtItsLimit"] = record.limit;
        end = std::max(end, record.time + record.took);
    }
    fields.update({{"seconds", std::round(static_cast<double>(end) / 1e6) / 1e3},
                   {"calls", calls},
                   {"notifications", notifications}});
    if (recording.tornLine != 0) fields["lineThatIsNotWhole"] = recording.tornLine;
    return fields;
}

/** Times of the replay, or of this process where nothing is replayed, as times of the recording that is told
 * of. */
class Clocks {
  public:
    Clocks(const Recording& told, const Recording& own, bool replay)
        : _map(told, own),
          _replay(replay),
          _ownBegan(report::beginOf(own.header)),
          _toldBegan(report::beginOf(told.header)) {}

    report::WallTime toldBegan() const { return _toldBegan; }
    /** On the clock of the recording. */
    uint64_t toldTime(report::WallTime time) const {
        const auto own = static_cast<uint64_t>(std::max<report::WallTime>(time - _ownBegan, 0));
        return _replay ? _map.recordedTime(own) : own;
    }

  private:
    const report::ClockMap _map;
    const bool _replay;
    const report::WallTime _ownBegan;
    const report::WallTime _toldBegan;
};

/** Masks what the fields of an event tell of accounts. */
Json eventFields(const HostEvent& event, const Secrets& secrets) {
    Json fields = event.fields;
    fields.erase("type");
    fields.erase("class");
    secrets.mask(fields);
    if (fields.contains("userName")) fields["userName"] = secrets.secret(event.fields["userName"]);
    return fields;
}

Json timeline(const Recording& told, const Clocks& clocks, const std::deque<HostEvent>& events,
              const Secrets& secrets) {
    constexpr int kComplete = DCEventDataCacheUpdateComplete::TYPE;
    std::vector<uint64_t> completions;
    std::vector<report::Happening> happenings;
    for (const HostEvent& event : events) {
        const uint64_t time = clocks.toldTime(event.time);
        if (event.fields["type"] == kComplete) {
            completions.push_back(time);
        } else {
            happenings.push_back({report::timeAfter(clocks.toldBegan(), time),
                                  {{"kind", "host event"},
                                   {"class", event.fields["class"]},
                                   {"fields", eventFields(event, secrets)}}});
        }
    }
    const auto names = [](int32_t code) {
        return datacache::cimWord(datacache::CimValue::SwitchEvent, static_cast<uint32_t>(code));
    };
    std::vector<report::Happening> more =
        report::happeningsOf(told, clocks.toldBegan(), report::passesOf(told, completions), names, secrets);
    // A host event comes in a pass that an event of the switch set going.
    more.insert(more.end(), happenings.begin(), happenings.end());
    return report::timelineOf(std::move(more), kMostEntries);
}

/** The end of a file that anybody may have put there: never that of a link. */
std::string tailOf(const char* path) {
    const int file = open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file == -1) return "";
    struct stat there {};
    std::string text;
    if (fstat(file, &there) == 0 && S_ISREG(there.st_mode)) {
        text.resize(static_cast<size_t>(std::min(there.st_size, kMostLogBytes)));
        const ssize_t size =
            pread(file, text.data(), text.size(), std::max<off_t>(there.st_size - kMostLogBytes, 0));
        text.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
    }
    close(file);
    return text;
}

Json logFields(const std::string& text, const Secrets& secrets) {
    Json log{{"file", kLogFile}};
    log.update(report::foldedLog(text, getpid(), kMostLogLines, secrets));
    return log;
}

void replaceAll(std::string& text, const std::string& part, const std::string& by) {
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + by.size()))
        text.replace(at, part.size(), by);
}

/** The keys that the health names, wherever they stand in it. */
void maskKeys(Json& health, const Secrets& secrets) {
    std::map<std::string, std::string> masks;
    const auto mask = [&](Json& one) {
        if (one.is_null()) return;
        const std::string key = one["key"];
        if (key.empty()) return;
        one["key"] = masks[key] = secrets.key(key);
    };
    mask(health["limits"]["failure"]);
    for (Json& area : health["areas"]) {
        mask(area["lastFailure"]);
        mask(area["firstGap"]);
    }
    for (Json& call : health["pendingCalls"]) mask(call);
    const auto replace = [&](Json& value) {
        std::string text = value;
        for (const auto& [key, masked] : masks) replaceAll(text, key, masked);
        value = text;
    };
    for (Json& area : health["areas"]) {
        for (const char* name : {"lastFailure", "firstGap"}) {
            if (!area[name].is_null()) replace(area[name]["text"]);
        }
    }
    for (Json& problem : health["problems"]) replace(problem);
    secrets.mask(health);
}

std::vector<Json> maskedAreas(std::vector<Json> areas, const Secrets& secrets) {
    for (Json& area : areas) {
        if (area["area"] == "health") maskKeys(area, secrets);
        if (area["area"] == "accounts") {
            for (Json& account : area["accounts"]) account["name"] = secrets.secret(account["name"]);
        }
        if (area["area"] == "properties" && area["snmpReadCommunity"].is_string()) {
            area["snmpReadCommunity"] = secrets.secret(area["snmpReadCommunity"]);
        }
    }
    return areas;
}

void learnSecrets(Secrets& secrets, const Witnessed& seen) {
    for (const Json& area : seen.areas) {
        if (area["area"] != "accounts") continue;
        for (const Json& account : area["accounts"]) secrets.learn(account["name"].get<std::string>());
    }
    for (const HostEvent& event : seen.events) {
        if (event.fields.contains("userName")) secrets.learn(event.fields["userName"].get<std::string>());
    }
}

Json fabricFields(const std::optional<Json>& graph) {
    const Json none{{"switches", Json::array()}, {"links", Json::array()}};
    Json fields{
        {"graph", graph.value_or(none)}, {"layout", nullptr}, {"noPicture", "the links were not read"}};
    if (!graph) return fields;
    try {
        fields["layout"] = report::layoutOf(*graph, runDot(report::layoutInput(*graph)));
        fields["noPicture"] = fields["layout"].is_null() ? Json("dot's answer is not understood") : Json();
    } catch (const NoPicture& why) {
        fields["noPicture"] = why.what();
    }
    return fields;
}

Json outcomeOf(const Witnessed& seen) {
    std::vector<std::string> stale;
    for (const Json& area : seen.areas) {
        if (area["area"] != "health" && !area.value("upToDate", true)) stale.push_back(area["area"]);
    }
    const bool good = seen.trouble.empty() && stale.empty();
    std::string text = seen.trouble;
    if (text.empty())
        text = good ? "All that was read is up to date." : "Not up to date: " + listed(stale) + ".";
    return {{"good", good}, {"text", text}};
}

std::string titleOf(const std::vector<Json>& areas) {
    std::string wwn;
    std::string name;
    for (const Json& area : areas) {
        if (area["area"] == "switch") wwn = area["wwn"];
        if (area["area"] == "properties" && area["symbolicName"].is_string()) name = area["symbolicName"];
    }
    if (wwn.empty()) return "A switch that was not read";
    return "Switch " + (name.empty() ? wwn : name + " (" + wwn + ")");
}

/** What a replay could not answer. */
std::vector<std::string> gapsOf(const Recording& told, const Recording& own, const Secrets& secrets) {
    std::set<std::string> unknown = report::keysAsked(own);
    for (const std::string& key : report::keysAsked(told)) unknown.erase(key);
    if (unknown.empty()) return {};
    const std::string first = secrets.key(*unknown.begin());
    return {"Not asked when it was recorded, and so unknown here: " +
            (unknown.size() == 1 ? first : std::to_string(unknown.size()) + " keys, such as " + first) + "."};
}

}  // namespace

std::string logTail() {
    return tailOf((std::string(kLogFile) + ".1").c_str()) + tailOf(kLogFile);
}

Json reportFacts(const HostRequest& request, const Witnessed& seen) {
    const bool replay = !request.replay.empty();
    const Recording own = recording::load(request.recording);
    const Recording told = replay ? recording::load(request.replay) : own;
    Secrets secrets(!request.unmasked);
    secrets.learn(own);
    if (replay) secrets.learn(told);
    learnSecrets(secrets, seen);

    const Clocks clocks(told, own, replay);
    std::vector<std::string> notes = seen.notes;
    for (const std::string& gap : gapsOf(told, own, secrets)) notes.push_back(gap);
    return {{"report", "datacache-host"},
            {"version", 1},
            {"title", titleOf(seen.areas)},
            {"outcome", outcomeOf(seen)},
            {"notes", notes},
            {"made", madeFields(request)},
            {"recording", replay ? recordingFields(told) : Json()},
            {"areas", maskedAreas(seen.areas, secrets)},
            {"fabric", fabricFields(seen.graph)},
            {"timeline", timeline(told, clocks, seen.events, secrets)},
            {"calls", report::callStatistics(told, secrets)},
            {"log", logFields(seen.log, secrets)}};
}

}  // namespace host
