#include <gtest/gtest.h>

#include "telvanix/foundation/text_utils.h"
#include "telvanix/foundation/url_tables.h"
#include "telvanix/foundation/url_utils.h"
#include "telvanix/platform/code_page.h"
#include "test_util.h"

using namespace telvanix;

TEST(TrimLeftAndRight, Blanks) {
  // Form feed and vertical tab are not blanks here.
  for (auto [text, want] : {std::pair{"\a\t x  y \r\n", "x  y"}, {"x\ty", "x\ty"}, {" \t\r\n\a", ""}, {"", ""},
                            {"\fx\v", "\fx\v"}}) {
    CString s(text);
    EXPECT_EQ(TrimLeftAndRight(s), 1);
    EXPECT_EQ(s, want);
  }
}

TEST(IsDBCS, FollowsTheActiveCodePage) {
  test::CodePageScope scope(1252);
  EXPECT_EQ(IsDBCS(), 0u);
  const struct { UINT cp; UINT expected; } cases[] = {
      {1250, 0}, {437, 0},     {65001, 0},  {874, 874},   {932, 932},   {936, 936},
      {949, 949}, {950, 950}, {1254, 1254}, {1255, 1255}, {1256, 1256}, {1257, 1257}, {1200, 1200},
  };
  for (const auto& c : cases) {
    SetActiveCodePage(c.cp);
    EXPECT_EQ(IsDBCS(), c.expected) << c.cp;
  }
}

TEST(IsRemoteUrlEx, SchemesAndWww) {
  for (const char* url : {"http://x", "HTTP://x", "https://x/y", "ftp://f", "mailto:a@b", "file:///c/d.htm",
                          "javascript:void(0)", "News:x", "prospero:x", "www.example.com", "WwW.x", "wais:"}) {
    EXPECT_TRUE(IsRemoteUrlEx(url)) << url;
  }
  for (const char* url : {"C:\\topics\\a.htm", "c:/a.htm", "foo:bar", ":x", "wwwx.com", "ww.x", "topic.htm#www.x",
                          "", "http//x", "mk:@MSITStore:x.chm::/a.htm"}) {
    EXPECT_FALSE(IsRemoteUrlEx(url)) << url;
  }
  EXPECT_FALSE(IsRemoteUrlEx(nullptr));
}

TEST(Multimedia, Extensions) {
  for (const char* ext : {".au", ".AVI", ".mid", ".mpeg", ".mp3", ".rmi", ".wav", ".qt", ".Ra", ".swf", ".wax",
                          ".wmv", ".wvx", ".mp4"}) {
    EXPECT_TRUE(IsSupportedMultimediaFileExtName(ext)) << ext;
  }
  for (const char* ext : {"wav", ".txt", ".htm", ".wav ", "", ".mp"}) {
    EXPECT_FALSE(IsSupportedMultimediaFileExtName(ext)) << ext;
  }
  EXPECT_FALSE(IsSupportedMultimediaFileExtName(nullptr));
  EXPECT_TRUE(IsSupportedMultimediaFileName("C:\\media\\Song.WMA"));
  EXPECT_TRUE(IsSupportedMultimediaFileName("clip.tar.mov"));
  EXPECT_FALSE(IsSupportedMultimediaFileName("clip.wav#x"));
  EXPECT_FALSE(IsSupportedMultimediaFileName("wav"));
  EXPECT_FALSE(IsSupportedMultimediaFileName(nullptr));
}

TEST(UrlTables, EveryRowIsFoundByItsOwnKey) {
  for (const auto& row : g_tUrlSchemeTable)
    EXPECT_EQ(QuickMapStringToValue(g_tUrlSchemeTable, sizeof(g_tUrlSchemeTable), row.pszKey, TRUE), row.nValue)
        << row.pszKey;
  for (const auto& row : g_tMultimediaExtTable)
    EXPECT_TRUE(IsSupportedMultimediaFileExtName(row.pszKey)) << row.pszKey;
}
