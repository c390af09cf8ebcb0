// The descriptor rows behind CCssStyleFormat: for every property the format
// stores, where its value lives, how its text is read, the keyword table it
// reads with and, for a shorthand, its parts. Default, ConcatInner and
// ParseProperty walk these rows instead of switching over the identifiers.
#pragma once

#include "telvanix/css/style_format.h"

namespace telvanix {

// How a property's value text is read.
enum class EmPropertyRead : unsigned char {
  kKeyword,          // first word, looked up in the row's keyword table
  kKeywordOrNumber,  // a keyword, else a number (code emValueNumber); a keyword clears the number
  kKeywordKeepsNumber,  // as kKeywordOrNumber, but a keyword leaves the number as it was
  kNumber,           // CSttNumber::Assign; a rejected text keeps the earlier value
  kMargin,           // as kNumber; "auto" reads as 0px
  kColor,            // a colour (CCssStyleFormat::ReadColor); other text keeps the earlier value
  kUrl,              // CSttUrl::Assign, likewise
  kLowerText,        // the text trimmed and lower-cased; empty counts as not read
  kText,             // the text trimmed; empty counts as not read
  kFamilyList,       // a comma-separated list, each name trimmed, joined by ", "
  kFontSize,         // a number, or a size keyword (its code kept) turned into points
  kFont,             // the font shorthand (its own reader)
  kBackground,       // the background shorthand (its own reader)
  kListStyle,        // the list-style shorthand (its own reader)
  kFourSides,        // one to four values over the parts top, right, bottom, left
  kBorderSides,      // width, style and colour in any order, each once
};

// A keyword table with its size in bytes, as the keyword readers take it.
struct CssKeywordTable {
  QuickMapStringToValueItem* rows;
  int bytes;
};

// Where one property's value lives inside a format; parts a property does
// not have are null.
struct CCssStyleFormat::CSlot {
  EmPropertyValue* code = nullptr;
  CSttNumber* number = nullptr;
  CSttColor* color = nullptr;
  CSttUrl* url = nullptr;
  CString* text = nullptr;

  static CSlot Of(EmPropertyValue& code);
  static CSlot Of(CSttNumber& number);
  static CSlot Of(CSttColor& color);
  static CSlot Of(CSttUrl& url);
  static CSlot Of(CString& text);
  // The places the rows name (style_format_table.cpp).
  template <auto Member>
  static CSlot At(CCssStyleFormat& format);
  template <auto Code, auto Number>
  static CSlot AtPair(CCssStyleFormat& format);
  template <auto Sides, int Side>
  static CSlot AtSide(CCssStyleFormat& format);
  template <int Side>
  static CSlot BorderWidth(CCssStyleFormat& format);
  template <int Side>
  static CSlot BorderColor(CCssStyleFormat& format);
  template <int Side>
  static CSlot BorderStyle(CCssStyleFormat& format);

  void Reset() const;
  // Copies the parts this slot has from `from`, which has at least those.
  void CopyFrom(const CSlot& from) const;
};

struct CCssStyleFormat::CPropertyRow {
  EmPropertyNameId id;
  EmPropertyRead read;
  // The value's place in a format; null for a shorthand, whose parts hold
  // its value.
  CSlot (*place)(CCssStyleFormat&);
  CssKeywordTable keywords;  // with kKeyword, the two keyword-or-number kinds and kFontSize
  // Shorthand parts: the four sides (kFourSides), the width, style and
  // colour of a side (kBorderSides; "border" names the four side
  // shorthands), what the font, background and list-style readers set;
  // 0 ends the list.
  EmPropertyNameId parts[6];
};

}  // namespace telvanix
