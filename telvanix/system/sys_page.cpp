#include "telvanix/system/sys_page.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "telvanix/foundation/module_resources.h"
#include "telvanix/platform/page_setup_dialog.h"

namespace telvanix {

namespace {

constexpr UINT IDS_DEFAULT_PAGE_NAME = 3000;

// Single-precision factors; products are formed in extended precision and
// then truncated, so results match to the twip those of the original users.
constexpr float kThousandthInch = 0.001f;
constexpr float kHundredthMillimetre = 0.01f;
constexpr float kTwipsPerMillimetre = 56.692802f;
constexpr float kInchesPerTwip = 0.00069444446f;
constexpr float kMillimetresPerTwip = 0.017638924f;

int TruncateToInt(long double value) {
  if (!(value == value)) {
    return 0;
  }
  if (value >= 2147483647.0L) {
    return INT32_MAX;
  }
  if (value <= -2147483648.0L) {
    return INT32_MIN;
  }
  return static_cast<int>(value);
}

RECT ToTwips(const RECT& rect, DWORD flags) {
  return RECT{CSysPage::PageSetupUnitToTwips(rect.left, flags), CSysPage::PageSetupUnitToTwips(rect.top, flags),
              CSysPage::PageSetupUnitToTwips(rect.right, flags), CSysPage::PageSetupUnitToTwips(rect.bottom, flags)};
}

RECT FromTwips(const RECT& rect, DWORD flags) {
  return RECT{CSysPage::TwipsToPageSetupUnit(rect.left, flags), CSysPage::TwipsToPageSetupUnit(rect.top, flags),
              CSysPage::TwipsToPageSetupUnit(rect.right, flags), CSysPage::TwipsToPageSetupUnit(rect.bottom, flags)};
}

}  // namespace

CSysPage::CSysPage() { Default(); }

CSysPage::~CSysPage() = default;

void CSysPage::Default() {
  m_nSource = PAGE_SOURCE_UNSET;
  m_strPageName.Empty();
  m_nPageWidth = 0;
  m_nPageHeight = 0;
  m_rcMargin = RECT{0, 0, 0, 0};
  m_rcMinMargin = RECT{0, 0, 0, 0};
  std::memset(m_printerMode, 0, sizeof(m_printerMode));
  std::memset(m_printerNamesHeader, 0, sizeof(m_printerNamesHeader));
}

int CSysPage::Copy(CSysPage* other) {
  if (!other) {
    return 0;
  }
  if (other == this) {
    return 1;
  }
  m_nSource = other->m_nSource;
  m_strPageName = other->m_strPageName;
  m_nPageWidth = other->m_nPageWidth;
  m_nPageHeight = other->m_nPageHeight;
  m_rcMargin = other->m_rcMargin;
  m_rcMinMargin = other->m_rcMinMargin;
  std::memcpy(m_printerMode, other->m_printerMode, sizeof(m_printerMode));
  std::memcpy(m_printerNamesHeader, other->m_printerNamesHeader, sizeof(m_printerNamesHeader));
  return 1;
}

int CSysPage::IsLandScape() const {
  if (m_nSource != PAGE_SOURCE_PAGE_SETUP) {
    return 0;
  }
  SHORT orientation = 0;
  std::memcpy(&orientation, m_printerMode + offsetof(DEVMODEA, dmOrientation), sizeof(orientation));
  return orientation == DMORIENT_LANDSCAPE ? 1 : 0;
}

int CSysPage::PageSetupUnitToTwips(LONG value, DWORD flags) {
  long double v = value;
  if (flags & PSD_INTHOUSANDTHSOFINCHES) {
    return TruncateToInt(v * static_cast<long double>(kThousandthInch) * 1440.0L);
  }
  if (flags & PSD_INHUNDREDTHSOFMILLIMETERS) {
    return TruncateToInt(v * static_cast<long double>(kHundredthMillimetre) *
                         static_cast<long double>(kTwipsPerMillimetre));
  }
  return TruncateToInt(v * static_cast<long double>(kThousandthInch));
}

LONG CSysPage::TwipsToPageSetupUnit(int twips, DWORD flags) {
  long double t = twips;
  if (flags & PSD_INTHOUSANDTHSOFINCHES) {
    return TruncateToInt(t * static_cast<long double>(kInchesPerTwip) * 1000.0L);
  }
  if (flags & PSD_INHUNDREDTHSOFMILLIMETERS) {
    return TruncateToInt(t * static_cast<long double>(kMillimetresPerTwip) * 100.0L);
  }
  // 32-bit integer arithmetic, wrapping as it would there.
  return static_cast<LONG>(static_cast<std::uint32_t>(twips) * 1000u);
}

int CSysPage::SetAsDefaultLetter() {
  static std::mutex lock;
  static bool s_asked = false;
  static PAGESETUPDLGA s_systemDefault;
  std::lock_guard<std::mutex> guard(lock);
  if (!s_asked) {
    s_asked = true;
    std::memset(&s_systemDefault, 0, sizeof(s_systemDefault));
    s_systemDefault.lStructSize = sizeof(PAGESETUPDLGA);
    s_systemDefault.Flags = PSD_RETURNDEFAULT | PSD_NOWARNING;
    PageSetupDlgA(&s_systemDefault);
  }

  Default();
  m_nPageWidth = 12240;
  m_nPageHeight = 15840;
  m_rcMargin = RECT{1800, 1440, 1800, 1440};
  LoadStringResource(&m_strPageName, IDS_DEFAULT_PAGE_NAME, nullptr);
  m_nSource = PAGE_SOURCE_DEFAULT_LETTER;
  return 1;
}

int CSysPage::SetAsPageSetupDlg(PAGESETUPDLGA* record) {
  if (!record) {
    return 0;
  }
  DWORD flags = record->Flags;
  m_nSource = PAGE_SOURCE_PAGE_SETUP;
  m_nPageWidth = PageSetupUnitToTwips(record->ptPaperSize.x, flags);
  m_nPageHeight = PageSetupUnitToTwips(record->ptPaperSize.y, flags);
  m_rcMinMargin = ToTwips(record->rtMinMargin, flags);
  m_rcMargin = ToTwips(record->rtMargin, flags);

  if (record->hDevMode) {
    if (const auto* mode = static_cast<const BYTE*>(GlobalLock(record->hDevMode))) {
      // A block shorter than the record gives what it has; the rest is zero.
      std::size_t size = GlobalSize(record->hDevMode);
      std::size_t kept = size < sizeof(m_printerMode) ? size : sizeof(m_printerMode);
      std::memset(m_printerMode, 0, sizeof(m_printerMode));
      std::memcpy(m_printerMode, mode, kept);
      std::size_t nameStart = offsetof(DEVMODEA, dmFormName);
      if (size > nameStart) {
        std::size_t room = size - nameStart < CCHFORMNAME ? size - nameStart : CCHFORMNAME;
        const char* name = reinterpret_cast<const char*>(mode + nameStart);
        m_strPageName = CString(name, static_cast<int>(strnlen(name, room)));
      }
      GlobalUnlock(record->hDevMode);
    }
  }
  if (record->hDevNames) {
    if (const auto* names = static_cast<const BYTE*>(GlobalLock(record->hDevNames))) {
      std::size_t size = GlobalSize(record->hDevNames);
      std::memset(m_printerNamesHeader, 0, sizeof(m_printerNamesHeader));
      std::memcpy(m_printerNamesHeader, names, size < sizeof(m_printerNamesHeader) ? size : sizeof(m_printerNamesHeader));
      GlobalUnlock(record->hDevNames);
    }
  }
  return 1;
}

int CSysPage::FillPageSetupDlgSizeAndMargin(PAGESETUPDLGA& record) const {
  if (!(record.Flags & (PSD_INTHOUSANDTHSOFINCHES | PSD_INHUNDREDTHSOFMILLIMETERS))) {
    record.Flags |= PSD_INTHOUSANDTHSOFINCHES;
  }
  DWORD flags = record.Flags;
  record.ptPaperSize.x = TwipsToPageSetupUnit(m_nPageWidth, flags);
  record.ptPaperSize.y = TwipsToPageSetupUnit(m_nPageHeight, flags);
  record.rtMargin = FromTwips(m_rcMargin, flags);
  record.rtMinMargin = FromTwips(m_rcMinMargin, flags);
  return 1;
}

}  // namespace telvanix
