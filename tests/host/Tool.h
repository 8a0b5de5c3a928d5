#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

/** A program of this project that runs as a process of its own, under the emulator where there is one. */
class Tool {
  public:
    /** Starts it; `path` is that of the program. Its output can go to a file instead. */
    Tool(const std::string& path, const std::vector<std::string>& arguments,
         const char* outputFile = nullptr);
    /** Kills it if it has not ended. */
    ~Tool();

    /** The next line of standard output without its line end; false at its end. */
    bool readLine(std::string& line);
    void signal(int number) const;

    /** Reads standard output to its end and waits; returns the exit status, or -1 for an end by a signal. */
    int finish();

    std::vector<std::string> output;  ///< lines of standard output read so far
    std::string errors;               ///< standard error, after finish()

  private:
    using File = std::unique_ptr<FILE, int (*)(FILE*)>;
    File _output{nullptr, std::fclose};
    File _errors{nullptr, std::fclose};
    pid_t _process = -1;
};

/** Writes a file that is the running test's own; returns its path. */
std::string writeFile(const std::string& name, const std::string& text);
std::string contents(const std::string& path);
