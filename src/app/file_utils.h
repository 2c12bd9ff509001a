// Keeping, saving and clearing files.
#pragma once

#include <filesystem>

#include <pugixml.hpp>

namespace tfx {

// Copies a file about to be replaced to <stem>0<ext> beside it. True when the
// copy was made or there was nothing to keep; false (logged) otherwise.
bool gf_save1GenerationOf(const std::filesystem::path& path);

// Saves an XML document as UTF-8 with a 1.0 declaration and two-blank indent.
// Written beside the target and swapped in, so a crash never leaves half a file.
bool gf_saveXml(pugi::xml_document& document, const std::filesystem::path& path);

void gf_removeFile(const std::filesystem::path& path);
// Removes the regular files directly in a folder; sub-folders stay.
void gf_removeFilesFromDirectory(const std::filesystem::path& path);
// The same for the .xml files of the folder tblo.
void gf_removeXMLFilesFromDirectory();

}  // namespace tfx
