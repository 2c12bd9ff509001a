#include <gtest/gtest.h>

#include <stdexcept>

#include "app/text_utils.h"

using namespace tfx;

TEST(TextUtils, TrimDequoteSplitCleanList) {
    EXPECT_EQ(gf_trim(" \r\n\t"), "");
    EXPECT_EQ(gf_dequote("\"Boeing 737\" ; comment"), "Boeing 737");
    EXPECT_EQ(gf_dequote("\"open"), "");
    EXPECT_EQ(gf_split("a,,b,", ','), (std::vector<std::string>{"a", "", "b", ""}));
    EXPECT_EQ(gf_cleanList("AIG, FSLTL ,\tJF"), "AIG,FSLTL,JF");
}

TEST(TextUtils, WideAndUtf8RoundTrip) {
    const std::string text = "Z\xC3\xBCrich \xE2\x9C\x88 \xF0\x9F\x9B\xAB";
    EXPECT_EQ(wide_to_utf8(utf8_to_wide(text)), text);
    // A surrogate pair, as Windows would hand it over, is one character.
    const std::wstring pair = {static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDEEB)};
    EXPECT_EQ(wide_to_utf8(pair), "\xF0\x9F\x9B\xAB");
}

TEST(TextUtils, InvalidInputThrowsTheNamedError) {
    const auto throwsText = [](auto&& fn, const char* text) {
        try {
            fn();
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), text);
            return;
        }
        ADD_FAILURE() << "no exception";
    };
    const char* bad8 = "utf8_to_wide: invalid UTF-8";
    throwsText([] { utf8_to_wide("\xC3"); }, bad8);
    throwsText([] { utf8_to_wide("\xED\xA0\x80"); }, bad8);  // encoded surrogate
    throwsText([] { utf8_to_wide("\xF4\x90\x80\x80"); }, bad8);
    const char* bad16 = "wide_to_utf8: invalid UTF-16";
    throwsText([] { wide_to_utf8(std::wstring(1, static_cast<wchar_t>(0xD800))); }, bad16);
    throwsText([] { wide_to_utf8(std::wstring(1, static_cast<wchar_t>(0xDC00))); }, bad16);
}

#include "app/version.h"
#include "support/temp_workdir.h"

TEST(VersionData, ParseAndCanonicalText) {
    tfx::test::TempWorkdir dir;
    EXPECT_EQ(gf_versionText(gf_parseVersion("15.15.0")), "15.15");
    EXPECT_EQ(gf_versionText(gf_parseVersion("15.15.2")), "15.15.2");
    for (const char* bad :
         {"15", "15.", ".15", "15.15.1.1", "v15.1", "15.1 ", "15..1", "99999999999.1"})
        EXPECT_TRUE(gf_parseVersion(bad).empty()) << bad;
    EXPECT_LT(gf_parseVersion("15.9"), gf_parseVersion("15.15"));
    EXPECT_LT(gf_parseVersion("15.15"), gf_parseVersion("15.15.1"));
    const std::string log = dir.logText();
    EXPECT_NE(log.find("VersionData exception: invalid version format"), std::string::npos);
    EXPECT_NE(log.find("VersionData exception: parse error in version string"), std::string::npos);
}
