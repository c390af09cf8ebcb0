// The stylesheet vocabulary the style format understands: property names and
// their identifiers, and the keyword tables that turn value words into codes.
// The tables are keyword tables of the foundation (searched case-blind by
// hash, reordered on first search) and are handed to the readers with their
// size in bytes. CCssStyleFormat derives from this class, so the names read
// as CCssStyleFormat::EmPropertyNameId, CCssStyleFormat::ms_tFontSizeTable.
#pragma once

#include "telvanix/foundation/keyword_map.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CCssPropertyNames {
 public:
  // Identifiers are fixed; the gaps (7-9, 17-19, 28-29, 66-69, 74-79) are
  // unused. Note margin-left comes before margin-right.
  enum EmPropertyNameId {
    emPropertyUnknown = -1,
    emPropertyFont = 1,
    emPropertyFontSize = 2,
    emPropertyFontFamily = 3,
    emPropertyFontWeight = 4,
    emPropertyFontStyle = 5,
    emPropertyFontVariant = 6,
    emPropertyColor = 10,
    emPropertyBackgroundColor = 11,
    emPropertyBackgroundImage = 12,
    emPropertyBackgroundRepeat = 13,
    emPropertyBackgroundAttachment = 14,
    emPropertyBackgroundPosition = 15,
    emPropertyBackground = 16,
    emPropertyWordSpacing = 20,
    emPropertyLetterSpacing = 21,
    emPropertyTextDecoration = 22,
    emPropertyVerticalAlign = 23,
    emPropertyTextTransform = 24,
    emPropertyTextAlign = 25,
    emPropertyTextIndent = 26,
    emPropertyLineHeight = 27,
    emPropertyMargin = 30,
    emPropertyMarginTop = 31,
    emPropertyMarginLeft = 32,
    emPropertyMarginRight = 33,
    emPropertyMarginBottom = 34,
    emPropertyPaddingTop = 35,
    emPropertyPaddingRight = 36,
    emPropertyPaddingBottom = 37,
    emPropertyPaddingLeft = 38,
    emPropertyPadding = 39,
    emPropertyBorderTopWidth = 40,
    emPropertyBorderRightWidth = 41,
    emPropertyBorderBottomWidth = 42,
    emPropertyBorderLeftWidth = 43,
    emPropertyBorderTopColor = 44,
    emPropertyBorderRightColor = 45,
    emPropertyBorderBottomColor = 46,
    emPropertyBorderLeftColor = 47,
    emPropertyBorderTopStyle = 48,
    emPropertyBorderRightStyle = 49,
    emPropertyBorderBottomStyle = 50,
    emPropertyBorderLeftStyle = 51,
    emPropertyBorderWidth = 52,
    emPropertyBorderColor = 53,
    emPropertyBorderStyle = 54,
    emPropertyBorderTop = 55,
    emPropertyBorderRight = 56,
    emPropertyBorderBottom = 57,
    emPropertyBorderLeft = 58,
    emPropertyBorder = 59,
    emPropertyDisplay = 60,
    emPropertyWhiteSpace = 61,
    emPropertyListStyleType = 62,
    emPropertyListStyleImage = 63,
    emPropertyListStylePosition = 64,
    emPropertyListStyle = 65,
    emPropertyFilter = 70,
    emPropertyVisibility = 71,
    emPropertyPosition = 72,
    emPropertyLeft = 73,
    emPropertyWidth = 80,
    emPropertyHeight = 81,
    emPropertyFloat = 82,
    emPropertyClear = 83,
  };

  // Keyword codes, grouped by thousands per property family; a code is only
  // meaningful together with the property it was read for.
  enum EmPropertyValue {
    emValueNone = 0,
    emValueNumber = 1,  // a number was given instead of a keyword

    emFontSizeXXSmall = 1,
    emFontSizeXSmall = 2,
    emFontSizeSmall = 3,
    emFontSizeMedium = 4,
    emFontSizeLarge = 5,
    emFontSizeXLarge = 6,
    emFontSizeXXLarge = 7,
    emFontSizeLarger = 101,
    emFontSizeSmaller = 102,

    emFontWeightExtraLight = 1101,
    emFontWeightLight = 1102,
    emFontWeightDemiLight = 1103,
    emFontWeightMedium = 1104,
    emFontWeightDemiBold = 1105,
    emFontWeightBold = 1106,
    emFontWeightExtraBold = 1107,
    emFontWeightNormal = 1108,
    emFontWeightBolder = 1109,
    emFontWeightLighter = 1110,  // its keyword is "light" too; there is no 1111
    emFontWeightInherit = 1112,

    emFontStyleNormal = 1201,
    emFontStyleItalic = 1202,
    emFontStyleOblique = 1203,
    emFontStyleInherit = 1204,

    emFontVariantNormal = 1301,
    emFontVariantSmallCaps = 1302,
    emFontVariantInherit = 1303,

    emTextDecorationNone = 1401,
    emTextDecorationUnderline = 1402,
    emTextDecorationOverline = 1403,
    emTextDecorationLineThrough = 1404,
    emTextDecorationBlink = 1405,
    emTextDecorationItalic = 1406,

    emTextTransformCapitalize = 1501,  // keyword "capitalisze"
    emTextTransformUppercase = 1502,
    emTextTransformLowercase = 1503,
    emTextTransformNone = 1504,

    emVerticalAlignBaseline = 2001,
    emVerticalAlignSub = 2002,
    emVerticalAlignSuper = 2003,
    emVerticalAlignTop = 2004,
    emVerticalAlignTextTop = 2005,
    emVerticalAlignMiddle = 2006,
    emVerticalAlignBottom = 2007,
    emVerticalAlignTextBottom = 2008,

    emTextAlignLeft = 2101,
    emTextAlignCenter = 2102,  // also HTML align="middle"
    emTextAlignRight = 2103,
    emTextAlignJustify = 2104,

    emBorderWidthThin = 2201,
    emBorderWidthMedium = 2202,
    emBorderWidthThick = 2203,

    emBorderStyleNone = 2221,
    emBorderStyleDotted = 2222,
    emBorderStyleDashed = 2223,
    emBorderStyleSolid = 2224,
    emBorderStyleDouble = 2225,
    emBorderStyleGroove = 2226,
    emBorderStyleRidge = 2227,
    emBorderStyleInset = 2228,
    emBorderStyleOutset = 2229,

    emListStyleTypeDisc = 3001,
    emListStyleTypeCircle = 3002,
    emListStyleTypeSquare = 3003,
    emListStyleTypeDecimal = 3004,
    emListStyleTypeLowerRoman = 3005,
    emListStyleTypeUpperRoman = 3006,
    emListStyleTypeLowerAlpha = 3007,
    emListStyleTypeUpperAlpha = 3008,
    emListStyleTypeNone = 3009,

    emListStylePositionInside = 3020,
    emListStylePositionOutside = 3021,
    emListStylePositionInherit = 3022,

    emWidthAuto = 4001,
    emHeightAuto = 4101,

    emPositionAbsolute = 5001,
    emPositionRelative = 5002,
    emPositionStatic = 5003,
    emPositionFixed = 5004,

    emVisibilityHidden = 5101,
    emVisibilityVisible = 5102,
    emVisibilityCollapse = 5103,
  };

  // -1 (emPropertyUnknown) for a name that is not in the table.
  static EmPropertyNameId GetPropertyNameId(const char* name);
  // The name of that identifier; null when none has it.
  static const char* GetPropertyNameString(EmPropertyNameId id);
  // Points of the seven HTML font sizes; indexes are clamped to 1..7.
  static int GetFontSizeInPtByIndex(int index);

  // The tables; each ms_n...Size is the table's size in bytes, which is what
  // the keyword readers take.
  static QuickMapStringToValueItem ms_tPropertyNameTable[65];
  static const int ms_nPropertyNameTableSize;

  static QuickMapStringToValueItem ms_tFontSizeTable[9];
  static QuickMapStringToValueItem ms_tFontStyleTable[4];
  static QuickMapStringToValueItem ms_tFontVariantTable[3];
  static QuickMapStringToValueItem ms_tFontWeightTable[11];
  static QuickMapStringToValueItem ms_tTextAlignTable[4];
  static QuickMapStringToValueItem ms_tHtmlAlignTable[5];
  static QuickMapStringToValueItem ms_tTextDecorationTable[6];
  static QuickMapStringToValueItem ms_tVerticalAlignTable[8];
  static QuickMapStringToValueItem ms_tListStyleTypeTable[9];
  static QuickMapStringToValueItem ms_tListStylePositionTable[3];
  static QuickMapStringToValueItem ms_tWidthAutoTable[1];
  static QuickMapStringToValueItem ms_tHeightAutoTable[1];
  static QuickMapStringToValueItem ms_tPositionTable[4];
  static QuickMapStringToValueItem ms_tVisibilityTable[3];
  static QuickMapStringToValueItem ms_tTextTransformTable[4];
  static QuickMapStringToValueItem ms_tBorderStyleTable[9];
  static QuickMapStringToValueItem ms_tBorderWidthTable[3];

  static const int ms_nFontSizeTableSize;
  static const int ms_nFontStyleTableSize;
  static const int ms_nFontVariantTableSize;
  static const int ms_nFontWeightTableSize;
  static const int ms_nTextAlignTableSize;
  static const int ms_nHtmlAlignTableSize;
  static const int ms_nTextDecorationTableSize;
  static const int ms_nVerticalAlignTableSize;
  static const int ms_nListStyleTypeTableSize;
  static const int ms_nListStylePositionTableSize;
  static const int ms_nWidthAutoTableSize;
  static const int ms_nHeightAutoTableSize;
  static const int ms_nPositionTableSize;
  static const int ms_nVisibilityTableSize;
  static const int ms_nTextTransformTableSize;
  static const int ms_nBorderStyleTableSize;
  static const int ms_nBorderWidthTableSize;
};

}  // namespace telvanix
