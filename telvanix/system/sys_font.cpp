#include "telvanix/system/sys_font.h"

#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#include "telvanix/foundation/module_resources.h"
#include "telvanix/foundation/text_utils.h"
#include "telvanix/platform/gdi_font.h"
#include "telvanix/system/internal/font_enumeration.h"

namespace telvanix {

namespace {

constexpr UINT IDS_DEFAULT_FONT_FACE = 3001;

// The standard face of each far-eastern code page, in that code page's bytes.
const char kFaceJapanese[] = "\x82\x6C\x82\x72\x20\x82\x6F\x83\x53\x83\x56\x83\x62\x83\x4E";  // MS P Gothic
const char kFaceSimplifiedChinese[] = "\xCB\xCE\xCC\xE5";                                        // SimSun
const char kFaceKorean[] = "\xB1\xBC\xB8\xB2";                                                   // Gulim
const char kFaceTraditionalChinese[] = "\xB7\x73\xB2\xD3\xA9\xFA\xC5\xE9";                       // PMingLiU

int CompareNoCaseAscii(const char* a, const char* b) {
  for (;; ++a, ++b) {
    unsigned char ca = static_cast<unsigned char>(*a);
    unsigned char cb = static_cast<unsigned char>(*b);
    if (ca >= 'A' && ca <= 'Z') ca = static_cast<unsigned char>(ca - 'A' + 'a');
    if (cb >= 'A' && cb <= 'Z') cb = static_cast<unsigned char>(cb - 'A' + 'a');
    if (ca != cb || ca == 0) {
      return static_cast<int>(ca) - static_cast<int>(cb);
    }
  }
}

}  // namespace

// ---------------------------------------------------------------- CSysFont

CSysFont::CSysFont() { Default(); }

CSysFont::~CSysFont() = default;

void CSysFont::Default() { std::memset(&m_logFont, 0, sizeof(m_logFont)); }

int CSysFont::Copy(CSysFont* other) {
  if (!other) {
    return 0;
  }
  if (other != this) {
    SetLogFont(other->m_logFont);
  }
  return 1;
}

void CSysFont::SetLogFont(const LOGFONTA& logFont) {
  std::memcpy(&m_logFont, &logFont, sizeof(m_logFont));
  // A host may hand over a full 32-byte name; GetFontName must still end.
  m_logFont.lfFaceName[LF_FACESIZE - 1] = '\0';
}

int CSysFont::SetAsFontPoints(const char* name, int points) {
  CFont font;
  if (!font.CreatePointFont(points, name)) {
    return 0;
  }
  LOGFONTA logFont;
  int read = font.GetObject(static_cast<int>(sizeof(logFont)), &logFont);
  font.DeleteObject();
  if (read != static_cast<int>(sizeof(logFont))) {
    return 0;
  }
  SetLogFont(logFont);
  return 1;
}

int CSysFont::SetAsDefault() {
  UINT codePage = IsDBCS();
  CString resourceFace;
  LoadStringResource(&resourceFace, IDS_DEFAULT_FONT_FACE, nullptr);
  const char* face = resourceFace;
  int points = 12;
  if (codePage >= 932 && codePage <= 950) {
    switch (codePage) {
      case 932:
        face = kFaceJapanese;
        points = 10;
        break;
      case 936:
        face = kFaceSimplifiedChinese;
        points = 10;
        break;
      case 949:
        face = kFaceKorean;
        points = 10;
        break;
      case 950:
        face = kFaceTraditionalChinese;
        points = 10;
        break;
      default:
        break;
    }
  }
  return SetAsFontPoints(face, points);
}

const char* CSysFont::GetPortableHtmlFontName() const {
  BYTE family = m_logFont.lfPitchAndFamily;
  // The first test takes both family bits, so the two after it never match;
  // hosts depend on this mapping as it stands.
  if ((family & FF_ROMAN) || (family & FF_SWISS)) {
    return "Monospaced";
  }
  if (family & FF_SWISS) {
    return "SansSerif";
  }
  if (family & FF_ROMAN) {
    return "Serif";
  }
  return nullptr;
}

// -------------------------------------------------------- CHtmlMiscDataMgr

namespace {

std::mutex& ConstructionLock() {
  static std::mutex lock;
  return lock;
}

// Serialises listing, so that first use from several threads lists once.
std::mutex& QueryLock() {
  static std::mutex lock;
  return lock;
}

// Arrays replaced by a later listing; kept until unload so that fonts handed
// out from them stay valid.
std::vector<CHtmlMiscDataMgr::CSysFontArray*>& RetiredArrays() {
  static auto* retired = new std::vector<CHtmlMiscDataMgr::CSysFontArray*>;
  return *retired;
}

int s_nConstructed = 0;

}  // namespace

CHtmlMiscDataMgr CHtmlMiscDataMgr::ms_htmlMiscDataMgr;

CHtmlMiscDataMgr::CHtmlMiscDataMgr() {
  std::lock_guard<std::mutex> guard(ConstructionLock());
  if (s_nConstructed++ > 0) {
    MessageBeep(MB_ICONEXCLAMATION);
  }
  m_pSysFontArray.store(nullptr);
}

CHtmlMiscDataMgr::~CHtmlMiscDataMgr() {
  FreeFontArray(m_pSysFontArray.exchange(nullptr));
  if (this == &ms_htmlMiscDataMgr) {
    std::lock_guard<std::mutex> guard(QueryLock());
    for (CSysFontArray* fonts : RetiredArrays()) {
      FreeFontArray(fonts);
    }
    RetiredArrays().clear();
  }
}

void CHtmlMiscDataMgr::FreeFontArray(CSysFontArray* fonts) {
  if (!fonts) {
    return;
  }
  for (int i = 0; i < fonts->GetSize(); ++i) {
    delete fonts->GetAt(i);
  }
  fonts->RemoveAll();
  delete fonts;
}

int CHtmlMiscDataMgr::EnumFontFamProc(const LOGFONTA* logFont, const void* textMetric, DWORD fontType,
                                      LPARAM data) {
  (void)textMetric;
  (void)fontType;
  if (!logFont) {
    return 0;
  }
  // The record is an ENUMLOGFONTA; its full name must end inside its field.
  const auto* full = reinterpret_cast<const ENUMLOGFONTA*>(logFont)->elfFullName;
  if (!std::memchr(full, 0, LF_FULLFACESIZE)) {
    return 0;
  }
  return AddNewSysFontTo(reinterpret_cast<CSysFontArray*>(data), logFont) ? 1 : 0;
}

CSysFont* CHtmlMiscDataMgr::AddNewSysFontTo(CSysFontArray* fonts, const LOGFONTA* logFont) {
  if (!fonts || !logFont || logFont->lfFaceName[0] == '\0') {
    return nullptr;
  }
  CSysFont* font = nullptr;
  try {
    font = new CSysFont;
    font->SetLogFont(*logFont);
    fonts->Add(font);
  } catch (...) {
    delete font;
    return nullptr;
  }
  return font;
}

int CHtmlMiscDataMgr::QuerySysFontsLocked() {
  CSysFontArray* fonts = nullptr;
  try {
    fonts = new CSysFontArray;
  } catch (...) {
    return 0;
  }
  int result = 0;
  HDC dc = CreateDCA("DISPLAY", nullptr, nullptr, nullptr);
  if (dc) {
    // A family that cannot be added (empty face name) ends the listing.
    EnumFontFamiliesA(dc, nullptr, EnumFontFamProc, reinterpret_cast<LPARAM>(fonts));
    DeleteDC(dc);
    result = 1;
  }
  CSysFontArray* previous = ms_htmlMiscDataMgr.m_pSysFontArray.exchange(fonts);
  if (previous) {
    try {
      RetiredArrays().push_back(previous);
    } catch (...) {
      // Out of memory: the old fonts leak rather than dangle.
    }
  }
  return result;
}

int CHtmlMiscDataMgr::QuerySysFonts() {
  std::lock_guard<std::mutex> guard(QueryLock());
  return QuerySysFontsLocked();
}

bool CHtmlMiscDataMgr::HasSysFonts() {
  if (ms_htmlMiscDataMgr.m_pSysFontArray.load() != nullptr) {
    return true;
  }
  std::lock_guard<std::mutex> guard(QueryLock());
  if (ms_htmlMiscDataMgr.m_pSysFontArray.load() != nullptr) {
    return true;
  }
  return QuerySysFontsLocked() != 0;
}

CSysFont* CHtmlMiscDataMgr::AddNewSysFont(LOGFONTA* logFont, DWORD fontType) {
  (void)fontType;
  return AddNewSysFontTo(ms_htmlMiscDataMgr.m_pSysFontArray.load(), logFont);
}

CSysFont* CHtmlMiscDataMgr::GetSysFont(const char* name) {
  if (!name || !HasSysFonts()) {
    return nullptr;
  }
  CSysFontArray* fonts = ms_htmlMiscDataMgr.m_pSysFontArray.load();
  if (!fonts) {
    return nullptr;
  }
  for (int i = 0; i < fonts->GetSize(); ++i) {
    CSysFont* font = fonts->GetAt(i);
    if (font && CompareNoCaseAscii(font->GetFontName(), name) == 0) {
      return font;
    }
  }
  return nullptr;
}

CSysFont* CHtmlMiscDataMgr::GetFirstSysFont(int& index) {
  HasSysFonts();
  index = 0;
  return GetNextSysFont(index);
}

CSysFont* CHtmlMiscDataMgr::GetNextSysFont(int& index) {
  CSysFontArray* fonts = ms_htmlMiscDataMgr.m_pSysFontArray.load();
  if (!fonts || index < 0 || index >= fonts->GetSize()) {
    return nullptr;
  }
  return fonts->GetAt(index++);
}

int CHtmlMiscDataMgr::GetSysFontCount() {
  CSysFontArray* fonts = ms_htmlMiscDataMgr.m_pSysFontArray.load();
  return fonts ? fonts->GetSize() : 0;
}

int CHtmlMiscDataMgr::IsExistingFontName(const char* name) {
  (void)name;
  return 1;
}

}  // namespace telvanix
