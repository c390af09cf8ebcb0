#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

#include "sitemap/sitemap_dump.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "test_util.h"

using namespace telvanix;
using telvanix::test::DumpSitemapModel;

namespace {

int ReadText(CHtmlFileSitemap& file, const std::string& text) {
  CByteString source;
  if (!text.empty())
    source.Assign(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  return file.Read(source);
}

std::string Entry(const std::string& params) { return "<OBJECT type=\"text/sitemap\">" + params + "</OBJECT>"; }
std::string Param(const char* name, const char* value) {
  return std::string("<param name=\"") + name + "\" value=\"" + value + "\">";
}

// Levels of the entries, e.g. "1 2 1".
std::string Levels(const CHtmlFileSitemap& file) {
  std::string out;
  for (int i = 0; i < file.GetSitemapArraySize(); ++i)
    out += (i ? " " : "") + std::to_string(file.GetSitemap(i)->GetLevel());
  return out;
}

TEST(SitemapReader, UpperCaseTagsWithoutEndTags) {
  CHtmlFileSitemap file;
  const std::string page =
      "<HTML><BODY><UL>\r\n"
      "<LI> <OBJECT type=\"text/sitemap\"><PARAM NAME=\"Name\" VALUE=\"A\"><PARAM name=\"Local\" value=\"a.htm\">\r\n"
      "<UL><LI> <OBJECT TYPE=\"TEXT/SITEMAP\"><param name=\"Name\" value=\"B\">\r\n</UL>\r\n"
      "<LI><OBJECT type=\"text/sitemap\"><param name=\"name\" value=\"C\">\r\n"
      "</UL></BODY></HTML>";
  EXPECT_EQ(ReadText(file, page), 1);
  ASSERT_EQ(file.GetSitemapArraySize(), 3);
  EXPECT_EQ(Levels(file), "1 2 1");
  EXPECT_STREQ(file.GetSitemap(0)->GetName(), "A");
  EXPECT_STREQ(file.GetSitemap(0)->GetPrimary(), "a.htm");
  EXPECT_STREQ(file.GetSitemap(1)->GetName(), "B");
  EXPECT_EQ(file.GetSitemap(1)->GetPrimary(), nullptr);
  EXPECT_STREQ(file.GetSitemap(2)->GetName(), "C");
}

TEST(SitemapReader, LooseListNesting) {
  CHtmlFileSitemap file;
  // Every LI in a list of its own.
  ReadText(file, "<ul><li>" + Entry(Param("Name", "A")) + "</ul><ul><li>" + Entry(Param("Name", "B")) + "</ul>");
  EXPECT_EQ(Levels(file), "1 1");
  // A nested list that follows its LI instead of sitting inside it.
  ReadText(file, "<ul><li>" + Entry(Param("Name", "A")) + "</li><ul><li>" + Entry(Param("Name", "B")) +
                     "</li></ul><li>" + Entry(Param("Name", "C")) + "</li></ul>");
  EXPECT_EQ(Levels(file), "1 2 1");
  // No list at all.
  ReadText(file, Entry(Param("Name", "A")) + Entry(Param("Name", "B")) + Entry(Param("Name", "C")));
  EXPECT_EQ(Levels(file), "1 1 1");
  // Stray end tags do not take the depth below zero.
  ReadText(file, "</ul></ul><ul><li>" + Entry(Param("Name", "A")) + "<ul><li>" + Entry(Param("Name", "B")));
  EXPECT_EQ(Levels(file), "1 2");
}

TEST(SitemapReader, IndexEntryWithSeveralTopics) {
  CHtmlFileSitemap file;
  // The usual form: the keyword, then a name and a reference per topic.
  ReadText(file, "<ul><li>" + Entry(Param("Name", "keyword") + Param("Name", "First") + Param("Local", "a.htm") +
                                    Param("Name", "Second") + Param("Local", "b.htm") + Param("URL", "b2.htm")) +
                     "</ul>");
  ASSERT_EQ(file.GetSitemapArraySize(), 1);
  const CHtmlSitemap* entry = file.GetSitemap(0);
  EXPECT_STREQ(entry->GetName(), "keyword");
  ASSERT_EQ(entry->GetSectionArraySize(), 2);
  EXPECT_STREQ(entry->GetSection(0)->GetName(), "First");
  EXPECT_STREQ(entry->GetSection(0)->GetPrimary(), "a.htm");
  EXPECT_STREQ(entry->GetSection(1)->GetName(), "Second");
  EXPECT_STREQ(entry->GetSection(1)->GetPrimary(), "b.htm");
  EXPECT_STREQ(entry->GetSection(1)->GetSecondary(), "b2.htm");

  // Name/Local pairs from the start: the first pair becomes a section too,
  // so writing the entry back loses no topic.
  ReadText(file, Entry(Param("Name", "T1") + Param("Local", "1.htm") + Param("Name", "T2") + Param("Local", "2.htm")));
  entry = file.GetSitemap(0);
  EXPECT_STREQ(entry->GetName(), "T1");
  EXPECT_STREQ(entry->GetPrimary(), "1.htm");
  ASSERT_EQ(entry->GetSectionArraySize(), 2);
  EXPECT_STREQ(entry->GetSection(0)->GetName(), "T1");
  EXPECT_STREQ(entry->GetSection(0)->GetPrimary(), "1.htm");
  EXPECT_STREQ(entry->GetSection(1)->GetPrimary(), "2.htm");
  CByteString out;
  file.Write(out);
  EXPECT_NE(std::string(out).find("value=\"1.htm\""), std::string::npos);
  EXPECT_NE(std::string(out).find("value=\"2.htm\""), std::string::npos);
}

TEST(SitemapReader, ParameterValuesAsWritten) {
  CHtmlFileSitemap file;
  ReadText(file, Entry(Param("Name", "Fish &amp; Chips &lt;3&gt;") + Param("Name", "") +
                       Param("Local", "html\\sub\\a.htm") + Param("URL", "help.chm::/b.htm") +
                       Param("Comment", "&amp; raw") + Param("ImageNumber", "many") + Param("Keyword", "kw") +
                       Param("X-Custom", "1")));
  ASSERT_EQ(file.GetSitemapArraySize(), 1);
  const CHtmlSitemap* entry = file.GetSitemap(0);
  EXPECT_STREQ(entry->GetName(), "Fish & Chips <3>");
  EXPECT_EQ(entry->GetSectionArraySize(), 0);
  EXPECT_STREQ(entry->GetPrimary(), "html\\sub\\a.htm");
  EXPECT_STREQ(entry->GetSecondary(), "help.chm::/b.htm");
  EXPECT_STREQ(entry->GetComment(), "&amp; raw");
  EXPECT_EQ(entry->GetImageNumber(), -1);
  ASSERT_EQ(entry->GetUnknownParamArraySize(), 2);
  EXPECT_STREQ(entry->GetUnknownParam(0)->GetName(), "Keyword");
  EXPECT_STREQ(entry->GetUnknownParam(1)->GetName(), "X-Custom");
  EXPECT_STREQ(entry->GetUnknownParam(1)->GetValue(), "1");

  ReadText(file, Entry(Param("ImageNumber", " 12") + Param("Local", "file://C:\\help\\a.htm") +
                       Param("URL", "file:///x.htm") + Param("Secondary", "file://\\\\srv\\c.htm")));
  entry = file.GetSitemap(0);
  EXPECT_EQ(entry->GetImageNumber(), 12);
  EXPECT_STREQ(entry->GetPrimary(), "C:\\help\\a.htm");
  EXPECT_STREQ(entry->GetSecondary(), "file:///x.htm");
  EXPECT_STREQ(entry->GetThirdReference(), "\\\\srv\\c.htm");
}

TEST(SitemapReader, MergeEntriesTargetsAndOtherObjects) {
  CHtmlFileSitemap file;
  const std::string page =
      "<ul><li>" + Entry(Param("Name", "A")) + "</ul>" +
      "<OBJECT type=\"text/sitemap\"><param name=\"Merge\" value=\"b.chm::/b.hhc\" value2=\"x\"></OBJECT>" +
      "<object type=\"application/x-oleobject\" classid=\"clsid:0\"><param name=\"Name\" value=\"skip\"></object>" +
      "<param name=\"Name\" value=\"outside\">" +
      "<object typetype=\"text/sitemap\" target=\"_top\"><param name=\"Name\" value=\"T\"></object>";
  EXPECT_EQ(ReadText(file, page), 1);
  ASSERT_EQ(file.GetSitemapArraySize(), 3);
  EXPECT_STREQ(file.GetSitemap(1)->GetMerge(), "b.chm::/b.hhc");
  EXPECT_STREQ(file.GetSitemap(1)->GetMerge2(), "x");
  EXPECT_EQ(file.GetSitemap(1)->GetLevel(), 1);
  EXPECT_STREQ(file.GetSitemap(2)->GetName(), "T");
  EXPECT_STREQ(file.GetSitemap(2)->GetTargetAttribute(), "_top");
}

TEST(SitemapReader, SitePropertiesAndNeededNames) {
  CHtmlFileSitemap file;
  const std::string page =
      "<HEAD><TITLE>Help &amp; Support</TITLE><BASE HREF=\"http://x/\"></HEAD>"
      "<OBJECT type=\"text/site properties\">" +
      Param("SiteType", "INDEX") + Param("FrameName", "main") + Param("FrameName", "second") +
      Param("WindowName", "win") + Param("Background", "#ff0000") + Param("Foreground", "0x80") +
      Param("Window Styles", "0x800025") + Param("WindowStyles", "0x800027") + Param("ExWindow Styles", "512") +
      Param("ImageType", "Folder") + Param("NumberImages", "x") + Param("Image Width", "16") +
      Param("NumberTypes", "2") + Param("CategoryDesc", "orphan") + Param("Category", "Level") +
      Param("CategoryDesc", "How hard") + Param("TypeExclusive", "easy") +
      Param("TypeExclusiveDesc", "Easy") + Param("TypeHidden", "secret") + Param("Instruction", "go") +
      "</OBJECT><ul><li>" + Entry(Param("Name", "A") + Param("Frame", "MAIN") + Param("WindowName", "pop")) + "</ul>";
  EXPECT_EQ(ReadText(file, page), 1);
  EXPECT_STREQ(file.GetTitle(), "Help & Support");
  EXPECT_STREQ(file.GetBase(), "http://x/");
  const CHtmlSiteProperties* site = file.GetSiteProperties();
  EXPECT_EQ(site->GetSiteType(), CHtmlSiteProperties::emSiteTypeIndex);
  EXPECT_STREQ(site->GetFrameName(), "main");
  EXPECT_STREQ(site->GetWindowName(), "win");
  EXPECT_EQ(site->GetBackground(), 0x0000FFu);
  EXPECT_EQ(site->GetForeground(), 0x80u);
  EXPECT_EQ(site->GetWindowStyles(), 0x800027u);
  EXPECT_EQ(site->GetExWindowStyles(), 512u);
  EXPECT_STREQ(site->GetImageType(), "Folder");
  EXPECT_EQ(site->GetNumberImages(), -1);
  EXPECT_EQ(site->GetImageWidth(), 16);
  ASSERT_EQ(site->GetUnknownParamArraySize(), 1);
  EXPECT_STREQ(site->GetUnknownParam(0)->GetName(), "NumberTypes");
  ASSERT_EQ(site->GetSiteCategoryArraySize(), 2);
  EXPECT_STREQ(site->GetSiteCategory(0)->GetDesc(), "orphan");
  const CHtmlSiteCategory* level = site->GetSiteCategory(1);
  EXPECT_STREQ(level->GetName(), "Level");
  EXPECT_STREQ(level->GetDesc(), "How hard");
  ASSERT_EQ(level->GetCategoryTypeInfoArraySize(), 2);
  EXPECT_EQ(level->GetCategoryTypeInfo(0)->GetTypeInfoType(), CHtmlSiteCategoryTypeInfo::emTypeInfoExclusive);
  EXPECT_STREQ(level->GetCategoryTypeInfo(0)->GetTypeDesc(), "Easy");
  EXPECT_EQ(level->GetCategoryTypeInfo(1)->GetTypeInfoType(), CHtmlSiteCategoryTypeInfo::emTypeInfoHidden);
  ASSERT_EQ(site->GetInstructionArraySize(), 1);
  EXPECT_STREQ(site->GetInstruction(0)->GetValue(), "go");

  int cursor;
  EXPECT_STREQ(file.GetFirstFrameName(cursor), "main");
  EXPECT_STREQ(file.GetNextFrameName(cursor), "second");
  EXPECT_EQ(file.GetNextFrameName(cursor), nullptr);  // "MAIN" is the same frame
  EXPECT_STREQ(file.GetFirstWindowName(cursor), "win");
  EXPECT_STREQ(file.GetNextWindowName(cursor), "pop");
  EXPECT_STREQ(file.GetSitemap(0)->GetFrameName(), "MAIN");
}

// A category or type printed without its (empty) name leaves only its
// description; reading must not pour that into the one before it.
TEST(SitemapReader, SecondDescriptionsStartNamelessCategoriesAndTypes) {
  CHtmlFileSitemap file;
  ReadText(file, "<object type=\"text/site properties\">" + Param("Category", "C") + Param("CategoryDesc", "first") +
                     Param("CategoryDesc", "second") + Param("Type", "t") + Param("TypeDesc", "d1") +
                     Param("TypeDesc", "d2") + "</object>");
  const CHtmlSiteProperties* site = file.GetSiteProperties();
  ASSERT_EQ(site->GetSiteCategoryArraySize(), 2);
  EXPECT_STREQ(site->GetSiteCategory(0)->GetDesc(), "first");
  EXPECT_EQ(site->GetSiteCategory(1)->GetName(), nullptr);
  EXPECT_STREQ(site->GetSiteCategory(1)->GetDesc(), "second");
  ASSERT_EQ(site->GetSiteCategory(1)->GetCategoryTypeInfoArraySize(), 2);
  EXPECT_STREQ(site->GetSiteCategory(1)->GetCategoryTypeInfo(0)->GetTypeDesc(), "d1");
  EXPECT_EQ(site->GetSiteCategory(1)->GetCategoryTypeInfo(1)->GetType(), nullptr);
  EXPECT_STREQ(site->GetSiteCategory(1)->GetCategoryTypeInfo(1)->GetTypeDesc(), "d2");
}

TEST(SitemapReader, BadInputReadsWhatItCan) {
  CHtmlFileSitemap file;
  file.SetTitle("old");
  file.AddSitemap(new CHtmlSitemap);
  EXPECT_EQ(ReadText(file, ""), 0);
  EXPECT_EQ(file.GetSitemapArraySize(), 0);
  EXPECT_EQ(file.GetTitle(), nullptr);

  EXPECT_EQ(ReadText(file, "just some words, no markup"), 0);
  EXPECT_EQ(ReadText(file, "<html><title>Page</title><body><p>Text</p></body></html>"), 0);
  EXPECT_STREQ(file.GetTitle(), "Page");
  std::string garbage;
  for (int i = 0; i < 4096; ++i)
    garbage += static_cast<char>((i * 7919) % 256);
  EXPECT_EQ(ReadText(file, garbage), 0);
  EXPECT_EQ(ReadText(file, "<ul><li><object type=\"text/sitemap\"><param name=\"Name\" value=\"A\">"
                           "<li><object type=\"text/sitemap\"><param name=\"Name\" value=\"B\"><param name=\"Lo"),
            1);
  ASSERT_EQ(file.GetSitemapArraySize(), 2);
  EXPECT_STREQ(file.GetSitemap(1)->GetName(), "B");

  EXPECT_EQ(file.Read(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(file.Read("/nonexistent/dir/toc.hhc"), 0);
}

TEST(SitemapReader, ReadsTheFilesItWrites) {
  CHtmlFileSitemap file;
  file.SetTitle("T");
  file.GetSiteProperties()->SetSiteType(CHtmlSiteProperties::emSiteTypeContents);
  auto* entry = new CHtmlSitemap;
  entry->SetLevel(1);
  entry->SetName("A");
  entry->SetPrimary("C:\\a.htm");
  file.AddSitemap(entry);
  char dir[] = "/tmp/tvx_sitemap_XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  std::string path = std::string(dir) + "/toc.hhc";
  ASSERT_EQ(file.Write(path.c_str()), 1);
  CHtmlFileSitemap again;
  EXPECT_EQ(again.Read(path.c_str()), 1);
  EXPECT_EQ(DumpSitemapModel(again), DumpSitemapModel(file));
  std::remove(path.c_str());
  rmdir(dir);
}

// Real-world-style pages and the models they read into: "x.hhc" beside "x.hhc.expected".
TEST(SitemapReader, SamplePages) {
  const char* samples[] = {"contents_upper.hhc", "index_keywords.hhk", "merged_contents.hhc",
                           "site_properties.hhc", "loose_markup.hhc", "truncated.hhc"};
  for (const char* name : samples) {
    std::string page = telvanix::test::ReadDataFile(std::string("sitemap/") + name);
    ASSERT_FALSE(page.empty()) << name;
    std::string expected = telvanix::test::ReadDataFile(std::string("sitemap/") + name + ".expected");
    ASSERT_FALSE(expected.empty()) << name;
    CHtmlFileSitemap file;
    EXPECT_EQ(ReadText(file, page), 1) << name;
    EXPECT_EQ(DumpSitemapModel(file), expected) << name;
  }
}

}  // namespace
