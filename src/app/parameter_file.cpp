// parameters.xml: loading every parameter, creating the file with defaults,
// and writing a single changed value through at once.
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <stdexcept>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "app/file_utils.h"
#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "app/text_utils.h"
#include "app/version.h"
#include "platform/known_folders.h"
#include "platform/process_inputs.h"
#include "platform/wide_text.h"

namespace fs = std::filesystem;

namespace tfx {

std::function<void(const ControlBinding&, const std::string&)> gf_showInControl;

namespace {

constexpr int BANNER_WIDTH = 80;
constexpr const char* FILE_NAME = "parameters.xml";

// Every change is a read, a change and a write of the whole file: two at once
// would each write back what the other never saw. Recursive, since a read
// that finds no usable file writes a new one.
std::recursive_mutex fileMutex;

// Values as they stand in the file and in the log.
std::string lf_valueText(const IntParameter& p) {
    return fmt::format("{}", p.current);
}
std::string lf_valueText(const BoolParameter& p) {
    return p.current ? "true" : "false";
}
std::string lf_valueText(const StringParameter& p) {
    return p.current;
}
std::string lf_valueText(const PathParameter& p) {
    return pf_pathToUtf8(p.current);
}

std::string lf_logText(const IntParameter& p) {
    return fmt::format("{}={}", p.key, p.current);
}
std::string lf_logText(const BoolParameter& p) {
    return fmt::format("{}={}", p.key, lf_valueText(p));
}
std::string lf_logText(const StringParameter& p) {
    return fmt::format("{}=\"{}\"", p.key, p.current);
}
std::string lf_logText(const PathParameter& p) {
    return fmt::format("{}=\"{}\"", p.key, lf_valueText(p));
}

void lf_setAttribute(pugi::xml_attribute a, const IntParameter& p) {
    a.set_value(p.current);
}
void lf_setAttribute(pugi::xml_attribute a, const BoolParameter& p) {
    a.set_value(p.current);
}
void lf_setAttribute(pugi::xml_attribute a, const StringParameter& p) {
    a.set_value(p.current.c_str());
}
void lf_setAttribute(pugi::xml_attribute a, const PathParameter& p) {
    a.set_value(lf_valueText(p).c_str());
}

void lf_refuse(const Parameter& p, std::string_view text, std::string_view why,
               const std::string& holds) {
    gf_logError(fmt::format("{}=\"{}\" refused ({}): {} holds", p.key, text, why, holds));
}

// A found element without a value counts as found, with the type's zero. A
// value that isn't wholly a number is refused and the default holds; one
// beyond the limits is held at the limit.
void lf_take(IntParameter& p, pugi::xml_attribute a) {
    if (!a) {
        p.current = std::clamp(0, p.minimum, p.maximum);
        return;
    }
    const std::string text = gf_trim(a.as_string());
    const char* first = text.data();
    const char* last = first + text.size();
    if (first != last && *first == '+') ++first;
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(first, last, value);
    if (first == last || end != last ||
        (error != std::errc() && error != std::errc::result_out_of_range)) {
        p.current = p.defaultValue;
        lf_refuse(p, a.as_string(), "not a whole number", fmt::format("{}", p.current));
        return;
    }
    if (error == std::errc::result_out_of_range)
        value = text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                                    : std::numeric_limits<std::int64_t>::max();
    p.current = static_cast<std::int32_t>(std::clamp<std::int64_t>(value, p.minimum, p.maximum));
    if (p.current != value)
        lf_refuse(p, a.as_string(), "beyond its limits", fmt::format("{}", p.current));
}
void lf_take(BoolParameter& p, pugi::xml_attribute a) {
    if (!a) {
        p.current = false;
        return;
    }
    std::string word = gf_trim(a.as_string());
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (word == "true" || word == "1" || word == "yes") {
        p.current = true;
    } else if (word == "false" || word == "0" || word == "no") {
        p.current = false;
    } else {
        p.current = p.defaultValue;
        lf_refuse(p, a.as_string(), "not true or false", p.current ? "true" : "false");
    }
}
// A port is the one string that must be a number: 1 to 65535.
bool lf_isPort(const std::string& text) {
    int port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() && port >= 1 && port <= 65535;
}
void lf_take(StringParameter& p, pugi::xml_attribute a) {
    p.current = a ? a.as_string() : "";
    if (&p == &params.PORT_NUMBER && !lf_isPort(p.current)) {
        const std::string refused = p.current;
        p.current = p.defaultValue;
        lf_refuse(p, refused, "not a port number", fmt::format("\"{}\"", p.current));
    }
}
void lf_take(PathParameter& p, pugi::xml_attribute a) {
    p.current = a ? pf_pathFromUtf8(a.as_string()) : fs::path();
}

pugi::xml_node lf_find(pugi::xml_node section, const std::string& key) {
    for (pugi::xml_node n : section.children("parameter"))
        if (std::strcmp(n.attribute("name").as_string(), key.c_str()) == 0) return n;
    return {};
}

bool lf_append(pugi::xml_node section, const std::string& key, const auto& p) {
    pugi::xml_node n = section.append_child("parameter");
    if (!n) return false;
    n.append_attribute("name").set_value(key.c_str());
    lf_setAttribute(n.append_attribute("value"), p);
    return true;
}

void lf_show(const Parameter& p, const std::string& text) {
    const auto* binding = dynamic_cast<const ControlBinding*>(&p);
    if (binding != nullptr && gf_showInControl) gf_showInControl(*binding, text);
}

template <typename P>
void lf_load(pugi::xml_node section, P& p) {
    pugi::xml_node n = lf_find(section, p.key);
    if (n) {
        lf_take(p, n.attribute("value"));
    } else {
        p.current = p.defaultValue;
        lf_append(section, p.key, p);
    }
    gf_logLine(lf_logText(p));
    lf_show(p, lf_valueText(p));
}

template <typename P>
void lf_create(pugi::xml_node section, P& p) {
    if (!lf_append(section, p.key, p))
        gf_logLine(fmt::format("{}adding xml parameter {} with {} failed!", "===> ", p.key,
                               lf_valueText(p)));
    gf_logLine(lf_logText(p));
    lf_show(p, lf_valueText(p));
}

template <typename Visit>
void lf_visitAll(Visit&& visit) {
    for (auto* p : params.plainBools) visit(*p);
    for (auto* p : params.boundBools) visit(static_cast<BoolParameter&>(*p));
    for (auto* p : params.plainInts) visit(*p);
    for (auto* p : params.boundInts) visit(static_cast<IntParameter&>(*p));
    for (auto* p : params.strings) visit(*p);
    for (auto* p : params.boundStrings) visit(static_cast<StringParameter&>(*p));
    for (auto* p : params.paths) visit(*p);
}

int lf_createFresh() {
    gf_createParameterFile();
    gf_logLine(gf_bannerClose(BANNER_WIDTH, "parameters"));
    return 1;
}

// The file's parameters section for a change: a file that can't be loaded
// becomes an empty one, and missing parts are made.
pugi::xml_node lf_sectionForChange(pugi::xml_document& doc, const fs::path& path) {
    if (const auto result = doc.load_file(path.c_str()); !result) {
        gf_logLine(fmt::format("{} could not be loaded: {}", path.string(), result.description()));
        doc.reset();
    }
    pugi::xml_node root = doc.child("root");
    pugi::xml_node section = root ? root.child("parameters") : doc.child("parameters");
    if (!section) section = (root ? root : doc.append_child("root")).append_child("parameters");
    return section;
}

template <typename P>
void lf_setInSection(pugi::xml_node section, const P& p) {
    bool matched = false;
    for (pugi::xml_node n : section.children("parameter")) {
        if (std::strcmp(n.attribute("name").as_string(), p.key.c_str()) != 0) continue;
        pugi::xml_attribute a = n.attribute("value");
        if (!a) a = n.append_attribute("value");
        lf_setAttribute(a, p);
        matched = true;
    }
    if (!matched) lf_append(section, p.key, p);
    gf_logLine(lf_logText(p));
}

void lf_save(pugi::xml_document& doc, const fs::path& path) {
    if (!gf_saveXml(doc, path)) gf_logError(fmt::format("saving: {} failed", path.string()));
}

template <typename P>
void lf_writeThrough(const P& p) {
    std::lock_guard lock(fileMutex);
    const fs::path path = gf_parameterFilePath();
    pugi::xml_document doc;
    lf_setInSection(lf_sectionForChange(doc, path), p);
    lf_save(doc, path);
}

}  // namespace

fs::path gf_dataFolder() {
    fs::path folder;
    if (const auto dir = pf_environmentText("ZEPT_DATA_DIR")) {
        folder = pf_pathFromUtf8(*dir);
    } else {
        const auto roaming = pf_roamingAppData();
        if (!roaming) throw std::runtime_error("Could not find the AppData path");
        folder = *roaming / "ZEPT";
    }
    std::error_code ec;
    fs::create_directories(folder, ec);
    return folder;
}

fs::path gf_parameterFilePath() {
    return gf_dataFolder() / FILE_NAME;
}

int gf_readParameters() {
    std::lock_guard lock(fileMutex);
    const fs::path path = gf_parameterFilePath();
    gf_logLine(gf_bannerOpen(BANNER_WIDTH, "parameters"));

    pugi::xml_document doc;
    const pugi::xml_parse_result result = doc.load_file(path.c_str());
    if (result.status == pugi::status_file_not_found || result.status == pugi::status_io_error) {
        gf_logLine(fmt::format("{} could not be opened, creating new with default values:",
                               path.string()));
        return lf_createFresh();
    }
    if (!result) {
        // Keep what the user had before it is replaced by defaults.
        gf_save1GenerationOf(path);
        gf_logError(fmt::format("{} could not be loaded: {}, creating new with default values:",
                                path.string(), result.description()));
        return lf_createFresh();
    }
    gf_logLine(fmt::format("from '{}'", path.string()));
    pugi::xml_node root = doc.child("root");
    pugi::xml_node section = (root ? root : static_cast<pugi::xml_node>(doc)).child("parameters");
    if (!section) {
        gf_logLine(fmt::format("Section '{}' not found in '{}', creating new with default values:",
                               "parameters", path.string()));
        return lf_createFresh();
    }
    lf_visitAll([&](auto& p) { lf_load(section, p); });
    if (!gf_saveXml(doc, path)) gf_logError(fmt::format("saving: {} failed", path.string()));
    gf_logLine(gf_bannerClose(BANNER_WIDTH, "parameters"));
    return 0;
}

void gf_createParameterFile() {
    std::lock_guard lock(fileMutex);
    const fs::path path = gf_parameterFilePath();
    pugi::xml_document doc;
    pugi::xml_node section = doc.append_child("root").append_child("parameters");
    params.resetToDefaults();
    params.PROGRAM_VERSION.current = gf_versionText(gf_runningVersion());
    lf_visitAll([&](auto& p) { lf_create(section, p); });
    if (!gf_saveXml(doc, path)) gf_logError(fmt::format("saving: {} failed", path.string()));
}

void gf_saveParameter(const IntParameter& p) {
    lf_writeThrough(p);
}
void gf_saveParameter(const BoolParameter& p) {
    lf_writeThrough(p);
}
void gf_saveParameter(const StringParameter& p) {
    lf_writeThrough(p);
}
void gf_saveParameter(const PathParameter& p) {
    lf_writeThrough(p);
}

void gf_setIntParameter(IntParameter& p, std::int32_t value) {
    p.current = std::clamp(value, p.minimum, p.maximum);
    gf_saveParameter(p);
}

bool gf_removeParameter(const std::string& key) {
    std::lock_guard lock(fileMutex);
    const fs::path path = gf_parameterFilePath();
    pugi::xml_document doc;
    if (const auto result = doc.load_file(path.c_str()); !result) {
        gf_logLine(fmt::format("{} could not be loaded: {}", path.string(), result.description()));
        return false;
    }
    pugi::xml_node root = doc.child("root");
    if (!root) {
        gf_logLine(fmt::format("{} missing in {}", "root", path.string()));
        return false;
    }
    pugi::xml_node section = root.child("parameters");
    if (!section) {
        gf_logLine(fmt::format("Section {} missing in {}", "parameters", path.string()));
        return false;
    }
    pugi::xml_node n = lf_find(section, key);
    if (!n) return false;
    section.remove_child(n);
    gf_logLine(fmt::format("Parameter '{}' removed", key));
    if (!gf_saveXml(doc, path)) gf_logError(fmt::format("saving: {} failed", path.string()));
    return true;
}

void gf_changeParameters(const std::vector<std::string>& removeKeys,
                         const std::vector<const IntParameter*>& ints,
                         const std::vector<const StringParameter*>& strings) {
    std::lock_guard lock(fileMutex);
    const fs::path path = gf_parameterFilePath();
    pugi::xml_document doc;
    pugi::xml_node section = lf_sectionForChange(doc, path);
    for (const auto& key : removeKeys) {
        if (pugi::xml_node n = lf_find(section, key)) {
            section.remove_child(n);
            gf_logLine(fmt::format("Parameter '{}' removed", key));
        }
    }
    for (const auto* p : ints) lf_setInSection(section, *p);
    for (const auto* p : strings) lf_setInSection(section, *p);
    lf_save(doc, path);
}

void gf_toggleBoolOption(BoolOption& option) {
    option.current = !option.current;
    gf_saveParameter(static_cast<const BoolParameter&>(option));
    updateOptions(option);
}

}  // namespace tfx
