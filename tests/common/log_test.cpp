#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "common/cim_log.h"
#include "common/log_hooks.h"
#include "common/log_prefix.h"

using namespace datacache;

namespace fs = std::filesystem;
using namespace testing;

/** Writes as little at a time as a full file system or a pipe may take. */
static bool shortWrites = false;
extern "C" ssize_t write(int file, const void* data, size_t size) {
    return syscall(SYS_write, file, data, shortWrites ? std::min<size_t>(size, 700) : size);
}

namespace {

std::vector<std::string> lines(const std::string& path) {
    std::vector<std::string> found;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) found.push_back(line);
    return found;
}

/** Without the prefix: what follows date, time and numbers. */
std::vector<std::string> messages(const std::string& path) {
    std::vector<std::string> found = lines(path);
    for (std::string& line : found) line.erase(0, line.find(' ', line.find(' ', line.find(' ') + 1) + 1) + 1);
    return found;
}

std::string local_second() {
    char text[32];
    timeval now{};  // not std::time(), whose clock turns a little later than this one
    gettimeofday(&now, nullptr);
    std::strftime(text, sizeof text, "%m/%d %H:%M:%S", std::localtime(&now.tv_sec));
    return text;
}

std::string numbers() {
    return std::to_string(getpid()) + "/" + std::to_string(syscall(SYS_gettid));
}

/** This process's first descriptor that is open on a file of that name; 256 when none is. */
int descriptor_of(const std::string& path) {
    int file = 0;
    std::error_code error;
    while (file < 256 && fs::read_symlink("/proc/self/fd/" + std::to_string(file), error) != path) ++file;
    return file;
}

/** Runs `work` in a forked child; true when it ends by itself within two minutes. */
template <class Work>
bool child_ends(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(120);
        work();
        _exit(0);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class CimLog : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "datacache_log_XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        main = folder + "/cim.out";
        critical = folder + "/cim.crit.out";
        redirectLog(main.c_str(), critical.c_str());
    }
    void TearDown() override {
        redirectLog(nullptr, nullptr);  // closes the files
        observeLog(nullptr, nullptr);
        fs::remove_all(folder);
    }
    std::string generation(int number) const { return main + "." + std::to_string(number); }

    std::string folder, main, critical;
};

}  // namespace

TEST_F(CimLog, LevelsChooseTheFiles) {
    for (const std::string& path : {main, critical}) std::ofstream(path) << "left from another process\n";
    const mode_t previous = umask(077);
    for (const unsigned int level : {0U, 1U, 2U, 4U, 6U, 8U, 15U, 16U, 20U, 0xfffffff0U, 0xfffffff4U})
        cim_log(level, "%u\n", level);
    EXPECT_EQ(umask(previous), 077U);
    DataCacheLogger("%s%c", "host 100%n", '\n');
    EXPECT_THAT(messages(main), ElementsAre("1", "2", "4", "6", "8", "15", "20", "4294967284", "host 100%n"));
    EXPECT_THAT(messages(critical), ElementsAre("4", "6", "15", "20", "4294967284"));
    EXPECT_EQ(lines(critical)[0], lines(main)[2]);
    for (const std::string& path : {main, critical}) {
        const int file = descriptor_of(path);
        EXPECT_EQ(fcntl(file, F_GETFD), FD_CLOEXEC) << path;
        EXPECT_NE(fcntl(file, F_GETFL) & O_APPEND, 0) << path;
        fs::remove(path);
        redirectLog(main.c_str(), critical.c_str());
        umask(077);
        cim_log(CIM_LOG_CRITICAL, "x\n");
        umask(previous);
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0666)) << path;
    }
}

TEST_F(CimLog, LineCarriesLocalTimeAndTheNumbersOfItsThread) {
    std::string before;
    do {
        before = local_second();
        redirectLog(main.c_str(), critical.c_str());
        cim_log(CIM_LOG_TRACE, "DCACHE: x\n");
    } while (before != local_second());
    EXPECT_THAT(lines(main), ElementsAre(MatchesRegex(before + "\\.[0-9]{3} " + numbers() + " DCACHE: x")));

    const auto name_numbers = [] { cim_log(CIM_LOG_TRACE, "%s\n", numbers().c_str()); };
    std::thread(name_numbers).join();
    EXPECT_TRUE(child_ends(name_numbers));
    for (const std::size_t other : {1U, 2U}) {
        const std::string own = messages(main).at(other);
        EXPECT_NE(own, numbers());
        EXPECT_THAT(lines(main).at(other), EndsWith(" " + own + " " + own));
    }
}

TEST(LogPrefix, FollowsClockAndTimeZone) {
    LogSecond second;
    setenv("TZ", "UTC0", 1);
    for (const auto& [time, text] : std::vector<std::pair<std::time_t, const char*>>{
             {0, "01/01 00:00:00"}, {61, "01/01 00:01:01"}, {60, "01/01 00:01:00"}, {60, "01/01 00:01:00"}})
        EXPECT_EQ(second.text(time), text);
    setenv("TZ", "EAST-2", 1);
    EXPECT_EQ(second.text(61), "01/01 02:01:01");
    unsetenv("TZ");
}

TEST_F(CimLog, RotatesAtTheLineAfterAThousand) {
    for (int line = 1; line <= 1000; ++line)
        cim_log(line == 500 ? CIM_LOG_CRITICAL : CIM_LOG_TRACE, "%d\n", line);
    EXPECT_EQ(lines(main).size(), 1000U);
    EXPECT_THAT(messages(critical), ElementsAre("500"));

    cim_log(CIM_LOG_CRITICAL, "1001\n");  // written to the critical file before that is emptied
    EXPECT_THAT(messages(main), ElementsAre("1001"));
    EXPECT_THAT(lines(critical), IsEmpty());

    // The line that rotated was not counted, so each later file takes 1001.
    for (int line = 1002; line <= 6006; ++line) cim_log(CIM_LOG_TRACE, "%d\n", line);
    for (int number = 1; number <= 5; ++number) {
        const std::vector<std::string> kept = messages(generation(number));
        ASSERT_EQ(kept.size(), 1001U) << number;
        EXPECT_EQ(kept.front(), std::to_string(6006 - 1001 * number)) << number;
    }
    EXPECT_FALSE(fs::exists(generation(6)));
}

TEST_F(CimLog, AThreadThatIsCancelledWritesItsLineWholeAndThenEnds) {
    const mode_t previous = umask(077);
    for (const int linesBefore : {0, 999}) {  // its line opens the files, or rotates them
        for (int line = 0; line < linesBefore; ++line) cim_log(CIM_LOG_TRACE, "before\n");
        const auto body = [](void*) -> void* {
            pthread_cancel(pthread_self());
            cim_log(CIM_LOG_TRACE, "whole\n");
            pthread_testcancel();
            return nullptr;
        };
        pthread_t thread{};
        ASSERT_EQ(pthread_create(&thread, nullptr, body, nullptr), 0);
        void* end = nullptr;
        pthread_join(thread, &end);
        EXPECT_EQ(end, PTHREAD_CANCELED) << "after the line it can be";
        EXPECT_EQ(umask(077), 077U);
        EXPECT_THAT(messages(main), ElementsAre("whole"));
        EXPECT_EQ(fs::exists(generation(1)), linesBefore != 0);
    }
    umask(previous);
}

TEST_F(CimLog, CutsLinesAt2055BytesAndShowsThemToTheObserver) {
    using Seen = std::tuple<std::string, std::size_t, unsigned>;
    Seen seen;
    const auto& [shown, start, severity] = seen;
    observeLog(
        [](void* context, unsigned int level, const char* line, std::size_t length, std::size_t message) {
            *static_cast<Seen*>(context) = {{line, length}, message, level};
        },
        &seen);
    const std::string text = std::string(5000, 'a') + '\n';
    cim_log(CIM_LOG_CRITICAL, "%s", text.c_str());
    EXPECT_EQ(severity, 4U);
    for (const std::size_t length : {2055 - start, 2056 - start}) {
        redirectLog(main.c_str(), critical.c_str());
        shortWrites = true;
        cim_log(CIM_LOG_CRITICAL, "%s", text.substr(text.size() - length).c_str());
        shortWrites = false;
        std::string written;
        std::ifstream file(main);
        std::getline(file, written, '\0');
        EXPECT_EQ(written, shown);
        EXPECT_EQ(fs::file_size(critical), 2055U);
        EXPECT_EQ(shown.substr(start), text.substr(text.size() - length, 2055 - start));
    }
}

TEST_F(CimLog, KeepsTryingAPathItMustNotOrCannotOpen) {
    const std::string victim = folder + "/victim";
    std::ofstream(victim) << "precious\n";
    for (const auto& [blocked, other] : {std::pair(main, critical), std::pair(critical, main)}) {
        // The main file at the next line, the critical file alone at the next rotation.
        const int linesUntilTried = blocked == main ? 1 : 1000;
        for (const bool link : {true, false}) {
            redirectLog(main.c_str(), critical.c_str());
            fs::remove(blocked);
            link ? fs::create_symlink(victim, blocked) : void(fs::create_directory(blocked));
            errno = EXDEV;
            cim_log(CIM_LOG_CRITICAL, "first\n");
            EXPECT_EQ(errno, EXDEV);
            fs::remove(blocked);
            for (int line = 1; line < linesUntilTried; ++line) cim_log(CIM_LOG_CRITICAL, "lost\n");
            EXPECT_FALSE(fs::exists(blocked));
            cim_log(CIM_LOG_CRITICAL, "next\n");
            cim_log(CIM_LOG_CRITICAL, "last\n");
            for (const std::string& path : {blocked, other}) EXPECT_EQ(messages(path).back(), "last");
        }
    }
    EXPECT_THAT(lines(victim), ElementsAre("precious"));
}

TEST_F(CimLog, LosesLinesThatCannotBeWrittenWithoutWaiting) {
    ASSERT_EQ(mkfifo(main.c_str(), 0666), 0);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{60, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    errno = EXDEV;
    alarm(60);  // a FIFO that nobody reads is full after less than these lines
    for (int line = 0; line < 999; ++line) cim_log(CIM_LOG_CRITICAL, "%0200d\n", line);
    alarm(0);
    EXPECT_EQ(errno, EXDEV);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(fs::file_size(critical), 60U);
}

TEST_F(CimLog, ThreadsLoseNoLineAndKeepTheirOrderWhileChildrenAreForked) {
    constexpr int kThreads = 4, kLines = 1400;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([thread] {
            for (int line = 0; line < kLines; ++line) cim_log(CIM_LOG_TRACE, "%d %d end\n", thread, line);
        });
    for (std::thread& thread : threads) thread.join();

    int next[kThreads] = {};
    for (int number = 5; number >= 0; --number) {
        for (const std::string& message : messages(number == 0 ? main : generation(number))) {
            const auto thread = static_cast<std::size_t>(message.at(0) - '0');
            ASSERT_LT(thread, std::size(next)) << message;
            ASSERT_EQ(message, std::to_string(thread) + " " + std::to_string(next[thread]++) + " end");
        }
    }
    EXPECT_THAT(next, testing::Each(kLines));

    std::atomic<bool> stop{false};
    std::thread logging([&] {
        while (!stop) cim_log(CIM_LOG_TRACE, "parent\n");
    });
    int ended = 0;
    while (ended < 50 && child_ends([] { cim_log(CIM_LOG_TRACE, "child\n"); })) ++ended;
    stop = true;
    logging.join();
    EXPECT_EQ(ended, 50);
}
