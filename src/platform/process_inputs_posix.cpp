#include "platform/process_inputs.h"

#include <cstdlib>

namespace tfx {

std::vector<std::string> pf_commandLineWords(int argc, char** argv) {
    return std::vector<std::string>(argv, argv + argc);
}

std::optional<std::string> pf_environmentText(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') return std::nullopt;
    return std::string(value);
}

void pf_setEnvironmentText(const char* name, const std::string& value) {
    if (value.empty())
        ::unsetenv(name);
    else
        ::setenv(name, value.c_str(), 1);
}

}  // namespace tfx
