// Reference replacement: the data cases of tests/data/replace (a page, the
// moves, and what the page becomes), the hook and the delete family.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "golden_cases.h"
#include "telvanix/css/css_pack_ex.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix {
namespace {

std::string Saved(CHtmlFileEx& page) {
  CByteString out;
  page.Save(&out, CHtmlPack::emSave);
  return std::string(reinterpret_cast<const char*>(out.GetContent()), static_cast<size_t>(out.GetLength()));
}

std::string Listed(const std::vector<CFileReference>& refs) {
  static const char* const kChange[] = {"kept", "rewritten", "deleted"};
  std::ostringstream out;
  for (const CFileReference& r : refs)
    out << "  line " << r.m_nLine << " " << r.m_strElement.str() << " " << r.m_strAttribute.str() << " kind "
        << r.m_nKind << " [" << r.m_strWritten.str() << "] -> " << (r.m_strTarget.IsEmpty() ? "-" : r.m_strTarget.str())
        << ": " << kChange[r.m_nChange] << (r.m_nChange == 1 ? " [" + r.m_strNewValue.str() + "]" : "") << "\n";
  return out.str();
}

// Runs the case's call on `bytes` with the moves given; the page after it.
std::string RunCall(const std::string& call, const std::string& bytes, CHtmlFileEx::CReplaceContext& context,
                std::string& report) {
  if (call == "sheet") {
    CByteString content(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    CCssPackEx sheet(&content);
    std::vector<CFileReference> refs;
    sheet.GetFileReferences(context, refs);
    report = "references:\n" + Listed(refs) + "result " + std::to_string(sheet.ReplaceFileReference(context)) + "\n";
    const CByteString& after = sheet.GetContent();
    return std::string(reinterpret_cast<const char*>(after.GetContent()), static_cast<size_t>(after.GetLength()));
  }
  CByteString content(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  CHtmlFileEx page(content, "page.htm");
  std::vector<CFileReference> refs;
  page.GetFileReferences(context, refs);
  int result = -2;
  if (call == "replace")
    result = page.ReplaceFileReference(context);
  else if (call == "hhc")
    result = page.ReplaceTagObjectInHhc(context);
  else if (call == "hhk")
    result = page.ReplaceTagObjectInHhk(context);
  else if (call == "delete-hhc")
    result = page.DeleteObjectInHhc(context);
  else if (call == "delete-hhk")
    result = page.DeleteObjectInHhk(context);
  report = "references:\n" + Listed(refs) + "result " + std::to_string(result) + "\n";
  return Saved(page);
}

// A case: lines "document OLD [NEW]", "move OLD NEW", "folder OLD NEW",
// "delete PATH", "call NAME" and "inverse" (the moves undone must give the
// page back), then "----" and the page. "\s" in a path is a blank.
TEST(ReferenceReplace, CasesAsExpected) {
  test::RunGoldenCases("replace", ".move", [](const std::string&, const std::string& input) {
    const size_t cut = input.find("----\n");
    std::istringstream head(input.substr(0, cut));
    const std::string page = cut == std::string::npos ? std::string() : input.substr(cut + 5);
    CHtmlFileEx::CReplaceContext forward, backward;
    std::string call = "replace", out, line;
    bool inverse = false;
    while (std::getline(head, line)) {
      std::istringstream words(line);
      std::string verb, a, b;
      words >> verb >> a >> b;
      for (std::string* word : {&a, &b})  // "\\s" stands for a blank
        for (size_t at = word->find("\\s"); at != std::string::npos; at = word->find("\\s"))
          word->replace(at, 2, " ");
      int ok = 1;
      if (verb == "document") {
        ok = forward.SetDocument(a.c_str(), b.c_str()) && backward.SetDocument(b.empty() ? a.c_str() : b.c_str(),
                                                                                a.c_str());
      } else if (verb == "move" || verb == "folder") {
        ok = forward.AddMove(a.c_str(), b.c_str(), verb == "folder");
        backward.AddMove(b.c_str(), a.c_str(), verb == "folder");
      } else if (verb == "delete") {
        ok = forward.AddDeletion(a.c_str(), 0);
      } else if (verb == "call") {
        call = a;
      } else if (verb == "inverse") {
        inverse = true;
      }
      if (!verb.empty() && verb[0] != '#')
        out += line + (ok ? "" : "  (refused)") + "\n";
    }
    std::string report;
    const std::string after = RunCall(call, page, forward, report);
    out += report + "----\n" + after;
    if (inverse) {
      // Compared with the page saved unchanged: the tokenizer's own losses
      // (a line end after the last tag) are not the rewrite's.
      CHtmlFileEx::CReplaceContext none;
      none.SetDocument(forward.GetDocumentOldPath(), nullptr);
      std::string ignored;
      const bool same = RunCall(call, after, backward, ignored) == RunCall(call, page, none, ignored);
      out += "----\ninverse gives the page back " + std::to_string(same) + "\n";
    }
    return out;
  }, 10);
}

// A derived document names its own targets through the hook.
class CHookedPage : public CHtmlFileEx {
 public:
  using CHtmlFileEx::CHtmlFileEx;
  std::vector<std::string> asked;

 protected:
  const char* GetNewRelFileNameCustom(const char* name, CReplaceContext& context) override {
    const CFileReference* current = context.GetCurrentReference();
    asked.push_back(std::string(name) + "@" + (current ? current->m_strAttribute.str() : "?"));
    return std::string(name) == "custom.htm" ? "chosen.htm" : nullptr;
  }
};

TEST(ReferenceReplace, HookIsAskedFirstAndCanBeTurnedOff) {
  const char* html = "<a href=\"custom.htm\">c</a><img src='x.gif'><a href=\"http://e.org/x.gif\">e</a>";
  CByteString bytes(reinterpret_cast<const unsigned char*>(html), static_cast<int>(std::strlen(html)));
  CHtmlFileEx::CReplaceContext context;
  ASSERT_TRUE(context.SetDocument("page.htm", nullptr));
  ASSERT_TRUE(context.AddMove("x.gif", "img/x.gif", 0));
  CHookedPage page(bytes, "page.htm");
  EXPECT_EQ(page.ReplaceFileReference(context), 2);
  EXPECT_EQ(page.asked, (std::vector<std::string>{"custom.htm@href", "x.gif@src", "http://e.org/x.gif@href"}));
  EXPECT_EQ(Saved(page), "<a href=\"chosen.htm\">c</a><img src='img/x.gif'><a href=\"http://e.org/x.gif\">e</a>");

  CHookedPage plain(bytes, "page.htm");
  context.SetOptions(CHtmlFileEx::CReplaceContext::emReplaceNoHook);
  EXPECT_EQ(plain.ReplaceFileReference(context), 1);
  EXPECT_TRUE(plain.asked.empty());
}

// Each delete keeps what its header says and the blanks after removed tags.
TEST(ReferenceReplace, DeleteFamilyKeepsWhatItSays) {
  const char* html =
      "<p>a <a href=x.htm>link <b>text</b></a> b <object data=m.swf><param name=src value=m.swf>fallback</object> "
      "c <div>gone <div>inner</div></div> d <img src=i.gif> e</p>";
  CByteString bytes(reinterpret_cast<const unsigned char*>(html), static_cast<int>(std::strlen(html)));
  CHtmlFileEx page(bytes, "page.htm");
  page.Analyse();
  auto find = [&](const char* name) {
    CHtmlTokenList* list = page.GetTokenList();
    for (POSITION pos = list->GetHeadPosition(); pos;) {
      POSITION here = pos;
      CHtmlTagItem* tag = list->GetNext(pos)->GetSafeTagItemPtr();
      if (tag && !tag->IsDiscardedToken() && tag->GetTagName() == name)
        return here;
    }
    return POSITION(nullptr);
  };
  EXPECT_EQ(page.DeleteAnchor(find("b")), 0);  // not a link
  EXPECT_EQ(page.DeleteAnchor(find("a")), 1);
  EXPECT_EQ(page.DeleteObject(find("div")), 0);  // not an object
  EXPECT_EQ(page.DeleteObject(find("object")), 1);
  EXPECT_EQ(page.DeleteEntity(find("div")), 1);
  EXPECT_EQ(page.DeleteEntity(find("img")), 1);
  EXPECT_EQ(page.DeleteEntity(nullptr), 0);
  EXPECT_EQ(Saved(page), "<p>a link <b>text</b> b  c  d  e</p>");
}

}  // namespace
}  // namespace telvanix
