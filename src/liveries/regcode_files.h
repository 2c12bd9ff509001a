// The two kinds of file that say which registration wears which title: the
// encrypted AIG list and the user's text files in input/my_regcodes. An entry
// without regcodes names a title that is not to be used.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tfx {

struct RegcodeEntry {
    std::string title;
    std::vector<std::string> regcodes;
    bool special = false;
};

// Each adds its entries and gives false when the source had errors (logged).
bool gf_readRegcodeTextFile(const std::filesystem::path& path, std::vector<RegcodeEntry>& entries);
// Every .txt file (any case) of the folder, in name order.
bool gf_readRegcodeFolder(const std::filesystem::path& folder, std::vector<RegcodeEntry>& entries);
// A plain AIG-regcodes.xml.
bool gf_readAigRegcodesXml(const std::filesystem::path& path, std::vector<RegcodeEntry>& entries);

}  // namespace tfx
