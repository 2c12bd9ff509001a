#include "liveries/scanned_liveries_file.h"

#include <algorithm>
#include <ctime>
#include <string>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "app/log.h"
#include "app/run_state.h"
#include "app/user_exception.h"
#include "liveries/code_interning.h"
#include "platform/file_replace.h"

namespace fs = std::filesystem;

namespace tfx {

std::vector<Livery> scanList;
ScanFileReplacer scanFileReplacer = pf_replaceFile;

namespace {

constexpr const char* MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string lf_dateText() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    if (::gmtime_r(&now, &utc) == nullptr) return "Invalid date";
    return fmt::format("{} {} {}", utc.tm_mday, MONTHS[utc.tm_mon], utc.tm_year + 1900);
}

bool lf_addMeta(pugi::xml_node root) {
    pugi::xml_node meta = root.append_child("meta");
    if (!meta) return false;
    const auto add = [&](const char* name, const std::string& value) {
        pugi::xml_node info = meta.append_child("info");
        return info && info.append_attribute("name").set_value(name) &&
               info.append_attribute("value").set_value(value.c_str());
    };
    return add("author", std::string(PROGRAM_NAME)) &&
           add("version", std::string(PROGRAM_VERSION_TEXT)) && add("date", lf_dateText()) &&
           add("copyright", "Scan of the AI aircraft installed on this computer") &&
           add("sim", gf_isMSFS2020() ? "1" : "2");
}

bool lf_fail(const char* what) {
    gf_logError(fmt::format("Cannot write liveries scanned: {}", what));
    return false;
}

bool lf_buildDocument(pugi::xml_document& doc, const std::vector<Livery>& list) {
    pugi::xml_node root = doc.append_child("root");
    if (!root) return lf_fail("XML root missing");
    if (!lf_addMeta(root)) return lf_fail("failed to add metadata");
    pugi::xml_node liveries = root.append_child("liveries");
    if (!liveries) return lf_fail("failed to add Liveries node");
    for (const Livery& l : list) {
        pugi::xml_node node = liveries.append_child("l");
        if (!node) return lf_fail("failed to add Livery node");
        bool ok = node.append_attribute("a").set_value(gf_airlineCode(l.airline).c_str());
        if (l.opr != 0)
            ok = ok && node.append_attribute("o").set_value(gf_airlineCode(l.opr).c_str());
        ok = ok && node.append_attribute("m").set_value(gf_modelCode(l.model).c_str());
        if (l.cargo) ok = ok && node.append_attribute("c").set_value("true");
        ok = ok && node.append_attribute("t").set_value(l.title.c_str());
        if (!l.regcode.empty()) ok = ok && node.append_attribute("r").set_value(l.regcode.c_str());
        if (!ok) return lf_fail("failed to add Livery attributes");
    }
    return true;
}

bool lf_validates(const fs::path& tmp, std::size_t count) {
    pugi::xml_document doc;
    if (!doc.load_file(tmp.c_str())) return false;
    const pugi::xml_node liveries = doc.child("root").child("liveries");
    if (!liveries) return false;
    std::size_t seen = 0;
    for (const pugi::xml_node l : liveries.children("l")) {
        if (!l.attribute("a") || !l.attribute("m") || !l.attribute("t")) return false;
        ++seen;
    }
    return seen == count;
}

// Removes the temporary file on every way out on which it still stands.
struct TemporaryGuard {
    fs::path path;
    ~TemporaryGuard() {
        std::error_code ec;
        if (!path.empty()) fs::remove(path, ec);
    }
};

}  // namespace

fs::path gf_scannedLiveriesPath() {
    return fs::path("output") /
           (gf_isMSFS2020() ? "LiveriesScanned_MSFS2020.xml" : "LiveriesScanned_MSFS2024.xml");
}

bool gf_writeScannedLiveries(const std::vector<Livery>& list, const fs::path& path) {
    if (list.empty()) return false;
    pugi::xml_document doc;
    pugi::xml_node decl = doc.append_child(pugi::node_declaration);
    decl.append_attribute("version") = "1.0";
    decl.append_attribute("encoding") = "UTF-8";
    if (!lf_buildDocument(doc, list)) return false;

    fs::path tmp = path;
    tmp += ".scan_tmp";
    std::error_code ec;
    if (fs::exists(tmp, ec) && !fs::remove(tmp, ec)) {
        gf_logError(fmt::format("Cannot remove stale temporary livery scan file {}: {}",
                                tmp.string(), ec.message()));
        return false;
    }
    TemporaryGuard guard{tmp};
    if (!doc.save_file(tmp.c_str(), "  ", pugi::format_default, pugi::encoding_utf8)) {
        gf_logError(fmt::format("Cannot write temporary livery scan file {}", tmp.string()));
        return false;
    }
    if (!lf_validates(tmp, list.size())) {
        gf_logError(fmt::format("Temporary livery scan file {} failed validation", tmp.string()));
        return false;
    }
    (void)fs::exists(path, ec);
    if (ec) {
        gf_logError(
            fmt::format("Cannot inspect {} before replacing it: {}", path.string(), ec.message()));
        return false;
    }
    // A rename replaces an existing target in one step as well as moving into
    // a free name; the platform layer picks its own calls for the two cases.
    if (!scanFileReplacer(tmp, path, ec)) {
        gf_logError(fmt::format("Cannot replace {} after the livery scan: {}", path.string(),
                                ec.message()));
        return false;
    }
    gf_logLine(fmt::format("{} liveries in {}", list.size(), path.string()));
    return true;
}

bool gf_writeScannedLiveries() {
    return gf_writeScannedLiveries(scanList, gf_scannedLiveriesPath());
}

bool gf_readScannedLiveries(std::vector<Livery>& list, const fs::path& path) {
    list.clear();
    list.reserve(30000);
    const std::string name = path.string();
    try {
        pugi::xml_document doc;
        const pugi::xml_parse_result parsed = doc.load_file(path.c_str());
        if (parsed.status == pugi::status_file_not_found || parsed.status == pugi::status_io_error)
            throw UserRelatedException(51, fmt::format("Could not open {}", name));
        if (!parsed)
            throw UserRelatedException(
                51, fmt::format("Error reading {}: {}", name, parsed.description()));
        const pugi::xml_node root = doc.child("root");
        if (!root)
            throw UserRelatedException(52, fmt::format("{} does not contain <{}>", name, "root"));
        const pugi::xml_node liveries = root.child("liveries");
        if (!liveries)
            throw UserRelatedException(
                52, fmt::format("{} does not contain a <{}> section", name, "liveries"));
        for (const pugi::xml_node l : liveries.children("l")) {
            for (const char* required : {"a", "m", "t"})
                if (!l.attribute(required))
                    throw UserRelatedException(
                        999, fmt::format("Missing required attribute '{}' in <{}>", required, "l"));
            Livery livery;
            livery.title = l.attribute("t").value();
            livery.regcode = l.attribute("r").value();
            livery.airline = gf_internCode(airlineCodes, l.attribute("a").value());
            if (const auto o = l.attribute("o"))
                livery.opr = gf_internCode(airlineCodes, o.value());
            livery.model = gf_internCode(modelCodes, l.attribute("m").value());
            livery.cargo = l.attribute("c").as_bool() ? 1 : 0;
            list.push_back(std::move(livery));
        }
        if (list.empty())
            throw UserRelatedException(533, fmt::format("{} does not contain liveries", name));
        std::sort(list.begin(), list.end(), gf_liveryLess);
        gf_logLine(fmt::format("{:5} liveries read from {}", list.size(), name));
        return true;
    } catch (const UserRelatedException& e) {
        gf_logLine(fmt::format("Error reading {}: {}", name, e.message));
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("Error reading {}: {}", name,
                               *e.what() != '\0' ? e.what() : "Unknown exception"));
    } catch (...) {
        gf_logLine(fmt::format("Error reading {}: {}", name, "Unknown exception"));
    }
    list.clear();
    return false;
}

bool gf_readScannedLiveries() {
    return gf_readScannedLiveries(scanList, gf_scannedLiveriesPath());
}

}  // namespace tfx
