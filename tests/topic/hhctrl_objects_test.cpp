// Help-control objects: recognition by class id, commands, item values with
// the packed cursor and the last-segment rule, and K/A keywords.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <string>

#include "topic/topic_page.h"

namespace telvanix {
namespace {

using test::Join;
using test::TopicPage;
using test::Walk;

const char kHhctrl[] = "<OBJECT id=hhctrl type=\"application/x-oleobject\" classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\">";

std::string Object(const std::string& command, const std::string& params) {
  return std::string(kHhctrl) + "<PARAM name=\"Command\" value=\"" + command + "\">" + params + "</OBJECT>";
}

std::string Page(const std::string& body) { return "<html><head></head><body>" + body + "</body></html>"; }

std::string Items(CHtmlFileEx& doc, CHtmlFileEx::EmHhctrlObjectItemType type) {
  std::string out;
  unsigned int cursor = 0;
  for (const char* s = doc.GetFirstHhctrlItemValue(cursor, type); s; s = doc.GetNextHhctrlItemValue(cursor, type))
    out += std::string(s) + ";";
  return out;
}

CHtmlFileEx::CStringArrayEx Words(std::initializer_list<const char*> words) {
  CHtmlFileEx::CStringArrayEx array;
  for (const char* w : words) {
    CString s(w);
    array.Add(s);
  }
  return array;
}

TEST(TopicHhctrl, ObjectKindsByClassIdInAnyLetterCase) {
  TopicPage page(Page(
      "<object classid=\"clsid:adb880a6-d8ff-11cf-9377-00aa003b7a11\"></object>"
      "<object classid=\"CLSID:4C7E19A2-B83F-11D0-A5C1-00E07D3F21AB\"></object>"
      "<object classid=\"clsid:3B6A91E4-5C2D-11D0-9E37-0000A4C81D55\"></object>"
      "<object></object><object classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A12\"></object>"
      "<img classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\">"));
  CHtmlFileEx& doc = page.doc();
  ASSERT_EQ(5, doc.GetObjectPositions().GetSize());
  CHtmlTokenList* list = doc.GetTokenList();
  auto at = [&](int i) { return list->GetTagItem(doc.GetObjectPositions()[i]); };
  EXPECT_TRUE(doc.IsHhctrlActivexObject(at(0)));
  EXPECT_FALSE(doc.IsKeywordActiveObject(at(0)));
  EXPECT_TRUE(doc.IsKeywordActiveObject(at(1)));
  EXPECT_TRUE(doc.IsPopupActivexObject(at(2)));
  EXPECT_FALSE(doc.IsHhctrlActivexObject(at(3)));
  EXPECT_FALSE(doc.IsHhctrlActivexObject(at(4)));
  EXPECT_FALSE(doc.IsHhctrlActivexObject(nullptr));
  EXPECT_FALSE(doc.IsHhctrlActivexObject(list->GetTagItem(doc.GetImagePositions()[0])));
}

TEST(TopicHhctrl, CommandsAreCutAtTheCommaAndLookedUp) {
  struct Case {
    const char* value;
    int command;
  } cases[] = {{"Related Topics, MENU", 4}, {"RelatedTopics", 4}, {"splash", 6},   {"WinHelp Popup", 7},
               {"WinHelp", 7},              {"KLink,", 13},       {"ALink", 14},   {"Bogus", 0},
               {"", 0},                     {"HHWinPrint", 12},   {"Index", 3},    {"Contents", 1}};
  for (const Case& c : cases) {
    TopicPage page(Page(Object(c.value, "")));
    POSITION pos = page->GetObjectPositions()[0];
    EXPECT_EQ(c.command, static_cast<int>(page->GetHhctrlCommandType(pos))) << c.value;
  }
  TopicPage none(Page("<object classid=\"clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11\"><param name=x value=y></object>"));
  EXPECT_EQ(0, static_cast<int>(none->GetHhctrlCommandType(none->GetObjectPositions()[0])));
  EXPECT_EQ(0, static_cast<int>(none->GetHhctrlCommandType(nullptr)));
  // An unknown command yields no items of any kind.
  TopicPage bogus(Page(Object("Bogus", "<PARAM name=\"Button\" value=\"bitmap:a.bmp\">"
                                       "<PARAM name=\"Item1\" value=\"t;a.htm\">")));
  for (auto type : {CHtmlFileEx::emHhctrlItemBaggageImage, CHtmlFileEx::emHhctrlItemRelatedTopic,
                    CHtmlFileEx::emHhctrlItemContentOrIndex})
    EXPECT_EQ("", Items(bogus.doc(), type)) << type;
}

TEST(TopicHhctrl, SplashImagesSkipPagesAndButtonsNeedAnImagePrefix) {
  TopicPage page(Page(
      Object("Splash", "<PARAM name=\"Item1\" value=\"a.bmp;b.htm\">") +
      Object("Splash", "<PARAM name=\"item1\" value=\"x;a.bmp\"><PARAM name=\"Item2\" value=\"c.bmp\">") +
      Object("ShortCut", "<PARAM name=\"Button\" value=\"bitmap:shortcut.bmp\">") +
      Object("ShortCut", "<PARAM name=\"Button\" value=\"text:Go\">") +
      Object("ShortCut", "<PARAM name=\"Button\" value=\"Icon:\">") +
      Object("Close", "<PARAM name=\"Button\" value=\"ICON:close.ico\">")));
  EXPECT_EQ("a.bmp;shortcut.bmp;close.ico;", Items(page.doc(), CHtmlFileEx::emHhctrlItemBaggageImage));
  EXPECT_EQ("a.bmp;shortcut.bmp;close.ico;",
            Walk(page.doc(), &CHtmlFileEx::GetFirstHhctrlBaggageImage, &CHtmlFileEx::GetNextHhctrlBaggageImage));
}

TEST(TopicHhctrl, CursorPacksObjectAndNextParameter) {
  TopicPage page(Page(
      "<object></object>" +
      Object("Related Topics", "<PARAM name=\"Item1\" value=\"One;one.htm\"><PARAM name=\"Item2\" value=\"Two;two.htm\">")));
  CHtmlFileEx& doc = page.doc();
  unsigned int cursor = 0;
  const char* value = doc.GetFirstRelatedTopic(cursor);
  EXPECT_STREQ("one.htm", value);
  // Object 1; the command is parameter 0, Item1 is 1, so the next is 2.
  EXPECT_EQ((1u << 16) | 2u, cursor);
  EXPECT_STREQ("two.htm", doc.GetNextRelatedTopic(cursor));
  EXPECT_EQ((1u << 16) | 3u, cursor);
  EXPECT_EQ(nullptr, doc.GetNextRelatedTopic(cursor));
  // The value points into the PARAM's own attribute text.
  CHtmlTagItem* param = nullptr;
  for (POSITION pos = doc.GetTokenList()->GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = doc.GetTokenList()->GetNext(pos);
    CHtmlTagItem* tag = token->GetSafeTagItemPtr();
    if (tag && tag->GetAttributeValue("value") && std::string(tag->GetAttributeValue("value")) == "One;one.htm")
      param = tag;
  }
  ASSERT_NE(nullptr, param);
  EXPECT_EQ(param->GetAttributeValue("value") + 4, value);
}

TEST(TopicHhctrl, LastSegmentKeepsEntitySemicolons) {
  TopicPage page(Page(Object("Related Topics",
                             "<PARAM name=\"Item1\" value=\"A title;topics/a.htm\">"
                             "<PARAM name=\"Item2\" value=\"Tom &amp; Jerry\">"
                             "<PARAM name=\"Item3\" value=\"x;Tom &amp; Jerry.htm\">"
                             "<PARAM name=\"Item4\" value=\"a&b;c.htm\">"
                             "<PARAM name=\"Item5\" value=\"a;&#59;\">"
                             "<PARAM name=\"Other\" value=\"o;other.htm\">"
                             "<PARAM name=\"Item6\">")));
  EXPECT_EQ("topics/a.htm;Tom &amp; Jerry;Tom &amp; Jerry.htm;c.htm;&#59;;",
            Items(page.doc(), CHtmlFileEx::emHhctrlItemRelatedTopic));
}

TEST(TopicHhctrl, ContentsAndIndexFiles) {
  TopicPage page(Page(Object("Contents", "<PARAM name=\"Item1\" value=\"help.hhc\">") +
                      Object("Index", "<PARAM name=\"Item1\" value=\"x;help.hhk\">") +
                      Object("Related Topics", "<PARAM name=\"Item1\" value=\"r.htm\">")));
  EXPECT_EQ("help.hhc;help.hhk;", Items(page.doc(), CHtmlFileEx::emHhctrlItemContentOrIndex));
  EXPECT_EQ("help.hhc;help.hhk;",
            Walk(page.doc(), &CHtmlFileEx::GetFirstContentOrIndex, &CHtmlFileEx::GetNextContentOrIndex));
}

TEST(TopicKeywords, SetOnAPageWithoutObjectWritesBeforeBodyEndInReverse) {
  TopicPage page("<html><body>\r\n<p>x</p>\r\n</body></html>");
  CHtmlFileEx::CStringArrayEx words = Words({"x", "y"});
  EXPECT_EQ(1, page->SetKeywordK(&words));
  std::string saved = page.Saved();
  const std::string object =
      "<OBJECT CLASSID=\"4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab\"><PARAM name=\"Keyword\" value=\"y\">"
      "<PARAM name=\"Keyword\" value=\"x\"></OBJECT>";
  EXPECT_NE(std::string::npos, saved.find(object)) << saved;
  EXPECT_EQ(saved.find("</body>"), saved.find(object) + object.size() + 2) << saved;  // "\r\n" from the saver
  EXPECT_EQ(0u, saved.find("<html><body>\r\n<p>x</p>\r\n"));
  EXPECT_EQ(0, page->SetKeywordK(nullptr));
}

TEST(TopicKeywords, WrittenObjectIsNotReadBackAsKeywordObject) {
  // The written class id lacks "clsid:", so a reloaded page has no keyword
  // object: reading finds nothing and a second write adds a second object.
  TopicPage first("<html><body></body></html>");
  CHtmlFileEx::CStringArrayEx words = Words({"k"});
  first->SetKeywordK(&words);
  TopicPage second(first.Saved());
  CHtmlFileEx::CStringArrayEx read;
  EXPECT_EQ(1, second->GetKeywordK(read));
  EXPECT_EQ(0, read.GetSize());
  second->SetKeywordK(&words);
  std::string saved = second.Saved();
  EXPECT_NE(saved.find("<OBJECT"), saved.rfind("<OBJECT"));
}

TEST(TopicKeywords, ReadReplaceAndRemoveOnAnExistingObject) {
  const std::string source = Page(
      "<object type=\"application/x-oleobject\" classid=\"clsid:4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab\">"
      "<param name=\"Keyword\" value=\"old1\"><param name=\"ALink Name\" value=\"alink\">"
      "<param name=\"keyword\" value=\"old2\"><param name=\"Keyword\"></object><param name=\"Keyword\" value=\"out\">");
  TopicPage read(source);
  CHtmlFileEx::CStringArrayEx k = Words({"pre"}), a;
  EXPECT_EQ(1, read->GetKeywordK(k));
  EXPECT_EQ("pre;old1;old2;", Join(k));  // appended; the PARAM outside the object is not read
  EXPECT_EQ(1, read->GetKeywordA(a));
  EXPECT_EQ("alink;", Join(a));

  TopicPage replaced(source);
  k = Words({"n1", "n2", "n3"});
  EXPECT_EQ(1, replaced->SetKeywordK(&k));
  std::string saved = replaced.Saved();
  EXPECT_NE(std::string::npos,
            saved.find("00e07d3f21ab\"><PARAM name=\"Keyword\" value=\"n3\"><PARAM name=\"Keyword\" value=\"n2\">"
                       "<PARAM name=\"Keyword\" value=\"n1\"><param name=\"ALink Name\" value=\"alink\">"))
      << saved;
  EXPECT_EQ(std::string::npos, saved.find("old1"));
  EXPECT_EQ(std::string::npos, saved.find("old2"));
  EXPECT_NE(std::string::npos, saved.find("value=\"out\""));

  TopicPage removed(source);
  CHtmlFileEx::CStringArrayEx none;
  EXPECT_EQ(1, removed->SetKeywordK(&none));
  saved = removed.Saved();
  EXPECT_EQ(std::string::npos, saved.find("old1"));
  EXPECT_EQ(std::string::npos, saved.find("PARAM"));
  EXPECT_NE(std::string::npos, saved.find("alink"));
  a.RemoveAll();
  removed->GetKeywordA(a);
  EXPECT_EQ("alink;", Join(a));
}

TEST(TopicKeywords, BodyTagsAreMadeForTheObject) {
  TopicPage page("<html><head></head></html>");
  CHtmlFileEx::CStringArrayEx a = Words({"name"});
  EXPECT_EQ(1, page->SetKeywordA(&a));
  std::string saved = page.Saved();
  EXPECT_NE(std::string::npos, saved.find("<PARAM name=\"ALink Name\" value=\"name\">"));
  EXPECT_LT(saved.find("<BODY>"), saved.find("<OBJECT"));
  EXPECT_LT(saved.find("</OBJECT>"), saved.find("</BODY>"));

  TopicPage bare("<p>no html</p>");
  EXPECT_EQ(1, bare->SetKeywordA(&a));  // nothing to write into, still 1
  EXPECT_EQ("<p>no html</p>", bare.Saved());
}

}  // namespace
}  // namespace telvanix
