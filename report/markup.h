#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace report {

/**
 * HTML that is safe by how it is made: of elements whose names stand in this program's source, and of texts
 * and attribute values from anywhere, which are escaped on their way in. There is no other way in.
 */
class Markup {
  public:
    struct Attribute {
        const char* name;
        std::string value;
    };

    Markup() = default;
    /** A text. What is no ordinary letter, digit or sign (control, bidirectional and invisible characters,
     * bytes that are no text) is shown as \uXXXX. */
    explicit Markup(std::string_view text);

    static Markup element(const char* name, std::initializer_list<Attribute> attributes,
                          const Markup& content = {});
    static Markup element(const char* name, const Markup& content) { return element(name, {}, content); }
    static Markup element(const char* name, std::string_view text) { return element(name, {}, Markup(text)); }

    Markup& operator+=(const Markup& more) {
        _html += more._html;
        return *this;
    }
    friend Markup operator+(Markup one, const Markup& other) { return one += other; }

    bool empty() const { return _html.empty(); }
    const std::string& html() const { return _html; }

  private:
    std::string _html;
};

}  // namespace report
