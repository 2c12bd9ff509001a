#include "airports/sealed_xml.h"

#include <system_error>

#include <fmt/format.h>

#include "airports/xml_text.h"
#include "app/decrypt.h"

namespace fs = std::filesystem;

namespace tfx {

std::optional<std::string> gf_readSealedXml(const fs::path& encPath, pugi::xml_document& document,
                                            const SealedXmlTexts& texts) {
    const std::string name = encPath.string();
    std::error_code ec;
    const bool present = fs::exists(encPath, ec);
    if (ec) return fmt::format("Could not check whether {} exists: {}", name, ec.message());
    if (!present) return fmt::format("{} not available", name);

    fs::path plainTarget = encPath;
    plainTarget.replace_extension(".xml");
    const auto plain = gf_decryptToTemporary(encPath, plainTarget);
    if (!plain) return fmt::format("{} stream decrypt failed", name);

    struct Remove {
        fs::path path;
        ~Remove() {
            std::error_code ignored;
            fs::remove(path, ignored);
        }
    } removePlain{*plain};

    const auto text = gf_readWholeFile(*plain);
    if (!text) return fmt::format(fmt::runtime(texts.openFailed), name);
    if (auto failure = gf_parseXmlText(*text, document))
        return fmt::format(fmt::runtime(texts.parseFailed), name, *failure);
    return std::nullopt;
}

}  // namespace tfx
