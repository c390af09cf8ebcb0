// Topic pages as golden cases: tests/data/topic (the describe dump of a
// page), tests/data/topic_edit (a host's edits, then what they left) and
// tests/data/topic_text (the plain text an indexer gets).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "golden_cases.h"
#include "test_util.h"
#include "topic/topic_describe.h"

namespace telvanix {
namespace {

using test::Shown;

TEST(TopicGolden, PagesDescribeAsExpected) {
  test::RunGoldenCases("topic", ".htm", [](const std::string& name, const std::string& input) {
    test::TopicPage page(input);
    std::string out = test::DescribeTopic(page.doc());
    out += "saves back unchanged " + std::to_string(page.Saved() == input) + "\n";
    return out + test::DescribeTopicText(std::string(TELVANIX_TEST_DATA_DIR) + "/topic/" + name + ".htm");
  }, 50);
}

TEST(TopicGolden, PlainTextAsExpected) {
  test::RunGoldenCases("topic_text", ".htm", [](const std::string&, const std::string& input) {
    return test::PlainText(input);
  }, 30);
}

// "\r", "\n" and "\t" in a case line stand for those bytes.
std::string Unescaped(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() && std::string("rnt").find(text[i + 1]) != std::string::npos) {
      out += text[i + 1] == 'r' ? '\r' : text[i + 1] == 'n' ? '\n' : '\t';
      ++i;
    } else {
      out += text[i];
    }
  }
  return out;
}

// "(null)" is a null argument, "(empty)" an empty one.
struct Arg {
  explicit Arg(const std::string& text) : null(text == "(null)"), value(text == "(empty)" ? "" : Unescaped(text)) {}
  const char* c_str() const { return null ? nullptr : value.c_str(); }
  bool null;
  std::string value;
};

// Runs one edit line on the document and gives what it printed.
std::string Edit(test::TopicPage& page, const std::string& line) {
  CHtmlFileEx& doc = page.doc();
  std::istringstream in(line);
  std::string verb, rest;
  in >> verb;
  std::getline(in >> std::ws, rest);
  std::istringstream words(rest);
  std::string first, second;
  words >> first;
  std::getline(words >> std::ws, second);
  auto list = [](const Arg& arg, auto& items) {
    std::string item;
    for (std::istringstream pieces(arg.value); !arg.value.empty() && std::getline(pieces, item, '|');) {
      CString s(item.c_str());
      if constexpr (requires { items.AddTail(s); }) items.AddTail(s);
      else items.Add(s);
    }
  };
  int result = -1;
  const Arg arg(rest);
  using D = CHtmlFileEx;
  static const std::map<std::string, int (D::*)(const char*)> kText = {
      {"title", &D::SetHtmlTitle},   {"author", &D::SetTopicAuthor},   {"status", &D::SetTopicStatus},
      {"id", &D::SetTopicId},        {"comment", &D::SetTopicComment}, {"sds", &D::SetTopicSourceDigitalSignature},
      {"buildtags", &D::SetTopicBuildTags}, {"sheet", &D::SetExternalStyleSheetFileName},
      {"background", &D::SetBackgroundImage}};
  static const std::map<std::string, int (D::*)(int)> kNumber = {
      {"priority", &D::SetTopicPriority}, {"estimate", &D::SetTopicTimeEstimate}, {"watermark", &D::SetWaterMark}};
  if (kText.count(verb)) result = (doc.*kText.at(verb))(arg.c_str());
  else if (kNumber.count(verb)) result = (doc.*kNumber.at(verb))(std::atoi(rest.c_str()));
  else if (verb == "color")
    result = doc.SetColor(static_cast<CHtmlFileEx::EmColor>(std::atoi(first.c_str())),
                          static_cast<COLORREF>(std::strtoul(second.c_str(), nullptr, 16)));
  else if (verb == "sound") result = doc.SetBackgroundSound(Arg(second).c_str(), std::atoi(first.c_str()));
  else if (verb == "body") result = doc.SetBodyHtmlText(Arg(second).c_str(), std::atoi(first.c_str()));
  else if (verb == "replace") result = doc.ReplaceBuildTag(Arg(first).c_str(), Arg(second).c_str());
  else if (verb == "keywordsK" || verb == "keywordsA" || verb == "checklist") {
    CHtmlFileEx::CStringArrayEx keywords;
    CStringList items;
    list(arg, keywords);
    list(arg, items);
    if (verb == "checklist") result = doc.SetTopicCheckList(arg.null ? nullptr : &items);
    else if (verb == "keywordsK") result = doc.SetKeywordK(arg.null ? nullptr : &keywords);
    else result = doc.SetKeywordA(arg.null ? nullptr : &keywords);
  } else if (verb == "inline") {
    const int n = std::atoi(first.c_str());
    const CHtmlFileEx::CPositionArray& styled = doc.GetStyledTagPositions();
    CHtmlTagItem* tag = n >= 0 && n < styled.GetSize() ? doc.GetTokenList()->GetTagItem(styled[n]) : nullptr;
    result = doc.SetInlineBuildTags(tag, Arg(second).c_str());
  } else if (verb == "default") result = doc.CreateDefaultHtmlFile();
  else if (verb == "analyse") result = doc.Analyse();
  else if (verb == "discard-image") {
    const int n = std::atoi(rest.c_str());
    if (n < doc.GetImagePositions().GetSize()) result = doc.GetTokenList()->GetTokenItem(doc.GetImagePositions()[n])->DiscardToken();
  } else if (verb == "discard-text") {
    for (POSITION pos = doc.GetTokenList()->GetHeadPosition(); pos;) {
      CHtmlTokenItem* token = doc.GetTokenList()->GetNext(pos);
      if (token->IsTextToken() && token->GetOriginalString() == rest.c_str()) result = token->DiscardToken();
    }
  } else if (verb == "body-attribute") {
    CHtmlTagItem* body = doc.GetTokenList()->GetTagItem(doc.GetBodyStartPosition());
    if (body) result = body->SetAttribute(first.c_str(), Arg(second).c_str());
  } else if (verb == "saved") return "saved [" + Shown(page.Saved()) + "]\n";
  else if (verb == "describe") return test::DescribeTopic(doc);
  else ADD_FAILURE() << "unknown edit: " << line;
  return "= " + std::to_string(result) + "\n";
}

// A case is a page line ("page" and the page, or "file" and a page file
// beside the case) followed by edit lines; "reload" reads the saved page
// into a fresh document; "#" starts a comment line. Each line is echoed
// with what it gave.
TEST(TopicGolden, EditsLeaveWhatIsExpected) {
  test::RunGoldenCases("topic_edit", ".edit", [](const std::string&, const std::string& input) {
    std::istringstream lines(input);
    std::string line, out;
    std::unique_ptr<test::TopicPage> page;
    while (std::getline(lines, line)) {
      if (line.empty() || line[0] == '#') continue;
      out += "> " + line + "\n";
      if (line == "page" || line.rfind("page ", 0) == 0)
        page = std::make_unique<test::TopicPage>(Unescaped(line.substr(std::min<size_t>(5, line.size()))));
      else if (line == "reload" && page) page = std::make_unique<test::TopicPage>(page->Saved());
      else if (line.rfind("file ", 0) == 0) page = std::make_unique<test::TopicPage>(test::ReadDataFile("topic_edit/" + line.substr(5)));
      else if (page) out += Edit(*page, line);
      else ADD_FAILURE() << "an edit before the page line: " << line;
    }
    return out;
  }, 20);
}

}  // namespace
}  // namespace telvanix
