// The selector chain of a style rule: one CSelector per simple selector of a
// contextual selector ("div p.note" gives div, then p.note). A simple
// selector is split into its element name (looked up in the tag syntax
// table) and one class, id or pseudo-class part.
#pragma once

#include "telvanix/foundation/rgl_array.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CCssStyleSelectors : public CRglObject {
 public:
  class TELVANIX_API CSelector : public CRglObject {
   public:
    enum EmPartKind {
      emPartNone = 0,
      emPartClass = 1,   // "."
      emPartId = 2,      // "#"
      emPartPseudo = 3,  // ":"
    };

    CSelector();
    // Only the first 128 bytes of the text are examined.
    explicit CSelector(const char* text);
    ~CSelector() override;

    int Copy(const CSelector* other);
    // 1 when all five fields agree, texts compared with case; 0 for null.
    int Compare(const CSelector* other) const;

    const CString& GetElementName() const { return m_strElementName; }
    DWORD GetMjrType() const { return m_dwMjrType; }
    DWORD GetTagId() const { return m_dwTagId; }
    const CString& GetPartText() const { return m_strPartText; }
    int GetPartKind() const { return m_nPartKind; }

   private:
    CString m_strElementName;
    DWORD m_dwMjrType;
    DWORD m_dwTagId;
    CString m_strPartText;
    int m_nPartKind;
  };

  CCssStyleSelectors();
  CCssStyleSelectors(const CCssStyleSelectors&) = delete;
  CCssStyleSelectors& operator=(const CCssStyleSelectors&) = delete;
  ~CCssStyleSelectors() override;

  // Appends one CSelector per run of the text (its first 256 bytes only).
  // 0 for null or empty text.
  int Analyse(const char* text);
  // Appends deep copies of the other chain's selectors; 0 for null.
  int Copy(const CCssStyleSelectors* other);
  // 1 when both chains hold equal selectors in the same order (two empty
  // chains are equal); 0 for null or a different count.
  int Compare(const CCssStyleSelectors* other) const;
  // 1 only for a chain of exactly one selector equal to `selector`.
  int Compare(const CSelector* selector) const;
  // Deletes every selector; 1.
  int Default();

  int GetSize() const { return m_arrSelectors.GetSize(); }
  // Null for an index out of range.
  CSelector* GetAt(int index) const;
  CSelector* GetLast() const;

 private:
  CRglArray<CSelector*, CSelector*> m_arrSelectors;
};

}  // namespace telvanix
