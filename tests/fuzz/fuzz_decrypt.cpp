// Arbitrary bytes as an .enc file: no crash, and a refused file leaves
// nothing under the target name nor its working name. Inputs that start with
// 'S' are laid over a real sealed file, so that damage reaches the blocks.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "../../tools/publish_lib.h"
#include "app/decrypt.h"

namespace fs = std::filesystem;

namespace {

fs::path lf_makeFolder() {
    std::string pattern = (fs::temp_directory_path() / "zept-fuzz-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    return pattern;
}

const fs::path& lf_folder() {
    static const fs::path folder = lf_makeFolder();
    // Registered once the folder exists, so it runs before the folder's destructor.
    static const bool cleanup = (std::atexit([] {
                                     std::error_code ec;
                                     fs::remove_all(lf_folder(), ec);
                                 }),
                                 true);
    (void)cleanup;
    return folder;
}

// A valid two-block file; the fuzzer's first byte chooses whether its bytes
// are taken as they are or laid over this file, so damage lands in sealed data.
const std::string& lf_sealed() {
    static const std::string sealed = tfx::publish::gf_encryptBytes(std::string(6000, 'x'));
    return sealed;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    if (size > 2 && data[0] == 'S') {
        // 'S', an offset byte pair, then bytes to lay over the sealed file there.
        std::string sealed = lf_sealed();
        const std::size_t at = (std::size_t{data[1]} << 8 | data[2]) % (sealed.size() + 1);
        const std::string patch = bytes.substr(3);
        sealed.replace(at, std::min(patch.size(), sealed.size() - at), patch);
        if (size > 3 && data[3] == 'T') sealed.resize(at);  // cut there instead
        bytes = sealed;
    }
    const fs::path input = lf_folder() / "in.enc";
    const fs::path output = lf_folder() / "out.xml";
    std::ofstream(input, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::error_code ec;
    fs::remove(output, ec);

    const bool ok = tfx::gf_streamDecrypt(input, output);
    if (fs::exists(lf_folder() / "out.xml.crypto_tmp")) __builtin_trap();
    if (ok != fs::exists(output)) __builtin_trap();
    // Every block is sealed and the last one carries the final tag: nothing
    // but the publisher's own file decrypts, and then to its own text.
    if (ok) {
        if (bytes != lf_sealed()) __builtin_trap();
        std::ifstream in(output, std::ios::binary);
        const std::string plain((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
        if (plain != std::string(6000, 'x')) __builtin_trap();
    }
    return 0;
}
