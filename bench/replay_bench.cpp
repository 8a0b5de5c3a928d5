// The cost of replaying a recording: time and memory of reading it, of its calls and notifications, and of a
// call that was never recorded.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

#include "replayer/vexreplay.h"
#include "vexlib/vexlib.h"

namespace {

constexpr const char* kFile = "/tmp/replay_bench.jsonl";

/** In processor time. */
double secondsSince(std::clock_t begin) {
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

double residentBytes() {
    double pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/** Writes a recording of so many records, each of which `put` writes. */
template <typename Put>
double write(int records, Put put) {
    std::FILE* const file = std::fopen(kFile, "w");
    if (file == nullptr) std::exit(2);
    std::fprintf(file,
                 "{\"recording\":\"vexlib\",\"version\":1,\"platform\":\"linux-x86\",\"wordSize\":64,"
                 "\"byteOrder\":\"little\",\"time\":\"\",\"process\":1,\"masked\":false}\n");
    std::fprintf(
        file,
        "{\"n\":1,\"thread\":1,\"time\":1,\"took\":1,\"call\":\"vex_enRegisterForEventList\",\"args\":"
        "{\"handle\":1,\"callback\":9,\"context\":0,\"list\":[14],\"count\":1},\"result\":0,\"back\":"
        "{\"list\":[0]}}\n");
    for (int i = 2; i < records + 2; ++i) {
        std::fprintf(file, "{\"n\":%d,\"thread\":%d,\"time\":%lld,\"took\":4000,", i, 1, i * 10000LL);
        put(file, i);
    }
    std::fclose(file);
    return static_cast<double>(std::filesystem::file_size(kFile));
}

void putBatch(std::FILE* file, int i) {
    static const char* const kKeys[] = {"OperState",       "AdminState",  "Type",
                                        "DDM.Supported",   "SFPData0_31", "SFPData32_63",
                                        "SFPSerialNumber", "HWType"};
    std::fprintf(file, "\"call\":\"vex_smlGetBatch\",\"args\":{\"handle\":1,\"records\":[");
    for (const char* key : kKeys)
        std::fprintf(file, "%s\"Oper.UserPort.0.%d.%s\"", key == kKeys[0] ? "" : ",", i % 128, key);
    std::fprintf(file, "],\"count\":8},\"result\":0,\"back\":{\"records\":[");
    for (int key = 0; key < 8; ++key) std::fprintf(file, "%s[0,\"value %d\"]", key == 0 ? "" : ",", i % 7);
    std::fprintf(file, "]}}\n");
}

void putZoning(std::FILE* file, int i) {
    std::fprintf(
        file, "\"call\":\"vex_ZonesetListZones\",\"args\":{\"zoneset\":94558,\"index\":%d},\"result\":%d}\n",
        i, 94558 + 8 * i);
}

void putNotification(std::FILE* file, int i) {
    std::fprintf(
        file,
        "\"event\":{\"code\":14,\"source\":[0,0,%d],\"text\":\"Port %d Online, set Online\"},\"context\":0,"
        "\"user\":0,\"waited\":0}\n",
        i % 128, i % 128);
}

int delivered = 0;

template <typename Put>
void measure(const char* name, int records, Put put) {
    const double bytes = write(records, put);
    const double before = residentBytes();
    const auto begin = std::clock();
    char error[200] = "";
    if (vexreplay_open(kFile, VEXREPLAY_LENIENT, 0, error, sizeof error) != 0) {
        std::printf("%s\n", error);
        return;
    }
    const double seconds = secondsSince(begin);
    std::printf("%-14s %8d records %6.1f MB  read at %4.0f MB/s  memory %.2f of the file", name, records,
                bytes / 1e6, bytes / 1e6 / seconds, (residentBytes() - before) / bytes);
    std::fflush(stdout);
    vexreplay_mute();
    vex_eventreg_s list{14, 0};
    const auto count = [](void*, vex_event_s*, void*) { ++delivered; };
    vex_enRegisterForEventList(1, count, nullptr, &list, 1);
    delivered = 0;
    const auto notified = std::clock();
    while (vexreplay_next(nullptr) == VEXREPLAY_NOTIFICATION) vexreplay_deliver();
    if (delivered > 0)
        std::printf("  %.1f us a notification (%d)", secondsSince(notified) * 1e6 / delivered, delivered);
    constexpr int kCalls = 2000;
    const auto asked = std::clock();
    for (int i = 0; i < kCalls; ++i) {
        vex_smlrequest_s key{"Oper.UserPort.0.1.OperState", "", 0};
        vex_smlGetBatch(2, &key, 1);
    }
    std::printf("  %.1f us a call beyond the recorded\n", secondsSince(asked) * 1e6 / kCalls);
}

}  // namespace

/** One a process, so that memory is not that of the one before: replay_bench batches|zoning|notifications
 * COUNT */
int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::string what = argv[1];
    const int count = std::atoi(argv[2]);
    if (what == "batches") measure("batches", count, putBatch);
    if (what == "zoning") measure("zoning", count, putZoning);
    if (what == "notifications") measure("notifications", count, putNotification);
    std::remove(kFile);
}
