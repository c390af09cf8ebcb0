#include "telvanix/foundation/color_names.h"

#include <cstdio>

#include "telvanix/foundation/hash_fold.h"

namespace telvanix {

namespace {

// Built from the ordered table at load time; QuickMapStringToValue sorts it
// in place, which is why the ordered table itself is never searched that way.
struct ColorKeywordTable {
  QuickMapStringToValueItem rows[g_nColorNameTableSize];
  ColorKeywordTable() {
    for (int i = 0; i < g_nColorNameTableSize; ++i)
      rows[i] = {0, g_tColorNameTable[i].pszName, static_cast<int>(g_tColorNameTable[i].crColor)};
    int bytes = sizeof(rows);
    QuickMapStringToValue(rows, bytes, "black", FALSE);  // prepare now, before any thread asks
  }
};

ColorKeywordTable& KeywordTable() {
  static ColorKeywordTable table;
  return table;
}

int HexDigit(unsigned char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// "#rrggbb" or "#rgb" (each digit doubled); anything else is no colour.
COLORREF ParseHexColor(const char* digits) {
  int value[6];
  int n = 0;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(digits); *p; ++p) {
    const int d = HexDigit(*p);
    if (d < 0 || n == 6) return kNoColor;
    value[n++] = d;
  }
  if (n == 3) return RGB(static_cast<BYTE>(value[0] * 17), static_cast<BYTE>(value[1] * 17),
                         static_cast<BYTE>(value[2] * 17));
  if (n != 6) return kNoColor;
  return RGB(static_cast<BYTE>(value[0] * 16 + value[1]), static_cast<BYTE>(value[2] * 16 + value[3]),
             static_cast<BYTE>(value[4] * 16 + value[5]));
}

}  // namespace

QuickMapStringToValueItem* GetColorNameKeywordTable(int* tableBytes) {
  ColorKeywordTable& table = KeywordTable();
  if (tableBytes) *tableBytes = static_cast<int>(sizeof(table.rows));
  return table.rows;
}

BOOL ColorNameToColor(const char* text, COLORREF& color) {
  if (!text) return FALSE;
  if (*text == '#') {
    color = ParseHexColor(text + 1);
  } else {
    // Case-blind: the hash finds the candidate, the folded comparison
    // rejects another word that merely shares its hash.
    int bytes = 0;
    QuickMapStringToValueItem* rows = GetColorNameKeywordTable(&bytes);
    const int value = QuickMapStringToValue(rows, bytes, text, FALSE);
    color = kNoColor;
    if (value != -1) {
      for (const ColorNameItem& item : g_tColorNameTable) {
        if (static_cast<int>(item.crColor) == value && QuickCompareStringNoCase(item.pszName, text)) {
          color = item.crColor;
          break;
        }
      }
    }
  }
  return color != kNoColor;
}

BOOL ColorToColorName(COLORREF color, CString& name) {
  for (const ColorNameItem& item : g_tColorNameTable) {
    if (item.crColor == color) {
      name = item.pszName;
      return TRUE;
    }
  }
  if (color < 0x1000000u) {
    name.Format("#%02x%02x%02x", GetRValue(color), GetGValue(color), GetBValue(color));
    return TRUE;
  }
  name.Empty();
  return FALSE;
}

}  // namespace telvanix
