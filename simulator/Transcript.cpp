#include "simulator/Transcript.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace vexsim {

std::string joined(const std::vector<std::string>& keys) {
    std::string text;
    for (const std::string& key : keys) {
        if (&key != &keys.front()) text += ',';
        text += key;
    }
    return text;
}

void Transcript::call(const char* function, const std::vector<std::string>& keys, int64_t result,
                      uint32_t handle) {
    const Lock lock(_mutex);
    if (!_keep && !_file.is_open()) return;
    std::string detail = joined(keys);
    if (_file.is_open()) writeLine(function, detail + " = " + std::to_string(result));
    if (_keep) _calls.push_back({function, std::move(detail), result, handle});
}

void Transcript::note(const std::string& text) {
    const Lock lock(_mutex);
    if (_file.is_open()) writeLine("note", text);
    if (_keep) _calls.push_back({"note", text});
}

void Transcript::remark(const std::string& kind, const std::string& text) {
    const Lock lock(_mutex);
    if (_file.is_open()) writeLine(kind, text);
}

std::vector<Call> Transcript::calls() const {
    const Lock lock(_mutex);
    return _calls;
}

void Transcript::clear() {
    const Lock lock(_mutex);
    _calls.clear();
}

void Transcript::keep(bool on) {
    const Lock lock(_mutex);
    _keep = on;
}

void Transcript::writeTo(const std::string& path) {
    const Lock lock(_mutex);
    const bool lost = _file.is_open() && !_file;
    _file.close();
    _file.clear();
    if (lost) throw std::runtime_error(_path + ": lines of the transcript could not be written");
    _path = path;
    if (path.empty()) return;
    errno = 0;
    _file.open(path, std::ios::app);
    if (!_file) throw std::runtime_error(path + ": cannot be written: " + std::strerror(errno));
    _opened = std::chrono::steady_clock::now();
}

void Transcript::writeLine(const std::string& kind, const std::string& text) {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - _opened;
    char time[32];
    std::snprintf(time, sizeof time, "%10.3f ", elapsed.count());
    _file << time << kind << ' ';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        _file << (byte < 0x20 || byte == 0x7f ? '?' : c);  // texts come from tests of hostile input too
    }
    _file << std::endl;  // flushed: the last line matters most when a program under test dies
}

}  // namespace vexsim
