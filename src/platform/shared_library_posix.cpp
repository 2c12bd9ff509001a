#include "platform/shared_library.h"

#include <dlfcn.h>

#include <system_error>

namespace tfx {

void* pf_loadLibrary(const std::filesystem::path& file, std::string& why) {
    // Its own symbols first: the library may carry code the program has too.
    void* library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* error = ::dlerror();
        why = error != nullptr ? error : "unknown error";
    }
    return library;
}

void* pf_librarySymbol(void* library, const char* name) {
    return ::dlsym(library, name);
}

std::optional<std::filesystem::path> pf_programFolder() {
    std::error_code ec;
    const auto file = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec || file.empty()) return std::nullopt;
    return file.parent_path();
}

}  // namespace tfx
