#include "host/areas.h"

Json accountsArea(DataCache& cache) {
    const bool read = cache._getAcctInfo();  // the cache reads accounts only when its host asks
    Json names = Json::array();
    for (const std::string& name : cache._accounts) names.push_back({{"name", name}});
    return {{"area", "accounts"}, {"upToDate", read}, {"accounts", names}};
}
