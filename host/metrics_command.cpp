#include <iostream>

#include "datacache/DataCache.h"
#include "datacache/metrics.h"
#include "host/commands.h"
#include "host/replace_file.h"

namespace host {

int metricsCommand(Session& session, const HostRequest& request) {
    session.waitRead(request.timeout);  // what was not read by then is told as such
    if (session.interrupted()) return EXIT_NOT_DONE;
    session.setUndone("writing the metrics");
    const std::string text = datacache::metricsText(DataCache::health());
    session.finish();
    try {
        if (request.output == "-") {
            std::cout << text;
        } else {
            replaceFile(request.output, text, Readers::Everybody);  // who collects them is another user
        }
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        return EXIT_NOT_DONE;
    }
    session.setUndone("");
    return EXIT_DONE;
}

}  // namespace host
