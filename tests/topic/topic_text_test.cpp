// The topic text parser: opening pages, the text and the window rule (the
// keywords of whole pages are in the golden topic cases).
#include "telvanix/topic/topic_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "telvanix/platform/window.h"
#include "telvanix/topic/html_file_ex.h"
#include "test_util.h"

namespace telvanix {
namespace {

HWND Handle(std::uintptr_t value) { return reinterpret_cast<HWND>(value); }

// The host's windows in these tests: handles below 0x100.
BOOL IsTestWindow(HWND hWnd) { return reinterpret_cast<std::uintptr_t>(hWnd) < 0x100 ? TRUE : FALSE; }

class WindowPredicateScope {
 public:
  explicit WindowPredicateScope(IsWindowPredicate predicate) : m_previous(SetIsWindowPredicate(predicate)) {}
  ~WindowPredicateScope() { SetIsWindowPredicate(m_previous); }

 private:
  IsWindowPredicate m_previous;
};

class TopicTextTest : public ::testing::Test {
 protected:
  // Writes the page and opens it; the parser's result.
  int Open(const std::string& html, HWND window = nullptr, DWORD flags = 0, const char* name = "topic.htm") {
    m_dir.Write(name, html);
    return m_parser.OpenDocument((m_dir / name).c_str(), window, flags, nullptr, nullptr, nullptr);
  }
  // The first text of the open page, or "<no text>".
  std::string First() {
    CString text, second;
    return m_parser.GetFirstTopicText(text, second, nullptr) ? text.str() : "<no text>";
  }
  test::TempDir m_dir;
  CHtmlTopicText m_parser;
};

TEST_F(TopicTextTest, NoTextWithoutAnOpenDocument) {
  CString text("unchanged"), second;
  CStringArray keywords;
  EXPECT_EQ(0, m_parser.GetFirstTopicText(text, second, &keywords));
  EXPECT_EQ("unchanged", text);

  EXPECT_EQ(0, m_parser.OpenDocument(nullptr, nullptr, 0, nullptr, nullptr, nullptr));
  EXPECT_EQ(0, m_parser.OpenDocument((m_dir / "missing.htm").c_str(), nullptr, 0, nullptr, nullptr, nullptr));
  EXPECT_EQ(nullptr, m_parser.GetDocument());
  EXPECT_EQ(0, m_parser.GetFirstTopicText(text, second, &keywords));
  // An empty page cannot be loaded either.
  EXPECT_EQ(0, Open(""));
  EXPECT_EQ(0, m_parser.GetFirstTopicText(text, second, nullptr));
  // Opening over an open document replaces it; a failed open leaves none.
  ASSERT_EQ(1, Open("<p>second</p>", nullptr, 0, "b.htm"));
  ASSERT_EQ(1, Open("<p>third</p>", nullptr, 0, "c.htm"));
  EXPECT_EQ("third", First());
  EXPECT_EQ(0, m_parser.OpenDocument((m_dir / "none.htm").c_str(), nullptr, 0, nullptr, nullptr, nullptr));
  EXPECT_EQ("<no text>", First());
  ASSERT_EQ(1, Open("<p>fourth</p>", nullptr, 0, "d.htm"));
  EXPECT_EQ(1, m_parser.CloseDocument());
  EXPECT_EQ(nullptr, m_parser.GetDocument());
  EXPECT_EQ("<no text>", First());
}

TEST_F(TopicTextTest, FirstTextIsThePagesPlainTextAndThereIsNoNext) {
  ASSERT_EQ(1, Open("<html><head><title>Title</title></head><body><h1>Head</h1><p>Body &amp; soul</p></body></html>",
                    nullptr, 0, "Topic Page.HTM"));
  EXPECT_EQ("Topic Page.HTM", m_parser.GetFileName());
  EXPECT_EQ(0u, m_parser.GetFlags());
  CString text, second("second"), third;
  EXPECT_EQ(1, m_parser.GetFirstTopicText(text, second, nullptr));
  EXPECT_EQ("Head\r\nBody & soul", text);
  EXPECT_EQ("second", second);
  // Asked again, the same text.
  EXPECT_EQ(1, m_parser.GetFirstTopicText(text, second, nullptr));
  EXPECT_EQ("Head\r\nBody & soul", text);

  CStringArray keywords;
  CString other("kept");
  EXPECT_EQ(0, m_parser.GetNextTopicText(other, second, &keywords));
  EXPECT_EQ(0, m_parser.GetNextTopicText(other, second, third, &keywords));
  EXPECT_EQ(0, m_parser.GetFirstTopicText(other, second, third, &keywords));
  EXPECT_EQ("kept", other);
  EXPECT_EQ(0, keywords.GetSize());
}

TEST_F(TopicTextTest, AttachedDocumentReadsAsAnOpenedOne) {
  const std::string html =
      "<html><head><meta name=\"keywords\" content=\"a, b\"></head><body><p>Attached &amp; read</p></body></html>";
  ASSERT_EQ(1, Open(html, nullptr, 1, "opened.htm"));
  const std::string opened = First();
  CStringArray openedKeywords;
  ASSERT_EQ(1, m_parser.GetTopicKeywords(&openedKeywords));

  auto* doc = new CHtmlFileEx((m_dir / "opened.htm").c_str());
  ASSERT_EQ(1, doc->Parse(CHtmlPack::emParseAttributes));
  ASSERT_EQ(1, doc->Analyse());
  ASSERT_EQ(1, m_parser.AttachDocument(doc, (m_dir / "Other.HTM").c_str(), 1));  // the opened page goes
  EXPECT_EQ(doc, m_parser.GetDocument());
  EXPECT_EQ("Other.HTM", m_parser.GetFileName());
  EXPECT_EQ(1u, m_parser.GetFlags());
  EXPECT_EQ(opened, First());
  CStringArray keywords;
  ASSERT_EQ(1, m_parser.GetTopicKeywords(&keywords));
  ASSERT_EQ(openedKeywords.GetSize(), keywords.GetSize());
  for (int i = 0; i < keywords.GetSize(); ++i) EXPECT_EQ(openedKeywords[i], keywords[i]);
  // Attaching none closes what was open.
  EXPECT_EQ(0, m_parser.AttachDocument(nullptr, nullptr, 0));
  EXPECT_EQ(nullptr, m_parser.GetDocument());
}

TEST_F(TopicTextTest, WindowIsKeptOnlyWhenItIsAWindow) {
  const std::string noWords = "<html><head><title>T</title></head><body></body></html>";
  {
    // No predicate registered: no handle is a window.
    WindowPredicateScope scope(nullptr);
    ASSERT_EQ(1, Open(noWords, Handle(0x10), 0, "empty.htm"));
    EXPECT_EQ(nullptr, m_parser.GetWindow());
    EXPECT_EQ("", First());
  }
  WindowPredicateScope scope(&IsTestWindow);
  ASSERT_EQ(1, Open(noWords, Handle(0x1000), 0, "empty.htm"));
  EXPECT_EQ(nullptr, m_parser.GetWindow());
  EXPECT_EQ("", First());
  // A window makes the file name the text of a page without words.
  ASSERT_EQ(1, Open(noWords, Handle(0x10), 0, "empty.htm"));
  EXPECT_EQ(Handle(0x10), m_parser.GetWindow());
  EXPECT_EQ("empty.htm", First());
  // Reopening with a handle that is not a window forgets the old one.
  ASSERT_EQ(1, Open(noWords, Handle(0x2000), 0, "empty.htm"));
  EXPECT_EQ(nullptr, m_parser.GetWindow());
}

}  // namespace
}  // namespace telvanix
