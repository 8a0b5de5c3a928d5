#include "host/library_loader.h"

#include <dlfcn.h>

#include <filesystem>

#include "host/input_error.h"

namespace {

/** A library of this project as built or installed beside the tool. */
std::string ownLibrary(const char* name) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const char* place : {"../lib", HOST_LIBRARY_FOLDER, "."}) {
        const std::filesystem::path path = folder / place / name;
        if (std::filesystem::exists(path, error)) return path.lexically_normal();
    }
    return name;  // wherever the dynamic linker finds it
}

void* load(const std::string& path, int flags) {
    void* const library = dlopen(path.c_str(), flags);
    if (library == nullptr) throw HostInputError(std::string("datacache-host: ") + dlerror());
    return library;
}

}  // namespace

void* loadProvider(const std::string& path) {
    const std::string chosen = path.empty() ? ownLibrary("libvexsim.so") : path;
    void* const provider = load(chosen, RTLD_NOW | RTLD_GLOBAL);
    if (dlsym(provider, "vex_IPConnect") == nullptr) {
        throw HostInputError("datacache-host: " + chosen + " does not provide vexlib (no vex_IPConnect)");
    }
    return provider;
}

void* loadHostCore() {
    return load(ownLibrary("datacache-host-core.so"), RTLD_NOW | RTLD_LOCAL);
}
