#pragma once

#include <map>
#include <string>
#include <vector>

namespace vexsim {

/** What walks through the link state database and the name server find beside the fabric's own keys. */
struct TopologyWalk {
    struct Link {
        std::string local_port;
        std::string neighbor;
    };

    std::vector<std::string> records;               /**< walked where the fabric has no list of its own */
    std::map<std::string, std::vector<Link>> links; /**< by record; a record without an entry has no links */
    std::map<std::string, std::vector<std::string>> devices; /**< name-server entries, by port */
};

}  // namespace vexsim
