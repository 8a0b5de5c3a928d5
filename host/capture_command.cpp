#include "capture/capture.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

#include "host/areas.h"
#include "host/commands.h"

namespace host {

namespace {

[[noreturn]] void failToWrite(const std::string& path) {
    throw HostInputError("datacache-host: " + path + " cannot be written: " + std::strerror(errno));
}

/** Puts a text into a file: whole or not at all, in place of one that is there. */
void replaceFile(const std::string& path, const std::string& text) {
    std::string made = path + ".XXXXXX";
    const int descriptor = mkstemp(made.data());
    if (descriptor == -1) failToWrite(path);
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fdopen(descriptor, "w"), std::fclose);
    const bool good = file && std::fwrite(text.data(), 1, text.size(), file.get()) == text.size() &&
                      std::fflush(file.get()) == 0 && std::rename(made.c_str(), path.c_str()) == 0;
    if (good) return;
    const int reason = errno;
    unlink(made.c_str());
    errno = reason;
    failToWrite(path);
}

Json summaryOf(const std::string& path, const capture::SwitchFile& file) {
    return {{"file", path},      {"ports", file.ports},   {"switches", file.switches}, {"zones", file.zones},
            {"keys", file.keys}, {"faults", file.faults}, {"remarks", file.remarks}};
}

/** Writes the switch file and says what it holds. */
void writeCapture(const HostRequest& request, const recording::Recording& recording) {
    const capture::SwitchFile file = capture::switchFile(recording, request.mask);
    const bool toOutput = request.output == "-";
    if (toOutput) {
        std::cout << file.text;
    } else {
        replaceFile(request.output, file.text);
    }
    for (const std::string& remark : file.remarks)
        std::cerr << "datacache-host: not captured: " << plainText(remark) << '\n';
    std::ostream& told = toOutput ? std::cerr : std::cout;
    if (request.json) {
        told << jsonLine(summaryOf(request.output, file)) << '\n';
    } else {
        told << (toOutput ? "captured" : request.output) << ": ports " << file.ports << ", switches "
             << file.switches << ", zones " << file.zones << ", keys under [sml] " << file.keys << ", faults "
             << file.faults << '\n';
    }
    told << std::flush;
}

recording::Recording loadRecording(const std::string& path) {
    try {
        recording::Recording recording = recording::load(path);
        if (recording.tornLine != 0) {
            std::cerr << path << ':' << recording.tornLine << ": the last line is not whole and was skipped"
                      << std::endl;
        }
        return recording;
    } catch (const recording::RecordingError& error) {
        throw HostInputError(error.what());
    }
}

}  // namespace

int captureRecording(const HostRequest& request) {
    writeCapture(request, loadRecording(request.replay));
    return EXIT_DONE;
}

int captureCommand(Session& session, const HostRequest& request) {
    if (!session.waitRead(request.timeout)) return EXIT_NOT_DONE;
    session.setUndone("capturing the switch");
    warnOfCapacity();
    readAccounts();
    readAreas("all");  // the members of all zones among them
    const std::vector<std::string> stale = Session::state().stale;
    session.finish();
    writeCapture(request, loadRecording(request.recording));
    session.setUndone("");
    for (const std::string& area : stale) reportStale(area);
    return stale.empty() ? EXIT_DONE : EXIT_NOT_DONE;
}

}  // namespace host
