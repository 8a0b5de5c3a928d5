#include "host/areas.h"
#include "host/cache_reader.h"

namespace {

bool lastReadGood = false;  // used under the access lock

}  // namespace

void readAccounts() {
    const CacheReader cache;
    lastReadGood = cache->_getAcctInfo();
}

Json accountsArea() {
    const CacheReader cache;
    Json names = Json::array();
    for (const std::string& name : cache->_accounts) names.push_back({{"name", name}});
    return {{"area", "accounts"}, {"upToDate", lastReadGood}, {"accounts", names}};
}
