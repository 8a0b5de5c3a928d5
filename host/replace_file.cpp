#include "host/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "host/request.h"

namespace host {

namespace {

/** Writes it all and closes the file; 0, or the error number. */
int writeAndClose(int file, std::string_view text) {
    if (file == -1) return errno;
    int error = 0;
    while (!text.empty() && error == 0) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written >= 0) text.remove_prefix(static_cast<size_t>(written));
        if (written < 0 && errno != EINTR) error = errno;
    }
    if (close(file) != 0 && error == 0) error = errno;
    return error;
}

}  // namespace

void replaceFile(const std::string& path, const std::string& text, Readers readers) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::file_type kind = fs::status(path, ignored).type();
    int error = 0;
    if (kind == fs::file_type::regular || kind == fs::file_type::not_found) {
        const std::string target = fs::weakly_canonical(path, ignored);  // what a link leads to
        std::string beside = target + ".XXXXXX";
        const int file = mkostemp(beside.data(), O_CLOEXEC);
        constexpr mode_t kReadable = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
        if (readers == Readers::Everybody && file != -1 && fchmod(file, kReadable) != 0) error = errno;
        const int failed = writeAndClose(file, text);
        if (error == 0) error = failed;
        if (error == 0 && std::rename(beside.c_str(), target.c_str()) != 0) error = errno;
        if (error != 0 && file != -1) unlink(beside.c_str());
    } else {  // a device or a pipe has no other in its place
        error = writeAndClose(open(path.c_str(), O_WRONLY | O_CLOEXEC), text);
    }
    if (error == 0) return;
    throw HostInputError("datacache-host: " + path + " cannot be written: " + std::strerror(error));
}

}  // namespace host
