#include "telvanix/system/sys_page.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

namespace telvanix {
namespace {

std::string Rect(const RECT& r) {
  return std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) + "," +
         std::to_string(r.bottom);
}

PAGESETUPDLGA MakeRecord(DWORD flags, LONG width, LONG height) {
  PAGESETUPDLGA record;
  std::memset(&record, 0, sizeof(record));
  record.lStructSize = sizeof(record);
  record.Flags = flags;
  record.ptPaperSize = POINT{width, height};
  return record;
}

// A printer-mode block as a driver hands it over.
HGLOBAL MakeDevMode(SHORT orientation, const char* formName) {
  HGLOBAL block = GlobalAlloc(GHND, sizeof(DEVMODEA));
  auto* mode = static_cast<DEVMODEA*>(GlobalLock(block));
  mode->dmSize = sizeof(DEVMODEA);
  mode->dmOrientation = orientation;
  std::strncpy(reinterpret_cast<char*>(mode->dmFormName), formName, CCHFORMNAME - 1);  // zeroed block
  std::memset(mode->dmDeviceName, 'D', sizeof(mode->dmDeviceName));
  mode->dmPanningWidth = 0xABCDEF;  // beyond the 148 kept bytes
  GlobalUnlock(block);
  return block;
}

TEST(CSysPageTest, DefaultLetterInTwipsClearsAnEarlierPrinterSetup) {
  PAGESETUPDLGA record = MakeRecord(PSD_INTHOUSANDTHSOFINCHES, 11000, 8500);
  record.rtMinMargin = RECT{250, 250, 250, 250};
  record.hDevMode = MakeDevMode(DMORIENT_LANDSCAPE, "Tabloid");
  CSysPage page;
  page.SetAsPageSetupDlg(&record);
  ASSERT_EQ(page.IsLandScape(), 1);
  ASSERT_EQ(page.SetAsDefaultLetter(), 1);
  EXPECT_EQ(page.GetPageSource(), CSysPage::PAGE_SOURCE_DEFAULT_LETTER);
  EXPECT_EQ(page.GetPageWidth(), 12240);
  EXPECT_EQ(page.GetPageHeight(), 15840);
  EXPECT_EQ(Rect(page.GetPageMargin()), "1800,1440,1800,1440");
  EXPECT_EQ(Rect(page.GetPageMinMargin()), "0,0,0,0");
  EXPECT_STREQ(page.GetPageName(), "Letter");
  EXPECT_EQ(page.IsLandScape(), 0);
  const BYTE zero[CSysPage::ms_nPrinterModeSize] = {};
  EXPECT_EQ(std::memcmp(page.GetPrinterMode(), zero, sizeof zero), 0);
  GlobalFree(record.hDevMode);
}

TEST(CSysPageTest, RecordUnitsConvertToTwips) {
  // Hundredths of a millimetre go through the single-precision factors (a
  // double-precision product would give 12003 for 21172); both unit flags:
  // thousandths of an inch win; no unit flag: only scaled by a thousandth.
  const struct {
    DWORD flags;
    LONG width, height;
    RECT margin, minMargin;
    const char* expected;  // width, height, margin, minimum margin
  } cases[] = {
      {PSD_INHUNDREDTHSOFMILLIMETERS, 21590, 21172, {2540, 2540, 2540, 2540}, {}, "12239 12002 1439,1439,1439,1439 0,0,0,0"},
      {PSD_INTHOUSANDTHSOFINCHES, 8500, 11000, {1000, 500, 1250, 0}, {-1000, 1, 2, 3},
       "12240 15840 1440,720,1800,0 -1440,1,2,4"},
      {PSD_INTHOUSANDTHSOFINCHES | PSD_INHUNDREDTHSOFMILLIMETERS, 8500, 11000, {}, {}, "12240 15840 0,0,0,0 0,0,0,0"},
      {0, 21590, 999, {}, {}, "21 0 0,0,0,0 0,0,0,0"},
  };
  for (const auto& c : cases) {
    PAGESETUPDLGA record = MakeRecord(c.flags, c.width, c.height);
    record.rtMargin = c.margin;
    record.rtMinMargin = c.minMargin;
    CSysPage page;
    ASSERT_EQ(page.SetAsPageSetupDlg(&record), 1);
    EXPECT_EQ(page.GetPageSource(), CSysPage::PAGE_SOURCE_PAGE_SETUP);
    EXPECT_EQ(std::to_string(page.GetPageWidth()) + " " + std::to_string(page.GetPageHeight()) + " " +
                  Rect(page.GetPageMargin()) + " " + Rect(page.GetPageMinMargin()),
              c.expected);
  }
}

TEST(CSysPageTest, TwipsConvertBackByTheRecordUnit) {
  const struct {
    int twips;
    DWORD unit;
    LONG expected;
  } cases[] = {
      {1440, PSD_INTHOUSANDTHSOFINCHES, 1000},     {1800, PSD_INTHOUSANDTHSOFINCHES, 1250},
      {12239, PSD_INTHOUSANDTHSOFINCHES, 8499},    {-1440, PSD_INTHOUSANDTHSOFINCHES, -1000},
      {3977, PSD_INHUNDREDTHSOFMILLIMETERS, 7014},  // a double-precision factor would give 7015
      {12239, PSD_INHUNDREDTHSOFMILLIMETERS, 21588}, {7, 0, 7000},
  };
  for (const auto& c : cases)
    EXPECT_EQ(CSysPage::TwipsToPageSetupUnit(c.twips, c.unit), c.expected) << c.twips << " unit " << c.unit;
}

TEST(CSysPageTest, FillingARecordAddsInchesOnlyWithoutAUnit) {
  CSysPage page;
  PAGESETUPDLGA metric = MakeRecord(PSD_INHUNDREDTHSOFMILLIMETERS, 21590, 27940);
  page.SetAsPageSetupDlg(&metric);
  ASSERT_EQ(page.GetPageWidth(), 12239);

  const struct {
    DWORD flags, expectedFlags;
    LONG width;
  } cases[] = {
      {PSD_MARGINS, PSD_MARGINS | PSD_INTHOUSANDTHSOFINCHES, 8499},
      {PSD_INHUNDREDTHSOFMILLIMETERS, PSD_INHUNDREDTHSOFMILLIMETERS, 21588},
      // Both unit flags: thousandths of an inch win, and nothing is added.
      {PSD_INHUNDREDTHSOFMILLIMETERS | PSD_INTHOUSANDTHSOFINCHES,
       PSD_INHUNDREDTHSOFMILLIMETERS | PSD_INTHOUSANDTHSOFINCHES, 8499},
  };
  for (const auto& c : cases) {
    PAGESETUPDLGA record = MakeRecord(c.flags, 0, 0);
    ASSERT_EQ(page.FillPageSetupDlgSizeAndMargin(record), 1) << c.flags;
    EXPECT_EQ(record.Flags, c.expectedFlags);
    EXPECT_EQ(record.ptPaperSize.x, c.width) << c.flags;
  }

  CSysPage letter;
  letter.SetAsDefaultLetter();
  PAGESETUPDLGA out = MakeRecord(0, 0, 0);
  out.rtMinMargin = RECT{9, 9, 9, 9};
  letter.FillPageSetupDlgSizeAndMargin(out);
  EXPECT_EQ(out.ptPaperSize.x, 8500);
  EXPECT_EQ(out.ptPaperSize.y, 11000);
  EXPECT_EQ(Rect(out.rtMargin), "1250,1000,1250,1000");
  EXPECT_EQ(Rect(out.rtMinMargin), "0,0,0,0");
}

TEST(CSysPageTest, PrinterModeGivesNameOrientationAndFirstBytes) {
  PAGESETUPDLGA record = MakeRecord(PSD_INHUNDREDTHSOFMILLIMETERS, 42000, 29700);
  record.hDevMode = MakeDevMode(DMORIENT_LANDSCAPE, "A3");
  record.hDevNames = GlobalAlloc(GHND, sizeof(DEVNAMES) + 20);
  auto* names = static_cast<DEVNAMES*>(GlobalLock(record.hDevNames));
  *names = DEVNAMES{8, 12, 16, DN_DEFAULTPRN};
  GlobalUnlock(record.hDevNames);

  CSysPage page;
  ASSERT_EQ(page.SetAsPageSetupDlg(&record), 1);
  EXPECT_EQ(page.IsLandScape(), 1);
  EXPECT_STREQ(page.GetPageName(), "A3");
  const auto* mode = static_cast<const BYTE*>(GlobalLock(record.hDevMode));
  EXPECT_EQ(std::memcmp(page.GetPrinterMode(), mode, CSysPage::ms_nPrinterModeSize), 0);
  GlobalUnlock(record.hDevMode);
  DEVNAMES header;
  std::memcpy(&header, page.GetPrinterNamesHeader(), sizeof(header));
  EXPECT_EQ(header.wDriverOffset, 8);
  EXPECT_EQ(header.wOutputOffset, 16);
  EXPECT_EQ(header.wDefault, DN_DEFAULTPRN);

  CSysPage copy;
  ASSERT_EQ(copy.Copy(&page), 1);
  EXPECT_EQ(copy.IsLandScape(), 1);
  EXPECT_STREQ(copy.GetPageName(), "A3");
  EXPECT_EQ(copy.GetPageWidth(), page.GetPageWidth());
  EXPECT_EQ(std::memcmp(copy.GetPrinterNamesHeader(), page.GetPrinterNamesHeader(), 8), 0);
  EXPECT_EQ(copy.Copy(nullptr), 0);
  EXPECT_STREQ(copy.GetPageName(), "A3");

  // Portrait from the same kind of record is not landscape.
  PAGESETUPDLGA portrait = MakeRecord(PSD_INHUNDREDTHSOFMILLIMETERS, 29700, 42000);
  portrait.hDevMode = MakeDevMode(DMORIENT_PORTRAIT, "A3");
  page.SetAsPageSetupDlg(&portrait);
  EXPECT_EQ(page.IsLandScape(), 0);
  for (HGLOBAL block : {record.hDevMode, record.hDevNames, portrait.hDevMode}) GlobalFree(block);
}

TEST(CSysPageTest, ShortForeignOrFreedBlocksAreSafe) {
  CSysPage page;
  EXPECT_EQ(page.SetAsPageSetupDlg(nullptr), 0);
  EXPECT_EQ(page.GetPageSource(), CSysPage::PAGE_SOURCE_UNSET);

  // A 50-byte printer mode: its orientation is there, its form name is not.
  PAGESETUPDLGA shortMode = MakeRecord(PSD_INTHOUSANDTHSOFINCHES, 8500, 11000);
  shortMode.hDevMode = GlobalAlloc(GHND, 50);
  auto* bytes = static_cast<BYTE*>(GlobalLock(shortMode.hDevMode));
  SHORT landscape = DMORIENT_LANDSCAPE;
  std::memcpy(bytes + offsetof(DEVMODEA, dmOrientation), &landscape, sizeof(landscape));
  GlobalUnlock(shortMode.hDevMode);
  shortMode.hDevNames = GlobalAlloc(GHND, 3);
  ASSERT_EQ(page.SetAsPageSetupDlg(&shortMode), 1);
  EXPECT_EQ(page.IsLandScape(), 1);
  EXPECT_EQ(page.GetPrinterMode()[60], 0);
  GlobalFree(shortMode.hDevMode);
  GlobalFree(shortMode.hDevNames);

  // A handle that never came from GlobalAlloc, and one already freed.
  DEVMODEA local{};
  PAGESETUPDLGA foreign = MakeRecord(PSD_INTHOUSANDTHSOFINCHES, 8500, 11000);
  foreign.hDevMode = reinterpret_cast<HGLOBAL>(&local);
  foreign.hDevNames = shortMode.hDevNames;
  EXPECT_EQ(page.SetAsPageSetupDlg(&foreign), 1);
  EXPECT_EQ(page.GetPageWidth(), 12240);

  // Extreme lengths saturate instead of overflowing.
  PAGESETUPDLGA huge = MakeRecord(PSD_INTHOUSANDTHSOFINCHES, INT_MAX, INT_MIN);
  page.SetAsPageSetupDlg(&huge);
  EXPECT_EQ(page.GetPageWidth(), INT_MAX);
  EXPECT_EQ(page.GetPageHeight(), INT_MIN);
  PAGESETUPDLGA back = MakeRecord(0, 0, 0);
  page.FillPageSetupDlgSizeAndMargin(back);
  EXPECT_EQ(back.ptPaperSize.x, 1491308124);
  EXPECT_EQ(CSysPage::TwipsToPageSetupUnit(INT_MAX, 0), static_cast<LONG>(static_cast<std::uint32_t>(INT_MAX) * 1000u));
}

}  // namespace
}  // namespace telvanix
