#include <gtest/gtest.h>

#include <filesystem>
#include <string>

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

// Levels as the list markup gives them, however loosely it is nested.
TEST(SitemapReader, LevelsFollowTheLists) {
  const std::string a = Entry(Param("Name", "A")), b = Entry(Param("Name", "B")), c = Entry(Param("Name", "C"));
  const struct {
    std::string page;
    const char* levels;
  } cases[] = {
      // Upper-case markup, no LI end tags, names and the type value in any case.
      {"<UL><LI><OBJECT type=\"text/sitemap\"><PARAM NAME=\"Name\" VALUE=\"A\"><UL><LI><OBJECT "
       "TYPE=\"TEXT/SITEMAP\"><param name=\"name\" value=\"B\"></UL><LI>" + c + "</UL>",
       "1 2 1"},
      {"<ul><li>" + a + "</ul><ul><li>" + b + "</ul>", "1 1"},
      // A nested list that follows its LI instead of sitting inside it.
      {"<ul><li>" + a + "</li><ul><li>" + b + "</li></ul><li>" + c + "</li></ul>", "1 2 1"},
      {a + b + c, "1 1 1"},
      // Stray end tags do not take the depth below zero.
      {"</ul></ul><ul><li>" + a + "<ul><li>" + b, "1 2"},
  };
  for (const auto& t : cases) {
    CHtmlFileSitemap file;
    EXPECT_EQ(ReadText(file, t.page), 1) << t.page;
    EXPECT_EQ(Levels(file), t.levels) << t.page;
    ASSERT_GE(file.GetSitemapArraySize(), 2) << t.page;
    EXPECT_STREQ(file.GetSitemap(0)->GetName(), "A") << t.page;
    EXPECT_STREQ(file.GetSitemap(1)->GetName(), "B") << t.page;
  }
}

// An index entry's later Name/Local/URL runs become sections, the URL as
// the section's secondary reference.
TEST(SitemapReader, IndexSectionTakesItsUrl) {
  CHtmlFileSitemap file;
  ReadText(file, Entry(Param("Name", "keyword") + Param("Name", "First") + Param("Local", "a.htm") +
                       Param("Name", "Second") + Param("Local", "b.htm") + Param("URL", "b2.htm")));
  const CHtmlSitemap* entry = file.GetSitemap(0);
  ASSERT_EQ(entry->GetSectionArraySize(), 2);
  EXPECT_STREQ(entry->GetSection(0)->GetName(), "First");
  EXPECT_STREQ(entry->GetSection(1)->GetPrimary(), "b.htm");
  EXPECT_STREQ(entry->GetSection(1)->GetSecondary(), "b2.htm");
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

// Real-world-style pages and the models they read into: "x.hhc" beside
// "x.hhc.expected" (odd parameter values, other objects, repeated and
// nameless site properties, loose and truncated markup).
TEST(SitemapReader, SamplePages) {
  int cases = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(TELVANIX_TEST_DATA_DIR) + "/sitemap")) {
    const std::string name = entry.path().filename().string();
    if (entry.path().extension() == ".expected")
      continue;
    SCOPED_TRACE(name);
    std::string expected = telvanix::test::ReadDataFile("sitemap/" + name + ".expected");
    ASSERT_FALSE(expected.empty());
    CHtmlFileSitemap file;
    EXPECT_EQ(ReadText(file, telvanix::test::ReadDataFile("sitemap/" + name)), 1);
    EXPECT_EQ(DumpSitemapModel(file), expected);
    ++cases;
  }
  EXPECT_GE(cases, 10);
}

}  // namespace
