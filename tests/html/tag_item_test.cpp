// The tag syntax table and tag tokens: identification by name hash, the
// attribute parser's handling of comments, CDATA, quotes and stray words,
// attribute editing and re-quoting, comment marks and XML types.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

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

int IndexOf(const char* name) {
  for (int i = 0; i < CHtmlTagItem::ms_nTagSyntaxTableSize; ++i)
    if (std::strcmp(CHtmlTagItem::ms_tTagSyntaxTable[i].m_pszTagName, name) == 0)
      return i;
  return -1;
}

TEST(TagSyntaxTable, SortedByDistinctHashes) {
  EXPECT_EQ(1, CHtmlTagItem::InitializeSyntaxTable());
  EXPECT_EQ(1, CHtmlTagItem::InitializeSyntaxTable());
  ASSERT_EQ(111, CHtmlTagItem::ms_nTagSyntaxTableSize);
  std::set<DWORD> ids;
  for (int i = 1; i < 111; ++i) {
    EXPECT_LT(CHtmlTagItem::ms_tTagSyntaxTable[i - 1].m_nHashCode, CHtmlTagItem::ms_tTagSyntaxTable[i].m_nHashCode);
    ids.insert(CHtmlTagItem::ms_tTagSyntaxTable[i].m_nTagId);
  }
  EXPECT_EQ(110u, ids.size());
  // The non-element rows keep the first places after the sort.
  EXPECT_STREQ("", CHtmlTagItem::ms_tTagSyntaxTable[0].m_pszTagName);
  for (int i = 1; i <= 5; ++i)
    EXPECT_EQ(std::to_string(i), CHtmlTagItem::ms_tTagSyntaxTable[i].m_pszTagName);
  EXPECT_EQ(26u, CHtmlTagItem::ms_tTagSyntaxTable[IndexOf("P")].m_nHashCode);
  EXPECT_EQ(75323u, CHtmlTagItem::ms_tTagSyntaxTable[IndexOf("!--")].m_nHashCode);
  EXPECT_NE(-1, IndexOf("LENGEND"));
  EXPECT_EQ(-1, IndexOf("LEGEND"));
}

TEST(TagSyntaxTable, RowsCarryTheirColumns) {
  struct Row {
    const char* name;
    DWORD id;
    int ocr, cnt, spt, ver;
    DWORD mjr, prt;
  } rows[] = {
      {"!DOCTYPE", 0x10, 0, 0x0, 0x200, -1, 0xFF000004, 0x101},
      {"HTML", 0x20, 0, 0x1, 0x0, -1, 0xFF000004, 0x1010101},
      {"COMMENT", 0x70, 2, 0x40, 0x100, -1, 0xFF000004, 0x0},
      {"TITLE", 0x10000, 2, 0x10, 0x0, -1, 0xC0100000, 0x2},
      {"SCRIPT", 0x22060, 2, 0x40, 0x100, -1, 0xE0209000, 0x0},
      {"MARQUEE", 0x202F2, 2, 0x42, 0x0, 0x600, 0xA0009000, 0x0},
      {"PARAM", 0x20221, 1, 0x0, 0x0, -1, 0xA0020000, 0x0},
      {"DIV", 0x21020, 2, 0x42, 0x0, -1, 0xA0000010, 0x4060504},
      {"LENGEND", 0x210A1, 2, 0x44, 0x0, -1, 0xA0000100, 0x4},
      {"INS", 0x22000, 2, 0x71, 0x0, 0x8, 0xA0000001, 0x0},
      {"FRAME", 0x34000, 1, 0x0, 0x0, -1, 0x90000002, 0x4},
      {"BGSOUND", 0x40001, 1, 0x0, 0x0, 0x600, 0x80000000, 0x0},
  };
  for (const Row& r : rows) {
    int i = IndexOf(r.name);
    ASSERT_GE(i, 0) << r.name;
    const TagSyntaxItem* row = CHtmlTagItem::GetTagSyntaxItem(i);
    EXPECT_EQ(r.id, row->m_nTagId) << r.name;
    EXPECT_EQ(r.ocr, row->m_nOcrType) << r.name;
    EXPECT_EQ(r.cnt, row->m_nCntType) << r.name;
    EXPECT_EQ(r.spt, row->m_nSptType) << r.name;
    EXPECT_EQ(r.ver, row->m_nVerType) << r.name;
    EXPECT_EQ(r.mjr, row->m_nMjrType) << r.name;
    EXPECT_EQ(r.prt, row->m_nPrtType) << r.name;
  }
  EXPECT_EQ(CHtmlTagItem::GetTagSyntaxItem(0), CHtmlTagItem::GetTagSyntaxItem(111));
  EXPECT_EQ(CHtmlTagItem::GetTagSyntaxItem(0), CHtmlTagItem::GetTagSyntaxItem(-1));
}

TEST(TagSyntaxTable, LookupByName) {
  int index = -5;
  EXPECT_EQ(0x21000, CHtmlTagItem::GetTagIdFromTagName("p", &index));
  EXPECT_EQ(IndexOf("P"), index);
  EXPECT_EQ(0x21000 | 0x10000000, CHtmlTagItem::GetTagIdFromTagName("/P", nullptr));
  // Unknown: hashed id with bit 29 and index 0.
  DWORD hash = 0;
  const char* legend = "legend";
  EXPECT_EQ(-1, CHtmlTagItem::GetTagIndex(U(legend), U(legend) + 5, &hash));
  EXPECT_EQ(static_cast<int>((hash & 0x0FFFFFFF) | 0x20000000), CHtmlTagItem::GetTagIdFromTagName("LEGEND", &index));
  EXPECT_EQ(0, index);
  // Any name that begins with "!--" is the comment row.
  const char* comment = "!--whatever";
  EXPECT_EQ(IndexOf("!--"), CHtmlTagItem::GetTagIndex(U(comment), U(comment) + 10, nullptr));
  EXPECT_EQ(-1, CHtmlTagItem::GetTagIndex(U(comment) + 1, U(comment), &hash));
  EXPECT_EQ(0xFFFFFFFFu, hash);
  // Characters outside the code table do not count.
  EXPECT_EQ(0x21020, CHtmlTagItem::GetTagIdFromTagName("d.i\tv", nullptr));
}

TEST(TagSyntaxTable, ClassifiesTagStarts) {
  auto kind = [](const char* text) {
    return CHtmlTagItem::IsValidTagToken(U(text), U(text) + std::strlen(text));
  };
  EXPECT_EQ(0, kind("<p>"));
  EXPECT_EQ(0, kind("</script>"));   // known end tag
  EXPECT_EQ(0x100, kind("<script>"));
  EXPECT_EQ(0x100, kind("<Style type=x>"));
  EXPECT_EQ(0x1, kind("<!-- x -->"));
  EXPECT_EQ(0x200, kind("<!DOCTYPE html>"));
  EXPECT_EQ(0, kind("<foo>"));        // unknown
  EXPECT_EQ(0, kind("<![CDATA[x]]>")); // an unknown name to this function
  EXPECT_EQ(0, kind("<>"));
  EXPECT_EQ(0x200, kind("< p>"));
  EXPECT_EQ(0x200, kind("<1>"));
  EXPECT_EQ(0x200, kind("<<p>"));
  // A name that runs into the end of the data is no name.
  EXPECT_EQ(0x200, kind("<b"));
}

TEST(TagItem, IdentifiesStartEndAndUnknownTags) {
  CHtmlTagItem lower("<p>"), upper("<P>"), end("</P>"), legend("<LEGEND>"), bare("b");
  EXPECT_EQ(0x21000, lower.GetTagId());
  EXPECT_EQ(lower.GetTagId(), upper.GetTagId());
  EXPECT_EQ(0x21000 | 0x10000000, end.GetTagId());
  EXPECT_TRUE(end.IsEndTag());
  EXPECT_EQ(0x10000000 | 0x21000, lower.GetEndofTagId());
  EXPECT_TRUE(legend.IsUnknownTag());
  EXPECT_EQ(1, legend.GetTagIndex());
  EXPECT_EQ(0x81, legend.GetCntType());
  EXPECT_EQ("<b>", Str(bare.GetOriginalString()));
  EXPECT_EQ(0x20020, bare.GetTagId());
  EXPECT_TRUE(bare.IsInsertedToken());
  EXPECT_EQ(0x23u, bare.GetTokenFlag());
  EXPECT_EQ("/P", Str(end.GetTagName()));

  CHtmlTagItem nameless("< y >");
  EXPECT_EQ(0, nameless.GetTagId());
  EXPECT_EQ(0, nameless.GetTagIndex());
  EXPECT_FALSE(nameless.IsValidTagIndex());
  EXPECT_EQ(0, nameless.GetPrtType());
  EXPECT_EQ(0xFF000008u, nameless.GetMjrType());

  CHtmlTagItem empty;
  EXPECT_EQ(0, empty.Analyse(1));
  EXPECT_EQ(0u, empty.GetTokenFlag());
}

TEST(TagItem, TypePredicates) {
  CHtmlTagItem div("<div>"), span("<span>"), td("<td>"), param("<param>"), head("<head>");
  EXPECT_TRUE(div.IsBlockLevelTag());
  EXPECT_FALSE(div.IsInlineLevelTag());
  EXPECT_TRUE(span.IsInlineLevelTag());
  EXPECT_TRUE(span.IsBlockTag());  // inline counts as a block tag too
  EXPECT_TRUE(td.IsBlockLevelEmbeddedTag());
  EXPECT_TRUE(param.IsInineLevelEmbeddedTag());
  EXPECT_FALSE(head.IsBlockTag());
  EXPECT_EQ(0x4060504u, div.GetPrtType());
}

TEST(TagItem, NameComparisonAndTruncation) {
  CHtmlTagItem tag("<Table border=1>");
  EXPECT_TRUE(tag.IsTagNameSameAs("TABLE"));
  EXPECT_TRUE(tag.IsTagNameSameAs("<table"));
  EXPECT_FALSE(tag.IsTagNameSameAs("/table"));
  EXPECT_EQ("Table", Str(tag.GetTagName()));
  std::string longName(80, 'x');
  CHtmlTagItem lengthy(("<" + longName + ">").c_str());
  EXPECT_EQ(std::string(62, 'x'), Str(lengthy.GetTagName()));
}

TEST(TagItem, ChangeUnknownTagIndex) {
  CHtmlTagItem foo("<foo>"), p("<p>");
  EXPECT_EQ(1, foo.ChangeUnknownTagIndex(4));
  EXPECT_EQ(4, foo.GetTagIndex());
  EXPECT_EQ(2, foo.GetOcrType());
  EXPECT_EQ(0, foo.ChangeUnknownTagIndex(5));
  EXPECT_EQ(0, foo.ChangeUnknownTagIndex(0));
  EXPECT_EQ(0, p.ChangeUnknownTagIndex(2));
}

TEST(TagAttributes, RecordsAsParsed) {
  const struct {
    const char* tag;
    const char* attributes;
  } cases[] = {
      // A comment's or CDATA section's body is one nameless record.
      {"<!-- x -->", "=[ x ]"},
      {"<!-- a -- b --- >", "=[ a -- b ]"},
      {"<!-- never closed", ""},
      {"<![CDATA[a]]b]]>", "=[a]]b]"},
      {"<![cdata[x]]]>", "=[x]"},
      {"<a href=x.htm target = '_top' nowrap>", "href=[x.htm] target=[_top] nowrap=[]"},
      {"<a \"stray\">", "\"stray\"=[]"},
      {"<a 12px=3 =x>", "12px=3=[] =x=[]"},
      // Entities are not decoded; a quote of the other kind stays inside.
      {"<img alt=\"a &amp; 'b'\" src='c\"d'>", "alt=[a &amp; 'b'] src=[c\"d]"},
      // An unclosed quote runs to the tag's end.
      {"<a title=\"abc>", "title=[\"abc]"},
      // A comment inside the tag is passed over.
      {"<a -- note -- href=y>", "href=[y]"},
      {"<foo/>", "/=[]"},
      {"<br/>", "/=[]"},
  };
  for (const auto& c : cases) {
    CHtmlTagItem tag(c.tag);
    EXPECT_EQ(c.attributes, Attributes(tag)) << c.tag;
  }
  CHtmlTagItem open("<!-- never closed");
  EXPECT_EQ(0, open.GetTotalAttributesNum());
}

TEST(TagAttributes, LookupByNameIgnoresCase) {
  CHtmlTagItem a("<a href=x.htm target = '_top' nowrap>");
  EXPECT_STREQ("_top", a.GetAttributeValue("TARGET"));
  EXPECT_STREQ("", a.GetAttributeValue("nowrap"));
  EXPECT_EQ(nullptr, a.GetAttributeValue("title"));
  EXPECT_TRUE(a.HasAttribute("NoWrap"));
  CHtmlTagItem pi("<?xml version='1.0'?>");
  EXPECT_STREQ("1.0", pi.GetAttributeValue("version"));
}

TEST(TagAttributes, XmlTypesAndRowsOfOddTags) {
  const struct {
    const char* tag;
    int xmlType;
  } cases[] = {{"<p>", 1},        {"</p>", 2},         {"<foo/>", 3},          {"<br/>", 3},
               {"<!-- c -->", 4}, {"<!ELEMENT x>", 5}, {"<!DOCTYPE html>", 6}, {"<?xml version='1.0'?>", 7}};
  for (const auto& c : cases) EXPECT_EQ(c.xmlType, CHtmlTagItem(c.tag).GetXmlType()) << c.tag;
  EXPECT_FALSE(CHtmlTagItem("<p>").IsXmlTag());
  EXPECT_FALSE(CHtmlTagItem("<!-- c -->").IsXmlTag());
  EXPECT_TRUE(CHtmlTagItem("<!ELEMENT x>").IsXmlTag());
  EXPECT_TRUE(CHtmlTagItem("<foo/>").IsXmlTag());
  EXPECT_EQ(0x60, CHtmlTagItem("<!-- x -->").GetTagId());
  EXPECT_TRUE(CHtmlTagItem("<![CDATA[a]]b]]>").IsUnknownTag());
  // A closing slash makes an unknown tag empty (row 2), "<?" a processing
  // instruction (row 3); a known empty element keeps its own row.
  CHtmlTagItem foo("<foo/>"), pi("<?xml version='1.0'?>"), br("<br/>");
  EXPECT_TRUE(foo.IsUnknownTag());
  EXPECT_EQ(2, foo.GetTagIndex());
  EXPECT_TRUE(pi.IsUnknownTag());
  EXPECT_EQ(3, pi.GetTagIndex());
  EXPECT_FALSE(br.IsUnknownTag());
  EXPECT_EQ(IndexOf("BR"), br.GetTagIndex());
}

TEST(TagEditing, SetAttributeKeepsClosingSlashLast) {
  CHtmlTagItem img("<img src=a.gif />");
  EXPECT_EQ(1, img.SetAttribute("alt", "b"));
  EXPECT_TRUE(img.IsModifiedToken());
  EXPECT_EQ("<img src=\"a.gif\" alt=\"b\" />", Str(img.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
  EXPECT_EQ(0, img.SetAttribute("", "x"));
  EXPECT_EQ(0, img.SetAttribute(nullptr, "x"));
  // An existing name (any case) is replaced in place; the name stays as written.
  EXPECT_EQ(1, img.SetAttribute("SRC", "images/larger/c.gif"));
  EXPECT_STREQ("images/larger/c.gif", img.GetAttributeValue("src"));
  EXPECT_EQ("<img src=\"images/larger/c.gif\" alt=\"b\" />", Str(img.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
  // A null value adds the name alone.
  img.SetAttribute("ismap", nullptr);
  EXPECT_EQ("<img src=\"images/larger/c.gif\" alt=\"b\" ismap />",
            Str(img.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
}

TEST(TagEditing, ModifiedTagsAreRequoted) {
  CHtmlTagItem a("<A HREF='x.htm' Title=\"t\" NOWRAP>");
  a.SetOriginalIndentAfter("\r\n");
  // Unchanged: the source bytes, whatever their quoting or case.
  EXPECT_EQ("<A HREF='x.htm' Title=\"t\" NOWRAP>\r\n", Str(a.GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)));
  EXPECT_EQ(1, a.DeleteAttribute("title"));
  EXPECT_EQ(0, a.DeleteAttribute("title"));
  EXPECT_EQ("<A HREF=\"x.htm\" NOWRAP>\r\n", Str(a.GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)));
  EXPECT_EQ("<A HREF=\"x.htm\" NOWRAP>", Str(a.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
  EXPECT_EQ("", Str(a.GetPrintableText(static_cast<CHtmlTokenItem::EmTextFlag>(7))));

  CHtmlTagItem end("</A>");
  end.SetTokenFlag(CHtmlTokenItem::emTokenModified);
  EXPECT_EQ("</A>", Str(end.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
}

TEST(TagEditing, AccessByNumber) {
  CHtmlTagItem tag("<td a=1 b=2 c=3>");
  EXPECT_EQ(3, tag.GetTotalAttributesNum());
  const char* name = nullptr;
  const char* value = nullptr;
  EXPECT_EQ(1, tag.GetAttributeByNum(1, name, value));
  EXPECT_STREQ("b", name);
  EXPECT_STREQ("2", value);
  EXPECT_EQ(0, tag.GetAttributeByNum(3, name, value));
  EXPECT_EQ(0, tag.RemoveAttributeByNum(3));
  EXPECT_FALSE(tag.IsModifiedToken());
  EXPECT_EQ(1, tag.ReplaceAttributeByNum(0, "x", nullptr));
  EXPECT_EQ(1, tag.RemoveAttributeByNum(1));
  EXPECT_EQ("x=[] c=[3]", Attributes(tag));
  EXPECT_EQ(1, tag.ReplaceAttributeByNum(1, nullptr, "9"));
  // A record whose name was emptied is not printed.
  EXPECT_EQ("<td x>", Str(tag.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
}

TEST(TagEditing, CopyIsDeep) {
  CHtmlTagItem from("<font color=red>");
  CHtmlTagItem to;
  EXPECT_EQ(1, to.Copy(&from));
  EXPECT_EQ(from.GetTagId(), to.GetTagId());
  from.SetAttribute("color", "blue");
  EXPECT_STREQ("red", to.GetAttributeValue("color"));
  EXPECT_EQ(0, to.Copy(nullptr));
}

TEST(CommentMarks, MakeRecogniseAndSplit) {
  EXPECT_EQ("<!-- QZTXMARK data -->", Str(CHtmlTagItem::MakeCommentMark(nullptr, "data")));
  EXPECT_EQ("<!-- M  -->", Str(CHtmlTagItem::MakeCommentMark("M", nullptr)));

  CHtmlTagItem mark(Str(CHtmlTagItem::MakeCommentMark(nullptr, "one two")).c_str());
  EXPECT_TRUE(CHtmlTagItem::IsCommentMark(&mark));
  CString m("junk"), d("junk");
  EXPECT_EQ(1, CHtmlTagItem::GetCommentMark(&mark, m, d));
  EXPECT_EQ("QZTXMARK", Str(m));
  EXPECT_EQ("one two ", Str(d));

  CHtmlTagItem plain("<!-- qztxmark lower case -->");
  EXPECT_FALSE(CHtmlTagItem::IsCommentMark(&plain));
  EXPECT_EQ(0, CHtmlTagItem::GetCommentMark(&plain, m, d));
  EXPECT_EQ("", Str(m));
  EXPECT_EQ("", Str(d));
  EXPECT_FALSE(CHtmlTagItem::IsCommentMark(nullptr));
  CHtmlTagItem notComment("<p QZTXMARK>");
  EXPECT_FALSE(CHtmlTagItem::IsCommentMark(&notComment));
}

TEST(CommentMarks, ChangedCommentDropsItsBody) {
  // The body is written only when it is empty: a changed comment prints as
  // an empty one.
  CHtmlTagItem comment("<!-- keep me -->");
  comment.SetTokenFlag(CHtmlTokenItem::emTokenModified);
  EXPECT_EQ("<!---->", Str(comment.GetPrintableText(CHtmlTokenItem::emTextTokenOnly)));
  CHtmlTagItem open("<!-- open");
  open.SetTokenFlag(CHtmlTokenItem::emTokenModified);
  open.SetOriginalIndentAfter("\n");
  EXPECT_EQ("<!-- -->", Str(open.GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)));
}

TEST(TagScan, SkipCommentWithinTag) {
  const char* s = "--a-- b>";
  const unsigned char* end = U(s) + std::strlen(s);
  EXPECT_EQ(U(s) + 5, CHtmlTagItem::SkipCommentWithinTag(U(s), end));
  const char* open = "-- never>";
  end = U(open) + std::strlen(open);
  EXPECT_EQ(end - 1, CHtmlTagItem::SkipCommentWithinTag(U(open), end));
  const char* shortText = "--a";
  EXPECT_EQ(U(shortText), CHtmlTagItem::SkipCommentWithinTag(U(shortText), U(shortText) + 3));
}

}  // namespace
}  // namespace telvanix
