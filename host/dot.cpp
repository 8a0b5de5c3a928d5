#include "host/dot.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>

namespace host {

namespace {

using DotClock = std::chrono::steady_clock;
constexpr std::chrono::seconds kLongest{10};
constexpr size_t kMostBytes = 16 << 20;

/** A process that is gone when its owner is. */
class Child {
  public:
    explicit Child(pid_t process) : _process(process) {}
    ~Child() {
        if (_process == -1) return;
        kill(_process, SIGKILL);
        static_cast<void>(end());
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /** Waits for its end; whether that was a good one. */
    bool end() {
        int status = 0;
        while (waitpid(_process, &status, 0) == -1 && errno == EINTR) {
        }
        _process = -1;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

  private:
    pid_t _process;
};

/** Starts it without a shell; its input is a file, so that nobody waits for anybody there. */
pid_t start(int input, int output) {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    char name[] = "dot";
    char format[] = "-Tplain";
    char* const arguments[] = {name, format, nullptr};
    pid_t process = -1;
    const int error = posix_spawnp(&process, name, &files, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return error == 0 ? process : -1;
}

/** All that comes until the other end is closed. */
std::string readAll(int output) {
    const DotClock::time_point end = DotClock::now() + kLongest;
    std::string text;
    for (char bytes[65536];;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - DotClock::now()).count();
        pollfd ready{output, POLLIN, 0};
        const int news = poll(&ready, 1, static_cast<int>(std::max<long long>(left, 0)));
        if (news == -1 && errno == EINTR) continue;
        if (news <= 0) throw NoPicture("dot took too long");
        const ssize_t size = read(output, bytes, sizeof bytes);
        if (size == -1 && errno == EINTR) continue;
        if (size <= 0) return text;
        text.append(bytes, static_cast<size_t>(size));
        if (text.size() > kMostBytes) throw NoPicture("dot answered too much");
    }
}

}  // namespace

std::string runDot(const std::string& input) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(), std::fclose);
    int ends[2];
    if (!file || std::fwrite(input.data(), 1, input.size(), file.get()) != input.size() ||
        std::fflush(file.get()) != 0 || pipe2(ends, O_CLOEXEC) != 0) {
        throw NoPicture("dot could not be given its input");
    }
    std::rewind(file.get());
    const pid_t process = start(fileno(file.get()), ends[1]);
    close(ends[1]);
    const std::unique_ptr<const int, void (*)(const int*)> closed(&ends[0],
                                                                  [](const int* end) { close(*end); });
    if (process == -1) throw NoPicture("dot is not installed (Debian's graphviz has it)");
    Child dot(process);
    std::string answer = readAll(ends[0]);
    if (!dot.end()) throw NoPicture("dot failed");
    return answer;
}

}  // namespace host
