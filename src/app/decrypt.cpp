#include "app/decrypt.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <fmt/format.h>
#include <sodium.h>

#include "app/data_key.h"
#include "app/log.h"
#include "platform/file_replace.h"
#include "platform/process_id.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

constexpr std::string_view WHO = "gf_streamDecrypt";
constexpr std::size_t HEADER_BYTES = crypto_secretstream_xchacha20poly1305_HEADERBYTES;
constexpr std::size_t BLOCK_OVERHEAD = crypto_secretstream_xchacha20poly1305_ABYTES;

std::atomic<std::uint64_t> temporaryCounter{0};

// Same file on disk; for names that don't exist yet, the same place by name.
bool lf_sameFile(const fs::path& a, const fs::path& b) {
    std::error_code ec;
    if (fs::exists(a, ec) && fs::exists(b, ec)) return fs::equivalent(a, b, ec) && !ec;
    const fs::path ca = fs::weakly_canonical(a, ec);
    if (ec) return a.lexically_normal() == b.lexically_normal();
    const fs::path cb = fs::weakly_canonical(b, ec);
    if (ec) return a.lexically_normal() == b.lexically_normal();
    return ca == cb;
}

void lf_ensureSodium() {
    static const bool ready = sodium_init() >= 0;
    if (!ready) throw std::runtime_error("libsodium could not be initialised");
}

[[noreturn]] void lf_fail(std::string_view text, const fs::path& path) {
    throw std::runtime_error(fmt::format(fmt::runtime(text), path.string()));
}

// Writes the plain text of input to output. Throws on every fault; the caller
// removes output then.
void lf_decryptFile(const fs::path& input, const fs::path& output) {
    if (lf_sameFile(input, output))
        throw std::runtime_error("Decryption input and output refer to the same file");
    lf_ensureSodium();

    std::ifstream in(input, std::ios::binary);
    if (!in) lf_fail("Could not open input file: {}", input);
    std::ofstream out(output, std::ios::binary | std::ios::trunc);
    if (!out) lf_fail("Could not open output file: {}", output);

    unsigned char header[HEADER_BYTES];
    in.read(reinterpret_cast<char*>(header), HEADER_BYTES);
    if (static_cast<std::size_t>(in.gcount()) < HEADER_BYTES)
        lf_fail("Encrypted file has an incomplete header: {}", input);

    crypto_secretstream_xchacha20poly1305_state state;
    if (crypto_secretstream_xchacha20poly1305_init_pull(&state, header, DATA_FILE_KEY.data()) != 0)
        lf_fail("Invalid encryption header or key: {}", input);

    // Both buffers on the heap: memory stays flat whatever the file's size.
    std::vector<unsigned char> cipher(DATA_FILE_CIPHER_BLOCK);
    std::vector<unsigned char> plain(DATA_FILE_PLAIN_BLOCK);
    for (;;) {
        in.read(reinterpret_cast<char*>(cipher.data()),
                static_cast<std::streamsize>(cipher.size()));
        if (in.bad()) lf_fail("Error while reading encrypted file: {}", input);
        const auto got = static_cast<std::size_t>(in.gcount());
        if (got == 0) lf_fail("Encrypted file ended without a final block: {}", input);
        if (got < BLOCK_OVERHEAD) lf_fail("Encrypted file contains an incomplete block: {}", input);

        unsigned long long plainBytes = 0;
        unsigned char tag = 0;
        if (crypto_secretstream_xchacha20poly1305_pull(&state, plain.data(), &plainBytes, &tag,
                                                       cipher.data(), got, nullptr, 0) != 0)
            lf_fail("Decryption failed for: {}", input);
        out.write(reinterpret_cast<const char*>(plain.data()),
                  static_cast<std::streamsize>(plainBytes));
        if (!out) lf_fail("Could not write decrypted data to: {}", output);
        if (tag == crypto_secretstream_xchacha20poly1305_TAG_FINAL) break;
    }

    // Every block may be authentic and still something may stand behind the
    // final one: such a file is not what the publisher wrote.
    const auto next = in.peek();
    if (in.bad()) lf_fail("Error while checking the end of encrypted file: {}", input);
    if (next != std::char_traits<char>::eof())
        lf_fail("Encrypted file contains data after the final block: {}", input);

    out.flush();
    out.close();
    if (out.fail()) lf_fail("Could not finalize decrypted file: {}", output);
}

void lf_removeQuietly(const fs::path& path) {
    std::error_code ec;
    fs::remove(path, ec);
}

}  // namespace

bool gf_streamDecrypt(const fs::path& input, const fs::path& output) {
    if (input.empty()) {
        gf_logError(fmt::format("{} input file is empty", WHO));
        return false;
    }
    std::error_code ec;
    const fs::file_status status = fs::status(input, ec);
    if (ec && ec != std::errc::no_such_file_or_directory) {
        gf_logError(fmt::format("{} could not check input file '{}': {}", WHO, input.string(),
                                ec.message()));
        return false;
    }
    if (!fs::exists(status)) {
        gf_logError(fmt::format("{} input file does not exist: '{}'", WHO, input.string()));
        return false;
    }

    fs::path target = output;
    if (target.empty()) target = fs::path(input).replace_extension(".xml");
    if (lf_sameFile(input, target)) {
        gf_logError(
            fmt::format("{} input and output refer to the same file: '{}'", WHO, input.string()));
        return false;
    }
    fs::path working = target;
    working += ".crypto_tmp";
    if (lf_sameFile(input, working)) {
        gf_logError(
            fmt::format("{} temporary output refers to the input file: '{}'", WHO, input.string()));
        return false;
    }
    if (!fs::remove(working, ec) && ec) {
        gf_logError(fmt::format("{} could not remove stale temporary file '{}': {}", WHO,
                                working.string(), ec.message()));
        return false;
    }

    try {
        lf_decryptFile(input, working);
    } catch (const std::exception& e) {
        gf_logError(fmt::format("{} exception: {}", WHO, e.what()));
        lf_removeQuietly(working);
        return false;
    }

    if (!pf_replaceFile(working, target, ec)) {
        gf_logError(
            fmt::format("Could not replace crypto output '{}': {}", target.string(), ec.message()));
        lf_removeQuietly(working);
        return false;
    }
    return true;
}

std::optional<fs::path> gf_decryptToTemporary(const fs::path& input, const fs::path& target) {
    fs::path name = target;
    name += fmt::format(".decrypted.{}.{}.tmp", pf_processId(), ++temporaryCounter);
    if (gf_streamDecrypt(input, name)) return name;
    lf_removeQuietly(name);
    return std::nullopt;
}

void gf_removeDecryptLeftovers() {
    std::error_code ec;
    fs::directory_iterator it("input", ec);
    for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
        try {
            if (!it->is_regular_file(ec)) continue;
            const std::string name = it->path().filename().string();
            const bool ours = name.find(".decrypted.") != std::string::npos &&
                              (name.ends_with(".tmp") || name.ends_with(".tmp.crypto_tmp"));
            if (ours) lf_removeQuietly(it->path());
        } catch (const std::exception&) {
            // A name that can't be shown as text is not one of ours.
        }
    }
}

}  // namespace tfx
