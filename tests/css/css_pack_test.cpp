#include "telvanix/css/css_pack.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "telvanix/css/css_style.h"
#include "telvanix/foundation/hash_fold.h"
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

// Kind and text of each line: "@" + original text, or "S " + style name.
std::vector<std::string> Lines(CCssPack& pack) {
  std::vector<std::string> lines;
  POSITION pos = pack.GetListLine().GetHeadPosition();
  while (pos) {
    CCssLogicalLine* line = pack.GetListLine().GetNext(pos);
    if (line->IsAtImport())
      lines.push_back("@" + std::string(static_cast<CCssLglAtImport*>(line)->GetOriginalString()));
    else if (line->IsAtUnknown())
      lines.push_back("@" + std::string(static_cast<CCssLglAtUnknown*>(line)->GetOriginalString()));
    else
      lines.push_back("S " + std::string(static_cast<CCssStyle*>(line)->GetStyleName()));
  }
  return lines;
}

std::vector<std::string> ParseLines(const std::string& text) {
  CByteString content = Bytes(text);
  CCssPack pack(&content);
  pack.Parse();
  return Lines(pack);
}

using L = std::vector<std::string>;

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

TEST(CssPackTest, HtmlCommentMarkersAndCommentsBetweenRules) {
  EXPECT_EQ(ParseLines("<!-- p { color: red } -->"), (L{"S p"}));
  EXPECT_EQ(ParseLines("/* a */ p {x:y}"), (L{"S p"}));
  EXPECT_EQ(ParseLines("<!--\n/* a */\nh1 {x:y}\n-->\n"), (L{"S h1"}));
}

TEST(CssPackTest, CommentEndingInDoubleStarSwallowsTheNextRule) {
  // "**/" does not close: the comment runs on to the next "*/", taking q with it.
  EXPECT_EQ(ParseLines("/* a **/ q {a:b} /* c */ p {x:y}"), (L{"S p"}));
  // With no later close the slash is skipped alone and the text after it is read.
  EXPECT_EQ(ParseLines("/* a **/ q {a:b}"), (L{"S * a **/ q"}));
}

TEST(CssPackTest, AtRulesAreKeptAsWrittenWithTheirBlock) {
  CByteString content = Bytes("@media print { p { color: red } } h1 { }");
  CCssPack pack(&content);
  ASSERT_EQ(pack.Parse(), 1);
  EXPECT_EQ(Lines(pack), (L{"@@media print { p { color: red } } ", "S h1"}));
  POSITION pos = nullptr;
  CCssStyle* h1 = pack.GetFirstStyle(pos);
  ASSERT_NE(h1, nullptr);
  EXPECT_EQ(std::string(h1->GetBodyText()), " ");
  EXPECT_EQ(SaveText(pack), "@media print { p { color: red } } \r\nh1 {  }\r\n");

  EXPECT_EQ(ParseLines("@charset \"x\"; /* c */ p{}"), (L{"@@charset \"x\"; /* c */ ", "S p"}));
  // An unclosed at-rule block leaves the prelude alone as the at-rule.
  EXPECT_EQ(ParseLines("@media print { p {a:b}"), (L{"@@media print "}));
}

TEST(CssPackTest, ImportLineKeepsItsLineBreakAndGivesItsUrl) {
  CByteString content = Bytes("@import url('a.css');\r\n@IMPORT 'b.css';p{}");
  CCssPack pack(&content);
  pack.Parse();
  ASSERT_EQ(Lines(pack), (L{"@@import url('a.css');\r\n", "@@IMPORT 'b.css';", "S p"}));
  POSITION pos = pack.GetListLine().GetHeadPosition();
  CCssLogicalLine* first = pack.GetListLine().GetNext(pos);
  CCssLogicalLine* second = pack.GetListLine().GetNext(pos);
  ASSERT_TRUE(first->IsAtImport() && second->IsAtImport());
  auto* a = static_cast<CCssLglAtImport*>(first);
  auto* b = static_cast<CCssLglAtImport*>(second);
  EXPECT_TRUE(a->IsAnalysed());
  EXPECT_EQ(std::string(a->GetImportCssUrl()), "a.css");
  EXPECT_EQ(std::string(b->GetImportCssUrl()), "b.css");
  EXPECT_EQ(SaveText(pack), "@import url('a.css');\r\n\r\n@IMPORT 'b.css';\r\np {  }\r\n");

  CCssLglAtImport shortImport("@imp", -1);
  EXPECT_EQ(std::string(shortImport.GetImportCssUrl()), "");
  CCssLglAtImport cut("@import 'c.css'; trailing", 16);
  EXPECT_EQ(std::string(cut.GetOriginalString()), "@import 'c.css';");
}

TEST(CssPackTest, UnterminatedRulesAndWordsAreDropped) {
  EXPECT_EQ(ParseLines("p { color: red"), L{});
  EXPECT_EQ(ParseLines("h1 {a:b} p { color: red"), (L{"S h1"}));
  EXPECT_EQ(ParseLines("lonely words at the end"), L{});
  // An unclosed string inside a block is stepped over a byte at a time, so
  // the "}" after it still closes the block.
  EXPECT_EQ(ParseLines("p { content: 'abc }"), (L{"S p"}));
  EXPECT_EQ(ParseLines("p { a:b } /* open comment"), (L{"S p"}));
  // The unclosed "[" makes the rule unreadable; reading resumes a byte later.
  EXPECT_EQ(ParseLines("a[title=\"x\" { }"), (L{"S title=\"x\""}));
}

TEST(CssPackTest, RepeatedSelectorMergesWithMarker) {
  CByteString content = Bytes("p {a:b} p {c:d}");
  CCssPack pack(&content);
  pack.Parse();
  ASSERT_EQ(pack.GetListLine().GetCount(), 1);
  CCssStyle* p = pack.GetStyle("p");
  ASSERT_NE(p, nullptr);
  EXPECT_TRUE(p->IsInheritedStyle());
  EXPECT_EQ(std::string(p->GetBodyText()), "a:b\n/* Css Append */\nc:d");
  // A pack without a path counts as linking too, so declarations go on lines of their own.
  EXPECT_EQ(SaveText(pack), "p { \r\n   a:b; \r\n   c:d;  }\r\n");
  CString value;
  EXPECT_EQ(p->GetStyleProperty()->GetProperty("c", value), 1);
  EXPECT_EQ(std::string(value), "d");
}

TEST(CssPackTest, MergingIsByCaseBlindHash) {
  // Names of equal hash are one style, whatever their letters' case.
  EXPECT_EQ(ParseLines("P.Note {a:b} p.note {c:d}"), (L{"S P.Note"}));
  // Two names that differ after folding yet hash alike merge too.
  ASSERT_EQ(GenHashCode("x_0x"), GenHashCode("x_1-"));
  EXPECT_EQ(ParseLines("x_0x {a:b} x_1- {c:d}"), (L{"S x_0x"}));
}

TEST(CssPackTest, SelectorGroupsAndStrayDeclarations) {
  CByteString content = Bytes("h1,h2{x:y}");
  CCssPack pack(&content);
  pack.Parse();
  EXPECT_EQ(Lines(pack), (L{"S h1", "S h2"}));
  POSITION pos = nullptr;
  CCssStyle* h1 = pack.GetFirstStyle(pos);
  CCssStyle* h2 = pack.GetNextStyle(pos);
  ASSERT_NE(h2, nullptr);
  EXPECT_EQ(std::string(h1->GetBodyText()), "x:y");
  EXPECT_EQ(std::string(h2->GetBodyText()), "x:y");
  EXPECT_EQ(pack.GetNextStyle(pos), nullptr);
  EXPECT_EQ(pos, nullptr);

  // ";" and ":" do not end a selector run.
  EXPECT_EQ(ParseLines("x:y; p {a:b}"), (L{"S x:y; p"}));
  // Contextual selectors keep their inner text; tabs and line breaks join with one space.
  EXPECT_EQ(ParseLines("div   /* c */ p , ul\tli, ol\nli {a:b}"), (L{"S div p", "S ul li", "S ol li"}));
  EXPECT_EQ(ParseLines(", ,h3 , {a:b}"), (L{"S h3"}));
  // A contextual selector cut by "}" is unreadable as a whole.
  EXPECT_EQ(ParseLines("a b} c {x:y}"), (L{"S b c"}));
}

TEST(CssPackTest, GroupedSelectorsEachGetTheirOwnCopyOfTheBody) {
  // The group's body is read once; the repeated h1 merges into the first.
  CByteString content = Bytes("h1, h2, h1 {a:b; c:'d'}");
  CCssPack pack(&content);
  pack.Parse();
  EXPECT_EQ(Lines(pack), (L{"S h1", "S h2"}));
  CCssStyle* h1 = pack.GetStyle("h1");
  CCssStyle* h2 = pack.GetStyle("h2");
  ASSERT_TRUE(h1 && h2);
  EXPECT_EQ(std::string(h1->GetStyleProperty()->GetPrintableString()), "a:b; c:d; a:b; c:d; ");
  EXPECT_EQ(std::string(h2->GetStyleProperty()->GetPrintableString()), "a:b; c:d; ");
  EXPECT_EQ(std::string(h1->GetBodyText()), "a:b; c:'d'\n/* Css Append */\na:b; c:'d'");
  EXPECT_EQ(h1->IsInheritedStyle(), 1);
  EXPECT_EQ(h2->IsInheritedStyle(), 0);
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
// nothing when called on their own) must give exactly the same lines.
std::string PlainBuild(const std::string& text) {
  CCssPack pack(static_cast<const CByteString*>(nullptr));
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = p + text.size();
  while (p < end) {
    p = CCssPack::CssSkipSpaces(p, end, 0);
    if (p >= end || *p == 0)
      break;
    const unsigned char* r;
    if (*p == '@')
      r = pack.CommitLglAtStatement(p, end);
    else if (*p == '/' || *p == '<')
      r = CCssPack::CssSkipSpaces(p, end, 1);
    else
      r = pack.CommitLglCssDefination(p, end);
    p = r > p ? r : p + 1;
  }
  return SaveText(pack);
}

std::string MemoBuild(const std::string& text) {
  CCssPack pack(static_cast<const CByteString*>(nullptr));
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text.data());
  pack.BuildList(p, p + text.size());
  return SaveText(pack);
}

TEST(CssPackTest, RecoveryShortcutsChangeNothing) {
  std::vector<std::string> cases = {
      "a b c d e f", "a b} c d {x:y} e", "p { content: 'abc } q {a:b}", "p { a b c: d; e }",
      "@a x{@b y{@c z{ } p{a:b}", "@m{ {{ } } } x {a:b} @n{", "p { a:b; p { a:b; p { a:b; }",
      "x\"y z {a:b} w\" {c:d}", "a[x] b[y {z} c {d:e}", "p { a-->b: c; <!-- d: e }",
      "p{ab/*c*/d:e; f/*}*/g:h}", "h1 {a:'b;c'; d:e} h2 { f:url(x;y) }", "@media x { p { y: z }",
      "}{}{}{ a {b:c}", "ab,cd ef{x:y}gh ij,{k:l}",
  };
  std::string big;
  for (int i = 0; i < 50; ++i)
    big += "@a x{ p { q: 'r } s t, u {v:w} ";
  cases.push_back(big);
  for (const std::string& text : cases) {
    SCOPED_TRACE(text.substr(0, 60));
    EXPECT_EQ(MemoBuild(text), PlainBuild(text));
    // Every suffix too: the shortcuts must not depend on where reading began.
    for (size_t i = 1; i < text.size() && i < 40; ++i)
      EXPECT_EQ(MemoBuild(text.substr(i)), PlainBuild(text.substr(i)));
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
