// Installed fonts for the host: CSysFont is one logical-font record with the
// default-font rule by code page and a portable family name; CHtmlMiscDataMgr
// is the process-wide registry of installed families, filled on first use.
#pragma once

#include <atomic>

#include "telvanix/foundation/rgl_array.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/win_records.h"

namespace telvanix {

class TELVANIX_API CSysFont : public CRglObject {
 public:
  CSysFont();
  ~CSysFont() override;

  // Zeroes the whole record.
  void Default();
  // 1 after copying the other font's record; a null source changes nothing (0).
  int Copy(CSysFont* other);

  // The face name inside the record; never null.
  const char* GetFontName() const { return m_logFont.lfFaceName; }
  const LOGFONTA& GetLogFont() const { return m_logFont; }
  // Takes a copy of a 60-byte record (its face name is kept terminated).
  void SetLogFont(const LOGFONTA& logFont);

  // Makes the record from a point font: `points` goes to the framework's
  // point-font maker unchanged, which reads it as tenths of a point (so 12
  // asks for 1.2 points; callers rely on this). 1 when the record was read,
  // 0 when no font could be made (null name).
  int SetAsFontPoints(const char* name, int points);
  // The default font of the active code page: the far-eastern standard faces
  // at size 10 for 932, 936, 949 and 950, else the resource face at size 12.
  int SetAsDefault();
  // "Monospaced" when the family byte has bit 0x10 or 0x20 set, else null.
  const char* GetPortableHtmlFontName() const;

 private:
  LOGFONTA m_logFont;
};

class TELVANIX_API CHtmlMiscDataMgr {
 public:
  using CSysFontArray = CRglArray<CSysFont*, CSysFont*>;

  CHtmlMiscDataMgr();
  ~CHtmlMiscDataMgr();
  CHtmlMiscDataMgr(const CHtmlMiscDataMgr&) = delete;
  CHtmlMiscDataMgr& operator=(const CHtmlMiscDataMgr&) = delete;

  // Lists the installed families into a fresh array. An array listed before
  // stays alive (fonts handed out remain valid) until the library unloads.
  // 0 when the display context cannot be made (the registry then holds an
  // empty array), else 1.
  static int QuerySysFonts();
  // Appends a copy of the record, without a duplicate check; null when no
  // array is listed yet, the record is null or its face name is empty. The
  // font type is accepted and ignored. Not locked: call it from one thread.
  static CSysFont* AddNewSysFont(LOGFONTA* logFont, DWORD fontType);
  // First font whose face name equals `name` ignoring ASCII case; lists the
  // fonts first when none are listed. Null when not found.
  static CSysFont* GetSysFont(const char* name);
  // Walk: the font at `index`, advancing it; null (index unchanged) outside
  // 0 .. count - 1. The registry stays the owner of every font returned.
  static CSysFont* GetFirstSysFont(int& index);
  static CSysFont* GetNextSysFont(int& index);
  // Number of listed fonts, 0 before the first listing.
  static int GetSysFontCount();
  // Always 1: the name is deliberately not checked against installed fonts.
  static int IsExistingFontName(const char* name);

 private:
  static int EnumFontFamProc(const LOGFONTA* logFont, const void* textMetric, DWORD fontType, LPARAM data);
  static CSysFont* AddNewSysFontTo(CSysFontArray* fonts, const LOGFONTA* logFont);
  static int QuerySysFontsLocked();
  static bool HasSysFonts();
  static void FreeFontArray(CSysFontArray* fonts);

  std::atomic<CSysFontArray*> m_pSysFontArray;

  static CHtmlMiscDataMgr ms_htmlMiscDataMgr;
};

}  // namespace telvanix
