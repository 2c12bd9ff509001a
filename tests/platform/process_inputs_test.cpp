#include <gtest/gtest.h>

#include <filesystem>

#include "app/parameters.h"
#include "platform/process_inputs.h"
#include "platform/wide_text.h"
#include "support/environment.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using namespace tfx;

// A data folder named outside the ANSI code page reaches the disk with its
// own name: the environment, the path made of it and the folder made there.
TEST(ProcessInputs, NonAsciiDataFolderFromTheEnvironment) {
    test::TempWorkdir dir(false);
    const std::string name = "Dätä ✈ Ωμέγα";
    const std::string folder = dir.path().string() + "/" + name;
    test::setEnvVar("ZEPT_DATA_DIR", folder);
    EXPECT_EQ(pf_environmentText("ZEPT_DATA_DIR"), folder);

    const fs::path made = gf_dataFolder();
    EXPECT_EQ(made, pf_pathFromUtf8(folder));
    int found = 0;
    for (const auto& entry : fs::directory_iterator(dir.path())) {
        if (!entry.is_directory()) continue;
        EXPECT_EQ(pf_pathToUtf8(entry.path().filename()), name);
        ++found;
    }
    EXPECT_EQ(found, 1);

    test::setEnvVar("ZEPT_DATA_DIR", "");
    EXPECT_EQ(pf_environmentText("ZEPT_DATA_DIR"), std::nullopt);
}

#ifdef _WIN32
// Text from outside that is not UTF-8 is marked, never cut short.
TEST(ProcessInputs, WideConversionsKeepEveryCharacter) {
    EXPECT_EQ(pf_utf8ToWide("Jörg ✈ 𝄞"), L"Jörg ✈ 𝄞");
    EXPECT_EQ(pf_wideToUtf8(L"Jörg ✈ 𝄞"), "Jörg ✈ 𝄞");
    EXPECT_EQ(pf_utf8ToWide("a\xff"
                            "b"),
              L"a\xfffd"
              L"b");
}
#endif
