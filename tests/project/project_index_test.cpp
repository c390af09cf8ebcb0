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

// A page of several megabytes is walked for its places on a second thread:
// its places must be those of one copy of its repeated part, copy after copy
// in file order, and every reference must still find its place.
TEST(ProjectIndex, PlacesTheReferencesOfALargePageAsOfASmallOne) {
  const std::string unit =
      "<p><img src=\"b.gif\"> <a href=\"b.htm#x\">x</a> <span style=\"background: url(c.gif)\">y</span>\n"
      "<table background=\"t.gif\"><tr><td background=\"u.gif\">z</td></tr></table>"
      "<object data=\"m.swf\"></object><!-- <v:imagedata src=\"e.gif\"> --></p>\n";
  const std::string head = "<html><head><link rel=\"stylesheet\" href=\"s.css\"></head><body>\n";
  std::string large = head;
  size_t copies = 0;
  for (; large.size() < (5u << 20); ++copies) large += unit;
  test::TempDir dir;
  dir.Write("small.htm", head + unit + "</body></html>\n");
  dir.Write("large.htm", large + "</body></html>\n");
  CHtmlProjectIndex index;
  ASSERT_EQ(index.Build(dir.path().c_str()), 1);
  const auto& small = index.GetEntries()[index.FindFile("small.htm")];
  const auto& big = index.GetEntries()[index.FindFile("large.htm")];
  const size_t perUnit = small.m_positions.size() - 1;  // the LINK stands before the copies
  ASSERT_GE(perUnit, 7u);
  ASSERT_EQ(big.m_positions.size(), 1 + copies * perUnit);
  for (size_t j = 1; j < big.m_positions.size(); ++j) {
    const auto& got = big.m_positions[j];
    const auto& want = small.m_positions[1 + (j - 1) % perUnit];
    const int line = want.m_nLine + 2 * static_cast<int>((j - 1) / perUnit);
    ASSERT_EQ(got.m_strWritten.str() + " " + got.m_strElement.str() + ":" + std::to_string(got.m_nLine),
              want.m_strWritten.str() + " " + want.m_strElement.str() + ":" + std::to_string(line))
        << "place " << j;
  }
  ASSERT_EQ(big.m_refs.size(), 1 + copies * (small.m_refs.size() - 1));
  for (const auto& r : big.m_refs) ASSERT_NE(r.m_nPosition, CHtmlProjectIndex::kNoPosition) << r.m_strText;
}

}  // namespace
}  // namespace telvanix
