#pragma once

#include <string>
#include <vector>

namespace vexsim {

/** How the switches of a generated fabric are named. */
enum class NameScheme {
    Naa1, /**< IEEE 48-bit names; ports have NAA 2 */
    Naa2, /**< IEEE extended names; so do the ports */
    Naa3, /**< locally assigned names; so do the ports */
    Naa5, /**< IEEE registered names; ports have NAA 3 */
};

/** A fabric to generate. Domain 1 is the simulated switch itself and the principal. */
struct FabricShape {
    unsigned switches = 2; /**< the simulated one included, 1 to 239 */
    unsigned ports = 16;   /**< of every other switch, 0 to 256; of the simulated one 1 to 128 */
    NameScheme scheme = NameScheme::Naa1;
    bool cisco = false; /**< Cisco names, with port numbers from 1; the scheme is then Naa2 */
};

/** The name of the switch with this domain ID, as 16 hexadecimal digits. */
std::string generatedName(const FabricShape& shape, unsigned domain);

/** The text of a switch file. */
std::string writeSwitchFile(const FabricShape& shape);

/** What the switch of that file cannot be or tell although it was asked for, a sentence each. */
std::vector<std::string> shortcomings(const FabricShape& shape);

}  // namespace vexsim
