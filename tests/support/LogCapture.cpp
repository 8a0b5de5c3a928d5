#include "tests/support/LogCapture.h"

#include <unistd.h>

#include <filesystem>
#include <mutex>
#include <utility>

#include "common/log_hooks.h"
#include "tests/support/Allocations.h"

using namespace datacache;

namespace {

std::mutex linesMutex;
std::vector<std::string> lines;

void captureLine(void*, unsigned int level, const char* line, size_t length, size_t message) {
    const Allocations::Pause own;
    std::string text(line + message, length - message);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    const std::lock_guard<std::mutex> guard(linesMutex);
    lines.push_back(std::to_string(level) + ' ' + text);
}

/** The process's own log files, removed at its end. */
struct OwnLog {
    OwnLog() {
        folder = std::filesystem::temp_directory_path() / ("datacache-test-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder);
        main = folder / "cim.out";
        critical = folder / "cim.crit.out";
        redirectLog(main.c_str(), critical.c_str());
    }
    ~OwnLog() {
        redirectLog(nullptr, nullptr);
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::filesystem::path folder, main, critical;
};

}  // namespace

LogCapture::LogCapture() {
    static const OwnLog own;
    observeLog(captureLine, nullptr);
    take();
}

LogCapture::~LogCapture() {
    observeLog(nullptr, nullptr);
}

std::vector<std::string> LogCapture::take() {
    const std::lock_guard<std::mutex> guard(linesMutex);
    return std::exchange(lines, {});
}
