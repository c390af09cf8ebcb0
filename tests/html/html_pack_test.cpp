// The document pack: source modes, parse levels and their accumulating
// flags, saving to files and buffers with each save flag, and the layout
// printer (page-shaped cases under data/html/layout: NAME.html saved
// unchanged with each save flag, 2 to 4, gives NAME.expected).
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <utility>

#include "golden_cases.h"
#include "html/html_test_util.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/html_pack.h"

namespace telvanix {
namespace {

using test::Buffer;
using test::Bytes;
using test::Str;

std::string SaveToString(CHtmlPack& pack, CHtmlPack::EmSaveFlag flag) {
  CByteString out;
  EXPECT_EQ(1, pack.Save(&out, flag));
  return Bytes(out);
}

// Exposes the protected print-type hook.
class CPrintTypePack : public CHtmlPack {
 public:
  using CHtmlPack::GetTagPrintType;
};

TEST(HtmlPackCases, LayoutSavesGiveTheirExpectedText) {
  test::RunGoldenCases("html/layout", ".html", [](const std::string&, const std::string& page) {
    std::string out;
    for (int flag = 2; flag <= 4; ++flag) {
      test::ParsedPack pack(page, CHtmlPack::emParseAttributes);
      EXPECT_EQ(1, pack.parsed);
      out += "== save " + std::to_string(flag) + "\n" + test::ShowCarriageReturns(pack.Saved(flag)) + "\n";
    }
    return out;
  }, 4);
}

// tests/data/html/edits/NAME.edit: a page, then lines of edits made to it
// before each save: "== insert after N: TAG" (or before) puts a new tag at
// the N-th token (from 0, counted as the list stands), "== keep indent N"
// sets the N-th token's manual indent before to keep, "== save F" saves with
// flag F into NAME.expected.
TEST(HtmlPackCases, EditedPagesSaveWithTheirLayout) {
  test::RunGoldenCases("html/edits", ".edit", [](const std::string&, const std::string& input) {
    const std::size_t end = input.find("\n== ");
    test::ParsedPack page(input.substr(0, end), CHtmlPack::emParseAttributes);
    CHtmlTokenList* list = page.List();
    auto at = [list](int n) {
      POSITION pos = list->GetHeadPosition();
      while (n-- > 0 && pos != nullptr) list->GetNext(pos);
      return pos;
    };
    std::string out;
    std::istringstream edits(end == std::string::npos ? "" : input.substr(end + 1));
    for (std::string line; std::getline(edits, line);) {
      char where[8] = "", tag[128] = "";
      int n = 0;
      if (std::sscanf(line.c_str(), "== insert %7s %d: %127[^\n]", where, &n, tag) == 3 && at(n) != nullptr)
        std::string(where) == "after" ? list->InsertAfter(at(n), new CHtmlTagItem(tag))
                                      : list->InsertBefore(at(n), new CHtmlTagItem(tag));
      else if (std::sscanf(line.c_str(), "== keep indent %d", &n) == 1 && at(n) != nullptr)
        list->GetTokenItem(at(n))->SetManualIndentBefore(CHtmlTokenItem::emManualIndentKeep);
      else if (std::sscanf(line.c_str(), "== save %d", &n) == 1)
        out += "== save " + std::to_string(n) + "\n" + test::ShowCarriageReturns(page.Saved(n)) + "\n";
      else
        ADD_FAILURE() << "cannot do: " << line;
    }
    return out;
  }, 4);
}

TEST(HtmlPack, SourceModesAndPagesThatCannotBeRead) {
  CHtmlPack empty, file("/no/such/page.htm");
  EXPECT_EQ(1, empty.GetSourceMode());
  EXPECT_EQ(1, empty.IsParsed());
  EXPECT_EQ(2, file.GetSourceMode());
  EXPECT_EQ(0, file.IsParsed());
  EXPECT_EQ(0, file.Parse(CHtmlPack::emParseTokens));
  EXPECT_EQ(0, empty.Parse(static_cast<CHtmlPack::EmParseFlag>(0)));  // levels are 1 to 5
  EXPECT_EQ(0, empty.Parse(static_cast<CHtmlPack::EmParseFlag>(6)));
  CByteString bytes = Buffer("<p>"), none;
  EXPECT_EQ(3, CHtmlPack(bytes, nullptr).GetSourceMode());
  EXPECT_EQ(2, CHtmlPack(bytes, "/x/page.htm").GetSourceMode());
  EXPECT_EQ(0, CHtmlPack(none, nullptr).Parse(CHtmlPack::emParseTokens));
  test::TempDir dir;
  dir.Write("empty.htm", "");
  CHtmlPack emptyFile((dir / "empty.htm").c_str());
  EXPECT_EQ(0, emptyFile.Parse(CHtmlPack::emParseTokens));  // an empty file cannot be mapped
  EXPECT_EQ(0, emptyFile.OpenMappingView((dir / "empty.htm").c_str()));
  EXPECT_EQ(1, emptyFile.CloseMappingView());
  // An empty pack parses to nothing and saves nothing.
  EXPECT_EQ(1, empty.Parse(CHtmlPack::emParseAttributes));
  EXPECT_EQ(0x3, empty.GetAnalyseFlags());  // no original mark for an empty pack
  EXPECT_EQ(0, empty.IsTokenListModified());
  EXPECT_EQ("", SaveToString(empty, CHtmlPack::emSave));
  EXPECT_EQ(0, empty.Save(static_cast<CByteString*>(nullptr), CHtmlPack::emSave));
  EXPECT_EQ(0, empty.Save(static_cast<const char*>(nullptr), CHtmlPack::emSave));
}

TEST(HtmlPack, ParseLevelsAccumulateFlags) {
  CByteString bytes = Buffer("<html><body><p>a<p>b</body></html>");
  CHtmlPack pack(bytes, nullptr);
  EXPECT_EQ(0, pack.Parse(static_cast<CHtmlPack::EmParseFlag>(6)));
  EXPECT_EQ(0, pack.Parse(static_cast<CHtmlPack::EmParseFlag>(0)));
  EXPECT_EQ(0, pack.GetAnalyseFlags());
  EXPECT_EQ(1, pack.Parse(CHtmlPack::emParseTokens));
  EXPECT_EQ(0x101, pack.GetAnalyseFlags());
  CHtmlTokenItem* head = pack.GetTokenList()->GetHead();
  ASSERT_NE(nullptr, head);
  EXPECT_EQ(0x101u, head->GetTokenFlag() & 0x103u);
  EXPECT_EQ(nullptr, pack.GetEntityTree());
  const std::pair<CHtmlPack::EmParseFlag, int> levels[] = {{CHtmlPack::emParseAttributes, 0x103},
                                                          {CHtmlPack::emParseTree, 0x107},
                                                          {CHtmlPack::emParseXmlTree, 0x20107},
                                                          {CHtmlPack::emParseHtmlTree, 0x30107}};
  for (auto [level, flags] : levels) {
    EXPECT_EQ(1, pack.Parse(level));
    EXPECT_EQ(flags, pack.GetAnalyseFlags());
  }
  EXPECT_NE(nullptr, pack.GetEntityTree());
  // Tokenised once: deeper parses keep the same tokens.
  EXPECT_EQ(head, pack.GetTokenList()->GetHead());
  // A repaired outline counts as a change (tree/p_p_outline pins its text).
  CByteString repaired = Buffer("<P>a<P>bc");
  CHtmlPack outline(repaired, nullptr);
  EXPECT_EQ(1, outline.Parse(CHtmlPack::emParseHtmlTree));
  EXPECT_EQ(1, outline.IsTokenListModified());
  EXPECT_EQ(1, outline.RebuildEntityTree());
}

TEST(HtmlPack, FilePackReadsThroughAMappingAndSavesOverItsOwnFile) {
  test::TempDir dir;
  const std::string page = "<p class=a>x &amp; y</p>\r\n";
  dir.Write("page.htm", page);
  CHtmlPack pack((dir / "page.htm").c_str());
  ASSERT_EQ(1, pack.Parse(CHtmlPack::emParseAttributes));
  EXPECT_EQ(0x103, pack.GetAnalyseFlags());
  EXPECT_EQ(page, SaveToString(pack, CHtmlPack::emSave));
  EXPECT_STREQ("a", pack.GetTokenList()->GetTagItem(pack.GetTokenList()->GetHeadPosition())->GetAttributeValue("class"));
  // Unchanged, flag 2: nothing written (the file changed meanwhile stays),
  // also when the same file is named in another letter case.
  EXPECT_EQ(0, pack.IsTokenListModified());
  dir.Write("page.htm", "changed on disk");
  EXPECT_EQ(1, pack.Save(static_cast<const char*>(nullptr), CHtmlPack::emSave));
  EXPECT_EQ(1, pack.Save((dir / "PAGE.HTM").c_str(), CHtmlPack::emSave));
  EXPECT_EQ("changed on disk", dir.Read("page.htm"));
  // Flag 3 always writes.
  EXPECT_EQ(1, pack.Save(static_cast<const char*>(nullptr), CHtmlPack::emSaveLayout));
  EXPECT_EQ("<p class=a>x &amp; y</p>", dir.Read("page.htm"));
  // A change makes flag 2 write.
  dir.Write("page.htm", "changed again");
  pack.GetTokenList()->GetHead()->GetSafeTagItemPtr()->SetAttribute("id", "x");
  EXPECT_EQ(1, pack.IsTokenListModified());
  EXPECT_EQ(1, pack.Save(static_cast<const char*>(nullptr), CHtmlPack::emSave));
  EXPECT_EQ("<p class=\"a\" id=\"x\">x &amp; y</p>\r\n", dir.Read("page.htm"));  // the edited tag is written anew
}

TEST(HtmlPack, LayoutSaveOfAnUnreadPageKeepsItsContent) {
  test::TempDir dir;
  dir.Write("page.htm", "<p>one</p><p>two</p>\r\n");
  CHtmlPack pack((dir / "page.htm").c_str());
  // Never parsed: the save reads the page first instead of writing an empty one.
  EXPECT_EQ(1, pack.Save(static_cast<const char*>(nullptr), CHtmlPack::emSaveLayout));
  EXPECT_NE(std::string::npos, dir.Read("page.htm").find("two"));
  // A page that cannot be read is not replaced by nothing.
  CHtmlPack missing((dir / "gone.htm").c_str());
  EXPECT_EQ(0, missing.Save((dir / "out.htm").c_str(), CHtmlPack::emSaveLayout));
  EXPECT_EQ(std::string::npos, dir.List().find("out.htm"));
}

TEST(HtmlPack, SaveFlagOneRefusesExistingTargets) {
  test::TempDir dir;
  dir.Write("taken.htm", "old");
  CByteString bytes = Buffer("<b>x</b>");
  CHtmlPack pack(bytes, nullptr);
  ASSERT_EQ(1, pack.Parse(CHtmlPack::emParseTokens));
  EXPECT_EQ(0, pack.Save((dir / "taken.htm").c_str(), CHtmlPack::emSaveNoOverwrite));
  EXPECT_EQ("old", dir.Read("taken.htm"));
  EXPECT_EQ(1, pack.Save((dir / "new.htm").c_str(), CHtmlPack::emSaveNoOverwrite));
  EXPECT_EQ("<b>x</b>", dir.Read("new.htm"));
  EXPECT_EQ(1, pack.Save((dir / "taken.htm").c_str(), CHtmlPack::emSave));
  EXPECT_EQ("<b>x</b>", dir.Read("taken.htm"));
  // A buffer pack has no file of its own.
  EXPECT_EQ(0, pack.Save(static_cast<const char*>(nullptr), CHtmlPack::emSave));
  EXPECT_EQ(0, pack.Save((dir / "no/such/dir/x.htm").c_str(), CHtmlPack::emSave));
}

TEST(HtmlPack, PrintTypesFromCodeAndManualFlags) {
  CPrintTypePack pack;
  auto types = [&](CHtmlTagItem* tag) {
    int before = -1, after = -1;
    const int result = pack.GetTagPrintType(tag, before, after);
    return std::to_string(result) + ":" + std::to_string(before) + "," + std::to_string(after);
  };
  EXPECT_EQ("0:0,0", types(nullptr));
  CHtmlTagItem div("<div>"), endDiv("</div>"), html("<html>"), p("<p>");
  EXPECT_EQ("1:4,5", types(&div));
  EXPECT_EQ("1:6,4", types(&endDiv));
  html.SetManualIndentBefore(CHtmlTokenItem::emManualIndentNewLine);
  html.SetManualIndentBefore(CHtmlTokenItem::emManualIndentKeep);
  html.SetManualIndentAfter(CHtmlTokenItem::emManualIndentKeep);
  EXPECT_EQ("1:4,4", types(&html));  // value 2 wins over value 1
  p.SetManualIndentAfter(CHtmlTokenItem::emManualIndentNewLine);
  EXPECT_EQ("1:4,1", types(&p));  // before from the code
}

TEST(HtmlPack, ModificationTracking) {
  CByteString bytes = Buffer("<p>a</p>");
  CHtmlPack pack(bytes, nullptr);
  pack.Parse(CHtmlPack::emParseTokens);
  EXPECT_EQ(0, pack.IsTokenListModified());
  pack.GetTokenList()->GetTail()->DiscardToken();
  EXPECT_EQ(1, pack.IsTokenListModified());
  EXPECT_EQ("<p>a", SaveToString(pack, CHtmlPack::emSave));

  CHtmlPack empty;
  empty.GetTokenList()->AddTail(new CHtmlTextItem("x"));
  EXPECT_EQ(1, empty.IsTokenListModified());
  CHtmlTextItem* plain = new CHtmlTextItem;
  plain->SetOriginalData("y");
  CHtmlPack other;
  other.GetTokenList()->AddTail(plain);
  EXPECT_EQ(1, other.IsTokenListModified());  // no original mark
}

TEST(HtmlPack, ChangeFilenameAndPaths) {
  test::TempDir dir;
  dir.Write("a.htm", "<p>a</p>");
  dir.Write("b.htm", "<p>b</p>");
  CHtmlPack pack((dir / "a.htm").c_str());
  EXPECT_EQ(0, pack.ChangeFilename(nullptr));
  EXPECT_EQ(0, pack.ChangeFilename(""));
  // The old content is read before the target changes.
  EXPECT_EQ(1, pack.ChangeFilename((dir / "c.htm").c_str()));
  EXPECT_EQ(1, pack.IsParsed());
  EXPECT_EQ(1, pack.Save(static_cast<const char*>(nullptr), CHtmlPack::emSaveLayout));
  EXPECT_EQ("<p>a</p>", dir.Read("c.htm"));
  EXPECT_EQ(dir / "c.htm", Str(pack.GetFilePathName(nullptr)));
  EXPECT_EQ(dir / "img/x.gif", Str(pack.GetFilePathName("img/x.gif")));
  EXPECT_EQ(dir / "x.gif", Str(pack.GetFilePathName("sub/../x.gif")));

  CHtmlPack empty;
  EXPECT_EQ(0, empty.ChangeFilename((dir / "none.htm").c_str()));
  EXPECT_EQ(1, empty.GetSourceMode());
  EXPECT_EQ(1, empty.ChangeFilename((dir / "b.htm").c_str()));
  EXPECT_EQ(2, empty.GetSourceMode());
  EXPECT_EQ("<p>b</p>", SaveToString(empty, CHtmlPack::emSave));

  CByteString bytes = Buffer("<p>");
  CHtmlPack buffer(bytes, nullptr);
  EXPECT_EQ(0, buffer.ChangeFilename((dir / "b.htm").c_str()));
  EXPECT_EQ("", Str(buffer.GetFilePathName("x.gif")));
}

}  // namespace
}  // namespace telvanix
