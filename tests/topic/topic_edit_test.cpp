// Saving over the page's own file, and a page file that is missing.
#include "telvanix/topic/html_file_ex.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "test_util.h"

namespace telvanix {
namespace {

TEST(TopicEdit, SaveOverItsOwnFileWritesOnlyWhenChanged) {
  test::TempDir dir;
  const std::string source = test::ReadDataFile("topic_edit/edit_page.htm");
  ASSERT_FALSE(source.empty());
  dir.Write("topic.htm", source);
  {
    CHtmlFileEx doc((dir / "topic.htm").c_str());
    CString title;
    EXPECT_EQ(1, doc.GetHtmlTitle(title));
    EXPECT_STREQ("Old  title", title);
    CHtmlFileEx::CStringArrayEx k;
    doc.GetKeywordK(k);
    // Reading changed nothing, so nothing is written (the file is gone first
    // to show that).
    std::remove((dir / "topic.htm").c_str());
    EXPECT_EQ(1, doc.Save(static_cast<const char*>(nullptr), CHtmlPack::emSave));
    EXPECT_EQ("", dir.List());
  }
  dir.Write("topic.htm", source);
  CByteString edited;
  {
    CHtmlFileEx doc((dir / "topic.htm").c_str());
    ASSERT_EQ(1, doc.SetHtmlTitle("Installing & running"));
    ASSERT_EQ(1, doc.Save(&edited, CHtmlPack::emSave));
    EXPECT_EQ(1, doc.Save(static_cast<const char*>(nullptr), CHtmlPack::emSave));
  }
  EXPECT_EQ(std::string(static_cast<const char*>(edited), static_cast<size_t>(edited.GetLength())),
            dir.Read("topic.htm"));
  EXPECT_NE(std::string::npos, dir.Read("topic.htm").find("<title>Installing &amp; running</title>"));
}

TEST(TopicEdit, MissingFileAnalysesToNothing) {
  CHtmlFileEx doc("/nonexistent/folder/topic.htm");
  EXPECT_EQ(0, doc.Analyse());
  EXPECT_EQ(1, doc.IsAnalysed());
  CString text;
  EXPECT_EQ(0, doc.GetHtmlTitle(text));
  EXPECT_EQ(0, doc.SetHtmlTitle("x"));
}

}  // namespace
}  // namespace telvanix
