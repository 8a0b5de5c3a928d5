/* datacache-mkswitch: writes a switch file with a fabric of any size. */
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>

#include "simulator/switch_writer.h"

namespace {

constexpr int kWrongUsage = 2;

const std::map<std::string, vexsim::NameScheme> kSchemes{{"naa1", vexsim::NameScheme::Naa1},
                                                         {"naa2", vexsim::NameScheme::Naa2},
                                                         {"naa3", vexsim::NameScheme::Naa3},
                                                         {"naa5", vexsim::NameScheme::Naa5}};

std::string knownScheme(const std::string& name) {
    return kSchemes.count(name) != 0 ? "" : '"' + name + "\" is none of naa1, naa2, naa3 and naa5";
}

bool write(std::ostream& stream, const std::string& text, const std::string& name) {
    stream << text << std::flush;
    if (!stream) std::cerr << "datacache-mkswitch: " << name << " cannot be written\n";
    return bool{stream};
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what gets here is a lack of memory, which may end the program
int main(int argc, char** argv) {
    vexsim::FabricShape shape;
    std::string scheme = "naa1";
    std::string path;
    CLI::App app{"Writes a switch file: one switch in a fabric of generated switches."};
    app.add_option("--switches", shape.switches,
                   "switches of the fabric, the simulated one (domain 1) included")
        ->check(CLI::Range(1, 239))
        ->capture_default_str();
    app.add_option("--ports", shape.ports, "ports of every switch; the simulated one has 1 to 128 of them")
        ->check(CLI::Range(0, 256))
        ->capture_default_str();
    auto* const format =
        app.add_option("--scheme", scheme, "name format of the switches: naa1, naa2, naa3 or naa5")
            ->check(knownScheme)
            ->capture_default_str();
    app.add_flag("--cisco", shape.cisco, "Cisco names, whose port numbers count from 1")->excludes(format);
    app.add_option("-o,--output", path, "file to write (default: standard output)");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return write(std::cout, app.help(), "standard output") ? 0 : 1;
    } catch (const CLI::ParseError& error) {
        app.exit(error);
        return kWrongUsage;
    }
    shape.scheme = kSchemes.at(scheme);

    for (const std::string& sentence : shortcomings(shape)) {
        std::cerr << "datacache-mkswitch: warning: " << sentence << '\n';
    }
    const std::string text = writeSwitchFile(shape);
    if (path.empty()) return write(std::cout, text, "standard output") ? 0 : 1;
    std::ofstream file(path, std::ios::binary);
    return write(file, text, path) ? 0 : 1;
}
