// Stand-ins for the Windows records that the font and page classes exchange
// with a host: the logical-font description, the page-setup dialog record and
// the printer mode and names records, with the constants that go into them.
// Records without pointers keep their original byte size, so a host can copy
// them as raw blocks; records holding handles keep their fields only.
#pragma once

#include <cstddef>

#include "telvanix/platform/types.h"

namespace telvanix {

using CHAR = char;
using LPARAM = std::intptr_t;
using UINT_PTR = std::uintptr_t;

struct GlobalTag;
using HGLOBAL = GlobalTag*;
struct InstanceTag;
using HINSTANCE = InstanceTag*;
struct DcTag;
using HDC = DcTag*;

struct POINT {
  LONG x;
  LONG y;
};

struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

constexpr int LF_FACESIZE = 32;
constexpr int LF_FULLFACESIZE = 64;

// The ANSI logical-font record: exactly 60 bytes.
struct LOGFONTA {
  LONG lfHeight;
  LONG lfWidth;
  LONG lfEscapement;
  LONG lfOrientation;
  LONG lfWeight;
  BYTE lfItalic;
  BYTE lfUnderline;
  BYTE lfStrikeOut;
  BYTE lfCharSet;
  BYTE lfOutPrecision;
  BYTE lfClipPrecision;
  BYTE lfQuality;
  BYTE lfPitchAndFamily;
  CHAR lfFaceName[LF_FACESIZE];
};
static_assert(sizeof(LOGFONTA) == 60, "LOGFONTA must keep its 60-byte layout");
static_assert(offsetof(LOGFONTA, lfPitchAndFamily) == 27);
static_assert(offsetof(LOGFONTA, lfFaceName) == 28);

// What a font-family enumeration hands to its callback: the logical font,
// then the full name (at byte 60) and the style name; 156 bytes.
struct ENUMLOGFONTA {
  LOGFONTA elfLogFont;
  BYTE elfFullName[LF_FULLFACESIZE];
  BYTE elfStyle[LF_FACESIZE];
};
static_assert(sizeof(ENUMLOGFONTA) == 156, "ENUMLOGFONTA must keep its 156-byte layout");
static_assert(offsetof(ENUMLOGFONTA, elfFullName) == 60);

// Font weights.
constexpr LONG FW_DONTCARE = 0;
constexpr LONG FW_THIN = 100;
constexpr LONG FW_EXTRALIGHT = 200;
constexpr LONG FW_LIGHT = 300;
constexpr LONG FW_NORMAL = 400;
constexpr LONG FW_MEDIUM = 500;
constexpr LONG FW_SEMIBOLD = 600;
constexpr LONG FW_BOLD = 700;
constexpr LONG FW_EXTRABOLD = 800;
constexpr LONG FW_HEAVY = 900;

// Character sets.
constexpr BYTE ANSI_CHARSET = 0;
constexpr BYTE DEFAULT_CHARSET = 1;
constexpr BYTE SYMBOL_CHARSET = 2;
constexpr BYTE MAC_CHARSET = 77;
constexpr BYTE SHIFTJIS_CHARSET = 128;
constexpr BYTE HANGUL_CHARSET = 129;
constexpr BYTE JOHAB_CHARSET = 130;
constexpr BYTE GB2312_CHARSET = 134;
constexpr BYTE CHINESEBIG5_CHARSET = 136;
constexpr BYTE GREEK_CHARSET = 161;
constexpr BYTE TURKISH_CHARSET = 162;
constexpr BYTE VIETNAMESE_CHARSET = 163;
constexpr BYTE HEBREW_CHARSET = 177;
constexpr BYTE ARABIC_CHARSET = 178;
constexpr BYTE BALTIC_CHARSET = 186;
constexpr BYTE RUSSIAN_CHARSET = 204;
constexpr BYTE THAI_CHARSET = 222;
constexpr BYTE EASTEUROPE_CHARSET = 238;
constexpr BYTE OEM_CHARSET = 255;

// Output and clipping precision, quality.
constexpr BYTE OUT_DEFAULT_PRECIS = 0;
constexpr BYTE OUT_STRING_PRECIS = 1;
constexpr BYTE OUT_CHARACTER_PRECIS = 2;
constexpr BYTE OUT_STROKE_PRECIS = 3;
constexpr BYTE OUT_TT_PRECIS = 4;
constexpr BYTE OUT_DEVICE_PRECIS = 5;
constexpr BYTE OUT_RASTER_PRECIS = 6;
constexpr BYTE OUT_TT_ONLY_PRECIS = 7;
constexpr BYTE OUT_OUTLINE_PRECIS = 8;
constexpr BYTE CLIP_DEFAULT_PRECIS = 0;
constexpr BYTE CLIP_CHARACTER_PRECIS = 1;
constexpr BYTE CLIP_STROKE_PRECIS = 2;
constexpr BYTE DEFAULT_QUALITY = 0;
constexpr BYTE DRAFT_QUALITY = 1;
constexpr BYTE PROOF_QUALITY = 2;

// The pitch-and-family byte: pitch in the low two bits, family class above.
constexpr BYTE DEFAULT_PITCH = 0;
constexpr BYTE FIXED_PITCH = 1;
constexpr BYTE VARIABLE_PITCH = 2;
constexpr BYTE FF_DONTCARE = 0x00;
constexpr BYTE FF_ROMAN = 0x10;
constexpr BYTE FF_SWISS = 0x20;
constexpr BYTE FF_MODERN = 0x30;
constexpr BYTE FF_SCRIPT = 0x40;
constexpr BYTE FF_DECORATIVE = 0x50;

// Font types reported by an enumeration.
constexpr DWORD RASTER_FONTTYPE = 0x1;
constexpr DWORD DEVICE_FONTTYPE = 0x2;
constexpr DWORD TRUETYPE_FONTTYPE = 0x4;

// Device capability index for vertical pixels per inch.
constexpr int LOGPIXELSY = 90;

// Warning-beep sound id.
constexpr UINT MB_ICONEXCLAMATION = 0x30;

// The ANSI printer-mode record, with the printer view of its middle union.
// 156 bytes; callers that keep "the printer mode" keep its first 148 bytes.
constexpr int CCHDEVICENAME = 32;
constexpr int CCHFORMNAME = 32;
struct DEVMODEA {
  BYTE dmDeviceName[CCHDEVICENAME];
  WORD dmSpecVersion;
  WORD dmDriverVersion;
  WORD dmSize;
  WORD dmDriverExtra;
  DWORD dmFields;
  SHORT dmOrientation;
  SHORT dmPaperSize;
  SHORT dmPaperLength;  // tenths of a millimetre
  SHORT dmPaperWidth;   // tenths of a millimetre
  SHORT dmScale;
  SHORT dmCopies;
  SHORT dmDefaultSource;
  SHORT dmPrintQuality;
  SHORT dmColor;
  SHORT dmDuplex;
  SHORT dmYResolution;
  SHORT dmTTOption;
  SHORT dmCollate;
  BYTE dmFormName[CCHFORMNAME];
  WORD dmLogPixels;
  DWORD dmBitsPerPel;
  DWORD dmPelsWidth;
  DWORD dmPelsHeight;
  DWORD dmDisplayFlags;
  DWORD dmDisplayFrequency;
  DWORD dmICMMethod;
  DWORD dmICMIntent;
  DWORD dmMediaType;
  DWORD dmDitherType;
  DWORD dmReserved1;
  DWORD dmReserved2;
  DWORD dmPanningWidth;
  DWORD dmPanningHeight;
};
static_assert(sizeof(DEVMODEA) == 156, "DEVMODEA must keep its 156-byte layout");
static_assert(offsetof(DEVMODEA, dmOrientation) == 44);
static_assert(offsetof(DEVMODEA, dmFormName) == 70);
static_assert(offsetof(DEVMODEA, dmPanningWidth) == 148);

constexpr WORD DM_SPECVERSION = 0x0401;
constexpr DWORD DM_ORIENTATION = 0x00000001;
constexpr DWORD DM_PAPERSIZE = 0x00000002;
constexpr DWORD DM_PAPERLENGTH = 0x00000004;
constexpr DWORD DM_PAPERWIDTH = 0x00000008;
constexpr DWORD DM_FORMNAME = 0x00010000;

constexpr SHORT DMORIENT_PORTRAIT = 1;
constexpr SHORT DMORIENT_LANDSCAPE = 2;

constexpr SHORT DMPAPER_LETTER = 1;
constexpr SHORT DMPAPER_TABLOID = 3;
constexpr SHORT DMPAPER_LEDGER = 4;
constexpr SHORT DMPAPER_LEGAL = 5;
constexpr SHORT DMPAPER_STATEMENT = 6;
constexpr SHORT DMPAPER_EXECUTIVE = 7;
constexpr SHORT DMPAPER_A3 = 8;
constexpr SHORT DMPAPER_A4 = 9;
constexpr SHORT DMPAPER_A5 = 11;
constexpr SHORT DMPAPER_B4 = 12;
constexpr SHORT DMPAPER_B5 = 13;
constexpr SHORT DMPAPER_ISO_B5 = 34;
constexpr SHORT DMPAPER_USER = 256;

// The printer names record: offsets (in characters from its start) of the
// driver, device and output names that follow it, and a default flag.
struct DEVNAMES {
  WORD wDriverOffset;
  WORD wDeviceOffset;
  WORD wOutputOffset;
  WORD wDefault;
};
static_assert(sizeof(DEVNAMES) == 8, "DEVNAMES must keep its 8-byte layout");

constexpr WORD DN_DEFAULTPRN = 0x0001;

using LPPAGESETUPHOOK = UINT_PTR (*)(HWND, UINT, std::uintptr_t, LPARAM);
using LPPAGEPAINTHOOK = UINT_PTR (*)(HWND, UINT, std::uintptr_t, LPARAM);

// The page-setup dialog record. Lengths are in the unit its flags name
// (PSD_INTHOUSANDTHSOFINCHES or PSD_INHUNDREDTHSOFMILLIMETERS).
struct PAGESETUPDLGA {
  DWORD lStructSize;
  HWND hwndOwner;
  HGLOBAL hDevMode;   // DEVMODEA block, owned by the caller once returned
  HGLOBAL hDevNames;  // DEVNAMES block, owned by the caller once returned
  DWORD Flags;
  POINT ptPaperSize;
  RECT rtMinMargin;
  RECT rtMargin;
  HINSTANCE hInstance;
  LPARAM lCustData;
  LPPAGESETUPHOOK lpfnPageSetupHook;
  LPPAGEPAINTHOOK lpfnPagePaintHook;
  LPCSTR lpPageSetupTemplateName;
  HGLOBAL hPageSetupTemplate;
};

constexpr DWORD PSD_DEFAULTMINMARGINS = 0x00000000;
constexpr DWORD PSD_INWININIINTLMEASURE = 0x00000000;
constexpr DWORD PSD_MINMARGINS = 0x00000001;
constexpr DWORD PSD_MARGINS = 0x00000002;
constexpr DWORD PSD_INTHOUSANDTHSOFINCHES = 0x00000004;
constexpr DWORD PSD_INHUNDREDTHSOFMILLIMETERS = 0x00000008;
constexpr DWORD PSD_DISABLEMARGINS = 0x00000010;
constexpr DWORD PSD_DISABLEPRINTER = 0x00000020;
constexpr DWORD PSD_NOWARNING = 0x00000080;
constexpr DWORD PSD_DISABLEORIENTATION = 0x00000100;
constexpr DWORD PSD_DISABLEPAPER = 0x00000200;
constexpr DWORD PSD_RETURNDEFAULT = 0x00000400;
constexpr DWORD PSD_SHOWHELP = 0x00000800;

// Global memory flags.
constexpr UINT GMEM_FIXED = 0x0000;
constexpr UINT GMEM_MOVEABLE = 0x0002;
constexpr UINT GMEM_ZEROINIT = 0x0040;
constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;

// Global memory blocks, as the page-setup record hands them over. A handle
// that did not come from GlobalAlloc (or was freed) is refused: GlobalLock
// gives null, GlobalSize 0, GlobalFree returns the handle unchanged.
TELVANIX_API HGLOBAL GlobalAlloc(UINT flags, std::size_t bytes);
TELVANIX_API LPVOID GlobalLock(HGLOBAL block);
TELVANIX_API BOOL GlobalUnlock(HGLOBAL block);  // nonzero while still locked
TELVANIX_API std::size_t GlobalSize(HGLOBAL block);
TELVANIX_API HGLOBAL GlobalFree(HGLOBAL block);  // null on success

// The warning beep; there is no sound here, so it only returns TRUE.
TELVANIX_API BOOL MessageBeep(UINT type);

}  // namespace telvanix
