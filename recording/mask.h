#pragma once

#include <cstddef>
#include <string_view>

namespace recording {

/** Where the secret part of a key begins: behind a word that names accounts, passwords or communities, to
 * its end. npos for a key that has to do with none; the key's size when its value alone is secret. */
size_t secretPart(std::string_view key);

/** Whether the text of such a switch event names an account. */
bool isSecretEvent(int code);

/** What is written instead of a secret: the same for the same text, all through one process. */
class Mask {
  public:
    explicit Mask(std::string_view secret);
    std::string_view text() const { return {_text, _size}; }

  private:
    char _text[24];
    size_t _size;
};

}  // namespace recording
