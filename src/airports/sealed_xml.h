// Reading one of the encrypted catalogue files: decrypted to a private plain
// file beside it, parsed, and the plain file removed whatever happens.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <pugixml.hpp>

namespace tfx {

// The words of the two failures after the decryption; "{}" takes the file
// name, and in parseFailed a second "{}" the parser's description.
struct SealedXmlTexts {
    std::string_view openFailed = "{} could not be opened";
    std::string_view parseFailed = "{} not loaded: {}";
};

struct SealedXmlError {
    std::string text;
    bool unreadable = false;  // missing or not decryptable, as opposed to bad XML
};

// Fills document from the .enc file; the error otherwise.
std::optional<SealedXmlError> gf_readSealedXml(const std::filesystem::path& encPath,
                                               pugi::xml_document& document,
                                               const SealedXmlTexts& texts = {});

}  // namespace tfx
