#include "simulator/switch_writer.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <sstream>

#include "simulator/domain_list.h"

namespace vexsim {
namespace {

/** The part of a name that all switches of a scheme share; the domain ID ends it. */
const char* stem(const FabricShape& shape) {
    if (shape.cisco) return "2000000dec0000";
    switch (shape.scheme) {
        case NameScheme::Naa1:
            return "10000011220000";
        case NameScheme::Naa2:
            return "20000011220000";
        case NameScheme::Naa3:
            return "30000000112200";
        case NameScheme::Naa5:
            break;
    }
    return "50011220000000";
}

unsigned localPorts(const FabricShape& shape) {
    return std::clamp(shape.ports, 1U, 128U);
}

}  // namespace

std::string generatedName(const FabricShape& shape, unsigned domain) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%02x", domain & 0xFFU);
    return std::string(stem(shape)) + digits;
}

std::vector<std::string> shortcomings(const FabricShape& shape) {
    std::vector<std::string> sentences;
    std::set<unsigned> domains;
    for (unsigned domain = 1; domain <= shape.switches; ++domain) domains.insert(domain);
    const std::string list = domainList(domains);
    const auto listed = static_cast<unsigned>(std::count(list.begin(), list.end(), ',')) + 1;
    if (listed < shape.switches) {
        sentences.push_back("the switch can list only " + std::to_string(listed) + " of the " +
                            std::to_string(shape.switches) +
                            " switches: a list of domains has room for 255 "
                            "characters");
    }
    if (localPorts(shape) < shape.ports) {
        sentences.push_back("the simulated switch itself has only " + std::to_string(localPorts(shape)) +
                            " of the " + std::to_string(shape.ports) + " ports");
    }
    return sentences;
}

std::string writeSwitchFile(const FabricShape& shape) {
    std::ostringstream file;
    file << "[switch]\nwwn = \"" << generatedName(shape, 1) << "\"\ndomain = 1\nname = \"switch-1\"\n\n"
         << "[ports]\ncount = " << localPorts(shape) << "\n\n"
         << "[fabric]\nprincipal = \"" << generatedName(shape, 1) << "\"\n";
    for (unsigned domain = 2; domain <= shape.switches; ++domain) {
        file << "\n[[fabric.switch]]\ndomain = " << domain << "\nwwn = \"" << generatedName(shape, domain)
             << "\"\nname = \"switch-" << domain << "\"\nports = " << shape.ports << '\n';
    }
    return file.str();
}

}  // namespace vexsim
