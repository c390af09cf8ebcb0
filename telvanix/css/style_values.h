// Typed values of stylesheet properties: a length or number with unit and
// sign (CSttNumber), a colour (CSttColor) and a file reference (CSttUrl).
// Each reads its value from property text (Assign), keeps it normalised,
// compares it with another value of its kind and prints it back as property
// text (GetPrintableString; "" for an unset value). Plain value types, copied
// by value; every numeric result is 1 for success/true and 0 otherwise.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CSttNumber {
 public:
  // Grouped by hundreds: below 100 absolute, 100..999 relative.
  enum EmUnitType {
    emUnitNone = 0,
    emUnitPt = 1,
    emUnitPc = 2,
    emUnitIn = 3,
    emUnitCm = 4,
    emUnitMm = 5,
    emUnitPx = 100,
    emUnitPercent = 200,
    emUnitEx = 300,
    emUnitEm = 301,
    emUnitEn = 302,
    emUnitUnknown = 1000,
  };
  enum EmSignType {
    emSignNone = 0,
    emSignPlus = 1,
    emSignMinus = 2,
  };

  CSttNumber();
  CSttNumber(const char* text);
  CSttNumber(float number, EmUnitType unit, EmSignType sign);
  CSttNumber(const CSttNumber& other);
  CSttNumber& operator=(const CSttNumber& other);

  // Default, then parse; 0 when the text holds no number (see Analyse).
  int Assign(const char* text);
  int Assign(unsigned char* text);
  // Keeps only the number (its absolute value unless a sign is passed);
  // unit and sign stay none whatever is passed. Callers that need a unit go
  // through text or Copy.
  int Assign(float number, EmUnitType unit, EmSignType sign);
  // Resets to 0 with no unit and no sign; reports 0, unlike the other
  // value classes.
  int Default();
  int IsDefault() const;
  int Copy(const CSttNumber* other);
  // 1 when number (exactly), unit and sign are all equal; 0 for null.
  int Compare(const CSttNumber* other) const;
  // Same unit: adds the other's signed value to this magnitude (this sign is
  // left alone, the magnitude may go negative). Different units: both are
  // turned into points and the sum is stored as pt with its sign.
  const CSttNumber& operator+=(CSttNumber& other);

  float GetNum() const { return m_fNumber; }
  // The magnitude, negated for a minus sign.
  float GetNumEx() const;
  EmUnitType GetUnitType() const { return m_emUnit; }
  EmSignType GetSignType() const { return m_emSign; }
  int IsAbsoultValue() const;
  // Pixels count as relative; an unknown unit is neither.
  int IsRelativeValue() const;
  // Whole points, truncated toward zero. percentBase: reference size in
  // points; pixelScale: hundredths of a point a pixel; emScale: em size in
  // hundredths of a point; -1 means "not known" for each of them.
  int GetPoints(int percentBase, int pixelScale, int emScale) const;
  CString GetPrintableString() const;

  // Parses into the current value (Assign resets first).
  int Analyse(const char* text);

 private:
  float m_fNumber;
  EmUnitType m_emUnit;
  EmSignType m_emSign;
};

class TELVANIX_API CSttColor {
 public:
  // How the colour was given.
  enum EmColorKind {
    emColorUnset = 0,
    emColorValue = 1,
    emColorName = 2,
    emColorRgb = 3,
    emColorUnknown = 4,
  };
  static constexpr COLORREF ms_nNoColor = 0xFF000000u;

  CSttColor();
  CSttColor(COLORREF color);
  CSttColor(const char* text);
  CSttColor(const CSttColor& other);
  CSttColor& operator=(const CSttColor& other);

  // Any colour value is stored unchanged, as kind 1.
  int Assign(COLORREF color);
  // 0 only for blank text; any other text gives 1, unrecognised text (and,
  // on purpose, rgb(...) notation) leaving kind 4 and no colour.
  int Assign(const char* text);
  int Assign(unsigned char* text);
  int Default();
  int IsDefault() const;
  int Copy(const CSttColor* other);
  // Colours only: a named red equals #ff0000. 0 for null.
  int Compare(const CSttColor* other) const;

  COLORREF GetColorRef() const { return m_crColor; }
  int GetKind() const { return m_nKind; }
  CString GetPrintableString() const;

  // Parses into the current value (Assign resets first).
  int Analyse(const char* text);

 private:
  LONG m_nKind;
  COLORREF m_crColor;
};

class TELVANIX_API CSttUrl {
 public:
  enum EmUrlKind {
    emUrlUnset = 0,
    emUrlFunction = 1,  // written as url(...)
    emUrlBare = 2,
  };

  CSttUrl();
  CSttUrl(const char* text);
  CSttUrl(const CSttUrl& other);
  CSttUrl& operator=(const CSttUrl& other);

  // 0 only for null or empty text.
  int Assign(const char* text);
  int Assign(unsigned char* text);
  int Default();
  int IsDefault() const;
  int Copy(const CSttUrl* other);
  // Names compared without regard to letter case; the kind is not compared.
  int Compare(const CSttUrl* other) const;

  CString GetUrlName() const { return m_strName; }
  int GetKind() const { return m_nKind; }
  CString GetPrintableString() const;

  // "url(name)" with backslashes turned into slashes, the name wrapped in
  // the quote character when it is not zero.
  static CString MakeNormalizedUrl(const char* name, char quote);

  // Parses into the current value (Assign resets first).
  int Analyse(const char* text);

 private:
  LONG m_nKind;
  CString m_strName;
};

}  // namespace telvanix
