// Arbitrary bytes as a text file: charset detection, then reading it as that
// charset. Nothing may crash, no line may hold a newline, and lines converted
// from ANSI or UTF-16 must be valid UTF-8. Files that declare UTF-8 are passed
// through as they are (only their first 4096 bytes were checked), so their
// lines may still hold bad bytes; readers downstream must cope with that.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "app/text_files.h"
#include "app/text_utils.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = "/tmp/zept-fuzz-text-" + std::to_string(::getpid()) + ".txt";
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) return 0;
    std::fwrite(data, 1, size, f);
    std::fclose(f);

    const tfx::Charset cs = tfx::gf_detectCharset(path);
    std::vector<std::string> lines;
    if (tfx::gf_readTextLines(cs, path, lines)) {
        for (const auto& line : lines) {
            if (line.find('\n') != std::string::npos) __builtin_trap();
            const bool converted = cs == tfx::Charset::ANSI || cs == tfx::Charset::Unicode ||
                                   cs == tfx::Charset::Unicode_big_endian;
            if (converted) tfx::utf8_to_wide(line);  // throws, and so fails the run, on bad UTF-8
        }
    }
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (tfx::gf_detectCharsetOfBytes(bytes) != cs) __builtin_trap();
    return 0;
}
