// A printed page for the host: paper size, margins and printer setup, either
// the fixed US Letter default or taken from a page-setup dialog record. All
// lengths are kept in twips (1/1440 inch).
#pragma once

#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/win_records.h"

namespace telvanix {

class TELVANIX_API CSysPage : public CRglObject {
 public:
  enum EmPageSource {
    PAGE_SOURCE_UNSET = 0,
    PAGE_SOURCE_DEFAULT_LETTER = 1,
    PAGE_SOURCE_PAGE_SETUP = 2,
  };
  // Bytes of the printer mode and printer names records that a page keeps.
  static constexpr int ms_nPrinterModeSize = 148;
  static constexpr int ms_nPrinterNamesSize = 8;

  CSysPage();
  ~CSysPage() override;

  // Source unset, no name, every length and both printer blocks zero.
  void Default();
  // 1 after copying every field of the other page; null changes nothing (0).
  int Copy(CSysPage* other);

  int GetPageWidth() const { return m_nPageWidth; }
  int GetPageHeight() const { return m_nPageHeight; }
  const char* GetPageName() const { return m_strPageName; }
  int GetPageSource() const { return m_nSource; }
  // Margins and minimum margins as left, top, right, bottom twips.
  RECT GetPageMargin() const { return m_rcMargin; }
  RECT GetPageMinMargin() const { return m_rcMinMargin; }
  // The kept leading bytes of the printer's DEVMODEA / DEVNAMES records.
  const BYTE* GetPrinterMode() const { return m_printerMode; }
  const DWORD* GetPrinterNamesHeader() const { return m_printerNamesHeader; }

  // 1 only for a page from a page-setup record whose printer mode says
  // landscape; the default Letter page never is.
  int IsLandScape() const;

  // US Letter: 12240 x 15840 twips, side margins 1800, top and bottom 1440,
  // the name from the string resources, no minimum margins. The first call
  // in the process also asks for the system's default page once (kept, not
  // used). Returns 1.
  int SetAsDefaultLetter();
  // Takes paper size and margins (converted by the record's unit flags) and,
  // when the record carries them, the printer mode with its form name and
  // the printer names header. 1, or 0 for a null record.
  int SetAsPageSetupDlg(PAGESETUPDLGA* record);
  // Writes paper size, margins and minimum margins into the record, in its
  // unit; a record naming no unit is switched to thousandths of an inch.
  // Returns 1.
  int FillPageSetupDlgSizeAndMargin(PAGESETUPDLGA& record) const;

  // The unit conversions of page-setup records, by their PSD_* unit flags;
  // truncated towards zero. Without a unit flag a value is only scaled by
  // 1/1000 (into twips) or 1000 (from twips), as the record's users expect.
  static int PageSetupUnitToTwips(LONG value, DWORD flags);
  static LONG TwipsToPageSetupUnit(int twips, DWORD flags);

 private:
  int m_nSource;
  CString m_strPageName;
  int m_nPageWidth;
  int m_nPageHeight;
  RECT m_rcMargin;
  RECT m_rcMinMargin;
  BYTE m_printerMode[ms_nPrinterModeSize];
  DWORD m_printerNamesHeader[2];
};

}  // namespace telvanix
