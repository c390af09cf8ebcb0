// Growable buffers of 8-bit (CByteString) and 16-bit (CWordString) units.
// Whole files are read into and written from a CByteString; a CWordString
// holds text widened to one unit per character. Both keep an explicit length
// beside a terminating zero unit, and grow by one of two owner-chosen policies.
// No code page is involved: conversions between the widths go unit by unit.
#pragma once

#include <cstddef>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// Block size, in units, for a request of n units: n + 2 rounded up to the
// next multiple of 32 (0 -> 32, 30 -> 32, 31 -> 64); a negative n gives 0.
TELVANIX_API int GetRecommendedStringCapacity(int n);

namespace detail {
// The one body both widths share (assigning, appending, growing, emptying);
// the public classes forward to it and keep only their conversions.
template <class Unit>
struct UnitBlock;
}  // namespace detail

class TELVANIX_API CByteString {
 public:
  CByteString();
  CByteString(const unsigned char* content, int n);
  CByteString(const CByteString& other);
  CByteString(CByteString&& other) noexcept;
  ~CByteString();

  // Empties, then makes a block of rounded(max(n, 1)) units with length 0.
  // The block is neither cleared nor terminated.
  int Allocate(int n);

  // n = -1 counts to the terminating zero. n = 0 gives 0 and leaves the
  // string as it was.
  int Assign(const unsigned char* content, int n);
  // Narrowing: each unit writes its low byte, and also its high byte when the
  // unit is 256 or more, while the length stays the unit count. Always
  // empties first, even for n = 0, and gives 1.
  int Assign(const unsigned short* content, int n);
  // Null content or n = 0 gives 0. Appending to a string with no block yet
  // behaves as Assign, so the growth policy does not shape the first block.
  int Append(const unsigned char* content, int n);

  CByteString& operator=(unsigned char ch);
  CByteString& operator=(const unsigned char* content);
  CByteString& operator=(const char* content);
  CByteString& operator=(const unsigned short* content);
  CByteString& operator=(const CByteString& other);
  CByteString& operator=(CByteString&& other) noexcept;
  CByteString& operator+=(unsigned char ch);
  CByteString& operator+=(const unsigned char* content);
  CByteString& operator+=(const char* content);
  // Keeps only the low byte of every unit; null changes nothing.
  CByteString& operator+=(const unsigned short* content);
  CByteString& operator+=(const CByteString& other);

  // -1 whenever this string is empty (so an empty string matches nothing);
  // otherwise exactly -1, 0 or 1 from an unsigned byte comparison.
  int Compare(const unsigned char* other) const;
  int Compare(const char* other) const;
  int Compare(const CByteString& other) const;
  // -1 whenever this string is empty; otherwise negative, zero or positive
  // from a case-insensitive (ASCII letters) byte comparison.
  int CompareNoCase(const unsigned char* other) const;
  int CompareNoCase(const char* other) const;
  int CompareNoCase(const CByteString& other) const;

  // 1 on success; 0 for a null path or any file failure (never throws).
  // Saving replaces the target whole or leaves it as it was.
  int LoadFromFile(const char* path);
  int SaveToFile(const char* path) const;

  CString GetString() const;
  int GetLength() const { return m_nLength; }
  int GetCapacity() const { return m_nCapacity; }
  bool IsEmpty() const { return m_nLength == 0; }
  unsigned char* GetContent() const { return m_pContent; }
  operator const char*() const { return reinterpret_cast<const char*>(m_pContent); }
  operator const unsigned char*() const { return m_pContent; }

  // Keeps the block, makes the text empty; 1 either way.
  int ClearContent();
  // Frees the block; the growth policy is kept.
  void Empty();
  void SetGrowByDoubleSize() { m_bGrowByDouble = 1; }
  void SetGrowByRecommendSize() { m_bGrowByDouble = 0; }
  bool IsGrowByDoubleSize() const { return m_bGrowByDouble != 0; }
  bool IsValid() const { return true; }

 private:
  // Every block of the string comes from and goes back through this pair, so
  // that the storage can later be served from elsewhere (e.g. an arena).
  static unsigned char* AllocUnits(int units);
  static void FreeUnits(unsigned char* block);
  detail::UnitBlock<unsigned char> Block();

  unsigned char* m_pContent;
  int m_nCapacity;
  int m_nLength;
  BOOL m_bGrowByDouble;
};

class TELVANIX_API CWordString {
 public:
  CWordString();
  CWordString(const unsigned short* content, int n);
  CWordString(const CWordString& other);
  CWordString(CWordString&& other) noexcept;
  ~CWordString();

  int Allocate(int n);

  // n = -1 counts to the zero unit; n = 0 gives 0 and leaves the string as it was.
  int Assign(const unsigned short* content, int n);
  // Widening by zero extension; n = -1 takes the byte length; n = 0 gives 0.
  int Assign(const unsigned char* content, int n);
  // No early return: appending 0 units just rewrites the terminator.
  int Append(const unsigned short* content, int n);

  CWordString& operator=(unsigned short ch);
  CWordString& operator=(const unsigned short* content);
  CWordString& operator=(const unsigned char* content);
  CWordString& operator=(const char* content);
  CWordString& operator=(const CWordString& other);
  CWordString& operator=(CWordString&& other) noexcept;
  CWordString& operator+=(unsigned short ch);
  CWordString& operator+=(const unsigned short* content);
  CWordString& operator+=(const unsigned char* content);
  CWordString& operator+=(const char* content);
  CWordString& operator+=(const CWordString& other);

  // Exactly GetLength() characters, each the low byte of its unit.
  CString GetString() const;
  int GetLength() const { return m_nLength; }
  int GetCapacity() const { return m_nCapacity; }
  bool IsEmpty() const { return m_nLength == 0; }
  unsigned short* GetContent() const { return m_pContent; }
  operator const short*() const { return reinterpret_cast<const short*>(m_pContent); }
  operator const unsigned short*() const { return m_pContent; }

  int ClearContent();
  void Empty();
  void SetGrowByDoubleSize() { m_bGrowByDouble = 1; }
  void SetGrowByRecommendSize() { m_bGrowByDouble = 0; }
  bool IsGrowByDoubleSize() const { return m_bGrowByDouble != 0; }
  bool IsValid() const { return true; }

  // Units before the first zero unit; 0 for null.
  static int GetWordStringLen(const unsigned short* content);

 private:
  static unsigned short* AllocUnits(int units);
  static void FreeUnits(unsigned short* block);
  detail::UnitBlock<unsigned short> Block();

  unsigned short* m_pContent;
  int m_nCapacity;
  int m_nLength;
  BOOL m_bGrowByDouble;
};

}  // namespace telvanix
