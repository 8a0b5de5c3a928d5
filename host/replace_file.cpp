#include "host/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "host/request.h"

namespace host {

namespace {

/** 0, or the error number. */
int writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        text.remove_prefix(static_cast<size_t>(written));
    }
    return 0;
}

}  // namespace

void replaceFile(const std::string& path, const std::string& text) {
    struct stat there {};
    if (stat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode)) {
        throw HostInputError("datacache-host: " + path + " is no file that could be replaced");
    }
    const std::string beside = path + "." + std::to_string(getpid()) + ".new";
    const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    int error = file == -1 ? errno : writeAll(file, text);
    if (file != -1 && close(file) != 0 && error == 0) error = errno;
    if (error == 0 && std::rename(beside.c_str(), path.c_str()) != 0) error = errno;
    if (error == 0) return;
    if (file != -1) unlink(beside.c_str());
    throw HostInputError("datacache-host: " + path + ": " + std::strerror(error));
}

}  // namespace host
