#include "platform/process_inputs.h"

#include "platform/wide_text.h"
#include "platform/windows_headers.h"

// After windows.h, which it needs.
#include <shellapi.h>

namespace tfx {

std::vector<std::string> pf_commandLineWords(int argc, char** argv) {
    int count = 0;
    LPWSTR* wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> words;
    if (wide != nullptr && count > 0) {
        for (int i = 0; i < count; ++i) words.push_back(pf_wideToUtf8(wide[i]));
    } else {
        words.assign(argv, argv + argc);
    }
    ::LocalFree(wide);
    return words;
}

std::optional<std::string> pf_environmentText(const char* name) {
    const std::wstring wideName = pf_utf8ToWide(name);
    std::wstring value(256, L'\0');
    for (;;) {
        const DWORD size = ::GetEnvironmentVariableW(wideName.c_str(), value.data(),
                                                     static_cast<DWORD>(value.size()));
        if (size == 0) return std::nullopt;  // unset or empty
        if (size < value.size()) {
            value.resize(size);
            return pf_wideToUtf8(value);
        }
        value.resize(size);  // too small: size counts the end mark
    }
}

void pf_setEnvironmentText(const char* name, const std::string& value) {
    const std::wstring wideName = pf_utf8ToWide(name);
    const std::wstring wideValue = pf_utf8ToWide(value);
    ::SetEnvironmentVariableW(wideName.c_str(), value.empty() ? nullptr : wideValue.c_str());
}

}  // namespace tfx
