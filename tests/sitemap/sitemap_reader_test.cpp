// Sitemap pages as golden cases: tests/data/sitemap holds contents (.hhc) and
// index (.hhk) pages; NAME.expected is the read result, the model and the
// page the writer makes of that model.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "golden_cases.h"
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

std::string Describe(const std::string&, const std::string& input) {
  CHtmlFileSitemap file;
  std::string out = "read " + std::to_string(ReadText(file, input)) + "\n";
  out += DumpSitemapModel(file) + "written\n";
  CByteString written;
  file.Write(written);
  const std::string text(reinterpret_cast<const char*>(written.GetContent()), static_cast<size_t>(written.GetLength()));
  for (size_t at = 0, end; at < text.size(); at = end + 2) {
    end = text.find("\r\n", at);
    if (end == std::string::npos) end = text.size();
    out += "| " + text.substr(at, end - at) + "\n";
  }
  return out;
}

TEST(SitemapReader, PagesReadAsExpected) {
  // Contents and index pages share the folder, so no two may share a name.
  std::set<std::string> names;
  for (const char* extension : {".hhc", ".hhk"}) {
    for (const std::string& name : test::GoldenCaseNames("sitemap", extension))
      EXPECT_TRUE(names.insert(name).second) << name;
  }
  test::RunGoldenCases("sitemap", ".hhc", Describe, 15);
  test::RunGoldenCases("sitemap", ".hhk", Describe, 2);
}

TEST(SitemapReader, ReadingStartsAfreshAndBadPathsGiveZero) {
  CHtmlFileSitemap file;
  file.SetTitle("old");
  file.AddSitemap(new CHtmlSitemap);
  EXPECT_EQ(ReadText(file, ""), 0);
  EXPECT_EQ(file.GetSitemapArraySize(), 0);
  EXPECT_EQ(file.GetTitle(), nullptr);
  EXPECT_EQ(file.Read(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(file.Read("/nonexistent/dir/toc.hhc"), 0);
}

}  // namespace
