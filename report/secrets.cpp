#include "report/secrets.h"

#include <cctype>

#include "recording/mask.h"

namespace report {

namespace {

constexpr std::string_view kMask = "masked-";
constexpr size_t kShortest = 2;  // of a secret that is looked for in other texts
constexpr size_t kNumeral = 5;   // and of one that is but a number

bool isWordPart(char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_';
}

/** Whether a word may begin or end between these two places. */
bool isBoundary(std::string_view text, size_t place) {
    return place == 0 || place == text.size() || !isWordPart(text[place - 1]) || !isWordPart(text[place]);
}

/** Texts that say nothing of their own would be found everywhere. */
bool isTelling(const std::string& secret) {
    if (secret.find_first_not_of("0123456789") == std::string::npos) return secret.size() >= kNumeral;
    return secret.size() >= kShortest && secret != "True" && secret != "False";
}

std::string textOf(const recording::Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) return *text;
    const auto* const handed = std::get_if<recording::HandedText>(&value);
    return handed == nullptr ? "" : handed->text;
}

/** A value ends at its terminator; what stands behind it is no text. */
std::string ended(const std::string& bytes) {
    return bytes.c_str();
}

}  // namespace

void Secrets::learn(const std::string& secret) {
    if (!isTelling(secret) || secret.compare(0, kMask.size(), kMask) == 0) return;
    _known.insert(secret);
    _lengths.insert(secret.size());
}

void Secrets::learnKey(const std::string& key, const std::string& value) {
    const size_t begin = recording::secretPart(key);
    if (begin == std::string::npos) return;
    learn(key.substr(begin));
    learn(ended(value));
}

void Secrets::learn(const recording::Recording& recording) {
    for (const recording::Record& record : recording.records) {
        if (record.event && recording::isSecretEvent(record.event->code)) learn(ended(record.event->text));
        if (record.kind != recording::Record::Kind::Call) continue;
        for (const std::vector<recording::Value>* values : {&record.given, &record.handedBack}) {
            for (const recording::Value& value : *values) {
                const auto* const entries = std::get_if<recording::SmlEntries>(&value);
                if (entries == nullptr) continue;
                for (const recording::SmlEntry& entry : *entries) learnKey(entry.key, entry.value);
            }
        }
        learnKey(textOf(record.in("key")), textOf(record.back("value")));
    }
}

std::string Secrets::secret(const std::string& text) const {
    const bool shown = !_masked || text.empty() || text.compare(0, kMask.size(), kMask) == 0;
    return shown ? text : std::string(recording::Mask(text).text());
}

std::string Secrets::key(const std::string& key) const {
    const size_t begin = recording::secretPart(key);
    return begin == std::string::npos ? key : key.substr(0, begin) + secret(key.substr(begin));
}

std::string Secrets::text(std::string_view text) const {
    if (!_masked || _known.empty()) return std::string(text);
    const auto lengthAt = [&](size_t place) -> size_t {
        if (!isBoundary(text, place)) return 0;
        for (const size_t length : _lengths) {
            const bool word = place + length <= text.size() && isBoundary(text, place + length);
            if (word && _known.count(std::string(text.substr(place, length))) != 0) return length;
        }
        return 0;
    };
    std::string shown;
    for (size_t place = 0; place < text.size();) {
        const size_t length = lengthAt(place);
        shown += length == 0 ? std::string(1, text[place]) : secret(std::string(text.substr(place, length)));
        place += length == 0 ? 1 : length;
    }
    return shown;
}

std::string Secrets::event(int32_t code, const std::string& bytes) const {
    return recording::isSecretEvent(code) ? secret(ended(bytes)) : text(ended(bytes));
}

void Secrets::mask(Json& value) const {
    if (value.is_string()) value = text(value.get_ref<const std::string&>());
    if (!value.is_structured()) return;
    for (Json& part : value) mask(part);
}

}  // namespace report
