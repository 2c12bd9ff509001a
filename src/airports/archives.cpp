#include "airports/archives.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "airports/sealed_xml.h"
#include "app/log.h"
#include "app/text_utils.h"
#include "app/user_exception.h"

namespace tfx {

std::vector<std::vector<std::string>> publisherTable;
std::set<std::string, std::less<>> simaddonSet;
std::vector<std::pair<std::string, std::vector<std::string>>> thirdpartyList;

namespace {

constexpr const char* ARCHIVES_ENC = "input/archives.enc";
constexpr std::int32_t MISSING_SECTION_CODE = 83;

std::vector<std::string> lf_fields(std::string_view list) {
    std::vector<std::string> fields;
    for (auto& field : gf_split(list, ','))
        if (!field.empty()) fields.push_back(std::move(field));
    return fields;
}

void lf_readPublishers(const pugi::xml_node& root) {
    const pugi::xml_node section = root.child("publishers");
    if (!section) return;
    std::vector<std::string> texts;
    for (const pugi::xml_node pub : section.children("pub"))
        texts.emplace_back(pub.attribute("pn").value());
    std::sort(texts.begin(), texts.end());
    texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
    for (const auto& text : texts) publisherTable.push_back(gf_split(text, ','));
    gf_logLine(fmt::format("{:5} publisher{}", publisherTable.size(),
                           publisherTable.size() == 1 ? "" : "s"));
}

bool lf_containsNoCase(std::string_view haystack, std::string_view needle) {
    const auto it = std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end(),
                                [](char a, char b) {
                                    return std::tolower(static_cast<unsigned char>(a)) ==
                                           std::tolower(static_cast<unsigned char>(b));
                                });
    return it != haystack.end();
}

}  // namespace

void gf_clearArchives() {
    publisherTable.clear();
    simaddonSet.clear();
    thirdpartyList.clear();
}

bool gf_readArchives(bool is2020) {
    gf_clearArchives();
    publisherTable.reserve(PUBLISHERS_RESERVED);
    thirdpartyList.reserve(THIRDPARTIES_RESERVED);

    pugi::xml_document document;
    const SealedXmlTexts texts{"{} could not be opened", "{} not read because: {}"};
    if (auto error = gf_readSealedXml(ARCHIVES_ENC, document, texts)) {
        if (error->unreadable) throw std::runtime_error(error->text);
        gf_logError(error->text);
        return false;
    }
    const pugi::xml_node root = document.child("root");
    if (!root) {
        gf_logError(fmt::format("'{}' has no root node", ARCHIVES_ENC));
        return false;
    }
    lf_readPublishers(root);

    const char* simaddonName = is2020 ? "simaddons20" : "simaddons24";
    const pugi::xml_node simaddons = root.child(simaddonName);
    if (!simaddons)
        throw UserRelatedException(MISSING_SECTION_CODE,
                                   std::string("Missing section: ") + simaddonName);
    for (const pugi::xml_node s : simaddons.children(is2020 ? "s20" : "s24"))
        for (auto& code : lf_fields(s.attribute("aps").value()))
            simaddonSet.insert(std::move(code));

    const pugi::xml_node thirdparties = root.child(is2020 ? "thirdparties20" : "thirdparties24");
    for (const pugi::xml_node t : thirdparties.children(is2020 ? "t20" : "t24"))
        thirdpartyList.emplace_back(t.attribute("pub").value(),
                                    lf_fields(t.attribute("aps").value()));
    return true;
}

PublisherResult gf_findPublisher(std::string_view path) {
    if (path.empty()) return {PublisherSearch::noPath, {}};
    for (const auto& names : publisherTable) {
        for (const auto& name : names) {
            if (name.empty() || path.find(name) != std::string_view::npos ||
                lf_containsNoCase(path, name))
                return {PublisherSearch::found, names.front()};
        }
    }
    return {PublisherSearch::notFound, {}};
}

bool gf_simaddonExists(std::string_view code) {
    return simaddonSet.find(code) != simaddonSet.end();
}

bool gf_thirdPartyExists(std::string_view publisher, std::string_view entry) {
    for (const auto& [name, entries] : thirdpartyList)
        if (name == publisher)
            return std::find(entries.begin(), entries.end(), entry) != entries.end();
    return false;
}

}  // namespace tfx
