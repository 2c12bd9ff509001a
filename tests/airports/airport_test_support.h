// Helpers of the airport tests: files in a test's program folder, sealed
// catalogue files and small airport documents.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "../../tools/publish_lib.h"
#include "support/temp_workdir.h"

namespace tfx::test {

inline std::filesystem::path putFile(const TempWorkdir& dir, const std::string& name,
                                     const std::string& bytes) {
    std::filesystem::create_directories((dir.path() / name).parent_path());
    return dir.write(name, bytes);
}

inline void sealInto(const TempWorkdir& dir, const std::string& name, const std::string& xml) {
    std::filesystem::create_directories((dir.path() / name).parent_path());
    dir.write(name, publish::gf_encryptBytes(xml));
}

inline std::string sourceFile(const std::string& relative) {
    std::ifstream in(std::filesystem::path(ZEPT_SOURCE_DIR) / relative, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// An airport file with the given parameters and parkpositions body.
inline std::string apfText(const std::string& parameters, const std::string& parkpositions,
                           const std::string& meta = R"(<info name="copyright" value="c"/>)"
                                                     R"(<info name="sim" value="2020"/>)") {
    std::string xml = "<?xml version=\"1.0\"?>\n<root>\n<meta>" + meta + "</meta>\n<parameters>" +
                      parameters + "</parameters>\n";
    if (!parkpositions.empty()) xml += "<parkpositions>\n" + parkpositions + "</parkpositions>\n";
    return xml + "</root>\n";
}

inline std::string param(const std::string& name, const std::string& value) {
    return "<parameter name=\"" + name + "\" value=\"" + value + "\"/>";
}

}  // namespace tfx::test
