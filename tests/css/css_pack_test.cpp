#include "telvanix/css/css_pack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "telvanix/css/css_style.h"
#include "test_util.h"

namespace telvanix {
namespace {

CByteString Bytes(const std::string& text) {
  return CByteString(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
}

std::string SaveText(CCssPack& pack) {
  CByteString out;
  pack.Save(out);
  return out.GetLength() ? std::string(reinterpret_cast<const char*>(out.GetContent()), out.GetLength()) : "";
}


TEST(CssPackTest, EmptyContentParsesToNothing) {
  CByteString empty;
  CCssPack pack(&empty);
  EXPECT_EQ(pack.Parse(), 0);
  EXPECT_EQ(pack.GetListLine().GetCount(), 0);
  CCssPack none(static_cast<const CByteString*>(nullptr));
  EXPECT_EQ(none.Parse(), 0);
  EXPECT_EQ(none.BuildList(nullptr, nullptr), 0);
  const unsigned char text[] = "p{}";
  EXPECT_EQ(none.BuildList(text + 2, text), 0);
}

TEST(CssPackTest, ImportLinesMadeByHand) {
  CCssLglAtImport shortImport("@imp", -1);
  EXPECT_EQ(std::string(shortImport.GetImportCssUrl()), "");
  CCssLglAtImport cut("@import 'c.css'; trailing", 16);
  EXPECT_EQ(std::string(cut.GetOriginalString()), "@import 'c.css';");
}

TEST(CssPackTest, GroupedSelectorsEachGetTheirOwnCopyOfTheBody) {
  CByteString content = Bytes("h1, h2 {a:b}");
  CCssPack pack(&content);
  pack.Parse();
  POSITION pos = nullptr;
  CCssStyle* h1 = pack.GetFirstStyle(pos);
  CCssStyle* h2 = pack.GetNextStyle(pos);
  ASSERT_TRUE(h1 && h2);
  EXPECT_EQ(pack.GetNextStyle(pos), nullptr);
  EXPECT_EQ(pos, nullptr);
  h2->GetStyleProperty()->SetProperty("a", "z");
  CString value;
  h1->GetStyleProperty()->GetProperty("a", value);
  EXPECT_EQ(std::string(value), "b");
}

TEST(CssPackTest, OverLongSelectorsAreReadWithoutOverrun) {
  const std::string longName(300, 'x');
  CByteString content = Bytes(longName + ".c " + std::string(200, 'y') + " {a:b}");
  CCssPack pack(&content);
  pack.Parse();
  ASSERT_EQ(pack.GetListLine().GetCount(), 1);
  POSITION pos = nullptr;
  CCssStyle* style = pack.GetFirstStyle(pos);
  EXPECT_EQ(style->GetStyleName().GetLength(), 300 + 2 + 1 + 200);
  // The chain looks at 256 bytes: one (cut) run only; the selector at 128.
  ASSERT_EQ(style->GetStyleSelectors()->GetSize(), 1);
  EXPECT_EQ(std::string(style->GetLastSelector()->GetElementName()), std::string(128, 'x'));
  EXPECT_EQ(style->GetLastSelector()->GetPartKind(), 0);

  std::string many;
  for (int i = 0; i < 140; ++i)
    many += "a ";
  CByteString chain = Bytes(many + "{a:b}");
  CCssPack chainPack(&chain);
  chainPack.Parse();
  CCssStyle* contextual = chainPack.GetFirstStyle(pos);
  ASSERT_NE(contextual, nullptr);
  EXPECT_EQ(contextual->GetStyleSelectors()->GetSize(), 128);
}

TEST(CssPackTest, ExactSizeBuffersAreNeverReadPastTheEnd) {
  // Every prefix of a stylesheet with strings, comments, blocks and at-rules,
  // parsed from an unterminated heap copy: the sanitizer build checks reads.
  const std::string text =
      "@import 'a.css'; /* c **/ */ <!-- p.x, a[href='}'] > b { content: \"}\"; c: url(a b) } "
      "@media print { h1 { x: y } } h2 {a:b} -->";
  for (size_t n = 0; n <= text.size(); ++n) {
    std::vector<unsigned char> bytes(text.begin(), text.begin() + static_cast<long>(n));
    CCssPack pack(static_cast<const CByteString*>(nullptr));
    const unsigned char* b = bytes.empty() ? reinterpret_cast<const unsigned char*>(text.data()) : bytes.data();
    EXPECT_EQ(pack.BuildList(b, b + n), 1);
    CByteString out;
    pack.Save(out);
  }
}

TEST(CssPackTest, RemovedLinesAreKeptForMergingButNotSaved) {
  CByteString content = Bytes("h1 {a:b} h2 {c:d}");
  CCssPack pack(&content);
  pack.Parse();
  CCssStyle* h1 = pack.GetStyle("H1");
  ASSERT_NE(h1, nullptr);
  h1->RemoveLine();
  POSITION pos = nullptr;
  EXPECT_EQ(std::string(pack.GetFirstStyle(pos)->GetStyleName()), "h2");
  EXPECT_EQ(pack.GetStyle("h1"), h1);
  EXPECT_EQ(SaveText(pack), "h2 { \r\n    c:d;  }\r\n");

  CCssStyle more("h1", "e:f", nullptr);
  EXPECT_EQ(pack.AddStyleItem(&more), 1);
  EXPECT_EQ(pack.GetListLine().GetCount(), 2);
  EXPECT_TRUE(h1->IsInheritedStyle());
  CCssStyle fresh("h3", "g:h", nullptr);
  EXPECT_EQ(pack.AddStyleItem(&fresh), 1);
  EXPECT_EQ(SaveText(pack), "h2 { \r\n    c:d;  }\r\nh3 { \r\n    g:h;  }\r\n");
  EXPECT_EQ(pack.AddStyleItem(nullptr), 0);
  EXPECT_EQ(pack.GetStyle(nullptr), nullptr);
}

// BuildList remembers where failed attempts went and skips repeating them;
// the same loop written with the public item readers (which remember
// nothing when called on their own) must give exactly the same lines, for
// every recovery case and every suffix of it.
std::string Build(const std::string& text, bool plain) {
  CCssPack pack(static_cast<const CByteString*>(nullptr));
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = p + text.size();
  while (plain && p < end) {
    p = CCssPack::CssSkipSpaces(p, end, 0);
    if (p >= end || *p == 0)
      break;
    const unsigned char* r = *p == '@'                ? pack.CommitLglAtStatement(p, end)
                             : *p == '/' || *p == '<' ? CCssPack::CssSkipSpaces(p, end, 1)
                                                      : pack.CommitLglCssDefination(p, end);
    p = r > p ? r : p + 1;
  }
  if (!plain)
    pack.BuildList(p, end);
  return SaveText(pack);
}

TEST(CssPackTest, RecoveryShortcutsChangeNothing) {
  const std::string cases = test::ReadDataFile("css/recovery.sheets");
  ASSERT_FALSE(cases.empty());
  for (size_t from = 0, to; from < cases.size(); from = to + 5) {
    to = std::min(cases.find("----\n", from), cases.size());
    const std::string text = cases.substr(from, to - from);
    for (size_t i = 0; i < text.size() && i < 40; ++i)
      EXPECT_EQ(Build(text.substr(i), false), Build(text.substr(i), true)) << text.substr(i);
  }
}

TEST(CssPackTest, UnreadableTextIsReadInLinearTime) {
  // Each of these made the byte-at-a-time recovery rescan to the end of the
  // text from every position; 200 KB must read in well under a second.
  std::string words, quote, nested, open;
  for (int i = 0; i < 100000; ++i)
    words += "a ";
  quote = "p { content: '" + std::string(200000, 'x') + " }";
  for (int i = 0; i < 40000; ++i)
    nested += "@a x{";
  for (int i = 0; i < 20000; ++i)
    open += "p { a:b; ";
  for (const std::string* text : {&words, &quote, &nested, &open}) {
    CByteString content = Bytes(*text);
    CCssPack pack(&content);
    const auto start = std::chrono::steady_clock::now();
    pack.Parse();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 5.0) << text->substr(0, 20);
  }
}

// IsLinking, IsEmbedded and IsInline, as three digits.
std::string Kinds(const CCssPack& pack) {
  return std::to_string(pack.IsLinking()) + std::to_string(pack.IsEmbedded()) + std::to_string(pack.IsInline());
}

TEST(CssPackTest, PackKindsFromThePath) {
  test::TempDir dir;
  const std::string css = dir / "Site.CSS";
  dir.Write("Site.CSS", "p {color:red; font-size:10pt}\nh1 {x:y}");

  CByteString ignored = Bytes("ignored {a:b}");
  CCssPack linked(css.c_str(), &ignored);
  EXPECT_EQ(Kinds(linked), "101");
  ASSERT_EQ(linked.Parse(), 1);
  // A linking pack writes each declaration on a line of its own, under the first.
  EXPECT_EQ(SaveText(linked), "p { \r\n   color:red; \r\n   font-size:10pt;  }\r\nh1 { \r\n    x:y;  }\r\n");
  EXPECT_EQ(std::string(linked.GetFilePathName("img/a.gif")), dir / "img/a.gif");
  EXPECT_EQ(std::string(linked.GetFilePathName(nullptr)), css);

  CCssPack embedded((dir / "topic.htm").c_str(), &ignored);
  EXPECT_EQ(Kinds(embedded), "011");
  ASSERT_EQ(embedded.Parse(), 1);
  EXPECT_EQ(SaveText(embedded), "ignored { a:b;  }\r\n");

  CCssPack inlined(&ignored);
  EXPECT_EQ(Kinds(inlined), "111");
  EXPECT_EQ(std::string(inlined.GetFilePathName("a.gif")), "");

  CCssPack missing((dir / "none.css").c_str(), &ignored);
  EXPECT_EQ(missing.Parse(), 0);

  // Saving: to the pack's own file, or to a path; an inline pack has no file.
  EXPECT_EQ(linked.Save(static_cast<const char*>(nullptr)), 1);
  EXPECT_EQ(dir.Read("Site.CSS"), SaveText(linked));
  EXPECT_EQ(inlined.Save(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(inlined.Save((dir / "out.css").c_str()), 1);
  EXPECT_EQ(inlined.Save((dir / "no/such/folder/out.css").c_str()), 0);
}

}  // namespace
}  // namespace telvanix
