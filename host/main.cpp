// datacache-host: runs the cache from the command line.
#include <dlfcn.h>

#include <CLI/CLI.hpp>
#include <iostream>

#include "host/input_error.h"
#include "host/library_loader.h"
#include "host/request.h"

namespace {

constexpr const char* footer = R"(Examples:
  datacache-host run --switch examples/blade-module.toml --scenario examples/blade-module.scenario.toml
  datacache-host run --switch examples/blade-module.toml --for 60 --json
  datacache-host run --vexlib /usr/lib/libvexlib.so
  datacache-host show chassis --switch examples/blade-module.toml

Exit status: 0 done; 1 the cache never became ready; 2 wrong usage or input.
The cache logs to /tmp/cim.out, and what is critical to /tmp/cim.crit.out as well.)";

void addCommonOptions(CLI::App& command, HostRequest& request, std::string& vexlib) {
    command.add_option("--switch", request.switchFile, "Switch file for the simulated switch")
        ->type_name("FILE");
    command
        .add_option("--vexlib", vexlib, "Shared object that provides vexlib (default: the simulated switch)")
        ->type_name("PATH");
    command.add_flag("--json", request.json, "Print JSON, one object a line");
    command.add_option("--transcript", request.transcript, "Write the simulated switch's calls to a file")
        ->type_name("FILE");
}

void addTimeout(CLI::App& command, HostRequest& request) {
    command.add_option("--timeout", request.timeout, "Give up when the cache is not ready by then")
        ->type_name("SECONDS")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
}

void addRun(CLI::App& app, HostRequest& request, std::string& vexlib) {
    CLI::App& run = *app.add_subcommand("run", "Print events as they come, and the cached state at the end");
    addCommonOptions(run, request, vexlib);
    run.add_option("--scenario", request.scenario,
                   "Scenario that the simulated switch plays; its end is the end")
        ->type_name("FILE");
    run.add_option("--for", request.seconds,
                   "End after this time (default: at the scenario's end, or on Ctrl-C)")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber);
    run.final_callback([&request] { request.command = HostRequest::Run; });
}

void addShow(CLI::App& app, HostRequest& request, std::string& vexlib) {
    CLI::App& show = *app.add_subcommand("show", "Print one area of the cache, or all");
    std::vector<std::string> names(std::begin(areaNames), std::end(areaNames));
    names.emplace_back("all");
    show.add_option("area", request.area, "The area")
        ->required()
        ->type_name("AREA")
        ->check(CLI::IsMember(std::move(names)));
    addCommonOptions(show, request, vexlib);
    addTimeout(show, request);
    show.final_callback([&request] { request.command = HostRequest::Show; });
}

int runTool(int argc, char** argv) {
    CLI::App app("Runs the switch cache as its host would, on a switch or on a simulated one.",
                 "datacache-host");
    app.set_version_flag("--version", "datacache-host " HOST_VERSION);
    app.set_help_all_flag("--help-all", "Print the help of every command, and exit");
    app.require_subcommand(1);
    app.footer(footer);
    HostRequest request;
    std::string vexlib;
    addRun(app, request, vexlib);
    addShow(app, request, vexlib);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_DONE : EXIT_WRONG_INPUT;
    }
    void* const provider = loadProvider(vexlib);
    const auto run = reinterpret_cast<decltype(&hostMain)>(dlsym(loadHostCore(), "hostMain"));
    return run(provider, request);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return runTool(argc, argv);
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        return EXIT_WRONG_INPUT;
    }
}
