// Loading a shared library at run time by its full path, and the folder of
// the running program, where one is looked for first.
// A library once loaded stays for the life of the process (unloading one that
// runs threads of its own can hang the process on Windows).
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tfx {

// The library's handle; nullptr, with the system's reason in why, when the
// file can't be loaded (absent, not a library, built for another machine, a
// library it needs is missing).
void* pf_loadLibrary(const std::filesystem::path& file, std::string& why);
// The address of an exported function; nullptr when the library has none.
void* pf_librarySymbol(void* library, const char* name);
// The folder of the running program's file.
std::optional<std::filesystem::path> pf_programFolder();

}  // namespace tfx
