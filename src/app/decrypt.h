// Opening the encrypted data files (.enc). The plain text exists only while
// it is read: a decryption yields a complete plain file or none, and never
// leaves half a file under the name asked for.
#pragma once

#include <filesystem>
#include <optional>

namespace tfx {

// Decrypts input into output; true when the plain file stands under output.
// An empty output means input with its extension replaced by ".xml". Faults
// are logged on the error channel; an older file under output stays as it was.
bool gf_streamDecrypt(const std::filesystem::path& input, const std::filesystem::path& output);

// Decrypts input into a private plain file beside target, named
// "<target>.decrypted.<pid>.<counter>.tmp", so that threads reading the same
// data file never meet. The caller removes the file once it has read it.
std::optional<std::filesystem::path> gf_decryptToTemporary(const std::filesystem::path& input,
                                                           const std::filesystem::path& target);

// Removes from the folder input what an interrupted decryption left behind.
void gf_removeDecryptLeftovers();

}  // namespace tfx
