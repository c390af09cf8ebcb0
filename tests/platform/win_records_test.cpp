#include "telvanix/platform/win_records.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "telvanix/platform/gdi_font.h"
#include "telvanix/platform/page_setup_dialog.h"
#include "test_util.h"

namespace telvanix {
namespace {

TEST(GlobalMemoryTest, BlocksAreZeroedSizedAndLockCounted) {
  HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 40);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(GlobalSize(block), 40u);
  auto* bytes = static_cast<unsigned char*>(GlobalLock(block));
  ASSERT_NE(bytes, nullptr);
  for (int i = 0; i < 40; ++i) {
    ASSERT_EQ(bytes[i], 0) << i;
  }
  std::memset(bytes, 0x5A, 40);
  EXPECT_EQ(GlobalLock(block), bytes);
  EXPECT_EQ(GlobalUnlock(block), TRUE);   // still locked once
  EXPECT_EQ(GlobalUnlock(block), FALSE);  // now unlocked
  EXPECT_EQ(GlobalUnlock(block), FALSE);  // not locked at all
  EXPECT_EQ(static_cast<unsigned char*>(GlobalLock(block))[39], 0x5A);
  GlobalUnlock(block);
  EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemoryTest, ForeignAndFreedHandlesAreRefused) {
  EXPECT_EQ(GlobalLock(nullptr), nullptr);
  EXPECT_EQ(GlobalSize(nullptr), 0u);
  EXPECT_EQ(GlobalFree(nullptr), nullptr);

  int local = 0;
  auto foreign = reinterpret_cast<HGLOBAL>(&local);
  EXPECT_EQ(GlobalLock(foreign), nullptr);
  EXPECT_EQ(GlobalUnlock(foreign), FALSE);
  EXPECT_EQ(GlobalSize(foreign), 0u);
  EXPECT_EQ(GlobalFree(foreign), foreign);

  HGLOBAL block = GlobalAlloc(GHND, 8);
  ASSERT_EQ(GlobalFree(block), nullptr);
  EXPECT_EQ(GlobalLock(block), nullptr);
  EXPECT_EQ(GlobalFree(block), block);

  HGLOBAL empty = GlobalAlloc(GHND, 0);
  EXPECT_EQ(GlobalSize(empty), 0u);
  GlobalFree(empty);
  EXPECT_EQ(GlobalAlloc(GHND, static_cast<std::size_t>(-1)), nullptr);
}

TEST(PointFontTest, SizesAreTenthsOfAPointAtScreenResolution) {
  struct Case {
    int tenths;
    LONG height;
  };
  // MulDiv(96, tenths, 720), rounded, as a negative character height.
  const Case cases[] = {{120, -16}, {100, -13}, {12, -2}, {10, -1}, {3, 0}, {4, -1}, {-90, -12}};
  for (const Case& c : cases) {
    CFont font;
    ASSERT_EQ(font.CreatePointFont(c.tenths, "Arial"), TRUE);
    LOGFONTA lf;
    ASSERT_EQ(font.GetObject(sizeof(lf), &lf), static_cast<int>(sizeof(LOGFONTA)));
    EXPECT_EQ(lf.lfHeight, c.height) << c.tenths;
    EXPECT_EQ(lf.lfCharSet, DEFAULT_CHARSET);
    EXPECT_STREQ(lf.lfFaceName, "Arial");
  }
}

TEST(PointFontTest, ObjectLifetime) {
  CFont font;
  EXPECT_EQ(font.GetObject(60, nullptr), 0);
  EXPECT_EQ(font.CreatePointFont(120, nullptr), FALSE);
  ASSERT_EQ(font.CreatePointFont(120, "Courier New"), TRUE);
  EXPECT_EQ(font.CreatePointFont(120, "Arial"), FALSE);
  EXPECT_EQ(font.GetObject(0, nullptr), 60);
  char part[8];
  std::memset(part, 0x7F, sizeof(part));
  EXPECT_EQ(font.GetObject(4, part), 4);
  EXPECT_EQ(part[4], 0x7F);
  EXPECT_EQ(font.DeleteObject(), TRUE);
  EXPECT_EQ(font.DeleteObject(), FALSE);
  LOGFONTA whole;
  EXPECT_EQ(font.GetObject(static_cast<int>(sizeof(whole)), &whole), 0);
}

// Release 2 of libpaper reads its own configuration places (not PAPERCONF)
// and may replace an unknown name by the locale's paper.
bool HasPaperLibrary2() {
  void* handle = dlopen("libpaper.so.2", RTLD_LAZY | RTLD_LOCAL);
  if (handle) dlclose(handle);
  return handle != nullptr;
}

PAGESETUPDLGA ReturnDefaultRecord(DWORD extraFlags) {
  PAGESETUPDLGA record;
  std::memset(&record, 0, sizeof(record));
  record.lStructSize = sizeof(record);
  record.Flags = PSD_RETURNDEFAULT | PSD_NOWARNING | extraFlags;
  return record;
}

void FreeHandles(PAGESETUPDLGA& record) {
  EXPECT_EQ(GlobalFree(record.hDevMode), nullptr);
  EXPECT_EQ(GlobalFree(record.hDevNames), nullptr);
}

TEST(PageSetupDialogTest, RefusesWhatItCannotDo) {
  EXPECT_EQ(PageSetupDlgA(nullptr), FALSE);

  PAGESETUPDLGA wrongSize = ReturnDefaultRecord(0);
  wrongSize.lStructSize = 84;
  EXPECT_EQ(PageSetupDlgA(&wrongSize), FALSE);
  EXPECT_EQ(wrongSize.hDevMode, nullptr);

  PAGESETUPDLGA dialog = ReturnDefaultRecord(0);
  dialog.Flags = PSD_MARGINS;
  EXPECT_EQ(PageSetupDlgA(&dialog), FALSE);
  EXPECT_EQ(dialog.ptPaperSize.x, 0);

  PAGESETUPDLGA withHandle = ReturnDefaultRecord(0);
  HGLOBAL mine = GlobalAlloc(GHND, sizeof(DEVMODEA));
  withHandle.hDevMode = mine;
  EXPECT_EQ(PageSetupDlgA(&withHandle), FALSE);
  EXPECT_EQ(withHandle.hDevMode, mine);
  EXPECT_EQ(withHandle.hDevNames, nullptr);
  GlobalFree(mine);
}

TEST(PageSetupDialogTest, PaperInTheRequestedOrItsOwnUnit) {
  const DWORD kUnits = PSD_INTHOUSANDTHSOFINCHES | PSD_INHUNDREDTHSOFMILLIMETERS;
  const struct { const char* paper; DWORD asked, unit; LONG width, height, margin; } cases[] = {
      {"a4", 0, PSD_INHUNDREDTHSOFMILLIMETERS, 21000, 29700, 2540},
      {"Letter", 0, PSD_INTHOUSANDTHSOFINCHES, 8500, 11000, 1000},
      {"Letter", PSD_INHUNDREDTHSOFMILLIMETERS, PSD_INHUNDREDTHSOFMILLIMETERS, 21590, 27940, 2540},
      {"A4", PSD_INTHOUSANDTHSOFINCHES, PSD_INTHOUSANDTHSOFINCHES, 8268, 11693, 1000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.paper + std::to_string(c.asked));
    test::EnvScope paper("PAPERSIZE", c.paper);
    PAGESETUPDLGA record = ReturnDefaultRecord(c.asked);
    ASSERT_EQ(PageSetupDlgA(&record), TRUE);
    EXPECT_EQ(record.Flags & kUnits, c.unit);
    EXPECT_EQ(record.ptPaperSize.x, c.width);
    EXPECT_EQ(record.ptPaperSize.y, c.height);
    EXPECT_EQ(record.rtMargin.left, c.margin);
    EXPECT_EQ(record.rtMargin.top, c.margin);
    EXPECT_EQ(record.rtMinMargin.right, 0);
    FreeHandles(record);
  }
}

TEST(PageSetupDialogTest, DeviceRecordsDescribeThePaper) {
  test::EnvScope paper("PAPERSIZE", "a4");
  PAGESETUPDLGA record = ReturnDefaultRecord(0);
  ASSERT_EQ(PageSetupDlgA(&record), TRUE);
  const auto* mode = static_cast<const DEVMODEA*>(GlobalLock(record.hDevMode));
  ASSERT_NE(mode, nullptr);
  EXPECT_STREQ(reinterpret_cast<const char*>(mode->dmFormName), "A4");
  EXPECT_EQ(mode->dmPaperSize, DMPAPER_A4);
  EXPECT_EQ(mode->dmPaperWidth, 2100);
  EXPECT_EQ(mode->dmPaperLength, 2970);
  EXPECT_EQ(mode->dmOrientation, DMORIENT_PORTRAIT);
  EXPECT_EQ(mode->dmSize, sizeof(DEVMODEA));
  GlobalUnlock(record.hDevMode);

  const auto* names = static_cast<const DEVNAMES*>(GlobalLock(record.hDevNames));
  ASSERT_NE(names, nullptr);
  ASSERT_GT(GlobalSize(record.hDevNames), static_cast<std::size_t>(names->wOutputOffset));
  EXPECT_EQ(names->wDefault, DN_DEFAULTPRN);
  GlobalUnlock(record.hDevNames);
  FreeHandles(record);
}

TEST(PageSetupDialogTest, PaperFromTheConfigurationFileElseLetter) {
  if (HasPaperLibrary2()) {
    GTEST_SKIP() << "libpaper 2 reads its own configuration and chooses its own fallback paper";
  }
  SystemPaper found;
  {
    test::EnvScope paper("PAPERSIZE", "no-such-paper");
    GetSystemDefaultPaper(found);
    EXPECT_STREQ(found.name, "Letter");
    EXPECT_EQ(found.paperCode, DMPAPER_LETTER);
    EXPECT_EQ(found.width, 8500);
    EXPECT_FALSE(found.metric);
  }
  test::TempDir dir;
  dir.Write("papersize", "# paper for the tests\n\n  a5  \n");
  test::EnvScope size("PAPERSIZE", nullptr), conf("PAPERCONF", (dir / "papersize").c_str());
  GetSystemDefaultPaper(found);
  EXPECT_STREQ(found.name, "A5");
  EXPECT_EQ(found.paperCode, DMPAPER_A5);
  EXPECT_EQ(found.width, 14800);
  EXPECT_EQ(found.height, 21000);
  EXPECT_TRUE(found.metric);
}

}  // namespace
}  // namespace telvanix
