// Keyword tables of property values, one per property family, rows in their
// fixed order. The rows are sorted by hash on first search, so row order
// only matters for a reader that scans them.
#include "telvanix/css/property_names.h"

namespace telvanix {

QuickMapStringToValueItem CCssPropertyNames::ms_tFontSizeTable[9] = {
    {0, "xx-small", 1},
    {0, "x-small", 2},
    {0, "small", 3},
    {0, "medium", 4},
    {0, "large", 5},
    {0, "x-large", 6},
    {0, "xx-large", 7},
    {0, "larger", 101},
    {0, "smaller", 102},
};
const int CCssPropertyNames::ms_nFontSizeTableSize = sizeof(CCssPropertyNames::ms_tFontSizeTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tFontStyleTable[4] = {
    {0, "normal", 1201},
    {0, "italic", 1202},
    {0, "oblique", 1203},
    {0, "inherit", 1204},
};
const int CCssPropertyNames::ms_nFontStyleTableSize = sizeof(CCssPropertyNames::ms_tFontStyleTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tFontVariantTable[3] = {
    {0, "normal", 1301},
    {0, "small-caps", 1302},
    {0, "inherit", 1303},
};
const int CCssPropertyNames::ms_nFontVariantTableSize = sizeof(CCssPropertyNames::ms_tFontVariantTable);

// "light" appears twice (1102 and 1110) and there is no 1111; readers of
// font-weight accept either code for it.
QuickMapStringToValueItem CCssPropertyNames::ms_tFontWeightTable[11] = {
    {0, "extra-light", 1101},
    {0, "light", 1102},
    {0, "demi-light", 1103},
    {0, "medium", 1104},
    {0, "demi-bold", 1105},
    {0, "bold", 1106},
    {0, "extra-bold", 1107},
    {0, "normal", 1108},
    {0, "bolder", 1109},
    {0, "light", 1110},
    {0, "inherit", 1112},
};
const int CCssPropertyNames::ms_nFontWeightTableSize = sizeof(CCssPropertyNames::ms_tFontWeightTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tTextAlignTable[4] = {
    {0, "left", 2101},
    {0, "center", 2102},
    {0, "right", 2103},
    {0, "justify", 2104},
};
const int CCssPropertyNames::ms_nTextAlignTableSize = sizeof(CCssPropertyNames::ms_tTextAlignTable);

// For HTML align attributes only: "middle" means center there. The
// stylesheet text-align property has no "middle".
QuickMapStringToValueItem CCssPropertyNames::ms_tHtmlAlignTable[5] = {
    {0, "left", 2101},
    {0, "center", 2102},
    {0, "right", 2103},
    {0, "justify", 2104},
    {0, "middle", 2102},
};
const int CCssPropertyNames::ms_nHtmlAlignTableSize = sizeof(CCssPropertyNames::ms_tHtmlAlignTable);

// "italic" is accepted here as a decoration.
QuickMapStringToValueItem CCssPropertyNames::ms_tTextDecorationTable[6] = {
    {0, "none", 1401},
    {0, "underline", 1402},
    {0, "overline", 1403},
    {0, "line-through", 1404},
    {0, "blink", 1405},
    {0, "italic", 1406},
};
const int CCssPropertyNames::ms_nTextDecorationTableSize = sizeof(CCssPropertyNames::ms_tTextDecorationTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tVerticalAlignTable[8] = {
    {0, "baseline", 2001},
    {0, "sub", 2002},
    {0, "super", 2003},
    {0, "top", 2004},
    {0, "text-top", 2005},
    {0, "middle", 2006},
    {0, "bottom", 2007},
    {0, "text-bottom", 2008},
};
const int CCssPropertyNames::ms_nVerticalAlignTableSize = sizeof(CCssPropertyNames::ms_tVerticalAlignTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tListStyleTypeTable[9] = {
    {0, "disc", 3001},
    {0, "circle", 3002},
    {0, "square", 3003},
    {0, "decimal", 3004},
    {0, "lower-roman", 3005},
    {0, "upper-roman", 3006},
    {0, "lower-alpha", 3007},
    {0, "upper-alpha", 3008},
    {0, "none", 3009},
};
const int CCssPropertyNames::ms_nListStyleTypeTableSize = sizeof(CCssPropertyNames::ms_tListStyleTypeTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tListStylePositionTable[3] = {
    {0, "inside", 3020},
    {0, "outside", 3021},
    {0, "inherit", 3022},
};
const int CCssPropertyNames::ms_nListStylePositionTableSize = sizeof(CCssPropertyNames::ms_tListStylePositionTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tWidthAutoTable[1] = {
    {0, "auto", 4001},
};
const int CCssPropertyNames::ms_nWidthAutoTableSize = sizeof(CCssPropertyNames::ms_tWidthAutoTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tHeightAutoTable[1] = {
    {0, "auto", 4101},
};
const int CCssPropertyNames::ms_nHeightAutoTableSize = sizeof(CCssPropertyNames::ms_tHeightAutoTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tPositionTable[4] = {
    {0, "absolute", 5001},
    {0, "relative", 5002},
    {0, "static", 5003},
    {0, "fixed", 5004},
};
const int CCssPropertyNames::ms_nPositionTableSize = sizeof(CCssPropertyNames::ms_tPositionTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tVisibilityTable[3] = {
    {0, "hidden", 5101},
    {0, "visible", 5102},
    {0, "collapse", 5103},
};
const int CCssPropertyNames::ms_nVisibilityTableSize = sizeof(CCssPropertyNames::ms_tVisibilityTable);

// The keyword is spelt "capitalisze" and kept so: the correctly spelt word
// is not recognised.
QuickMapStringToValueItem CCssPropertyNames::ms_tTextTransformTable[4] = {
    {0, "capitalisze", 1501},
    {0, "uppercase", 1502},
    {0, "lowercase", 1503},
    {0, "none", 1504},
};
const int CCssPropertyNames::ms_nTextTransformTableSize = sizeof(CCssPropertyNames::ms_tTextTransformTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tBorderStyleTable[9] = {
    {0, "none", 2221},
    {0, "dotted", 2222},
    {0, "dashed", 2223},
    {0, "solid", 2224},
    {0, "double", 2225},
    {0, "groove", 2226},
    {0, "ridge", 2227},
    {0, "inset", 2228},
    {0, "outset", 2229},
};
const int CCssPropertyNames::ms_nBorderStyleTableSize = sizeof(CCssPropertyNames::ms_tBorderStyleTable);

QuickMapStringToValueItem CCssPropertyNames::ms_tBorderWidthTable[3] = {
    {0, "thin", 2201},
    {0, "medium", 2202},
    {0, "thick", 2203},
};
const int CCssPropertyNames::ms_nBorderWidthTableSize = sizeof(CCssPropertyNames::ms_tBorderWidthTable);

}  // namespace telvanix
