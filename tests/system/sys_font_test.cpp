#include "telvanix/system/sys_font.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cctype>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "test_util.h"

#ifdef TELVANIX_HAVE_FONTCONFIG
#include <fontconfig/fontconfig.h>
#define TVX_TEST_FONTCONFIG 1
#endif

// fontconfig 2.14 loses a buffer while parsing its configuration files, even
// after FcFini; leak checking of the test run must not blame the library.
extern "C" __attribute__((visibility("default"), used)) const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\n";
}

namespace telvanix {
namespace {

std::string Lower(std::string text) {
  for (char& ch : text)
    ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
  return text;
}

// Whether fontconfig itself, asked directly, knows a family of this name.
bool FontconfigHasFamily(const char* family) {
#ifdef TVX_TEST_FONTCONFIG
  FcPattern* pattern = FcPatternCreate();
  FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family));
  FcObjectSet* objects = FcObjectSetBuild(FC_FAMILY, static_cast<char*>(nullptr));
  FcFontSet* set = FcFontList(nullptr, pattern, objects);
  bool found = set && set->nfont > 0;
  if (set) FcFontSetDestroy(set);
  FcObjectSetDestroy(objects);
  FcPatternDestroy(pattern);
  return found;
#else
  (void)family;
  return false;
#endif
}

TEST(CSysFontTest, PointsArePassedAsTenthsOfAPointAndCopiesAreWhole) {
  // 120 tenths = 12 points = 16 pixels at 96 dpi; a plain 12 is 1.2 points
  // (the rounding itself is the point-font maker's, tested with it).
  CSysFont font;
  ASSERT_EQ(font.SetAsFontPoints("Arial", 12), 1);
  EXPECT_EQ(font.GetLogFont().lfHeight, -2);
  ASSERT_EQ(font.SetAsFontPoints("Arial", 120), 1);
  EXPECT_EQ(font.GetLogFont().lfHeight, -16);
  EXPECT_EQ(font.GetLogFont().lfCharSet, DEFAULT_CHARSET);

  // A null name leaves the record as it was; a long one is cut to 31 bytes.
  EXPECT_EQ(font.SetAsFontPoints(nullptr, 100), 0);
  EXPECT_STREQ(font.GetFontName(), "Arial");
  EXPECT_EQ(font.GetLogFont().lfHeight, -16);
  std::string longName(80, 'x');
  ASSERT_EQ(font.SetAsFontPoints(longName.c_str(), 100), 1);
  EXPECT_EQ(std::strlen(font.GetFontName()), 31u);

  // So is a host record whose face name fills every byte.
  LOGFONTA record;
  std::memset(&record, 'A', sizeof(record));
  font.SetLogFont(record);
  EXPECT_EQ(std::strlen(font.GetFontName()), 31u);
  EXPECT_EQ(font.GetLogFont().lfWeight, record.lfWeight);

  // A copy is the whole record; copying null changes nothing; Default zeroes.
  CSysFont copy;
  EXPECT_EQ(copy.Copy(&font), 1);
  EXPECT_EQ(std::memcmp(&copy.GetLogFont(), &font.GetLogFont(), sizeof(LOGFONTA)), 0);
  EXPECT_EQ(copy.Copy(nullptr), 0);
  EXPECT_EQ(std::memcmp(&copy.GetLogFont(), &font.GetLogFont(), sizeof(LOGFONTA)), 0);
  copy.Default();
  const LOGFONTA zero{};
  EXPECT_EQ(std::memcmp(&copy.GetLogFont(), &zero, sizeof(LOGFONTA)), 0);
}

TEST(CSysFontTest, DefaultFaceAndSizeFollowTheCodePage) {
  const struct {
    UINT codePage;
    const char* face;
    LONG height;  // 10 -> -1, 12 -> -2 at 96 dpi, the sizes taken as tenths
  } cases[] = {
      {932, "\x82\x6C\x82\x72\x20\x82\x6F\x83\x53\x83\x56\x83\x62\x83\x4E", -1},
      {936, "\xCB\xCE\xCC\xE5", -1}, {949, "\xB1\xBC\xB8\xB2", -1}, {950, "\xB7\x73\xB2\xD3\xA9\xFA\xC5\xE9", -1},
      // Byte-pair code pages outside 932..950 keep the resource face.
      {1252, "Arial", -2}, {874, "Arial", -2}, {1255, "Arial", -2}, {1250, "Arial", -2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.codePage);
    test::CodePageScope scope(c.codePage);
    CSysFont font;
    ASSERT_EQ(font.SetAsDefault(), 1);
    EXPECT_STREQ(font.GetFontName(), c.face);
    EXPECT_EQ(font.GetLogFont().lfHeight, c.height);
  }
}

TEST(CSysFontTest, PortableNameTakesBothFamilyBitsAsMonospaced) {
  const struct {
    BYTE family;
    const char* expected;
  } cases[] = {
      {0x22, "Monospaced"}, {0x12, "Monospaced"}, {0x31, "Monospaced"}, {0x52, "Monospaced"},
      {0x40, "(none)"},     {0x00, "(none)"},     {0x02, "(none)"},     {0x01, "(none)"},
  };
  for (const auto& c : cases) {
    LOGFONTA record{};
    record.lfPitchAndFamily = c.family;
    CSysFont font;
    font.SetLogFont(record);
    const char* name = font.GetPortableHtmlFontName();
    EXPECT_STREQ(name ? name : "(none)", c.expected) << "family byte " << int(c.family);
  }
}

// Walks the listed fonts: each installed family once, by its fontconfig
// name, and the walk never steps outside the array.
TEST(CHtmlMiscDataMgrTest, WalkListsInstalledFamiliesOnceAndStaysInBounds) {
  int index = 0;
  CSysFont* first = CHtmlMiscDataMgr::GetFirstSysFont(index);
  int count = CHtmlMiscDataMgr::GetSysFontCount();
  EXPECT_EQ(first != nullptr, count > 0);
  EXPECT_EQ(index, count > 0 ? 1 : 0);

  std::set<std::string> seen;
  int walked = 0;
  for (CSysFont* font = CHtmlMiscDataMgr::GetFirstSysFont(index); font;
       font = CHtmlMiscDataMgr::GetNextSysFont(index)) {
    ++walked;
    EXPECT_TRUE(seen.insert(Lower(font->GetFontName())).second) << "listed twice: " << font->GetFontName();
    EXPECT_TRUE(FontconfigHasFamily(font->GetFontName())) << "not a fontconfig family: " << font->GetFontName();
  }
  EXPECT_EQ(walked, count);
  EXPECT_EQ(index, count);

  int past = count;
  EXPECT_EQ(CHtmlMiscDataMgr::GetNextSysFont(past), nullptr);
  EXPECT_EQ(past, count);
  int before = -1;
  EXPECT_EQ(CHtmlMiscDataMgr::GetNextSysFont(before), nullptr);
  EXPECT_EQ(before, -1);
  int far = -2147483647;
  EXPECT_EQ(CHtmlMiscDataMgr::GetNextSysFont(far), nullptr);
}

TEST(CHtmlMiscDataMgrTest, FindsDejaVuCaseBlindWithItsTraits) {
  if (!FontconfigHasFamily("DejaVu Sans")) {
    GTEST_SKIP() << "DejaVu Sans is not installed (package fonts-dejavu-core)";
  }
  CSysFont* sans = CHtmlMiscDataMgr::GetSysFont("dejavu sans");
  ASSERT_NE(sans, nullptr);
  EXPECT_STREQ(sans->GetFontName(), "DejaVu Sans");
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFont("DEJAVU SANS"), sans);
  const LOGFONTA& lf = sans->GetLogFont();
  EXPECT_EQ(lf.lfWeight, FW_NORMAL);
  EXPECT_EQ(lf.lfItalic, 0);
  EXPECT_EQ(lf.lfPitchAndFamily, VARIABLE_PITCH | FF_SWISS);
  EXPECT_EQ(lf.lfCharSet, ANSI_CHARSET);
  EXPECT_STREQ(sans->GetPortableHtmlFontName(), "Monospaced");

  if (FontconfigHasFamily("DejaVu Sans Mono")) {
    CSysFont* mono = CHtmlMiscDataMgr::GetSysFont("DejaVu Sans Mono");
    ASSERT_NE(mono, nullptr);
    EXPECT_NE(mono, sans);
    EXPECT_EQ(mono->GetLogFont().lfPitchAndFamily, FIXED_PITCH | FF_MODERN);
  }
  if (FontconfigHasFamily("DejaVu Serif")) {
    CSysFont* serif = CHtmlMiscDataMgr::GetSysFont("DejaVu Serif");
    ASSERT_NE(serif, nullptr);
    EXPECT_EQ(serif->GetLogFont().lfPitchAndFamily, VARIABLE_PITCH | FF_ROMAN);
  }
}

TEST(CHtmlMiscDataMgrTest, UnknownAndBadNames) {
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFont(nullptr), nullptr);
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFont(""), nullptr);
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFont("No Such Family Qx7"), nullptr);
  // The existence check is deliberately not made.
  EXPECT_EQ(CHtmlMiscDataMgr::IsExistingFontName("No Such Family Qx7"), 1);
  EXPECT_EQ(CHtmlMiscDataMgr::IsExistingFontName(nullptr), 1);
}

TEST(CHtmlMiscDataMgrTest, AddedFontsAppendWithoutDuplicateCheckAndOutliveRelisting) {
  int index = 0;
  CHtmlMiscDataMgr::GetFirstSysFont(index);
  int count = CHtmlMiscDataMgr::GetSysFontCount();

  EXPECT_EQ(CHtmlMiscDataMgr::AddNewSysFont(nullptr, TRUETYPE_FONTTYPE), nullptr);
  LOGFONTA record{};
  EXPECT_EQ(CHtmlMiscDataMgr::AddNewSysFont(&record, TRUETYPE_FONTTYPE), nullptr);
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFontCount(), count);

  std::strcpy(record.lfFaceName, "Zz Added Face");
  record.lfWeight = FW_BOLD;
  CSysFont* a = CHtmlMiscDataMgr::AddNewSysFont(&record, 0);
  CSysFont* b = CHtmlMiscDataMgr::AddNewSysFont(&record, 0);
  ASSERT_NE(a, nullptr);
  ASSERT_NE(b, nullptr);
  EXPECT_NE(a, b);
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFontCount(), count + 2);
  EXPECT_EQ(a->GetLogFont().lfWeight, FW_BOLD);
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFont("zz added face"), a);
  int last = count + 1;
  EXPECT_EQ(CHtmlMiscDataMgr::GetNextSysFont(last), b);

  // Listing again starts a fresh array; fonts handed out before stay usable.
  EXPECT_EQ(CHtmlMiscDataMgr::QuerySysFonts(), 1);
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFontCount(), count);
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFont("Zz Added Face"), nullptr);
  EXPECT_STREQ(a->GetFontName(), "Zz Added Face");
}

TEST(CHtmlMiscDataMgrTest, SecondInstanceLeavesTheRegistryAlone) {
  int index = 0;
  CSysFont* first = CHtmlMiscDataMgr::GetFirstSysFont(index);
  int count = CHtmlMiscDataMgr::GetSysFontCount();
  {
    CHtmlMiscDataMgr another;
  }
  EXPECT_EQ(CHtmlMiscDataMgr::GetSysFontCount(), count);
  index = 0;
  EXPECT_EQ(CHtmlMiscDataMgr::GetFirstSysFont(index), first);
}

TEST(CHtmlMiscDataMgrTest, ConcurrentListingAndReading) {
  std::vector<std::thread> threads;
  std::atomic<int> badNames{0};
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t, &badNames] {
      for (int round = 0; round < 3; ++round) {
        if (t == 0) {
          CHtmlMiscDataMgr::QuerySysFonts();
        }
        int index = 0;
        for (CSysFont* font = CHtmlMiscDataMgr::GetFirstSysFont(index); font;
             font = CHtmlMiscDataMgr::GetNextSysFont(index)) {
          if (font->GetFontName()[0] == '\0') ++badNames;
        }
        CHtmlMiscDataMgr::GetSysFont("DejaVu Sans");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(badNames.load(), 0);
}

}  // namespace
}  // namespace telvanix
