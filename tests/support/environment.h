// Setting and removing an environment variable in tests, on both systems.
#pragma once

#include <string>

#include "platform/process_inputs.h"

namespace tfx::test {

// An empty value removes the variable.
inline void setEnvVar(const char* name, const std::string& value) {
    pf_setEnvironmentText(name, value);
}

// The variables that name the user's local and roaming application data.
#ifdef _WIN32
inline constexpr const char* LOCAL_APP_DATA_VARIABLE = "LOCALAPPDATA";
inline constexpr const char* ROAMING_APP_DATA_VARIABLE = "APPDATA";
#else
inline constexpr const char* LOCAL_APP_DATA_VARIABLE = "XDG_DATA_HOME";
inline constexpr const char* ROAMING_APP_DATA_VARIABLE = "XDG_CONFIG_HOME";
#endif

// Sets a variable for the lifetime of the object, then puts back what was
// there before (Windows always has its folder variables set).
class ScopedEnvVar {
public:
    ScopedEnvVar(const char* name, const std::string& value)
        : name_(name), before_(pf_environmentText(name).value_or("")) {
        setEnvVar(name, value);
    }
    ~ScopedEnvVar() { setEnvVar(name_, before_); }
    ScopedEnvVar(const ScopedEnvVar&) = delete;
    ScopedEnvVar& operator=(const ScopedEnvVar&) = delete;

private:
    const char* name_;
    std::string before_;
};

}  // namespace tfx::test
