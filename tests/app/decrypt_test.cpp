#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "../../tools/publish_lib.h"
#include "app/decrypt.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using tfx::gf_streamDecrypt;
using tfx::publish::gf_encryptBytes;
using tfx::test::TempWorkdir;

namespace {

constexpr std::size_t HEADER = 24;
constexpr std::size_t BLOCK = 4113;

// Text whose bytes differ from block to block, so a swapped block shows.
std::string plainText(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>('a' + (i * 7 + i / 4096) % 26);
    return text;
}

std::vector<std::string> filesIn(const fs::path& dir) {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(dir)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

TEST(StreamDecrypt, RoundTripsEveryBlockLayout) {
    TempWorkdir dir;
    // Empty (one 17-byte block), one byte, a final block of exactly 4113
    // bytes, two full blocks, and several blocks with a short tail.
    for (const std::size_t size : {0u, 1u, 4096u, 8192u, 4096u * 3 + 1000}) {
        const std::string plain = plainText(size);
        const std::string sealed = gf_encryptBytes(plain);
        EXPECT_EQ(sealed.size(),
                  HEADER + (size / 4096 + (size % 4096 || size == 0 ? 1 : 0)) * 17 + size);
        dir.write("data.enc", sealed);
        ASSERT_TRUE(gf_streamDecrypt(dir.path() / "data.enc", dir.path() / "data.xml")) << size;
        EXPECT_EQ(dir.read("data.xml"), plain) << size;
        EXPECT_FALSE(fs::exists(dir.path() / "data.xml.crypto_tmp"));
    }
}

TEST(StreamDecrypt, EmptyOutputMeansXmlBesideInputAndStaleWorkingFileGoes) {
    TempWorkdir dir;
    fs::create_directory(dir.path() / "input");
    dir.write("input/dbase.enc", gf_encryptBytes("<root/>"));
    dir.write("input/dbase.xml.crypto_tmp", "left by a crash");
    ASSERT_TRUE(gf_streamDecrypt(dir.path() / "input" / "dbase.enc", {}));
    EXPECT_EQ(dir.read("input/dbase.xml"), "<root/>");
    EXPECT_EQ(filesIn(dir.path() / "input"), (std::vector<std::string>{"dbase.enc", "dbase.xml"}));
}

struct DamagedCase {
    const char* name;
    std::string bytes;
    const char* message;
};

TEST(StreamDecrypt, DamagedFilesLeaveNothingAndKeepTheOldOutput) {
    const std::string two = gf_encryptBytes(plainText(5000));  // a full block and a short one
    std::string tampered = two;
    tampered[HEADER + BLOCK + 5] ^= 0x01;
    // Behind a full final block an extra byte is read on its own; behind a
    // short one it becomes part of that block and breaks its seal.
    const std::string fullLast = gf_encryptBytes(plainText(8192)) + "x";
    const std::string shortLast = two + "x";
    tfx::publish::Key otherKey = tfx::DATA_FILE_KEY;
    otherKey[0] ^= 0x80;

    const std::vector<DamagedCase> cases = {
        {"half a header", two.substr(0, 10), "Encrypted file has an incomplete header: "},
        {"header only", two.substr(0, HEADER), "Encrypted file ended without a final block: "},
        {"16 bytes of a block", two.substr(0, HEADER + 16),
         "Encrypted file contains an incomplete block: "},
        {"cut behind a full block", two.substr(0, HEADER + BLOCK),
         "Encrypted file ended without a final block: "},
        {"cut inside the last block", two.substr(0, two.size() - 1), "Decryption failed for: "},
        {"a byte behind a full final block", fullLast,
         "Encrypted file contains data after the final block: "},
        {"a byte behind a short final block", shortLast, "Decryption failed for: "},
        {"a flipped bit", tampered, "Decryption failed for: "},
        {"another key", gf_encryptBytes("secret", otherKey), "Decryption failed for: "},
    };
    for (const auto& c : cases) {
        TempWorkdir dir;
        dir.write("data.enc", c.bytes);
        dir.write("data.xml", "old plain file");
        EXPECT_FALSE(gf_streamDecrypt(dir.path() / "data.enc", dir.path() / "data.xml")) << c.name;
        EXPECT_EQ(dir.read("data.xml"), "old plain file") << c.name;
        EXPECT_FALSE(fs::exists(dir.path() / "data.xml.crypto_tmp")) << c.name;
        const std::string expected = std::string("==> gf_streamDecrypt exception: ") + c.message;
        EXPECT_NE(dir.logText().find(expected), std::string::npos) << c.name << "\n"
                                                                   << dir.logText();
    }
}

TEST(StreamDecrypt, RefusesBadPaths) {
    TempWorkdir dir;
    const std::string sealed = gf_encryptBytes("x");
    const fs::path enc = dir.write("a.enc", sealed);

    EXPECT_FALSE(gf_streamDecrypt({}, dir.path() / "a.xml"));
    EXPECT_FALSE(gf_streamDecrypt(dir.path() / "missing.enc", dir.path() / "a.xml"));
    EXPECT_FALSE(gf_streamDecrypt(enc, enc));
    EXPECT_FALSE(gf_streamDecrypt(enc, dir.path() / "sub" / ".." / "a.enc"));
    // The working name of output "b" is "b.crypto_tmp": the input itself.
    const fs::path clash = dir.write("b.crypto_tmp", sealed);
    EXPECT_FALSE(gf_streamDecrypt(clash, dir.path() / "b"));
    EXPECT_EQ(dir.read("b.crypto_tmp"), sealed) << "the input is never touched";
    // An output folder that doesn't exist.
    EXPECT_FALSE(gf_streamDecrypt(enc, dir.path() / "nowhere" / "a.xml"));

    EXPECT_NE(dir.logText().find("==> gf_streamDecrypt input and output refer to the same file: '"),
              std::string::npos);
    EXPECT_EQ(filesIn(dir.path()), (std::vector<std::string>{"Log.txt", "a.enc", "b.crypto_tmp"}));
}

TEST(DecryptToTemporary, PrivateNamesBesideTargetAndNothingLeftOnFailure) {
    TempWorkdir dir;
    const fs::path enc = dir.write("dbase.enc", gf_encryptBytes(plainText(20000)));
    const fs::path target = dir.path() / "dbase.xml";

    // Threads reading the same data file at once each get a file of their own.
    std::vector<std::optional<fs::path>> got(4);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < got.size(); ++i)
        threads.emplace_back([&, i] { got[i] = tfx::gf_decryptToTemporary(enc, target); });
    for (auto& t : threads) t.join();
    std::set<fs::path> names;
    for (const auto& name : got) {
        ASSERT_TRUE(name.has_value());
        EXPECT_EQ(name->parent_path(), dir.path());
        const std::string file = name->filename().string();
        EXPECT_EQ(file.rfind("dbase.xml.decrypted.", 0), 0u) << file;
        EXPECT_TRUE(file.ends_with(".tmp")) << file;
        EXPECT_EQ(dir.read(file), plainText(20000));
        names.insert(*name);
    }
    EXPECT_EQ(names.size(), got.size());

    dir.write("broken.enc", gf_encryptBytes(plainText(5000)).substr(0, HEADER + BLOCK));
    EXPECT_FALSE(tfx::gf_decryptToTemporary(dir.path() / "broken.enc", target).has_value());
    EXPECT_EQ(filesIn(dir.path()).size(), 3u + got.size()) << "Log.txt, two .enc and the four";
}

TEST(RemoveDecryptLeftovers, OnlyOurTemporaryNamesInInput) {
    TempWorkdir dir;
    fs::create_directories(dir.path() / "input" / "sub");
    for (const char* name :
         {"input/dbase.xml.decrypted.12.3.tmp", "input/airports.xml.decrypted.9.1.tmp.crypto_tmp",
          "input/dbase.enc", "input/dbase.xml.decrypted.txt", "input/plain.tmp",
          "input/sub/x.decrypted.1.1.tmp"})
        dir.write(name, "x");
    tfx::gf_removeDecryptLeftovers();
    EXPECT_EQ(
        filesIn(dir.path() / "input"),
        (std::vector<std::string>{"dbase.enc", "dbase.xml.decrypted.txt", "plain.tmp", "sub"}));
    EXPECT_TRUE(fs::exists(dir.path() / "input" / "sub" / "x.decrypted.1.1.tmp"));

    fs::remove_all(dir.path() / "input");
    tfx::gf_removeDecryptLeftovers();  // no folder: nothing to do, no fault
}
