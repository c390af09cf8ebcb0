// The declaration list of one style rule or inline style: name/value pairs in
// the order read, editable by name and printable back as declarations. Each
// value keeps its text as written (less outer blanks and one pair of
// enclosing quotes), so properties the library does not know survive a load
// and save. The typed style format is built from the pairs on request and
// cached until the list changes.
#pragma once

#include <cstddef>
#include <string>

#include "telvanix/foundation/rgl_array.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CCssStyleFormat;

class TELVANIX_API CCssStyleProperty : public CRglObject {
 public:
  class TELVANIX_API CPropertyPair : public CRglObject {
   public:
    CPropertyPair() = default;
    CPropertyPair(const char* name, const char* value) : m_strName(name), m_strValue(value) {}
    ~CPropertyPair() override;

    const CString& GetName() const { return m_strName; }
    const CString& GetValue() const { return m_strValue; }
    void SetName(const char* name) { m_strName = name; }
    void SetValue(const char* value) { m_strValue = value; }

   private:
    CString m_strName;
    CString m_strValue;
  };

  CCssStyleProperty();
  CCssStyleProperty(const CCssStyleProperty& other);
  CCssStyleProperty& operator=(const CCssStyleProperty& other);
  ~CCssStyleProperty() override;

  // Deletes every pair and the cached format; 1.
  int Default();
  // 0 for null; otherwise Default, then Concat.
  int Copy(const CCssStyleProperty* other);
  // Appends copies of the other's pairs without merging names, so a name may
  // then occur twice (GetProperty finds the earlier one). 0 for null.
  int Concat(const CCssStyleProperty* other);
  // Reads a declaration body and adds its pairs. Reading stops at the first
  // declaration without a ":" (the rest of the body is ignored). Always 1.
  int Analyse(unsigned char* text);
  int Analyse(const char* text);

  // The name is stored lower-case and trimmed, the value trimmed and
  // de-quoted; an existing pair of that name is replaced in place. A null or
  // empty value deletes the property. 0 only for a null name.
  int SetProperty(const char* name, const char* value);
  // 1 and the value of the first pair of that name (case-blind), else 0.
  int GetProperty(const char* name, CString& value) const;
  // Removes the first pair of that name; 1 whether or not it was there,
  // 0 for a null name.
  int DeleteProperty(const char* name);

  // Iteration by index: GetFirstPropertyPair sets the index to 0 (and gives
  // 1 when there is a pair); GetNextPropertyPair gives the pair at the index
  // and advances, or null past the end.
  int GetFirstPropertyPair(int& index) const;
  CPropertyPair* GetNextPropertyPair(int& index) const;
  int GetPropertyCount() const;

  // "name:value; " per pair with a non-empty value. With an indent each
  // declaration starts on a new line: CR LF, the indent, then the pair.
  CString GetPrintableString(const char* indent = nullptr) const;

  // The typed format built from the pairs in list order; owned and cached by
  // this list, dropped by every change. Never null.
  CCssStyleFormat* GetStyleFormat();

  // The value trimmed of blanks; no quotes are ever added.
  static CString QuotePairValue(const char* value);
  // The first `length` bytes (all for -1), trimmed; one enclosing pair of
  // apostrophes or of double quotes is removed when the value holds exactly
  // two quotes of that kind.
  static CString DeQuotePairValue(const char* text, int length);
  // The file name inside url(...) or of a bare value, de-quoted; "" for an
  // unclosed url(.
  static CString GetFileNameFromUrlPairValue(const char* value);

 private:
  friend class CCssStyle;

  // Analyse over [p, end), which holds no zero byte.
  void AnalyseRange(const unsigned char* p, const unsigned char* end);
  // SetProperty for the reader: name and value are its own buffers, which
  // this normalises in place.
  void SetPropertyText(std::string& name, std::string& value);
  // The trimmed, de-quoted part of text[first, first + length), as
  // DeQuotePairValue gives it.
  static void DeQuoteRange(const char* text, size_t& first, size_t& length);
  // The index of the first pair called `name` (already normalised), or -1.
  int FindPair(const CString& name) const;
  int FindPair(const char* name, int length) const;
  void DropStyleFormat();
  static CString NormalizeName(const char* name);

  CRglArray<CPropertyPair*, CPropertyPair*> m_arrPairs;
  CCssStyleFormat* m_pStyleFormat;
};

}  // namespace telvanix
