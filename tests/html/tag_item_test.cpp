// The tag syntax table and tag tokens: the table's invariants, lookup by
// name, what a line-shaped case cannot show. Single tags (rows, names,
// records, comment marks, edits and re-quoting) are in tests/data/html/tags.
#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <set>
#include <sstream>
#include <string>

#include "golden_cases.h"
#include "html/html_test_util.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {
namespace {

using test::Str;
using test::U;

// The attribute records in order, as "name=[value]" separated by blanks.
std::string Attributes(CHtmlTagItem& tag) {
  std::string out;
  unsigned int pos;
  const char* value;
  for (const char* name = tag.GetFirstAttribute(pos, value); name; name = tag.GetNextAttribute(pos, value))
    out += std::string(out.empty() ? "" : " ") + name + "=[" + (value ? value : "(null)") + "]";
  return out;
}

using T = CHtmlTagItem;

// Rows 0 to 5 are the invalid row and the rows unknown tags point at; the
// rest are elements, each found by its own name in either case.
TEST(TagSyntaxTable, SortedUniqueAndEveryRowFoundByItsOwnName) {
  EXPECT_EQ(1, T::InitializeSyntaxTable());
  std::set<DWORD> ids;
  for (int i = 0; i < T::ms_nTagSyntaxTableSize; ++i) {
    const TagSyntaxItem& row = T::ms_tTagSyntaxTable[i];
    const std::string name = row.m_pszTagName;
    std::string lower = name;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_TRUE(ids.insert(row.m_nTagId).second) << name;
    EXPECT_TRUE(i == 0 || T::ms_tTagSyntaxTable[i - 1].m_nHashCode < row.m_nHashCode) << name;
    EXPECT_EQ(i <= T::emUnknownLastRowIndex, (row.m_nMjrType & T::emMjrInvalidRow) == T::emMjrInvalidRow) << i;
    // An empty element never waits for an end tag.
    EXPECT_TRUE(row.m_nCntType != T::emCntEmpty || (row.m_nMjrType & T::emMjrNotElement) == T::emMjrNotElement ||
                row.m_nOcrType == T::emOcrEndOptional) << name;
    if (i == 0) continue;
    DWORD hash = 0;
    int index = -1;
    EXPECT_TRUE(T::GetTagIndex(U(name.c_str()), U(name.c_str()) + name.size() - 1, &hash) == i &&
                hash == row.m_nHashCode) << name;
    EXPECT_TRUE(T::GetTagIdFromTagName(lower.c_str(), &index) == static_cast<int>(row.m_nTagId) && index == i) << name;
    EXPECT_EQ(static_cast<int>(row.m_nTagId | T::emTagIdEndBit), T::GetTagIdFromTagName(("/" + name).c_str(), nullptr));
    if (i <= T::emUnknownLastRowIndex) continue;
    // name -> tag -> row -> name
    CHtmlTagItem tag(("<" + lower + ">").c_str());
    EXPECT_STREQ(row.m_pszTagName, T::GetTagSyntaxItem(tag.GetTagIndex())->m_pszTagName);
    EXPECT_TRUE(tag.IsTagNameSameAs(name.c_str())) << name;
  }
  EXPECT_TRUE(T::GetTagSyntaxItem(0) == T::GetTagSyntaxItem(T::ms_nTagSyntaxTableSize) &&
              T::GetTagSyntaxItem(0) == T::GetTagSyntaxItem(-1));
}

// Unknown: the hashed id with bit 29 and index 0; any name that begins with
// "!--" is the comment row; characters outside the code table do not count.
TEST(TagSyntaxTable, LookupByName) {
  DWORD hash = 0;
  int index = -5, comment = -5;
  const char* text = "legend!--x";
  EXPECT_EQ(-1, T::GetTagIndex(U(text), U(text) + 5, &hash));
  EXPECT_EQ(static_cast<int>((hash & T::emTagIdHashMask) | T::emTagIdUnknownBit),
            T::GetTagIdFromTagName("LEGEND", &index));
  EXPECT_EQ(0, index);
  T::GetTagIdFromTagName("!--", &comment);
  EXPECT_EQ(comment, T::GetTagIndex(U(text) + 6, U(text) + 9, nullptr));
  EXPECT_EQ(-1, T::GetTagIndex(U(text) + 1, U(text), &hash));
  EXPECT_EQ(0xFFFFFFFFu, hash);
  EXPECT_EQ(T::emTagIdDiv, T::GetTagIdFromTagName("d.i\tv", nullptr));
}

// An edit of a golden tag line: "set NAME[=VALUE]", "delete NAME",
// "remove N", "replace N [NAME][=VALUE]" (no "=": null value; nothing
// before it: null name) or "modify"; gives the call's result.
std::string Edit(CHtmlTagItem& tag, const std::string& op) {
  std::istringstream in(op);
  std::string verb, rest;
  int n = 0;
  in >> verb;
  if (verb == "remove" || verb == "replace") in >> n;
  std::getline(in >> std::ws, rest);
  const std::size_t eq = rest.find('=');
  const std::string name = rest.substr(0, eq), value = eq == std::string::npos ? "" : rest.substr(eq + 1);
  const char* pValue = eq == std::string::npos ? nullptr : value.c_str();
  if (verb == "set") return std::to_string(tag.SetAttribute(name.c_str(), pValue));
  if (verb == "delete") return std::to_string(tag.DeleteAttribute(name.c_str()));
  if (verb == "remove") return std::to_string(tag.RemoveAttributeByNum(n));
  if (verb == "replace")
    return std::to_string(tag.ReplaceAttributeByNum(n, name.empty() ? nullptr : name.c_str(), pValue));
  tag.SetTokenFlag(CHtmlTokenItem::emTokenModified);
  return "-";
}

// One tag a line, with edits after " | ": its row, name, XML type, how the
// tokenizer would take it, the category predicates, the attribute records
// and, after edits, their results and the printed tag.
std::string DescribeTags(const std::string&, const std::string& input) {
  std::string out, line;
  std::istringstream lines(input);
  while (std::getline(lines, line)) {
    std::size_t bar = line.find(" | ");
    const std::string text = line.substr(0, bar);
    CHtmlTagItem tag(text.c_str());
    std::string edits;
    for (std::size_t from; bar != std::string::npos; bar = line.find(" | ", from)) {
      from = bar + 3;
      edits += " " + Edit(tag, line.substr(from, line.find(" | ", from) - from));
    }
    out += line + "\n  ";
    if (tag.GetTagId() == 0) out += "no name";
    else if (tag.IsUnknownTag()) out += "unknown, row " + std::to_string(tag.GetTagIndex());
    else out += std::string("row ") + T::GetTagSyntaxItem(tag.GetTagIndex())->m_pszTagName;
    out += std::string(tag.IsEndTag() ? " end" : "") + ", name \"" + Str(tag.GetTagName()) + "\", xml " +
           std::to_string(tag.GetXmlType()) + (tag.IsXmlTag() ? " (xml tag)" : "") + ", starts " +
           std::to_string(T::IsValidTagToken(U(text.c_str()), U(text.c_str()) + text.size()));
    out += std::string(tag.IsBlockLevelTag() ? ", block" : "") + (tag.IsInlineLevelTag() ? ", inline" : "") +
           (tag.IsBlockTag() ? ", block tag" : "") + (tag.IsBlockLevelEmbeddedTag() ? ", block embedded" : "") +
           (tag.IsInineLevelEmbeddedTag() ? ", inline embedded" : "");
    out += "\n  " + std::to_string(tag.GetTotalAttributesNum()) + " records: " + Attributes(tag) + "\n";
    CString mark, data;
    if (T::GetCommentMark(&tag, mark, data))
      out += "  comment mark [" + Str(mark) + "] [" + Str(data) + "]\n";
    if (!edits.empty())
      out += "  edits" + edits + (tag.IsModifiedToken() ? ", modified: " : ": ") +
             Str(tag.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)) + "\n";
  }
  return out;
}

TEST(TagItem, GoldenTags) { test::RunGoldenCases("html/tags", ".tags", DescribeTags, 3); }

TEST(TagItem, IdsNamesAndUnknownRows) {
  CHtmlTagItem p("<p>"), end("</P>"), bare("b"), nameless("< y >"), empty, foo("<foo>");
  EXPECT_EQ(end.GetTagId(), p.GetEndofTagId());
  EXPECT_EQ("<b>", Str(bare.GetOriginalString()));
  EXPECT_EQ(T::emTokenIdentified | T::emTokenAnalysed | T::emTokenInserted, bare.GetTokenFlag());
  EXPECT_FALSE(nameless.IsValidTagIndex());
  EXPECT_EQ(0, nameless.GetPrtType());
  EXPECT_EQ(T::emMjrInvalidRow, nameless.GetMjrType());
  EXPECT_TRUE(empty.Analyse(T::emAnalyseIdentify) == 0 && empty.GetTokenFlag() == 0u);
  EXPECT_TRUE(end.IsTagNameSameAs("</p") && !end.IsTagNameSameAs("p"));
  EXPECT_EQ(std::string(62, 'x'), Str(CHtmlTagItem(("<" + std::string(80, 'x') + ">").c_str()).GetTagName()));
  EXPECT_EQ(1, foo.ChangeUnknownTagIndex(T::emUnknownContainerTagIndex));
  EXPECT_EQ(T::emOcrEndRequired, foo.GetOcrType());
  EXPECT_EQ(0, foo.ChangeUnknownTagIndex(T::emUnknownLastRowIndex) + foo.ChangeUnknownTagIndex(0) +
                   p.ChangeUnknownTagIndex(T::emUnknownEmptyTagIndex));
}

TEST(TagEditing, LookupPrintingAndCopy) {
  CHtmlTagItem a("<A HREF='x.htm' Title=\"t\" NOWRAP>");
  EXPECT_STREQ("t", a.GetAttributeValue("TITLE"));
  EXPECT_STREQ("", a.GetAttributeValue("nowrap"));
  EXPECT_TRUE(a.GetAttributeValue("alt") == nullptr && a.HasAttribute("NoWrap") && !a.HasAttribute("alt"));
  EXPECT_EQ(0, a.SetAttribute(nullptr, "x"));
  const char *name = nullptr, *value = nullptr;
  EXPECT_EQ(1, a.GetAttributeByNum(1, name, value));
  EXPECT_EQ("Title=t", std::string(name) + "=" + value);
  EXPECT_EQ(0, a.GetAttributeByNum(3, name, value));
  // Unchanged: the source bytes, whatever their quoting or case; then rebuilt.
  a.SetOriginalIndentAfter("\r\n");
  EXPECT_EQ("<A HREF='x.htm' Title=\"t\" NOWRAP>\r\n", Str(a.GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)));
  a.DeleteAttribute("title");
  EXPECT_EQ("<A HREF=\"x.htm\" NOWRAP>\r\n", Str(a.GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)));
  EXPECT_EQ("", Str(a.GetPrintableText(static_cast<CHtmlTokenItem::EmTextFlag>(7))));
  CHtmlTagItem open("<!-- open");
  open.SetTokenFlag(CHtmlTokenItem::emTokenModified);
  open.SetOriginalIndentAfter("\n");
  EXPECT_EQ("<!-- -->", Str(open.GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)));  // no indent
  CHtmlTagItem to;
  EXPECT_TRUE(to.Copy(&a) && to.GetTagId() == a.GetTagId());
  a.SetAttribute("href", "y.htm");
  EXPECT_STREQ("x.htm", to.GetAttributeValue("href"));
  EXPECT_EQ(0, to.Copy(nullptr));
}

TEST(CommentMarks, Make) {
  EXPECT_EQ("<!-- QZTXMARK data -->", Str(T::MakeCommentMark(nullptr, "data")));
  EXPECT_EQ("<!-- M  -->", Str(T::MakeCommentMark("M", nullptr)));
  EXPECT_FALSE(T::IsCommentMark(nullptr));
  CString m("junk"), d("junk");
  CHtmlTagItem plain("<!-- qztxmark -->");
  EXPECT_EQ(0, T::GetCommentMark(&plain, m, d));
  EXPECT_EQ("", Str(m) + Str(d));
}

}  // namespace
}  // namespace telvanix
