#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace capture {

/**
 * Masks: the same text has the same mask, different texts have different ones. They are numbered in the order
 * of appearance, so nothing of a text can be worked out from its mask, and no mask is a text of the original.
 *
 *     Mask mask;
 *     mask.see(everyText);  // before the first mask is given
 *     mask.name("zone", "payroll")  // "zone-1"
 *     mask.text("bay 3 at 10.1.2.3")  // "bay 3 at 192.0.2.1"
 */
class Mask {
  public:
    /** Takes note of what no mask may be. */
    void see(const std::string& original);

    /** The mask of a name; `kind` is its first part. An empty one stays. */
    std::string name(const std::string& kind, const std::string& text);
    /** The mask of a serial number: as long as it is, where that leaves room for the number. */
    std::string serial(const std::string& text);
    /**
     * 16 hexadecimal digits, with colons or without: NAA, company identifier and port number stay, so that a
     * port's name still tells its switch's. Any other text, and the null name, is given back.
     */
    std::string wwn(const std::string& text);
    uint64_t wwn(uint64_t name);

    /** What the words of a text may be, besides world wide names. */
    struct Words {
        bool addresses = true; /**< IPv4, IPv6 and MAC; not so in a version, which looks like one */
        bool names = true;     /**< names that were masked before */
    };
    /** A text with all these masked where they stand as words. */
    std::string text(const std::string& text, Words words);

  private:
    std::string word(const std::string& word, Words words);
    std::string next(const std::string& text, std::string (*make)(const std::string&, unsigned),
                     const std::string& how);

    std::map<std::string, std::string> _masks;
    std::map<std::string, unsigned> _counts; /**< masks given of each kind */
    std::set<std::string> _originals;
    std::map<uint64_t, uint64_t>
        _serials; /**< of world wide names, in decimal digits that read as hexadecimal */
    std::set<uint64_t> _originalSerials;
    uint64_t _lastSerial = 0;
};

}  // namespace capture
