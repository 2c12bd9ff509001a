// Reference databases for tests: a small dbase.xml built from parts, or the
// bundled one, sealed as input/dbase.enc in a test's program folder.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "../../tools/publish_lib.h"
#include "support/temp_workdir.h"

namespace tfx::test {

// The sections of a dbase.xml; each holds the elements between its tags.
struct DbaseText {
    std::string aircrafts = R"(<aircraft types="A319, A320,A321 , B737,B738,B739,B744,C172"/>)"
                            R"(<aircraft types="GLF6,EC35,F16"/>)";
    std::string cargoTypes = R"(<cargo_type types="B744"/>)";
    std::string heavy = R"(<hvy types="B744"/>)";
    std::string large = R"(<lar types="A319,A320,A321,B737,B738,B739"/>)";
    std::string bizjet = R"(<bzj types="GLF6"/>)";
    std::string highPerf = R"(<hpf types="F16"/>)";
    std::string rotorcraft = R"(<rot types="EC35"/>)";
    std::string airlines = R"(<ICAO codes="BAW,DLH,EZY"/>)";
    std::string cargoOperators = R"(<ICAO codes="FDX,BOX"/>)";
    std::string optional;  // similar_types, wingspans, fixes, dbase as they stand
    std::string leaveOut;  // the name of a section to leave out

    std::string text() const {
        std::string xml = "<?xml version=\"1.0\"?>\n<root>\n";
        const auto add = [&](const char* name, const std::string& body) {
            if (leaveOut != name) xml += "<" + std::string(name) + ">" + body + "</" + name + ">\n";
        };
        add("aircrafts", aircrafts);
        add("cargo_types", cargoTypes);
        add("heavy", heavy);
        add("large", large);
        add("buzjet", bizjet);
        add("high_performance", highPerf);
        add("rotorcraft", rotorcraft);
        add("ICAO_airlines", airlines);
        add("cargo_operators", cargoOperators);
        return xml + optional + "</root>\n";
    }
};

inline void sealDbase(const TempWorkdir& dir, const std::string& xml) {
    std::filesystem::create_directories(dir.path() / "input");
    dir.write("input/dbase.enc", publish::gf_encryptBytes(xml));
}

// The smallest airport catalogue a session start accepts: EGTK alone.
inline void sealAirportCatalogue(const TempWorkdir& dir) {
    std::filesystem::create_directories(dir.path() / "input");
    dir.write("input/airports.enc",
              publish::gf_encryptBytes(R"(<root><airports><ap c="EGTK" la="51.836568" )"
                                       R"(lo="-1.319295" a="270"/></airports></root>)"));
}

inline std::string bundledDbaseXml() {
    std::ifstream in(std::filesystem::path(ZEPT_SOURCE_DIR) / "data" / "dbase.xml",
                     std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace tfx::test
