#include "simulator/Transcript.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace vexsim {

void Transcript::add(Call call) {
    const Lock lock(_mutex);
    if (_file.is_open()) {
        const bool note = call.function == "note";
        writeLine(call.function, note ? call.detail : call.detail + " = " + std::to_string(call.result));
    }
    if (_keep) _calls.push_back(std::move(call));
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
    _file.close();
    _file.clear();
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
