#include "capture/capture.h"

#include <iostream>

#include "host/areas.h"
#include "host/commands.h"
#include "host/replace_file.h"

namespace host {

namespace {

Json summaryOf(const std::string& path, const capture::SwitchFile& file) {
    return {{"file", path},      {"ports", file.ports},   {"switches", file.switches}, {"zones", file.zones},
            {"keys", file.keys}, {"faults", file.faults}, {"remarks", file.remarks}};
}

/** Writes the switch file and says what it holds. Returns the exit status. */
int writeCapture(const HostRequest& request, const recording::Recording& recording) {
    const capture::SwitchFile file = capture::switchFile(recording, request.mask);
    const bool toOutput = request.output == "-";
    try {
        if (toOutput)
            std::cout << file.text;
        else
            replaceFile(request.output, file.text);
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        return EXIT_NOT_DONE;
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
    return EXIT_DONE;
}

recording::Recording loadRecording(const std::string& path) {
    try {
        recording::Recording recording = recording::load(path);
        for (const std::string& remark : recording.remarks) std::cerr << remark << std::endl;
        return recording;
    } catch (const recording::RecordingError& error) {
        throw HostInputError(error.what());
    }
}

}  // namespace

int captureRecording(const HostRequest& request) {
    return writeCapture(request, loadRecording(request.replay));
}

int captureCommand(Session& session, const HostRequest& request) {
    if (!session.waitRead(request.timeout)) return EXIT_NOT_DONE;
    session.setUndone("capturing the switch");
    warnOfCapacity();
    readAccounts();
    readAreas("all");  // the members of all zones among them
    const std::vector<std::string> stale = Session::state().stale;
    session.finish();
    int status = EXIT_NOT_DONE;
    try {
        status = writeCapture(request, loadRecording(request.recording));
    } catch (const HostInputError& error) {  // the process's own recording
        std::cerr << error.what() << std::endl;
    }
    session.setUndone("");
    for (const std::string& area : stale) reportStale(area);
    return stale.empty() ? status : EXIT_NOT_DONE;
}

}  // namespace host
