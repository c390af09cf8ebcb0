// Popups: tests/data/popups/NAME.popups cases (a page, then what a host does
// with its popups), and the shared support files written into a project.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <sstream>

#include "golden_cases.h"
#include "test_util.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/topic/popups_support.h"
#include "topic/topic_describe.h"

namespace telvanix {
namespace {

using test::Shown;

std::string Listed(CPopupsSupport& popups) {
  std::string out;
  unsigned int cursor = 0;
  CHtmlPopupAnchor p;
  for (int ok = popups.GetFirstPopup(cursor, p); ok; ok = popups.GetNextPopup(cursor, p)) {
    const bool text = CHtmlPopupAnchor::IsTextKind(p.GetKind());
    out += "  line " + std::to_string(p.GetLine()) + " " + CHtmlPopupAnchor::GetKindName(p.GetKind()) + " [" +
           Shown(p.GetLinkText()) + "] " + (text ? "text [" + Shown(p.GetText()) : "topic [" + Shown(p.GetTopic()) +
           "] bookmark [" + Shown(p.GetBookmark())) + "] ends " + (p.GetEndPosition() ? "yes" : "no") + "\n";
  }
  return out;
}

// "\r" and "\n" in a case line stand for those bytes.
std::string WithLineBreaks(std::string text) {
  for (size_t at = 0; (at = text.find('\\', at)) != std::string::npos && at + 1 < text.size(); ++at)
    if (text[at + 1] == 'r' || text[at + 1] == 'n') text.replace(at, 2, text[at + 1] == 'r' ? "\r" : "\n");
  return text;
}

// The n-th (from 0) popup, or a reset record.
CHtmlPopupAnchor NthPopup(CPopupsSupport& popups, int n) {
  unsigned int cursor = 0;
  CHtmlPopupAnchor p;
  for (int ok = popups.GetFirstPopup(cursor, p); ok && n > 0; --n) ok = popups.GetNextPopup(cursor, p);
  return n == 0 ? p : CHtmlPopupAnchor();
}

// "make WORDS -> topic T" or "-> text T": the first run of text holding
// WORDS (as written in the page) that takes the popup.
int Make(CHtmlFileEx& doc, CPopupsSupport& popups, const std::string& rest) {
  const size_t arrow = rest.find(" -> ");
  const std::string words = rest.substr(0, arrow), how = rest.substr(arrow + 4);
  const bool text = how.rfind("text ", 0) == 0;
  const std::string target = how.substr(how.find(' ') + 1);
  doc.GetBodyStartPosition();  // analyses the page
  CHtmlTokenList& list = *doc.GetTokenList();
  for (POSITION pos = list.GetHeadPosition(); pos;) {
    POSITION here = pos;
    CHtmlTokenItem* token = list.GetNext(pos);
    if (token->IsDiscardedToken() || !token->IsTextToken()) continue;
    const size_t at = token->GetPrintableText(CHtmlTokenItem::emTextTokenOnly).str().find(words);
    if (at != std::string::npos)
      return popups.MakePopupFromText(here, static_cast<int>(at), static_cast<int>(words.size()),
                                      text ? nullptr : target.c_str(), text ? target.c_str() : nullptr);
  }
  return -1;
}

// Each line echoed with what it gave. "page TEXT" ("\r", "\n" stand for
// those bytes) or "file NAME" starts a page; "reload" reads the saved page
// afresh; "folder DIR" sets where the support files are; "codepage N" the
// active code page for the rest of the case; "call HREF" reads a script
// call and makes it again.
TEST(Popups, CasesOfTestsDataPopups) {
  const UINT codePage = GetActiveCodePage();
  test::RunGoldenCases("popups", ".popups", [codePage](const std::string&, const std::string& input) {
    std::istringstream lines(input);
    std::string line, out, original, folder;
    std::unique_ptr<test::TopicPage> page;
    std::unique_ptr<CPopupsSupport> popups;
    auto open = [&](const std::string& html) {
      page = std::make_unique<test::TopicPage>(html);
      page->doc().Analyse();
      popups = std::make_unique<CPopupsSupport>(page->doc(), nullptr, folder.c_str());
    };
    while (std::getline(lines, line)) {
      if (line.empty() || line[0] == '#') continue;
      out += "> " + line + "\n";
      std::istringstream in(line);
      std::string verb, rest;
      in >> verb;
      std::getline(in >> std::ws, rest);
      if (verb == "call") {
        CHtmlPopupAnchor::EmPopupKind kind;
        CString argument;
        const int read = CHtmlPopupAnchor::ParseScriptCall(rest.c_str(), kind, argument);
        CHtmlPopupAnchor::EmPopupKind again = CHtmlPopupAnchor::emPopupNone;
        CString back;
        CHtmlPopupAnchor::ParseScriptCall(CHtmlPopupAnchor::MakeScriptCall(kind, argument), again, back);
        out += "= " + std::to_string(read) + " " + CHtmlPopupAnchor::GetKindName(kind) + " [" + Shown(argument) +
               "] made again reads the same " + std::to_string(read && again == kind && back == argument) + "\n";
        continue;
      }
      if (verb == "folder" || verb == "codepage") {
        if (verb == "folder") folder = rest;
        else SetActiveCodePage(static_cast<UINT>(std::atoi(rest.c_str())));
        continue;
      }
      if (verb == "page" || verb == "file")
        original = verb == "page" ? WithLineBreaks(rest) : test::ReadDataFile("popups/" + rest);
      if (verb == "page" || verb == "file") open(original);
      else if (verb == "reload" && page) open(page->Saved());
      if (verb == "page" || verb == "file" || verb == "reload") continue;
      if (!page) {
        ADD_FAILURE() << "no page before " << line;
        continue;
      }
      int result = -1;
      if (verb == "list") {
        out += Listed(*popups);
        continue;
      } else if (verb == "saved") {
        out += "saved [" + Shown(page->Saved()) + "]\n";
        continue;
      } else if (verb == "same") {
        out += "saves as read " + std::to_string(page->Saved() == original) + "\n";
        continue;
      } else if (verb == "make") {
        result = Make(page->doc(), *popups, WithLineBreaks(rest));
      } else if (verb == "link") {
        const CHtmlFileEx::CPositionArray& anchors = page->doc().GetAnchorPositions();
        const int n = std::atoi(rest.c_str());
        result = popups->MakePopupFromLink(n < anchors.GetSize() ? anchors[n] : nullptr);
      } else if (verb == "remove") {
        result = popups->RemovePopup(NthPopup(*popups, std::atoi(rest.c_str())), rest.find("link") != std::string::npos);
      } else if (verb == "support") {
        result = popups->HasSupportLinks();
      } else {
        ADD_FAILURE() << "unknown line: " << line;
      }
      out += "= " + std::to_string(result) + "\n";
    }
    SetActiveCodePage(codePage);
    return out;
  }, 5);
}

TEST(Popups, SupportFilesAreWrittenOnceAndRewrittenForAnotherVersion) {
  const std::pair<const char*, const char*> files[] = {{CPopupsSupport::GetScriptFileName(), CPopupsSupport::GetScriptText()},
                                                       {CPopupsSupport::GetStyleFileName(), CPopupsSupport::GetStyleText()}};
  test::TempDir dir;
  ASSERT_EQ(1, CPopupsSupport::WriteSupportFiles(dir.path().c_str()));
  for (const auto& [name, text] : files) {
    EXPECT_EQ(text, dir.Read(name));
    EXPECT_EQ(CPopupsSupport::GetSupportVersion(), CPopupsSupport::GetSupportFileVersion((dir / name).c_str()));
    // Another version's copy is rewritten; a current one is left alone.
    dir.Write(name, "/* telvanix popups: generated version 999. */\nold");
    ASSERT_EQ(1, CPopupsSupport::WriteSupportFiles(dir.path().c_str()));
    EXPECT_EQ(text, dir.Read(name));
    dir.Write(name, std::string(text) + "/* the author's own lines */");
    ASSERT_EQ(1, CPopupsSupport::WriteSupportFiles(dir.path().c_str()));
    EXPECT_NE(text, dir.Read(name));
  }
  // A file of that name the library did not write is never overwritten.
  dir.Write(files[0].first, "alert('mine');");
  EXPECT_EQ(0, CPopupsSupport::WriteSupportFiles(dir.path().c_str()));
  EXPECT_EQ("alert('mine');", dir.Read(files[0].first));
  EXPECT_EQ(0, CPopupsSupport::GetSupportFileVersion((dir / files[0].first).c_str()));
}

}  // namespace
}  // namespace telvanix
