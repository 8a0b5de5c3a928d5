// datacache-host: runs the cache from the command line.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "host/request.h"
#include "recorder/recorder.h"

namespace host {

namespace {

/** A library of this project as built or installed beside the tool. */
std::string ownLibrary(const char* name) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const char* place : {"../lib", HOST_LIBRARY_FOLDER, "."}) {
        const std::filesystem::path path = folder / place / name;
        if (std::filesystem::exists(path, error)) return path.lexically_normal();
    }
    return name;  // wherever the dynamic linker finds it
}

void* load(const std::string& path, int flags) {
    void* const library = dlopen(path.c_str(), flags);
    if (library == nullptr) throw HostInputError(std::string("datacache-host: ") + dlerror());
    return library;
}

/** The command line, understood. */
struct CommandLine {
    HostRequest request;
    std::string vexlib;  ///< path of the provider; empty for the simulated switch or the replayer
    std::string record;  ///< file to record the calls into
};

/** The path of the shared object that is to provide vexlib. */
std::string providerPath(const CommandLine& line) {
    const bool replay = !line.request.replay.empty();
    if (replay && !(line.vexlib.empty() && line.request.switchFile.empty())) {
        throw HostInputError(
            "datacache-host: a recording takes the place of the switch: --replay goes without "
            "--switch and --vexlib");
    }
    if (!replay && (line.request.strict || line.request.speed)) {
        throw HostInputError("datacache-host: --strict and --speed are for a recording (--replay FILE)");
    }
    if (!line.vexlib.empty()) return line.vexlib;
    return ownLibrary(replay ? "libvexreplay.so" : "libvexsim.so");
}

/** Stands between the library and its provider: what the recorder defines hides the provider's functions. */
void recordCalls(void* provider, const std::string& path) {
    void* const recorder = load(ownLibrary("libvexrecord.so"), RTLD_NOW | RTLD_GLOBAL);
    const auto start = reinterpret_cast<decltype(&vexrecord_start)>(dlsym(recorder, "vexrecord_start"));
    char error[1024] = "this recorder is of another version";
    if (start == nullptr || start(provider, path.c_str(), error, sizeof error) != 0) {
        throw HostInputError(std::string("datacache-host: --record: ") + error);
    }
}

/**
 * Records into a file that has no name once it is open, so that nothing of it is left behind however the
 * process ends. Returns a path by which this process can read it.
 */
std::string recordOwnCalls(void* provider) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    const std::string path = (error ? "/tmp" : folder) / "datacache-host-XXXXXX";
    std::vector<char> name(path.c_str(), path.c_str() + path.size() + 1);
    const int file = mkostemp(name.data(), O_CLOEXEC);
    if (file == -1) throw HostInputError("datacache-host: " + path + ": " + std::strerror(errno));
    const auto removal = [](const char* made) { unlink(made); };
    const std::unique_ptr<const char, decltype(removal)> removed(name.data(), removal);
    recordCalls(provider, name.data());
    return "/proc/self/fd/" + std::to_string(file);
}

/** Loads the shared object that provides vexlib, for all to use. Returns dlopen's handle; throws
 * HostInputError. */
void* loadProvider(CommandLine& line) {
    const std::string chosen = providerPath(line);
    const bool captures = line.request.command == HostRequest::Capture && line.request.replay.empty();
    const bool needsRecording = captures || line.request.command == HostRequest::Report;
    const bool recorded = needsRecording || !line.record.empty();
    void* const provider = load(chosen, RTLD_NOW | (recorded ? RTLD_LOCAL : RTLD_GLOBAL));
    if (dlsym(provider, "vex_IPConnect") == nullptr) {
        throw HostInputError("datacache-host: " + chosen + " does not provide vexlib (no vex_IPConnect)");
    }
    if (!line.record.empty()) {
        recordCalls(provider, line.record);
        line.request.recording = line.record;
    } else if (needsRecording) {
        line.request.recording = recordOwnCalls(provider);
    }
    line.request.provider = chosen;
    return provider;
}

/** Loads the tool's own second half; see hostMain(). */
void* loadHostCore() {
    return load(ownLibrary("datacache-host-core.so"), RTLD_NOW | RTLD_LOCAL);
}

constexpr const char* kFooter = R"(Examples:
  datacache-host run --switch examples/blade-module.toml --scenario examples/blade-module.scenario.toml
  datacache-host run --switch examples/blade-module.toml --for 2 --json
  datacache-host show chassis --switch examples/blade-module.toml
  datacache-host verify --switch examples/blade-module.toml --scenario examples/blade-module.scenario.toml
  datacache-host metrics --switch examples/blade-module.toml --output switch.prom
  datacache-host graph --switch examples/blade-module.toml | dot -Tsvg > fabric.svg
  datacache-host report report.html --switch examples/blade-module.toml
  datacache-host zone --switch examples/blade-module.toml lock "create zone vault" commit
  datacache-host config --switch examples/blade-module.toml edit "set Config.Services.TelnetEnable True" save

  datacache-host run --replay switch.jsonl --speed max
  datacache-host capture field.toml --replay switch.jsonl

On a switch, --vexlib names its management library.

Exit status: 0 done; 1 not everything was up to date or well, something changed in silence, or a statement was not
carried out; 2 wrong usage or input; 3 not what was recorded (--strict); 130 interrupted.
The cache logs to /tmp/cim.out, and what is critical to /tmp/cim.crit.out as well.)";

/** The statements of `zone` and `config` before they are understood. */
struct StatementTexts {
    std::vector<std::string> texts;
    std::string script;
};

std::string isTime(const std::string& text) {
    return secondsIn(text) ? "" : text + " is no number of seconds";
}

std::string isSpeed(const std::string& text) {
    const std::optional<double> speed = text == "max" ? 0 : secondsIn(text);
    return speed && (text == "max" || *speed > 0) ? "" : text + " is no speed (such as 1, 0.5, 10 or max)";
}

bool hasCommand(CLI::App& app, const std::string& name) {
    return !app.get_subcommands([&](CLI::App* command) { return command->get_name() == name; }).empty();
}

void addCommonOptions(CLI::App& command, CommandLine& line) {
    command.add_option("--switch", line.request.switchFile, "Switch file for the simulated switch")
        ->type_name("FILE");
    command
        .add_option("--vexlib", line.vexlib,
                    "Shared object that provides vexlib (default: the simulated switch)")
        ->type_name("PATH");
    command.add_flag("--json", line.request.json, "Print JSON, one object a line");
    command
        .add_option("--transcript", line.request.transcript, "Write the simulated switch's calls to a file")
        ->type_name("FILE");
    command.add_option("--record", line.record, "Record all calls to vexlib into a file")->type_name("FILE");
    command.add_option("--replay", line.request.replay, "Recording that takes the place of the switch")
        ->type_name("FILE");
    command.add_flag("--strict", line.request.strict, "Replay: the recorded calls and no others may be made");
    command
        .add_option_function<std::string>(
            "--speed",
            [&line](const std::string& text) {
                line.request.speed = text == "max" ? 0 : secondsIn(text).value_or(1);
            },
            "Replay: how many times as fast as recorded, or max (default: run 1, others max)")
        ->type_name("X")
        ->check(isSpeed);
}

void addTimeout(CLI::App& command, HostRequest& request) {
    command.add_option("--timeout", request.timeout, "Give up when the cache is not ready by then")
        ->type_name("SECONDS")
        ->check(isTime)
        ->capture_default_str();
}

/** How long the switch is followed. */
void addFollowing(CLI::App& command, HostRequest& request) {
    command
        .add_option("--scenario", request.scenario,
                    "Scenario that the simulated switch plays; its end is the end")
        ->type_name("FILE");
    command
        .add_option("--for", request.seconds,
                    "End after this time (default: at the scenario's end; run without one: on Ctrl-C)")
        ->type_name("SECONDS")
        ->check(isTime);
}

void addRun(CLI::App& app, CommandLine& line) {
    CLI::App& run = *app.add_subcommand("run", "Print events as they come, and the cached state at the end");
    addCommonOptions(run, line);
    addFollowing(run, line.request);
    run.final_callback([&line] { line.request.command = HostRequest::Run; });
}

void addShow(CLI::App& app, CommandLine& line) {
    CLI::App& show = *app.add_subcommand("show", "Print one area of the cache, or all");
    std::vector<std::string> names(std::begin(kAreaNames), std::end(kAreaNames));
    names.emplace_back("all");
    show.add_option("area", line.request.area, "The area")
        ->required()
        ->type_name("AREA")
        ->check(CLI::IsMember(std::move(names)));
    addCommonOptions(show, line);
    addTimeout(show, line.request);
    show.final_callback([&line] { line.request.command = HostRequest::Show; });
}

void addMetrics(CLI::App& app, CommandLine& line) {
    CLI::App& metrics = *app.add_subcommand("metrics", "Write the cache's health as OpenMetrics text");
    metrics.add_option("--output", line.request.output, "The file, - for standard output (the default)")
        ->type_name("FILE.prom");
    addCommonOptions(metrics, line);
    metrics.remove_option(metrics.get_option("--json"));
    addTimeout(metrics, line.request);
    metrics.final_callback([&line] {
        line.request.command = HostRequest::Metrics;
        if (line.request.output.empty()) line.request.output = "-";
    });
}

void addVerify(CLI::App& app, CommandLine& line) {
    constexpr double kSeconds = 60;
    CLI::App& verify = *app.add_subcommand(
        "verify", "Follow the switch for a while, and tell what changed without a switch event");
    addCommonOptions(verify, line);
    for (const char* other : {"--replay", "--strict", "--speed"}) {
        verify.remove_option(verify.get_option(other));  // a recording cannot be read again
    }
    verify
        .add_option("--scenario", line.request.scenario,
                    "Scenario that the simulated switch plays; at its end the switch is read again")
        ->type_name("FILE");
    verify
        .add_option("--for", line.request.seconds,
                    "Read the switch again after this time (default: at the scenario's end, or 60)")
        ->type_name("SECONDS")
        ->check(isTime);
    addTimeout(verify, line.request);
    verify.final_callback([&line, &verify] {
        line.request.command = HostRequest::Verify;
        if (line.request.scenario.empty() && verify.count("--for") == 0) line.request.seconds = kSeconds;
    });
}

void addCapture(CLI::App& app, CommandLine& line) {
    CLI::App& capture =
        *app.add_subcommand("capture", "Write the switch as a switch file for the simulated switch");
    capture.add_option("file", line.request.output, "The switch file, - for standard output")
        ->required()
        ->type_name("FILE");
    capture.add_flag("--mask", line.request.mask, "Replace names, addresses, communities and serial numbers");
    addCommonOptions(capture, line);
    addTimeout(capture, line.request);
    capture.final_callback([&line] {
        line.request.command = HostRequest::Capture;
        const bool plays = line.request.strict || line.request.speed || !line.record.empty() ||
                           !line.request.transcript.empty();
        if (!line.request.replay.empty() && plays) {
            throw HostInputError(
                "datacache-host: a recording is captured without being played: --replay goes without "
                "--strict, "
                "--speed, --record and --transcript");
        }
    });
}

void addGraph(CLI::App& app, CommandLine& line) {
    CLI::App& graph = *app.add_subcommand("graph", "Write the fabric as Graphviz DOT");
    addCommonOptions(graph, line);
    addTimeout(graph, line.request);
    graph.final_callback([&line] { line.request.command = HostRequest::Graph; });
}

void addReport(CLI::App& app, CommandLine& line) {
    CLI::App& report = *app.add_subcommand("report", "Write all that is known as one page for a bug report");
    report.add_option("output", line.request.output, "The page, - for standard output")
        ->required()
        ->type_name("OUT.html");
    addCommonOptions(report, line);
    for (const char* other : {"--json", "--strict"}) report.remove_option(report.get_option(other));
    report.add_option("--json", line.request.factsFile, "Write what the page shows as JSON, too")
        ->type_name("OUT.json");
    report.add_flag("--unmasked", line.request.unmasked, "Show names of accounts, communities and passwords");
    addFollowing(report, line.request);
    addTimeout(report, line.request);
    report.final_callback([&line] { line.request.command = HostRequest::Report; });
}

/** `zone` and `config`: a session of statements. */
void addSession(CLI::App& app, CommandLine& line, StatementTexts& given, HostRequest::Command command,
                const char* name, const char* what, const std::vector<StatementForm>& language) {
    CLI::App& session = *app.add_subcommand(name, what);
    session.add_option("statement", given.texts, "Statements, each one argument")->type_name("STATEMENT");
    session.add_option("--script", given.script, "File with a statement a line, - for standard input")
        ->type_name("FILE");
    session.add_flag("--keep-going", line.request.keepGoing, "Go on after a statement that was not done");
    addCommonOptions(session, line);
    addTimeout(session, line.request);
    session.footer("Statements:\n" + describe(language));
    session.final_callback([&line, &given, &language, command] {
        line.request.command = command;
        if (!given.script.empty()) line.request.statements = parseScript(language, given.script);
        for (const std::string& text : given.texts) {
            line.request.statements.push_back(parseStatement(language, text, "datacache-host"));
        }
        if (line.request.statements.empty()) {
            throw HostInputError("datacache-host: no statement given; see --help");
        }
    });
}

/**
 * Reads the command line. Where there is nothing to run (help, or a mistake, which it has reported) it
 * returns nothing and sets `status`. A mistake in a script throws HostInputError.
 */
std::optional<CommandLine> readCommandLine(int argc, char** argv, int& status) {
    CLI::App app("Runs the switch cache as its host would, on a switch or on a simulated one.",
                 "datacache-host");
    app.set_version_flag("--version", "datacache-host " HOST_VERSION);
    app.set_help_all_flag("--help-all", "Print the help of every command, and exit");
    app.require_subcommand(1);
    CommandLine line;
    StatementTexts given;
    addRun(app, line);
    addShow(app, line);
    addVerify(app, line);
    addMetrics(app, line);
    addGraph(app, line);
    addCapture(app, line);
    addReport(app, line);
    addSession(app, line, given, HostRequest::Zone, "zone", "Edit the fabric's zoning", zoneLanguage());
    addSession(app, line, given, HostRequest::Config, "config", "Edit the switch's configuration",
               configLanguage());
    app.footer(kFooter);  // after the commands, which would print it as well
    if (argc > 1 && argv[1][0] != '-' && !hasCommand(app, argv[1])) {
        throw HostInputError(std::string("datacache-host: no such command: ") + argv[1] +
                             " (run, show, verify, metrics, graph, capture, report, zone or config; see "
                             "--help)");
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? EXIT_DONE : EXIT_WRONG_INPUT;
        return std::nullopt;
    }
    return line;
}

}  // namespace

}  // namespace host

// NOLINTNEXTLINE(bugprone-exception-escape): what gets here is a lack of memory, which may end the program
int main(int argc, char** argv) {
    using namespace host;
    try {
        int status = EXIT_DONE;
        std::optional<CommandLine> line = readCommandLine(argc, argv, status);
        if (!line) {
            if (std::cout.flush()) return status;
            std::cerr << "datacache-host: standard output cannot be written" << std::endl;
            return EXIT_NOT_DONE;
        }
        void* const provider = loadProvider(*line);
        const auto run = reinterpret_cast<decltype(&hostMain)>(dlsym(loadHostCore(), "hostMain"));
        return run(provider, line->request);
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        return EXIT_WRONG_INPUT;
    }
}
