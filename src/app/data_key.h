// The one key of every .enc data file. The publisher of the data files holds
// the same value; the program only ever decrypts with it.
#pragma once

#include <array>
#include <cstdint>

#include <sodium.h>

namespace tfx {

inline constexpr std::array<std::uint8_t, crypto_secretstream_xchacha20poly1305_KEYBYTES>
    DATA_FILE_KEY = {
        0x96, 0xcc, 0x7c, 0xd4, 0xd9, 0x38, 0x90, 0xd2, 0x71, 0x8a, 0x84,
        0x4c, 0xa0, 0xb5, 0x66, 0x03, 0x08, 0x37, 0x01, 0x9b, 0xc9, 0x24,
        0xdb, 0x8a, 0x8e, 0xd2, 0xc0, 0xcf, 0x00, 0xd1, 0x02, 0x36,
};

// Plain text goes into the container in blocks of this size; each block grows
// by the authentication overhead on the way.
inline constexpr std::size_t DATA_FILE_PLAIN_BLOCK = 4096;
inline constexpr std::size_t DATA_FILE_CIPHER_BLOCK =
    DATA_FILE_PLAIN_BLOCK + crypto_secretstream_xchacha20poly1305_ABYTES;

}  // namespace tfx
