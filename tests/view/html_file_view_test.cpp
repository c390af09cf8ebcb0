#include "telvanix/view/html_file_view.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "golden_cases.h"
#include "telvanix/css/css_pack_ex_manager.h"
#include "telvanix/html/token_list.h"
#include "telvanix/html/tree_node.h"
#include "telvanix/view/tag_format.h"

namespace telvanix {
namespace {

using C = CCssStyleCombine;

// Paths below the data folder are written from there, so the dumps read
// the same on every machine.
std::string Relative(std::string text) {
  const std::string root = std::string(TELVANIX_TEST_DATA_DIR) + "/view/";
  for (size_t at; (at = text.find(root)) != std::string::npos;)
    text.erase(at, root.size());
  return text;
}

// Every element with each value that is not the initial one, and where it
// came from; then the sheets that could not be read.
std::string DescribeView(CHtmlFileView& view) {
  std::ostringstream out;
  out << "built " << view.BuildView() << ", quirks " << view.IsQuirksMode() << "\n";
  for (int i = 0; i < view.GetElementCount(); ++i) {
    const CHtmlTagFormat* f = view.GetTagFormat(i);
    out << f->GetLine() << " " << f->GetTagName().str() << "\n";
    for (int p = 0; p < C::emPropertyCount; ++p) {
      const auto property = static_cast<C::EmProperty>(p);
      if (f->GetOrigin(property) != C::emOriginInitial)
        out << "  " << CHtmlTagFormat::GetPropertyName(property) << ": " << f->GetComputedValue(property).str()
            << " (" << Relative(f->GetOriginText(property).str()) << ")\n";
    }
  }
  for (int i = 0; i < view.GetSheetErrors().GetSize(); ++i)
    out << "sheet error: " << Relative(view.GetSheetErrors()[i].str()) << "\n";
  return out.str();
}

TEST(HtmlFileViewTest, GoldenPages) {
  test::RunGoldenCases(
      "view", ".htm",
      [](const std::string& name, const std::string&) {
        CHtmlFileView view((std::string(TELVANIX_TEST_DATA_DIR) + "/view/" + name + ".htm").c_str());
        return DescribeView(view);
      },
      3);
}

// The format of the first element the selector applies to, as text.
std::string ValueOf(CHtmlFileView& view, const char* selector, C::EmProperty property) {
  for (int i = 0; i < view.GetElementCount(); ++i)
    if (view.IsElementSelected(i, selector))
      return view.GetTagFormat(i)->GetComputedValue(property).str();
  return "(none)";
}

TEST(HtmlFileViewTest, RebuiltAfterAnEdit) {
  CByteString page;
  const char text[] = "<html><body><p class=x>one</p><p>two</p></body></html>";
  page.Append(reinterpret_cast<const unsigned char*>(text), sizeof text - 1);
  CHtmlFileView view(page, nullptr);
  EXPECT_EQ(ValueOf(view, "p.x", C::emColor), "rgb(0, 0, 0)");
  int first = -1;
  for (int i = 0; i < view.GetElementCount() && first < 0; ++i)
    if (view.IsElementSelected(i, "p"))
      first = i;
  ASSERT_EQ(view.SetElementAttribute(first, "style", "color: red; font-weight: bold"), 1);
  EXPECT_EQ(ValueOf(view, "p.x", C::emColor), "rgb(255, 0, 0)");
  EXPECT_EQ(ValueOf(view, "p.x", C::emFontWeight), "700");
  // Inserted tokens make the view rebuild its tree too.
  ASSERT_TRUE(view.GetTokenList()->InsertHtmlStream(view.GetElementNode(first)->GetTokenPosition(),
                                                    reinterpret_cast<const unsigned char*>("<h1>new</h1>"), 1));
  EXPECT_EQ(ValueOf(view, "h1", C::emFontSize), "32px");
  EXPECT_EQ(ValueOf(view, "p.x", C::emColor), "rgb(255, 0, 0)");
  EXPECT_EQ(view.SetElementAttribute(view.GetElementCount(), "style", "x: y"), 0);
  // A tree the host rebuilds holds other nodes: the view is made again on
  // them (and lets go of them when it goes).
  ASSERT_TRUE(view.RebuildEntityTree());
  EXPECT_EQ(ValueOf(view, "p.x", C::emColor), "rgb(255, 0, 0)");
  EXPECT_EQ(view.GetTagFormat(view.GetElementNode(0)->GetTokenPosition()), view.GetTagFormat(0));
}

TEST(HtmlFileViewTest, SheetsLoadedOncePerProject) {
  test::TempDir dir;
  const std::string root = dir.path();
  std::ofstream(root + "/a.htm") << "<link rel=stylesheet href=s.css><p>a";
  std::ofstream(root + "/b.htm") << "<link rel=stylesheet href=S.CSS><p>b";
  std::ofstream(root + "/s.css") << "p { color: red }";
  CCssPackExManager manager;
  {
    CHtmlFileView a((root + "/a.htm").c_str(), &manager);
    CHtmlFileView b((root + "/b.htm").c_str(), &manager);
    EXPECT_EQ(ValueOf(a, "p", C::emColor), "rgb(255, 0, 0)");
    EXPECT_EQ(ValueOf(b, "p", C::emColor), "rgb(255, 0, 0)");
    EXPECT_EQ(manager.GetLoadCount(), 1);
  }
  // A changed sheet is read again once its file is looked at: within the
  // recheck interval the cached rules stand, after RecheckSheets or once
  // the interval has passed the view sees the new rules.
  auto edit = [&](const char* rules, int seconds) {
    std::ofstream(root + "/s.css") << rules;
    std::filesystem::last_write_time(root + "/s.css", std::filesystem::last_write_time(root + "/s.css") +
                                                          std::chrono::seconds(seconds));
  };
  manager.SetRecheckInterval(3600 * 1000);
  edit("p { color: blue; margin: 1pt }", 2);
  CHtmlFileView cached((root + "/a.htm").c_str(), &manager);
  EXPECT_EQ(ValueOf(cached, "p", C::emColor), "rgb(255, 0, 0)");
  manager.RecheckSheets();
  CHtmlFileView again((root + "/a.htm").c_str(), &manager);
  EXPECT_EQ(ValueOf(again, "p", C::emColor), "rgb(0, 0, 255)");
  EXPECT_EQ(manager.GetLoadCount(), 2);
  manager.SetRecheckInterval(50);
  edit("p { color: green }", 4);
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  CHtmlFileView later((root + "/a.htm").c_str(), &manager);
  EXPECT_EQ(ValueOf(later, "p", C::emColor), "rgb(0, 128, 0)");
  // A sheet that is a folder cannot be read; the view still builds.
  std::filesystem::remove(root + "/s.css");
  std::filesystem::create_directory(root + "/s.css");
  manager.RecheckSheets();
  CHtmlFileView broken((root + "/a.htm").c_str(), &manager);
  EXPECT_EQ(broken.BuildView(), 1);
  EXPECT_EQ(broken.GetSheetErrors().GetSize(), 1);
  EXPECT_EQ(ValueOf(broken, "p", C::emColor), "rgb(0, 0, 0)");
}

// Formats are reused from page to page on one thread: pages on the same
// sheets that differ in link colour, attributes or tables must each read
// as they do on a thread that built nothing before.
TEST(HtmlFileViewTest, PagesBuiltInTurnReadAsBuiltAlone) {
  test::TempDir dir;
  const std::string root = dir.path();
  std::ofstream(root + "/s.css") << "td { color: green } .x b { font-weight: 300 } a { margin: 1em }";
  const char* pages[] = {
      "<body link=blue><a href=x>a</a><table border=1 cellpadding=2><tr><td>1</table><div class=x><b>b</b></div>",
      "<body link=red text=navy><a href=x>a</a><table border=0><tr><td align=right>1</table><b>b</b>",
      "<!DOCTYPE html><body><font size=5><a href=x>a</a></font><div class=x><b style='color:red'><i>i</i></b></div>"};
  CCssPackExManager manager;
  auto describe = [&](int i) {
    std::ofstream(root + "/p.htm") << "<link rel=stylesheet href=s.css>" << pages[i];
    CHtmlFileView view((root + "/p.htm").c_str(), &manager);
    return DescribeView(view);
  };
  for (int i = 0; i < 3; ++i) {
    std::string alone;
    std::thread([&] { alone = describe(i); }).join();
    for (int before = 0; before < 3; ++before) {
      describe(before);
      EXPECT_EQ(describe(i), alone) << "page " << i << " after page " << before;
    }
  }
}

}  // namespace
}  // namespace telvanix
