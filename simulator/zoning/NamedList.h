#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vexsim {

/** Items in the order in which they were added, each under a name of its own; found by either in constant
 * time. */
template <class Item>
class NamedList {
  public:
    size_t size() const { return _items.size(); }
    bool has(const std::string& name) const { return _index.count(name) != 0; }
    auto begin() const { return _items.begin(); }
    auto end() const { return _items.end(); }
    auto begin() { return _items.begin(); }
    auto end() { return _items.end(); }

    const Item* at(int64_t index) const {
        if (index < 0 || static_cast<uint64_t>(index) >= _items.size()) return nullptr;
        return &_items[static_cast<size_t>(index)].second;
    }
    Item* find(const std::string& name) {
        const auto found = _index.find(name);
        return found == _index.end() ? nullptr : &_items[found->second].second;
    }
    const Item* find(const std::string& name) const { return const_cast<NamedList*>(this)->find(name); }

    /** False for a name that is taken. */
    bool add(const std::string& name, Item item) {
        if (!_index.emplace(name, _items.size()).second) return false;
        _items.emplace_back(name, std::move(item));
        return true;
    }
    bool remove(const std::string& name) {
        const auto found = _index.find(name);
        if (found == _index.end()) return false;
        const size_t place = found->second;
        _index.erase(found);
        _items.erase(_items.begin() + static_cast<std::ptrdiff_t>(place));
        for (size_t i = place; i < _items.size(); ++i) _index[_items[i].first] = i;
        return true;
    }
    /** Keeps the item's place. False for a name that is taken or that there is not. */
    bool rename(const std::string& name, const std::string& wanted) {
        const auto found = _index.find(name);
        if (found == _index.end() || has(wanted)) return false;
        const size_t place = found->second;
        _index.erase(found);
        _index.emplace(wanted, place);
        _items[place].first = wanted;
        return true;
    }

  private:
    std::vector<std::pair<std::string, Item>> _items;
    std::unordered_map<std::string, size_t> _index;
};

}  // namespace vexsim
