/* datacache-mkswitch: writes a switch file with a fabric of any size. */
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>

#include "simulator/switch_writer.h"

// NOLINTNEXTLINE(bugprone-exception-escape): what gets here is a lack of memory, which may end the program
int main(int argc, char** argv) {
    vexsim::FabricShape shape;
    std::string path;
    CLI::App app{"Writes a switch file: one switch in a fabric of generated switches."};
    app.add_option("--switches", shape.switches,
                   "switches of the fabric, the simulated one (domain 1) included")
        ->check(CLI::Range(1, 239))
        ->capture_default_str();
    app.add_option("--ports", shape.ports, "ports of every switch; the simulated one has 1 to 128 of them")
        ->check(CLI::Range(0, 256))
        ->capture_default_str();
    const std::map<std::string, vexsim::NameScheme> schemes{{"naa1", vexsim::NameScheme::Naa1},
                                                            {"naa2", vexsim::NameScheme::Naa2},
                                                            {"naa3", vexsim::NameScheme::Naa3},
                                                            {"naa5", vexsim::NameScheme::Naa5}};
    auto* const scheme =
        app.add_option("--scheme", shape.scheme, "name format of the switches: naa1, naa2, naa3 or naa5")
            ->transform(CLI::CheckedTransformer(schemes));
    app.add_flag("--cisco", shape.cisco, "Cisco names, whose port numbers count from 1")->excludes(scheme);
    app.add_option("-o,--output", path, "file to write (default: standard output)");
    CLI11_PARSE(app, argc, argv);

    const std::string text = writeSwitchFile(shape);
    if (path.empty()) {
        std::cout << text << std::flush;
        return std::cout ? 0 : 1;
    }
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (file) return 0;
    std::cerr << path << ": cannot be written\n";
    return 1;
}
