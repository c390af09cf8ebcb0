// Models built in code and written; whole pages read and written again are
// the golden cases in tests/data/sitemap (every field: every_field.hhc).
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
