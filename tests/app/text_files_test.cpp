#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "app/text_files.h"
#include "support/temp_workdir.h"

using tfx::Charset;
using tfx::test::TempWorkdir;

namespace {

std::string bytes(std::initializer_list<int> values) {
    std::string out;
    for (int v : values) out += static_cast<char>(v);
    return out;
}

std::vector<std::string> readAs(const TempWorkdir& dir, const std::string& content,
                                Charset* detected = nullptr) {
    const auto path = dir.write("t.txt", content);
    const Charset cs = tfx::gf_detectCharset(path);
    if (detected) *detected = cs;
    std::vector<std::string> lines;
    EXPECT_TRUE(tfx::gf_readTextLines(cs, path, lines));
    return lines;
}

}  // namespace

TEST(DetectCharset, MarksZeroBytesAndAStrictUtf8Walk) {
    using tfx::gf_detectCharsetOfBytes;
    EXPECT_EQ(gf_detectCharsetOfBytes(bytes({0xFF, 0xFE, 0xE9, 0xE9, 0xE9})), Charset::Unicode);
    EXPECT_EQ(gf_detectCharsetOfBytes(bytes({0xFE, 0xFF})), Charset::Unicode_big_endian);
    EXPECT_EQ(gf_detectCharsetOfBytes(bytes({0xEF, 0xBB, 0xBF, 'a'})), Charset::UTF8_with_BOM);
    EXPECT_EQ(gf_detectCharsetOfBytes(bytes({0, 0x41, 0, 0x42})), Charset::Unicode_big_endian);
    EXPECT_EQ(gf_detectCharsetOfBytes(bytes({0x41, 0})), Charset::Unicode);  // short file
    EXPECT_EQ(gf_detectCharsetOfBytes(bytes({0x41, 0, 0x42, 0x43})), Charset::UTF8_without_BOM);
    EXPECT_EQ(gf_detectCharsetOfBytes("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x9B\xAB"),
              Charset::UTF8_without_BOM);
    // Latin-1, a lead below C2, overlong, past U+10FFFF, a bad continuation, cut at the end.
    for (const char* ansi :
         {"caf\xE9", "x\xC0\x80", "x\xE0\x80\x80", "x\xF4\x90\x80\x80", "x\xC3(", "x\xC3"})
        EXPECT_EQ(gf_detectCharsetOfBytes(ansi), Charset::ANSI) << ansi;
}

TEST(DetectCharset, OnlyTheFirst4096BytesCount) {
    TempWorkdir dir;
    const std::string euro = "\xE2\x82\xAC";
    // Straddling: two bytes inside the sample, one outside.
    std::string straddle(4094, 'a');
    straddle += euro + "tail";
    EXPECT_EQ(tfx::gf_detectCharset(dir.write("s.txt", straddle)), Charset::ANSI);
    // Ending exactly at byte 4096 is whole.
    std::string whole(4093, 'a');
    whole += euro + "tail";
    EXPECT_EQ(tfx::gf_detectCharset(dir.write("w.txt", whole)), Charset::UTF8_without_BOM);
    // Bad bytes after the sample are not seen.
    std::string late(4096, 'a');
    late += "\xE9";
    EXPECT_EQ(tfx::gf_detectCharset(dir.write("l.txt", late)), Charset::UTF8_without_BOM);
    EXPECT_EQ(tfx::gf_detectCharset(dir.path() / "missing.txt"), Charset::none_found);
}

TEST(ReadTextLines, SplittingRules) {
    TempWorkdir dir;
    EXPECT_EQ(readAs(dir, "a\nb"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(readAs(dir, "a\nb\n"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(readAs(dir, "a\r\n\r\nb\r\n"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(readAs(dir, "\xEF\xBB\xBFhead\nx"), (std::vector<std::string>{"head", "x"}));
    EXPECT_TRUE(readAs(dir, "").empty());
    EXPECT_EQ(readAs(dir, "a\rb\n"), (std::vector<std::string>{"a\rb"}));  // lone CR stays
}

TEST(ReadTextLines, Utf16BothOrdersAndBrokenOnes) {
    TempWorkdir dir;
    Charset cs{};
    // "é\n✈" + U+1F6EB as a surrogate pair, little endian.
    const std::string le =
        bytes({0xFF, 0xFE, 0xE9, 0x00, 0x0A, 0x00, 0x08, 0x27, 0x3D, 0xD8, 0xEB, 0xDE});
    EXPECT_EQ(readAs(dir, le, &cs),
              (std::vector<std::string>{"\xC3\xA9", "\xE2\x9C\x88\xF0\x9F\x9B\xAB"}));
    EXPECT_EQ(cs, Charset::Unicode);
    const std::string be = bytes({0xFE, 0xFF, 0x00, 'o', 0x00, 'k', 0x00, '\r', 0x00, '\n'});
    EXPECT_EQ(readAs(dir, be, &cs), (std::vector<std::string>{"ok"}));
    // Without a mark or of odd length: no lines.
    EXPECT_TRUE(readAs(dir, bytes({0x41, 0, 0x42, 0})).empty());
    EXPECT_TRUE(readAs(dir, bytes({0xFF, 0xFE, 0x41, 0, 0x42})).empty());
    // A lone high surrogate fails with a word; so does an unknown charset.
    const auto path = dir.write("b.txt", bytes({0xFF, 0xFE, 0x3D, 0xD8, 0x41, 0x00}));
    std::vector<std::string> lines{"stale"};
    EXPECT_FALSE(tfx::gf_readTextLines(Charset::Unicode, path, lines));
    EXPECT_TRUE(lines.empty());
    EXPECT_NE(dir.logText().find("==> Read failed for '"), std::string::npos);
    EXPECT_FALSE(tfx::gf_readTextLines(Charset::none_found, path, lines));
    EXPECT_NE(dir.logText().find("has unknown charset: none_found"), std::string::npos);
}

TEST(ReadTextLines, AnsiBecomesUtf8) {
    TempWorkdir dir;
    Charset cs{};
    // Windows-1252: e acute, euro sign, and 0x81 which the code page leaves undefined.
    EXPECT_EQ(readAs(dir, "Z\xFCrich \x80\n\x81x", &cs),
              (std::vector<std::string>{"Z\xC3\xBCrich \xE2\x82\xAC", "\xC2\x81x"}));
    EXPECT_EQ(cs, Charset::ANSI);
}

TEST(ReadFileLines, LinesOrOpenFailed) {
    TempWorkdir dir;
    const auto result = tfx::gf_readFileLines(dir.write("f.txt", "\xEF\xBB\xBFone\r\ntwo"), 8);
    ASSERT_TRUE(std::holds_alternative<std::vector<std::string>>(result));
    EXPECT_EQ(std::get<0>(result), (std::vector<std::string>{"one", "two"}));
    const auto missing = tfx::gf_readFileLines(dir.path() / "none.txt", 8);
    ASSERT_TRUE(std::holds_alternative<std::string>(missing));
    EXPECT_EQ(std::get<1>(missing), "open_failed");
}
