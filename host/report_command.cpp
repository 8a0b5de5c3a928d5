#include <chrono>
#include <future>
#include <iostream>
#include <memory>
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
    const datacache::PassHealth passes = DataCache::health().passes;
    if (!passes.running) return "";
    const std::chrono::duration<double> since = std::chrono::system_clock::now() - passes.runningSince;
    return "; a pass has been running for " + std::to_string(static_cast<long>(since.count())) + " s" +
           (passes.inArea ? std::string(", now reading the area ") + cacheAreaName(passes.area) : "");
}

/** Waits until the switch is read, and follows it as long as the user wants. Says what went wrong in `seen`,
 * and returns the status so far. */
int watch(Session& session, const HostRequest& request, Witnessed& seen) {
    if (!session.waitRead(request.timeout)) {
        seen.trouble = (session.started() ? "The switch was still being read after "
                                          : "The switch was not reached in ") +
                       secondsText(request.timeout) + runningPass() + ".";
        return EXIT_NOT_DONE;
    }
    if (session.replay().available()) {
        if (session.replay().rests()) return EXIT_DONE;
        seen.notes.push_back("The recording was not played to its end in " + secondsText(request.timeout) +
                             ": what is shown of the switch is from before. Wait longer with --timeout.");
        return EXIT_NOT_DONE;
    }
    if (request.scenario.empty() && request.seconds <= 0) return EXIT_DONE;
    try {
        Readiness readiness;
        follow(session, request, readiness, [&] {
            session.wait();
            return true;
        });
        if (session.interrupted())
            seen.notes.push_back("Interrupted: left undone was " + remaining(request) + ".");
        return EXIT_DONE;
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        seen.notes.push_back(std::string("The scenario ended early: ") + error.what());
        return EXIT_WRONG_INPUT;
    }
}

/** What is read with the cache locked, or from the switch itself. */
struct Reading {
    std::vector<Json> areas;
    Json graph;
};

/** Reads all areas on a thread of its own, as the switch may let it wait for ever; null when it has not come
 * back. */
std::unique_ptr<Reading> readAll(double seconds) {
    auto promise = std::make_shared<std::promise<Reading>>();
    std::future<Reading> reading = promise->get_future();
    std::thread([promise] {
        try {
            readAccounts();
            std::vector<Json> areas = readAreas("all");
            promise->set_value({std::move(areas), fabricGraph()});
        } catch (...) {
            promise->set_exception(std::current_exception());
        }
    }).detach();
    if (reading.wait_for(std::chrono::duration<double>(seconds)) != std::future_status::ready) return nullptr;
    return std::make_unique<Reading>(reading.get());
}

void readSwitch(Session& session, double seconds, Witnessed& seen) {
    const std::unique_ptr<Reading> reading = seen.trouble.empty() ? readAll(seconds) : nullptr;
    session.wait();  // for the events of accounts that came and went
    if (reading) {
        seen.areas = reading->areas;
        seen.graph = reading->graph;
        return;
    }
    if (seen.trouble.empty()) {
        seen.trouble = "The cache could not be read in " + secondsText(seconds) + runningPass() + ".";
        std::cerr << "datacache-host: " << seen.trouble << std::endl;
    }
    seen.areas = {healthArea()};
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
    int status = watch(session, request, seen);
    if (session.interrupted() && !session.started()) return EXIT_NOT_DONE;
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
