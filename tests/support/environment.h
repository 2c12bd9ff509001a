// Setting and removing an environment variable in tests, on both systems.
#pragma once

#include <cstdlib>
#include <string>

namespace tfx::test {

// An empty value removes the variable.
inline void setEnvVar(const char* name, const std::string& value) {
#ifdef _WIN32
    ::_putenv_s(name, value.c_str());
#else
    if (value.empty())
        ::unsetenv(name);
    else
        ::setenv(name, value.c_str(), 1);
#endif
}

}  // namespace tfx::test
