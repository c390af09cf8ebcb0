#include "telvanix/foundation/color_names.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "telvanix/foundation/hash_fold.h"

using namespace telvanix;

TEST(ColorNameTable, OrderAndValues) {
  EXPECT_STREQ(g_tColorNameTable[0].pszName, "aliceblue");
  EXPECT_STREQ(g_tColorNameTable[139].pszName, "yellowgreen");
  EXPECT_STREQ(g_tColorNameTable[46].pszName, "ghostwhite");  // before "gainsboro", as listed
  EXPECT_STREQ(g_tColorNameTable[47].pszName, "gainsboro");
  std::set<std::string> names;
  std::set<DWORD> hashes;
  for (const ColorNameItem& item : g_tColorNameTable) {
    names.insert(item.pszName);
    hashes.insert(GenHashCode(item.pszName));
    EXPECT_EQ(item.dwReserved, 0u);
    EXPECT_LT(item.crColor, 0x1000000u) << item.pszName;
  }
  EXPECT_EQ(names.size(), 140u);
  EXPECT_EQ(hashes.size(), 140u);  // the hash-only keyword search cannot confuse two names
}

TEST(ColorNameToColor, NamesAndHexForms) {
  // Red lands in the low byte; names are found whatever their case.
  const struct { const char* text; COLORREF color; } cases[] = {
      {"black", 0x000000}, {"red", 0x0000FF},   {"navy", 0x800000},      {"teal", 0x808000},
      {"orange", 0x00A5FF}, {"gray", 0x808080},  {"lightgrey", 0xD3D3D3}, {"white", 0xFFFFFF},
      {"aqua", 0xFFFF00},  {"cyan", 0xFFFF00},  {"fuchsia", 0xFF00FF},   {"magenta", 0xFF00FF},
      {"RED", 0x0000FF},   {"LightGrey", 0xD3D3D3}, {"DarkSlateGray", 0x4F4F2F},
      {"#ff0000", 0x0000FF}, {"#12A4eF", 0xEFA412}, {"#000000", 0}, {"#f80", 0x0088FF},
  };
  for (const auto& c : cases) {
    COLORREF color = 7;
    EXPECT_TRUE(ColorNameToColor(c.text, color)) << c.text;
    EXPECT_EQ(color, c.color) << c.text;
  }
}

TEST(ColorNameToColor, UnknownAndNull) {
  for (const char* bad : {"#", "#12345", "#1234567", "#gg0000", "#12 456", "notacolour", "", "red "}) {
    COLORREF color = 7;
    EXPECT_FALSE(ColorNameToColor(bad, color)) << bad;
    EXPECT_EQ(color, kNoColor) << bad;
  }
  COLORREF color = 7;
  EXPECT_FALSE(ColorNameToColor(nullptr, color));
  EXPECT_EQ(color, 7u);
}

TEST(ColorToColorName, FirstNameThenHex) {
  for (auto [color, want] : {std::pair{0x00FFFF00u, "aqua"}, {0xFF00FFu, "fuchsia"}, {0x808080u, "gray"},
                             {0x123456u, "#563412"}, {0x0A0B0Cu, "#0c0b0a"}}) {
    CString name;
    EXPECT_TRUE(ColorToColorName(color, name)) << want;
    EXPECT_EQ(name, want);
  }
  // Anything in the top byte is no colour, and the name is emptied.
  for (COLORREF bad : {0xFF000000u, 0x01000000u}) {
    CString name("kept?");
    EXPECT_FALSE(ColorToColorName(bad, name));
    EXPECT_TRUE(name.IsEmpty());
  }
}

TEST(ColorToColorName, EveryNameRoundTrips) {
  for (const ColorNameItem& item : g_tColorNameTable) {
    COLORREF color = 0;
    ASSERT_TRUE(ColorNameToColor(item.pszName, color));
    CString name;
    ASSERT_TRUE(ColorToColorName(color, name));
    COLORREF again = 0;
    ASSERT_TRUE(ColorNameToColor(name, again));
    EXPECT_EQ(again, color) << item.pszName;
  }
}

TEST(ColorNameKeywordTable, SearchableWithQuickMap) {
  int bytes = 0;
  QuickMapStringToValueItem* rows = GetColorNameKeywordTable(&bytes);
  ASSERT_NE(rows, nullptr);
  EXPECT_EQ(bytes, static_cast<int>(140 * sizeof(QuickMapStringToValueItem)));
  EXPECT_EQ(QuickMapStringToValue(rows, bytes, "Navy", FALSE), 0x800000);
  EXPECT_EQ(QuickMapStringToValue(rows, bytes, "navyblue", FALSE), -1);
  // The ordered table is left in its order by the keyword search.
  EXPECT_STREQ(g_tColorNameTable[2].pszName, "aqua");
}
