// A program folder with the bundled reference database read, and small
// livery catalogues built into a published index.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "app/options.h"
#include "app/parameters.h"
#include "liveries/livery_index.h"
#include "liveries/livery_matching.h"
#include "liveries/reference_db.h"
#include "support/sealed_dbase.h"
#include "support/temp_workdir.h"

namespace tfx::test {

class LiveryCatalogue : public ::testing::Test {
protected:
    void SetUp() override {
        gf_clearReferenceData();
        sealDbase(dir, bundledDbaseXml());
        ASSERT_TRUE(gf_readDbase());
        params.resetToDefaults();
        gf_buildOptions();
        gf_clearLiveryFailures();
        gf_resetLiveryMemory();
    }
    void TearDown() override {
        gf_publishLiveryIndex(nullptr);
        gf_clearLiveryFailures();
        gf_resetLiveryMemory();
        gf_clearReferenceData();
    }

    static Livery liv(const char* airline, const char* opr, const char* model, bool cargo,
                      const char* title, const char* regcode = "") {
        return Livery{title,
                      regcode,
                      gf_airlineIndex(airline),
                      gf_airlineIndex(opr),
                      gf_modelIndex(model),
                      static_cast<std::uint8_t>(cargo ? 1 : 0),
                      0};
    }
    // The aig section's elements, or with whole set a complete document.
    void sealRegcodes(const std::string& text, bool whole = false) const {
        std::filesystem::create_directories(dir.path() / "input");
        dir.write(
            "input/AIG-regcodes.enc",
            publish::gf_encryptBytes(whole ? text : "<root><meta/><aig>" + text + "</aig></root>"));
    }
    void myRegcodes(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories(dir.path() / "input" / "my_regcodes");
        dir.write("input/my_regcodes/" + name, text);
    }
    std::shared_ptr<const LiveryIndex> build(std::vector<Livery> list) const {
        std::sort(list.begin(), list.end(), gf_liveryLess);
        std::shared_ptr<const LiveryIndex> index = gf_buildLiveryIndex(list);
        gf_publishLiveryIndex(index);
        return index;
    }
    bool logged(const std::string& text) const {
        return dir.logText().find(text) != std::string::npos;
    }

    TempWorkdir dir;
};

}  // namespace tfx::test
