// Arbitrary bytes as a text file: charset detection, then reading it as that
// charset. Nothing may crash, and every line that comes out must be UTF-8.
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
            tfx::utf8_to_wide(line);  // throws (and so aborts the run) on bad UTF-8
        }
    }
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (tfx::gf_detectCharsetOfBytes(bytes) != cs) __builtin_trap();
    return 0;
}
