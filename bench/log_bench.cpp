/**
 * What a log line costs over the bare write(2) of the same bytes to a file of the same size. Both write to
 * the folder for temporary files; the bare file is emptied every 1000 lines, as often as the log is
 * rotated.
 */
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "common/cim_log.h"
#include "common/log_hooks.h"

using namespace datacache;

namespace {

/** A line as loaders write them, with its arguments. */
constexpr const char* kKey = "Oper.PowerSupply.2.Status";

class Folder {
  public:
    Folder() : path_((std::filesystem::temp_directory_path() / "datacache_bench_XXXXXX").string()) {
        if (mkdtemp(path_.data()) == nullptr) std::abort();
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string file(const char* name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

std::string one_line;

void bare_write(benchmark::State& state) {
    const Folder folder;
    const int file = open(folder.file("bare").c_str(), O_RDWR | O_CREAT | O_APPEND, 0666);
    int lines = 0;
    for (auto _ : state) {
        if (++lines % 1000 == 0 && ftruncate(file, 0) != 0) state.SkipWithError("ftruncate");
        if (write(file, one_line.data(), one_line.size()) < 0) state.SkipWithError("write");
    }
    close(file);
}

void log_line(benchmark::State& state, unsigned int level) {
    static Folder* folder = nullptr;
    static std::string main_path;
    static std::string critical_path;
    if (state.thread_index() == 0) {
        folder = new Folder;
        main_path = folder->file("main");
        critical_path = folder->file("critical");
        redirectLog(main_path.c_str(), critical_path.c_str());
    }
    for (auto _ : state) cim_log(level, "DCACHE: %s:%s:%d\n", "_getChassisInfo", kKey, 2);
    if (state.thread_index() == 0) {
        redirectLog(nullptr, nullptr);
        delete folder;
    }
}

void discarded_line(benchmark::State& state) {
    for (auto _ : state) cim_log(16, "DCACHE: %s:%s:%d\n", "_getChassisInfo", kKey, 2);
}

/** The line that log_line() writes, taken from the log itself. */
[[maybe_unused]] const bool line_taken = [] {
    redirectLog(nullptr, nullptr);
    observeLog([](void*, unsigned int, const char* line, std::size_t length,
                  std::size_t) { one_line.assign(line, length); },
               nullptr);
    cim_log(CIM_LOG_TRACE, "DCACHE: %s:%s:%d\n", "_getChassisInfo", kKey, 2);
    observeLog(nullptr, nullptr);
    return true;
}();

BENCHMARK(bare_write);
BENCHMARK_CAPTURE(log_line, trace, CIM_LOG_TRACE);
BENCHMARK_CAPTURE(log_line, critical, CIM_LOG_CRITICAL);
BENCHMARK_CAPTURE(log_line, trace, CIM_LOG_TRACE)->Threads(2)->UseRealTime();
BENCHMARK(discarded_line);

}  // namespace
