#include <algorithm>

#include "simulator/areas/Area.h"
#include "simulator/areas/keys.h"

namespace vexsim {
namespace {

/** The accounts, and where a walk through them stands. A name may be listed twice. */
struct Accounts {
    std::vector<std::string> users;
    size_t last = 0; /**< the account that a walk gave last */

    std::vector<std::string>::iterator find(const std::string& name) {
        const auto found = std::find(users.begin(), users.end(), name);
        if (found == users.end()) throw StepError("the switch has no account \"" + name + '"');
        return found;
    }
};

Reading entry(Accounts& accounts, size_t index) {
    if (index >= accounts.users.size()) return {EndOfList, {}};
    accounts.last = index;
    return {Ok, accounts.users[index]};
}

/** The one after `name`: of a name that is listed twice, the place where the walk stands decides. */
Reading entryAfter(Accounts& accounts, const std::string& name) {
    if (accounts.last < accounts.users.size() && accounts.users[accounts.last] == name) {
        return entry(accounts, accounts.last + 1);
    }
    const auto found = std::find(accounts.users.begin(), accounts.users.end(), name);
    if (found == accounts.users.end()) return {UnknownKey, {}};
    return entry(accounts, static_cast<size_t>(found - accounts.users.begin()) + 1);
}

std::optional<Reading> readWalk(Switch& target, const std::string& key) {
    if (key == "Oper.Switch.FirstPotentialUser") return entry(target.part<Accounts>(), 0);
    if (const auto name = keyTail(key, "Oper.Switch.NextPotentialUser.")) {
        return entryAfter(target.part<Accounts>(), *name);
    }
    return std::nullopt;
}

/** What happens to the list; the notification names the account. */
template <typename Change>
Action accountStep(const std::string& name, Change change) {
    return [name, change](Switch& target) {
        change(target.part<Accounts>());
        target.raise(VEX_EVENT_USER_ACL_CHANGE, name);
    };
}

Action readAccountAdd(TableReader& table) {
    const std::string name = table.text("name");
    return accountStep(name, [name](Accounts& accounts) { accounts.users.push_back(name); });
}

Action readAccountRemove(TableReader& table) {
    const std::string name = table.text("name");
    return accountStep(name, [name](Accounts& accounts) { accounts.users.erase(accounts.find(name)); });
}

Action readAccountRename(TableReader& table) {
    const std::string from = table.text("from");
    const std::string to = table.text("to");
    return accountStep(to, [from, to](Accounts& accounts) { *accounts.find(from) = to; });
}

}  // namespace

Area accountsArea() {
    Area made;
    made.name = "accounts";
    made.sections = {{"accounts", false, [](TableReader& table, Switch& target) {
                          target.part<Accounts>().users = table.texts("users");
                      }}};
    made.steps = {{"account_add", readAccountAdd},
                  {"account_remove", readAccountRemove},
                  {"account_rename", readAccountRename}};
    made.read = readWalk;
    return made;
}

}  // namespace vexsim
