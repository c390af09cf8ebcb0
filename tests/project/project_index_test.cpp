// Where the index says references stand: each checked reference matched to
// its written place (decoded, repeated), and every place naming a file found.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "telvanix/project/project_index.h"
#include "test_util.h"

namespace telvanix {
namespace {

TEST(ProjectIndex, GivesEveryReferenceItsLineAndTag) {
  test::TempDir dir;
  dir.Write("a.htm", "<html><body>\n<img src=\"b.gif\">\n<a href=\"b.gif\">x</a>\n<img lowsrc=\"B.gif\"\n"
                     " src=\"c&amp;d.gif\"></body></html>\n");
  dir.Write("b.gif", "GIF89a");
  dir.Write("s.css", "p {}\nbody { background: url(b.gif) }\n");
  CHtmlProjectIndex index;
  ASSERT_EQ(index.Build(dir.path().c_str()), 1);
  std::vector<std::string> checked;
  for (const char* file : {"a.htm", "s.css"})
    for (const auto& r : index.GetEntries()[index.FindFile(file)].m_refs) {
      ASSERT_NE(r.m_nPosition, CHtmlProjectIndex::kNoPosition) << r.m_strText;
      checked.push_back(r.m_strText + ":" + std::to_string(r.m_nLine) + " " + r.m_szWhat);
    }
  EXPECT_EQ(checked, (std::vector<std::string>{"b.gif:2 image", "c&d.gif:5 image", "b.gif:3 link",
                                               "b.gif:2 image in a stylesheet"}));
  std::vector<std::string> places;
  for (const auto& p : index.GetReferencePlaces("b.gif")) {
    const auto& at = index.GetEntries()[p.m_nFile].m_positions[p.m_nPosition];
    places.push_back(index.GetFiles()[p.m_nFile].path + ":" + std::to_string(at.m_nLine) + " " +
                     at.m_strElement.str() + " " + at.m_strAttribute.str() + " " + at.m_strWritten.str());
  }
  EXPECT_EQ(places, (std::vector<std::string>{"a.htm:2 img src b.gif", "a.htm:3 a href b.gif",
                                              "a.htm:4 img lowsrc B.gif", "s.css:2 url  b.gif"}));
  // A file that does not exist is still found by what names it.
  EXPECT_EQ(index.GetReferencePlaces("C&D.GIF").size(), 1u);
}

}  // namespace
}  // namespace telvanix
