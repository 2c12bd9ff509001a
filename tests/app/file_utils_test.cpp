#include <gtest/gtest.h>

#include <filesystem>

#include <pugixml.hpp>

#include "app/file_utils.h"
#include "platform/file_replace.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using tfx::test::TempWorkdir;

TEST(Save1Generation, CopiesBesideAndFailsWithAWord) {
    TempWorkdir dir;
    dir.write("parameters.xml", "old");
    EXPECT_TRUE(tfx::gf_save1GenerationOf(dir.path() / "parameters.xml"));
    dir.write("parameters.xml", "newer");
    EXPECT_TRUE(tfx::gf_save1GenerationOf(dir.path() / "parameters.xml"));
    EXPECT_EQ(dir.read("parameters0.xml"), "newer") << "an existing copy is replaced";
    EXPECT_TRUE(tfx::gf_save1GenerationOf(dir.path() / "absent.txt"));
    EXPECT_FALSE(fs::exists(dir.path() / "absent0.txt"));
    dir.write("README", "x");
    EXPECT_FALSE(tfx::gf_save1GenerationOf(dir.path() / "README"));
    EXPECT_NE(dir.logText().find("==> gf_save1GenerationOf: no extension in filename:"),
              std::string::npos);
    // A folder where the copy would go: logged, and no working file stays.
    fs::create_directory(dir.path() / "a0.txt");
    dir.write("a.txt", "x");
    EXPECT_FALSE(tfx::gf_save1GenerationOf(dir.path() / "a.txt"));
    EXPECT_NE(dir.logText().find("==> copy "), std::string::npos);
    for (const auto& e : fs::directory_iterator(dir.path()))
        EXPECT_EQ(e.path().filename().string().find(".tmp"), std::string::npos) << e.path();
}

TEST(SaveXml, DeclarationIndentAndNoTemporaryLeft) {
    TempWorkdir dir;
    pugi::xml_document doc;
    doc.append_child("root")
        .append_child("parameters")
        .append_child("parameter")
        .append_attribute("name")
        .set_value("X");
    ASSERT_TRUE(tfx::gf_saveXml(doc, dir.path() / "out.xml"));
    const std::string text = dir.read("out.xml");
    EXPECT_EQ(text.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n  <parameters>\n    "
                         "<parameter name=\"X\" />",
                         0),
              0u)
        << text;

    // An existing declaration is corrected, not doubled.
    pugi::xml_document again;
    ASSERT_TRUE(again.load_string("<?xml version=\"0.9\" encoding=\"latin1\"?><a/>",
                                  pugi::parse_default | pugi::parse_declaration));
    ASSERT_TRUE(tfx::gf_saveXml(again, dir.path() / "out.xml"));
    EXPECT_EQ(dir.read("out.xml"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a />\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 2)
        << "only Log.txt and out.xml";
}

TEST(SaveXml, UnwritablePlaceKeepsTheOldFile) {
    // Places that fail for root too: permissions would not stop it.
    TempWorkdir dir;
    dir.write("keep.xml", "<old/>");
    pugi::xml_document doc;
    doc.append_child("new");

    // The working name can't be written (a folder stands there).
    const fs::path working = tfx::pf_temporaryNameFor(dir.path() / "keep.xml");
    fs::create_directory(working);
    EXPECT_FALSE(tfx::gf_saveXml(doc, dir.path() / "keep.xml"));
    EXPECT_EQ(dir.read("keep.xml"), "<old/>");
    fs::remove(working);

    // The swap can't be made (the place is a folder that isn't empty): the
    // working file doesn't stay behind.
    fs::create_directories(dir.path() / "place.xml" / "inside");
    EXPECT_FALSE(tfx::gf_saveXml(doc, dir.path() / "place.xml"));
    EXPECT_TRUE(fs::is_directory(dir.path() / "place.xml" / "inside"));
    EXPECT_FALSE(fs::exists(tfx::pf_temporaryNameFor(dir.path() / "place.xml")));

    // Below a plain file nothing can be made at all.
    EXPECT_FALSE(tfx::gf_saveXml(doc, dir.path() / "keep.xml" / "under.xml"));
    EXPECT_EQ(dir.read("keep.xml"), "<old/>");
}

TEST(RemoveFiles, FolderKeepsSubfoldersAndTbloKeepsNonXml) {
    TempWorkdir dir;
    fs::create_directories(dir.path() / "out" / "sub");
    dir.write("out/a.txt", "a");
    dir.write("out/sub/b.txt", "b");
    tfx::gf_removeFilesFromDirectory(dir.path() / "out");
    EXPECT_FALSE(fs::exists(dir.path() / "out/a.txt"));
    EXPECT_TRUE(fs::exists(dir.path() / "out/sub/b.txt"));
    tfx::gf_removeFilesFromDirectory(dir.path() / "nowhere");  // quietly nothing

    fs::create_directory(dir.path() / "tblo");
    dir.write("tblo/EGTK.xml", "x");
    dir.write("tblo/KJFK.XML", "x");
    dir.write("tblo/tblo.zip", "x");
    tfx::gf_removeXMLFilesFromDirectory();
    EXPECT_FALSE(fs::exists(dir.path() / "tblo/EGTK.xml"));
    EXPECT_FALSE(fs::exists(dir.path() / "tblo/KJFK.XML"));
    EXPECT_TRUE(fs::exists(dir.path() / "tblo/tblo.zip"));

    EXPECT_EQ(dir.logText().find("==>"), std::string::npos);
}
