#include <cstring>
#include <nlohmann/json.hpp>

#include "recording/Json.h"

namespace recording {

namespace {

constexpr size_t kDeepest = 16;  ///< levels of lists and objects; a record has 5
constexpr size_t kLongest = UINT32_MAX / 8;

/** Writes down the values of a line as the JSON library finds them. */
class Places : public nlohmann::json_sax<nlohmann::json> {
  public:
    Places(std::string& words, std::vector<JsonPlace>& places) : _words(words), _places(places) {}

    bool null() override { return add('n'); }
    bool boolean(bool value) override { return add(value ? 't' : 'f'); }
    bool number_integer(int64_t value) override { return add('0', std::to_string(value)); }
    bool number_unsigned(uint64_t value) override { return add('0', std::to_string(value)); }
    bool number_float(double /*value*/, const std::string& digits) override { return add('0', digits); }
    bool string(std::string& text) override { return add('"', text); }
    bool key(std::string& name) override { return add('"', name); }
    bool binary(nlohmann::json::binary_t& /*bytes*/) override { return false; }
    bool start_object(size_t /*size*/) override { return open('{'); }
    bool start_array(size_t /*size*/) override { return open('['); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

  private:
    bool add(char kind) {
        _places.push_back({static_cast<uint32_t>(_words.size()), static_cast<uint32_t>(_places.size()) + 1});
        _words += kind;
        return true;
    }
    bool add(char kind, const std::string& words) {
        add(kind);
        const auto length = static_cast<uint32_t>(words.size());
        _words.append(reinterpret_cast<const char*>(&length), sizeof length);
        _words += words;
        return true;
    }
    bool open(char kind) {
        if (_open.size() == kDeepest) return false;
        _open.push_back(_places.size());
        return add(kind);
    }
    bool close() {
        _places[_open.back()].next = static_cast<uint32_t>(_places.size());
        _open.pop_back();
        return true;
    }

    std::string& _words;
    std::vector<JsonPlace>& _places;
    std::vector<size_t> _open;  ///< the objects and lists around the next value
};

}  // namespace

size_t Json::size() const {
    size_t count = 0;
    for (auto entry = begin(); entry != end(); ++entry) ++count;
    return count;
}

std::string_view Json::words() const {
    const char* const at = _words + _places[_index].begin + 1;
    uint32_t length = 0;
    std::memcpy(&length, at, sizeof length);
    return {at + sizeof length, length};
}

bool JsonLine::parse(std::string_view text) {
    _words.clear();
    _places.clear();
    if (text.size() > kLongest) return false;
    // The most that a line of this length can take, "[0,0,...", so that nothing is copied while it grows.
    _words.reserve(3 * text.size() + 1);
    _places.reserve(text.size() / 2 + 1);
    Places places(_words, _places);
    return nlohmann::json::sax_parse(text.begin(), text.end(), &places) && root().isObject();
}

}  // namespace recording
