// Opening a C stream by path. Windows paths are wide, and the narrow
// fopen would read them in the ANSI code page and miss any other character.
#pragma once

#include <cstdio>
#include <filesystem>

namespace tfx {

// std::fopen with a path; nullptr on failure.
std::FILE* pf_openFile(const std::filesystem::path& path, const char* mode);

}  // namespace tfx
