// datacache-host: runs the cache from the command line.
#include <dlfcn.h>

#include <iostream>

#include "host/command_line.h"
#include "host/input_error.h"
#include "host/library_loader.h"

int main(int argc, char** argv) {
    try {
        int status = EXIT_DONE;
        const std::optional<CommandLine> line = readCommandLine(argc, argv, status);
        if (!line) {
            if (std::cout.flush()) return status;
            std::cerr << "datacache-host: standard output cannot be written" << std::endl;
            return EXIT_NOT_DONE;
        }
        void* const provider = loadProvider(line->vexlib);
        const auto run = reinterpret_cast<decltype(&hostMain)>(dlsym(loadHostCore(), "hostMain"));
        return run(provider, line->request);
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        return EXIT_WRONG_INPUT;
    }
}
