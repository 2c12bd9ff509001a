// What a process is given from outside: its command line and environment,
// as UTF-8. On Windows the C library's argv and getenv hand them over in the
// ANSI code page, which loses every character outside it (a file name in
// Greek on a Western machine), so the Windows half reads the wide forms.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/wide_text.h"

namespace tfx {

// The process's command line words, the program's name first; for main
// only. Windows reads the wide command line and keeps argv for the case that
// it cannot be read.
std::vector<std::string> pf_commandLineWords(int argc, char** argv);

// An environment variable's value; none when it is unset or empty.
std::optional<std::string> pf_environmentText(const char* name);

// A path named by an environment variable; none when it is unset or empty.
inline std::optional<std::filesystem::path> pf_environmentPath(const char* name) {
    const auto text = pf_environmentText(name);
    if (!text) return std::nullopt;
    return pf_pathFromUtf8(*text);
}

// Sets a variable for this process and the programs it starts; an empty
// value removes it.
void pf_setEnvironmentText(const char* name, const std::string& value);

}  // namespace tfx
