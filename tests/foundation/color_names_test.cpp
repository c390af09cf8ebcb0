#include "telvanix/foundation/color_names.h"

#include <gtest/gtest.h>

#include <cctype>
#include <iterator>
#include <set>
#include <string>

#include "telvanix/foundation/hash_fold.h"

using namespace telvanix;

// The table: names unique by hash (the keyword search compares hashes
// only), colours in range, and each name found by its own lookup in any
// letter case, giving its own colour.
TEST(ColorNameTable, EveryRowIsFoundByItsName) {
  std::set<DWORD> hashes;
  for (const ColorNameItem& item : g_tColorNameTable) {
    hashes.insert(GenHashCode(item.pszName));
    EXPECT_LT(item.crColor, 0x1000000u) << item.pszName;
    std::string upper(item.pszName);
    for (char& c : upper)
      c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    COLORREF color = 7;
    EXPECT_TRUE(ColorNameToColor(upper.c_str(), color)) << upper;
    EXPECT_EQ(color, item.crColor) << upper;
  }
  EXPECT_EQ(hashes.size(), std::size(g_tColorNameTable));
}

TEST(ColorNameToColor, HexForms) {
  // Red lands in the low byte.
  for (auto [text, want] : {std::pair{"#ff0000", 0x0000FFu}, {"#12A4eF", 0xEFA412u}, {"#000000", 0u},
                            {"#f80", 0x0088FFu}, {"red", 0x0000FFu}}) {
    COLORREF color = 7;
    EXPECT_TRUE(ColorNameToColor(text, color)) << text;
    EXPECT_EQ(color, want) << text;
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
