// The publisher's side of the .enc container: plain text in blocks of 4096
// bytes, each sealed by libsodium's secret stream, the last one with the
// final tag. Only the publisher tool and the tests use this; the program
// itself never encrypts.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <fmt/format.h>
#include <sodium.h>

#include "app/data_key.h"

namespace tfx::publish {

using Key = std::array<std::uint8_t, crypto_secretstream_xchacha20poly1305_KEYBYTES>;

inline void gf_initSodium() {
    static const bool ready = sodium_init() >= 0;
    if (!ready) throw std::runtime_error("libsodium could not be initialised");
}

// Streams plain text through the sealer. next(buffer) fills up to 4096 bytes
// and returns how many; sink(bytes) takes the header and each sealed block.
template <typename Next, typename Sink>
void gf_sealStream(Next&& next, Sink&& sink, const Key& key = DATA_FILE_KEY) {
    gf_initSodium();
    crypto_secretstream_xchacha20poly1305_state state;
    std::array<unsigned char, crypto_secretstream_xchacha20poly1305_HEADERBYTES> header{};
    crypto_secretstream_xchacha20poly1305_init_push(&state, header.data(), key.data());
    sink(std::span<const unsigned char>(header));

    // One block read ahead, so the last one is known when it is sealed.
    std::vector<unsigned char> current(DATA_FILE_PLAIN_BLOCK), ahead(DATA_FILE_PLAIN_BLOCK);
    std::vector<unsigned char> sealed(DATA_FILE_CIPHER_BLOCK);
    std::size_t currentBytes = next(std::span<unsigned char>(current));
    for (;;) {
        const std::size_t aheadBytes =
            currentBytes == DATA_FILE_PLAIN_BLOCK ? next(std::span<unsigned char>(ahead)) : 0;
        const bool last = aheadBytes == 0;
        unsigned long long sealedBytes = 0;
        crypto_secretstream_xchacha20poly1305_push(
            &state, sealed.data(), &sealedBytes, current.data(), currentBytes, nullptr, 0,
            last ? crypto_secretstream_xchacha20poly1305_TAG_FINAL : 0);
        sink(std::span<const unsigned char>(sealed.data(), sealedBytes));
        if (last) return;
        current.swap(ahead);
        currentBytes = aheadBytes;
    }
}

// The whole container for a plain text held in memory.
inline std::string gf_encryptBytes(std::string_view plain, const Key& key = DATA_FILE_KEY) {
    std::string out;
    out.reserve(plain.size() + plain.size() / DATA_FILE_PLAIN_BLOCK * 17 + 64);
    std::size_t offset = 0;
    gf_sealStream(
        [&](std::span<unsigned char> buffer) {
            const std::size_t n = std::min(buffer.size(), plain.size() - offset);
            std::copy_n(plain.data() + offset, n, buffer.data());
            offset += n;
            return n;
        },
        [&](std::span<const unsigned char> bytes) {
            out.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        },
        key);
    return out;
}

// Encrypts a plain file into output, written beside it and renamed into
// place, so a failed run leaves no partial container. Throws on faults.
inline void gf_encryptFile(const std::filesystem::path& input, const std::filesystem::path& output,
                           const Key& key = DATA_FILE_KEY) {
    std::ifstream in(input, std::ios::binary);
    if (!in) throw std::runtime_error(fmt::format("Could not open input file: {}", input.string()));
    std::filesystem::path working = output;
    working += ".publish_tmp";
    {
        std::ofstream out(working, std::ios::binary | std::ios::trunc);
        if (!out)
            throw std::runtime_error(
                fmt::format("Could not open output file: {}", working.string()));
        gf_sealStream(
            [&](std::span<unsigned char> buffer) {
                in.read(reinterpret_cast<char*>(buffer.data()),
                        static_cast<std::streamsize>(buffer.size()));
                if (in.bad())
                    throw std::runtime_error(fmt::format("Error reading {}", input.string()));
                return static_cast<std::size_t>(in.gcount());
            },
            [&](std::span<const unsigned char> bytes) {
                out.write(reinterpret_cast<const char*>(bytes.data()),
                          static_cast<std::streamsize>(bytes.size()));
            },
            key);
        out.close();
        if (out.fail()) {
            std::error_code ignored;
            std::filesystem::remove(working, ignored);
            throw std::runtime_error(fmt::format("Could not write {}", working.string()));
        }
    }
    std::error_code ec;
    std::filesystem::rename(working, output, ec);
    if (ec) {
        std::error_code ignored;
        std::filesystem::remove(working, ignored);
        throw std::runtime_error(fmt::format("Could not move {} to {}: {}", working.string(),
                                             output.string(), ec.message()));
    }
}

}  // namespace tfx::publish
