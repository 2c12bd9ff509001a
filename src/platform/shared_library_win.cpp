#include "platform/shared_library.h"

#include "platform/windows_headers.h"

#include <string>
#include <vector>

namespace tfx {

namespace {

// The system's text for an error code, in UTF-8, without the line end.
std::string lf_errorText(DWORD code) {
    wchar_t* text = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::string out;
    if (length > 0 && text != nullptr) {
        const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), nullptr,
                                                0, nullptr, nullptr);
        out.resize(static_cast<std::size_t>(bytes > 0 ? bytes : 0));
        if (bytes > 0)
            ::WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), out.data(), bytes,
                                  nullptr, nullptr);
    }
    ::LocalFree(text);
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r' || out.back() == ' '))
        out.pop_back();
    return out + " (error " + std::to_string(code) + ")";
}

}  // namespace

void* pf_loadLibrary(const std::filesystem::path& file, std::string& why) {
    // The libraries it needs in turn are looked for beside it first.
    HMODULE library = ::LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr) why = lf_errorText(::GetLastError());
    return reinterpret_cast<void*>(library);
}

void* pf_librarySymbol(void* library, const char* name) {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

std::optional<std::filesystem::path> pf_programFolder() {
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD length =
            ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0) return std::nullopt;
        if (length < buffer.size())
            return std::filesystem::path(std::wstring(buffer.data(), length)).parent_path();
        buffer.resize(buffer.size() * 2);
    }
}

}  // namespace tfx
