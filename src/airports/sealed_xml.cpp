#include "airports/sealed_xml.h"

#include <system_error>

#include <fmt/format.h>

#include "airports/xml_text.h"
#include "app/decrypt.h"

namespace fs = std::filesystem;

namespace tfx {

std::optional<SealedXmlError> gf_readSealedXml(const fs::path& encPath,
                                               pugi::xml_document& document,
                                               const SealedXmlTexts& texts) {
    const std::string name = encPath.string();
    std::error_code ec;
    const bool present = fs::exists(encPath, ec);
    if (ec)
        return SealedXmlError{
            fmt::format("Could not check whether {} exists: {}", name, ec.message()), true};
    if (!present) return SealedXmlError{fmt::format("{} not available", name), true};

    fs::path plainTarget = encPath;
    plainTarget.replace_extension(".xml");
    const auto plain = gf_decryptToTemporary(encPath, plainTarget);
    if (!plain) return SealedXmlError{fmt::format("{} stream decrypt failed", name), true};

    struct Remove {
        fs::path path;
        ~Remove() {
            std::error_code ignored;
            fs::remove(path, ignored);
        }
    } removePlain{*plain};

    const auto text = gf_readWholeFile(*plain);
    if (!text) return SealedXmlError{fmt::format(fmt::runtime(texts.openFailed), name)};
    if (auto failure = gf_parseXmlText(*text, document))
        return SealedXmlError{fmt::format(fmt::runtime(texts.parseFailed), name, *failure)};
    return std::nullopt;
}

}  // namespace tfx
