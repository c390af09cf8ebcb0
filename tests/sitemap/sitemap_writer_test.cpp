#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sitemap/sitemap_dump.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "test_util.h"

using namespace telvanix;

namespace {

std::string Written(CHtmlFileSitemap& file) {
  CByteString out;
  EXPECT_EQ(file.Write(out), 1);
  return std::string(reinterpret_cast<const char*>(out.GetContent()), static_cast<size_t>(out.GetLength()));
}

CHtmlSitemap* AddEntry(CHtmlFileSitemap& file, int level, const char* name) {
  auto* entry = new CHtmlSitemap;
  entry->SetLevel(level);
  if (name)
    entry->SetName(name);
  file.AddSitemap(entry);
  return entry;
}

const char kEmptyProperties[] = "<object type=\"text/site properties\">\r\n</object>\r\n";

std::string Page(const std::string& body) {
  return "<html>\r\n<!-- Sitemap 1.0 -->\r\n" + std::string(kEmptyProperties) + "<ul>\r\n" + body + "</ul>\r\n</html>";
}

std::string Item(int level, const char* name) {
  std::string in(static_cast<size_t>(level) * 2, ' ');
  std::string deeper(static_cast<size_t>(level + 1) * 2, ' ');
  return in + "<li><object type=\"text/sitemap\">\r\n" + deeper + "<param name=\"Name\" value=\"" + name + "\">\r\n" +
         in + "</object>\r\n";
}

TEST(SitemapWriter, NestsListsByLevel) {
  CHtmlFileSitemap empty;
  EXPECT_EQ(Written(empty),
            "<html>\r\n<!-- Sitemap 1.0 -->\r\n<object type=\"text/site properties\">\r\n</object>\r\n"
            "<ul>\r\n</ul>\r\n</html>");

  const struct {
    std::vector<int> levels;  // entry i is named "A" + i
    std::string body;
  } cases[] = {
      {{1, 2, 2, 1}, Item(1, "A") + "  <ul>\r\n" + Item(2, "B") + Item(2, "C") + "    </ul>\r\n" + Item(1, "D")},
      // Several levels at once, all closed at the end.
      {{1, 3}, Item(1, "A") + "  <ul>\r\n    <ul>\r\n" + Item(3, "B") + "      </ul>\r\n    </ul>\r\n"},
      // Levels below one keep the nesting they find.
      {{2, 0, -1}, "  <ul>\r\n" + Item(2, "A") + Item(2, "B") + Item(2, "C") + "    </ul>\r\n"},
  };
  for (const auto& c : cases) {
    CHtmlFileSitemap file;
    std::string name = "A";
    for (int level : c.levels) {
      AddEntry(file, level, name.c_str());
      ++name[0];
    }
    EXPECT_EQ(Written(file), Page(c.body)) << c.body;
  }
}

TEST(SitemapWriter, FlaggedAndNullEntriesAreLeftOut) {
  CHtmlFileSitemap file;
  AddEntry(file, 2, "A");
  AddEntry(file, 1, "hidden")->SetSitemapFlags(0x1001);  // does not close the list either
  file.AddSitemap(nullptr);
  AddEntry(file, 2, "D");
  EXPECT_EQ(Written(file), Page("  <ul>\r\n" + Item(2, "A") + Item(2, "D") + "    </ul>\r\n"));
}

TEST(SitemapWriter, ParameterLineForms) {
  using F = CHtmlFileSitemap;
  const struct {
    CString line;
    const char* expected;
  } cases[] = {
      // File names get file URLs only for drives and network paths.
      {F::DumpObjectParamFname(1, "Local", "C:\\help\\a.htm"), "  <param name=\"Local\" value=\"file://C:\\help\\a.htm\">\r\n"},
      {F::DumpObjectParamFname(0, "Local", "a.htm"), "<param name=\"Local\" value=\"a.htm\">\r\n"},
      {F::DumpObjectParamFname(0, "URL", "//server/x.htm"), "<param name=\"URL\" value=\"file:////server/x.htm\">\r\n"},
      {F::DumpObjectParamFname(0, "URL", "\\\\server\\x.htm"),
       "<param name=\"URL\" value=\"file://\\\\server\\x.htm\">\r\n"},
      {F::DumpObjectParamFname(0, "URL", "/x.htm"), "<param name=\"URL\" value=\"/x.htm\">\r\n"},
      {F::DumpObjectParamFname(0, "URL", "help.chm::/x.htm"), "<param name=\"URL\" value=\"help.chm::/x.htm\">\r\n"},
      {F::DumpObjectParamFname(0, "URL", ""), "<param name=\"URL\" value=\"\">\r\n"},
      {F::DumpObjectParamFname(2, "URL", nullptr), "    <param name=\"URL\">\r\n"},
      {F::DumpObjectParam2(1, "Merge", "a.chm::/t.hhc", "b"), "  <param name=\"Merge\" value=\"a.chm::/t.hhc\" value2=\"b\">\r\n"},
      {F::DumpObjectParam2(1, "Merge", nullptr, "b"), "  <param name=\"Merge\" value2=\"b\">\r\n"},
      {F::DumpObjectParam2(1, "Merge", "a", ""), "  <param name=\"Merge\" value=\"a\">\r\n"},
      {F::DumpObjectParamHexValue(0, "Window Styles", 0x800025), "<param name=\"Window Styles\" value=\"0x800025\">\r\n"},
      {F::DumpObjectParamDecValue(0, "ImageNumber", -3), "<param name=\"ImageNumber\" value=\"-3\">\r\n"},
      {F::DumpObjectParamHtml(0, "Name", "a&b <c> \"d\""),
       "<param name=\"Name\" value=\"a&amp;b &lt;c&gt; &quot;d&quot;\">\r\n"},
      {F::DumpObjectParam(-4, "N", nullptr), "<param name=\"N\" value=\"\">\r\n"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(std::string(c.line), c.expected);
  // Indentation stops growing at 128 levels.
  EXPECT_EQ(F::DumpObjectParam(200, "N", "v").GetLength(), 256 + static_cast<int>(strlen("<param name=\"N\" value=\"v\">\r\n")));
}

TEST(SitemapWriter, NamesAreEncodedCommentsAreNot) {
  CHtmlFileSitemap file;
  auto* entry = AddEntry(file, 1, "Fish & <Chips>");
  entry->SetComment("raw & <kept>");
  std::string page = Written(file);
  EXPECT_NE(page.find("<param name=\"Name\" value=\"Fish &amp; &lt;Chips&gt;\">"), std::string::npos) << page;
  EXPECT_NE(page.find("<param name=\"Comment\" value=\"raw & <kept>\">"), std::string::npos) << page;
}

TEST(SitemapWriter, WholeEntryInItsOrder) {
  CHtmlFileSitemap file;
  auto* entry = AddEntry(file, 1, "Topic");
  entry->SetTargetAttribute("_blank");
  auto* info = new CHtmlSitemapTypeInfo;
  info->AddTypeInfo("beginner");
  info->AddTypeInfo("admin");
  info->SetPrimary("t.htm");
  info->SetSecondary("t2.htm");
  entry->AddTypeInfo(info);
  entry->SetSecondary("D:\\a.htm");
  entry->SetThirdReference("c.htm");
  entry->SetSeeAlso("other");
  entry->SetFrameName("frame");
  entry->SetWindowName("win");
  entry->SetComment("note");
  entry->SetNew("1");
  entry->SetMerge("m.chm::/m.hhc");
  entry->SetSendEvent("ev");
  entry->SetSync("sync");
  entry->SetImageNumber(11);
  entry->AddUnknownParam("X-One", "1");
  entry->AddUnknownParam("X-Empty", "");
  entry->AddUnknownParam("", "lost");
  entry->AddUnknownParam("X-Two", "2");
  const std::string expected =
      "  <object typetype=\"text/sitemap\" target=\"_blank\">\r\n"
      "    <param name=\"Name\" value=\"Topic\">\r\n"
      "    <param name=\"Type\" value=\"beginner\">\r\n"
      "    <param name=\"Type\" value=\"admin\">\r\n"
      "    <param name=\"Local\" value=\"t.htm\">\r\n"
      "    <param name=\"Url\" value=\"t2.htm\">\r\n"
      // Only a secondary: the fall-back prints it as Local and URL both.
      "    <param name=\"Local\" value=\"file://D:\\a.htm\">\r\n"
      "    <param name=\"URL\" value=\"file://D:\\a.htm\">\r\n"
      "    <param name=\"Secondary\" value=\"c.htm\">\r\n"
      "    <param name=\"See Also\" value=\"other\">\r\n"
      "    <param name=\"FrameName\" value=\"frame\">\r\n"
      "    <param name=\"WindowName\" value=\"win\">\r\n"
      "    <param name=\"Comment\" value=\"note\">\r\n"
      "    <param name=\"New\" value=\"1\">\r\n"
      "    <param name=\"Merge\" value=\"m.chm::/m.hhc\">\r\n"
      "    <param name=\"SendEvent\" value=\"ev\">\r\n"
      "    <param name=\"Sync\" value=\"sync\">\r\n"
      "    <param name=\"ImageNumber\" value=\"11\">\r\n"
      "    <param name=\"X-One\" value=\"1\">\r\n"
      "    <param name=\"X-Two\" value=\"2\">\r\n"
      "  </object>\r\n";
  // A merge entry has no LI.
  EXPECT_EQ(Written(file), Page(expected));
}

TEST(SitemapWriter, SectionsReplaceTheEntryReferences) {
  CHtmlFileSitemap file;
  auto* entry = AddEntry(file, 1, "keyword");
  entry->SetPrimary("ignored.htm");
  entry->AddSection("First & one", "a.htm", "C:\\b.htm");
  entry->AddSection(nullptr, nullptr, "c.htm");
  entry->SetMerge2("second");
  const std::string expected =
      "  <li><object type=\"text/sitemap\">\r\n"
      "    <param name=\"Name\" value=\"keyword\">\r\n"
      "    <param name=\"Name\" value=\"First &amp; one\">\r\n"
      "    <param name=\"Local\" value=\"a.htm\">\r\n"
      "    <param name=\"Url\" value=\"C:\\b.htm\">\r\n"
      "    <param name=\"Local\" value=\"c.htm\">\r\n"
      "    <param name=\"Url\" value=\"c.htm\">\r\n"
      "    <param name=\"Merge\" value2=\"second\">\r\n"
      "  </object>\r\n";
  EXPECT_EQ(Written(file), Page(expected));
}

TEST(SitemapWriter, SitePropertiesBlock) {
  CHtmlFileSitemap file;
  file.SetTitle("A & B");
  file.SetBase("http://x/?a&b");
  CHtmlSiteProperties* site = file.GetSiteProperties();
  site->SetFrameName("f");
  site->SetWindowName("w");
  site->SetSiteType(CHtmlSiteProperties::emSiteTypeIndex);
  site->SetFont("Tahoma,8,0");
  site->SetFontInstructions("fi");
  site->SetFontTypes("ft");
  site->SetBackground(0x00FF00);
  site->SetForeground(0);
  site->SetBackgroundImage("bg.gif");
  site->SetImageType("Folder");
  site->SetNumberImages(42);
  site->SetImageList("i.bmp");
  site->SetImageWidth(20);
  site->SetWindowStyles(0x800627);
  site->SetExWindowStyles(0x200);
  site->SetAutoGenerated("yes");
  site->AddInstruction("Instruction", "do it");
  auto* category = new CHtmlSiteCategory("Level", "How hard");
  category->AddCategoryTypeInfo(new CHtmlSiteCategoryTypeInfo(CHtmlSiteCategoryTypeInfo::emTypeInfoInclusive, "easy", "Easy"));
  category->AddCategoryTypeInfo(new CHtmlSiteCategoryTypeInfo(CHtmlSiteCategoryTypeInfo::emTypeInfoExclusive, "mid"));
  category->AddCategoryTypeInfo(new CHtmlSiteCategoryTypeInfo(CHtmlSiteCategoryTypeInfo::emTypeInfoHidden, "hard", "Hard"));
  site->AddSiteCategory(category);
  site->AddUnknownParam("NumberTypes", "3");
  site->AddUnknownParam("Blank", "");
  const std::string expected =
      "<html>\r\n<!-- Sitemap 1.0 -->\r\n"
      "<title>A &amp; B</title>\r\n"
      "<base href=\"http://x/?a&b\">\r\n"
      "<object type=\"text/site properties\">\r\n"
      "  <param name=\"FrameName\" value=\"f\">\r\n"
      "  <param name=\"WindowName\" value=\"w\">\r\n"
      "  <param name=\"SiteType\" value=\"index\">\r\n"
      "  <param name=\"Font\" value=\"Tahoma,8,0\">\r\n"
      "  <param name=\"Font Instructions\" value=\"fi\">\r\n"
      "  <param name=\"Font Types\" value=\"ft\">\r\n"
      "  <param name=\"Background\" value=\"0xff00\">\r\n"
      "  <param name=\"Foreground\" value=\"0x0\">\r\n"
      "  <param name=\"Background Image\" value=\"bg.gif\">\r\n"
      "  <param name=\"ImageType\" value=\"Folder\">\r\n"
      "  <param name=\"NumberImages\" value=\"42\">\r\n"
      "  <param name=\"ImageList\" value=\"i.bmp\">\r\n"
      "  <param name=\"Image Width\" value=\"20\">\r\n"
      "  <param name=\"Window Styles\" value=\"0x800627\">\r\n"
      "  <param name=\"ExWindow Styles\" value=\"0x200\">\r\n"
      "  <param name=\"Auto Generated\" value=\"yes\">\r\n"
      "  <param name=\"Instruction\" value=\"do it\">\r\n"
      "  <param name=\"Category\" value=\"Level\">\r\n"
      "  <param name=\"CategoryDesc\" value=\"How hard\">\r\n"
      "  <param name=\"Type\" value=\"easy\">\r\n"
      "  <param name=\"TypeDesc\" value=\"Easy\">\r\n"
      "  <param name=\"TypeExclusive\" value=\"mid\">\r\n"
      "  <param name=\"TypeHidden\" value=\"hard\">\r\n"
      "  <param name=\"TypeDesc\" value=\"Hard\">\r\n"
      "  <param name=\"NumberTypes\" value=\"3\">\r\n"
      "</object>\r\n"
      "<ul>\r\n</ul>\r\n</html>";
  EXPECT_EQ(Written(file), expected);

  // Without an image list the image count is not written; the contents type is "toc".
  site->SetImageList("");
  site->SetSiteType(CHtmlSiteProperties::emSiteTypeContents);
  std::string page = Written(file);
  EXPECT_EQ(page.find("NumberImages"), std::string::npos);
  EXPECT_NE(page.find("<param name=\"SiteType\" value=\"toc\">"), std::string::npos);
}

TEST(SitemapWriter, WritesFilesWhole) {
  CHtmlFileSitemap file;
  AddEntry(file, 1, "A")->SetPrimary("a.htm");
  EXPECT_EQ(file.Write(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(file.Write(""), 0);

  test::TempDir dir;
  const std::string path = dir / "toc.hhc";
  ASSERT_EQ(file.Write(path.c_str()), 1);
  EXPECT_EQ(dir.Read("toc.hhc"), Written(file));
  CHtmlFileSitemap again;
  EXPECT_EQ(again.Read(path.c_str()), 1);
  EXPECT_EQ(test::DumpSitemapModel(again), test::DumpSitemapModel(file));
  EXPECT_EQ(file.Write((dir / "missing/toc.hhc").c_str()), 0);
}

}  // namespace
