#include "tests/host/Tool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <system_error>

Tool::Tool(const std::string& path, const std::vector<std::string>& arguments, const char* outputFile) {
    std::istringstream emulator(EMULATOR);
    std::vector<std::string> words;
    for (std::string word; emulator >> word;) words.push_back(word);
    words.push_back(path);
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category());
    _output.reset(fdopen(ends[0], "r"));
    _errors.reset(std::tmpfile());
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(_errors.get()), STDERR_FILENO);
    if (outputFile != nullptr) {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile, O_WRONLY, 0);
    }
    const int result = posix_spawnp(&_process, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (result != 0) throw std::system_error(result, std::generic_category(), argv[0]);
}

Tool::~Tool() {
    if (_process == -1) return;
    kill(_process, SIGKILL);
    waitpid(_process, nullptr, 0);
}

bool Tool::readLine(std::string& line) {
    char* text = nullptr;
    size_t capacity = 0;
    ssize_t length = getline(&text, &capacity, _output.get());
    if (length > 0 && text[length - 1] == '\n') --length;
    if (length >= 0) output.push_back(line.assign(text, static_cast<size_t>(length)));
    free(text);
    return length >= 0;
}

void Tool::signal(int number) const {
    kill(_process, number);
}

int Tool::finish() {
    for (std::string line; readLine(line);) {
    }
    int status = 0;
    waitpid(_process, &status, 0);
    _process = -1;
    std::rewind(_errors.get());
    char text[4096];
    while (const size_t length = std::fread(text, 1, sizeof text, _errors.get())) errors.append(text, length);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string writeFile(const std::string& name, const std::string& text) {
    const std::string test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    const std::string path = SCRATCH "/" + test + '-' + name;  // tests run side by side
    std::ofstream(path) << text;
    return path;
}

std::string contents(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}
