#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <thread>

#include "host/areas.h"
#include "host/commands.h"
#include "host/follow.h"
#include "host/replace_file.h"
#include "host/report_facts.h"
#include "report/page.h"

namespace host {

namespace {

constexpr size_t kMostHeld = 20000;           ///< events of the cache
constexpr double kSecondsAfterInterrupt = 2;  ///< for reading what is there

std::string secondsText(double seconds) {
    std::string text = std::to_string(seconds);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text + " s";
}

/** Where a pass is that does not come to its end. */
std::string runningPass() {
    const datacache::PassHealth passes = DataCache::health().passes();
    if (!passes.running) return "";
    const std::chrono::duration<double> since = std::chrono::system_clock::now() - passes.runningSince;
    return "; a pass has been running for " + std::to_string(static_cast<long>(since.count())) + " s" +
           (passes.inArea ? std::string(", now reading the area ") + cacheAreaName(passes.area) : "");
}

/** Waits until the switch is read, and follows it as long as the user wants. Says what went wrong in `seen`,
 * and returns the status so far. */
int watch(Session& session, const HostRequest& request, Witnessed& seen) {
    if (!session.waitRead(request.timeout)) {
        seen.trouble = session.interrupted() ? "Interrupted before the switch was read"
                       : session.started()
                           ? "The switch was still being read after " + secondsText(request.timeout)
                           : "The switch was not reached in " + secondsText(request.timeout);
        seen.trouble += runningPass() + ".";
        return EXIT_NOT_DONE;
    }
    const bool replay = session.replay().available();
    if (!replay && request.scenario.empty() && request.seconds <= 0) return EXIT_DONE;
    try {
        // A recording is played as fast as the cache takes it, which is not for ever.
        const Session::Clock::time_point begin = Session::Clock::now();
        const std::chrono::duration<double> most(request.timeout);
        bool late = false;
        Readiness readiness;
        follow(session, request, readiness, [&] {
            session.wait();
            late = replay && !request.speed && Session::Clock::now() - begin > most;
            return !late;
        });
        if (late) {
            seen.notes.push_back("The recording was not played to its end in " +
                                 secondsText(request.timeout) +
                                 ": the switch is shown as it was before. Wait longer with --timeout.");
        }
        if (session.interrupted())
            seen.notes.push_back("Interrupted: left undone was " + remaining(request) + ".");
        return late ? EXIT_NOT_DONE : EXIT_DONE;
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        seen.notes.push_back(std::string("The scenario ended early: ") + error.what());
        return EXIT_WRONG_INPUT;
    }
}

/** What is read of the switch, piece by piece, as any piece may wait for ever for it. */
class Reading {
  public:
    /** Reads on a thread of its own, which is left behind where it does not come back in time. */
    static std::shared_ptr<Reading> start() {
        auto reading = std::make_shared<Reading>();
        std::thread([reading] { reading->read(); }).detach();
        return reading;
    }

    /** Whether all was read, within so many seconds. */
    bool wait(double seconds) {
        std::unique_lock<std::mutex> guard(_mutex);
        return _done.wait_for(guard, std::chrono::duration<double>(seconds),
                              [this] { return _graph.has_value(); });
    }

    void moveTo(Witnessed& seen) {
        const std::lock_guard<std::mutex> guard(_mutex);
        seen.areas = std::move(_areas);
        seen.graph = std::move(_graph);
    }

  private:
    void read() {
        keep(readAreas("cached"));
        readAccounts();
        for (const char* name : {"accounts", "properties", "lsdb"}) keep(readAreas(name));
        Json graph = fabricGraph();
        const std::lock_guard<std::mutex> guard(_mutex);
        _graph = std::move(graph);
        _done.notify_one();
    }

    /** The accounts that the cache has are not what the switch has now. */
    void keep(std::vector<Json> areas) {
        const std::lock_guard<std::mutex> guard(_mutex);
        const bool all = areas.size() > 1;
        for (Json& area : areas) {
            if (!all || area["area"] != "accounts") _areas.push_back(std::move(area));
        }
    }

    std::mutex _mutex;
    std::condition_variable _done;
    std::vector<Json> _areas;
    std::optional<Json> _graph;
};

/** The areas that a complete report has and this one lacks. */
std::vector<std::string> missingAreas(const std::vector<Json>& areas) {
    std::vector<std::string> names;
    for (const char* name : kAreaNames) {
        const auto named = [&](const Json& area) { return area["area"] == name; };
        if (std::none_of(areas.begin(), areas.end(), named)) names.emplace_back(name);
    }
    return names;
}

void readSwitch(Session& session, double seconds, Witnessed& seen) {
    if (seen.trouble.empty()) {
        const std::shared_ptr<Reading> reading = Reading::start();
        const bool whole = reading->wait(seconds);
        reading->moveTo(seen);
        seen.areas.push_back(healthArea());
        if (!whole) {
            const std::vector<std::string> missing = missingAreas(seen.areas);
            seen.trouble = "Not all could be read in " + secondsText(seconds) +
                           (missing.empty() ? "" : "; missing: " + listed(missing)) + runningPass() + ".";
            std::cerr << "datacache-host: " << seen.trouble << std::endl;
        }
    } else {
        seen.areas = {healthArea()};
    }
    session.wait();  // for the events of accounts that came and went
}

std::string nonce() {
    constexpr char kDigits[] = "0123456789abcdef";
    std::random_device random;
    std::string text;
    for (int i = 0; i < 32; ++i) text += kDigits[random() % 16];
    return text;
}

std::string sizeText(const std::string& text) {
    return std::to_string((text.size() + 1023) / 1024) + " KiB";
}

void write(const HostRequest& request, const Json& facts) {
    const std::string json = jsonLine(facts);
    // Made of the file's own text, so that the page says nothing that the file does not.
    const std::string html = report::page(Json::parse(json), nonce());
    std::string said;
    if (request.output == "-") {
        std::cout << html << std::flush;
    } else {
        replaceFile(request.output, html);
        said = request.output + " (" + sizeText(html) + ")";
    }
    if (!request.factsFile.empty()) {
        replaceFile(request.factsFile, json + '\n');
        said += (said.empty() ? "" : " and ") + request.factsFile + " (" + sizeText(json) + ")";
    }
    if (!said.empty()) (request.output == "-" ? std::cerr : std::cout) << "written: " << said << std::endl;
}

}  // namespace

int reportCommand(Session& session, const HostRequest& request) {
    Witnessed seen;
    session.observe([&](const HostEvent& event) {
        seen.events.push_back(event);
        if (seen.events.size() > kMostHeld) seen.events.pop_front();
    });
    if (session.replay().available()) session.replay().mute();  // the page reports them
    int status = watch(session, request, seen);
    if (session.interrupted()) session.finish();
    session.setUndone("writing the report");
    seen.log = logTail();
    readSwitch(session, session.interrupted() ? kSecondsAfterInterrupt : request.timeout, seen);
    session.finish();
    try {
        const Json facts = reportFacts(request, seen);
        if (status == EXIT_DONE && facts["outcome"]["good"] != true) status = EXIT_NOT_DONE;
        write(request, facts);
        session.setUndone("");
    } catch (const std::runtime_error& error) {  // a recording or a file that is out of order
        std::cerr << error.what() << std::endl;
        return EXIT_NOT_DONE;
    }
    return status;
}

}  // namespace host
