#include "telvanix/foundation/byte_string.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "telvanix/platform/file.h"

namespace telvanix {

namespace {

// Requests this large cannot be rounded within the 32-bit capacity field.
constexpr int kMaxUnits = INT_MAX - 64;

int Rounded(int n) { return GetRecommendedStringCapacity(n); }

// Size of the block an append of n units to L of C units needs, or 0 when
// the units fit in place. The test reallocates one unit earlier than strictly
// needed: an append that would exactly fill the block, terminator included,
// already grows it.
int GrownCapacity(int length, int capacity, int n, BOOL growByDouble) {
  if (capacity - length - 1 > n)
    return 0;
  int size = Rounded(length + n);
  if (growByDouble && static_cast<std::int64_t>(capacity) * 2 > size)
    size = static_cast<std::int64_t>(capacity) * 2 > kMaxUnits ? size : capacity * 2;
  return size;
}

int ByteLength(const unsigned char* content) {
  std::size_t length = std::strlen(reinterpret_cast<const char*>(content));
  return length > static_cast<std::size_t>(kMaxUnits) ? -1 : static_cast<int>(length);
}

int Fold(unsigned char ch) { return (ch >= 'A' && ch <= 'Z') ? ch + 32 : ch; }

// Widens a zero-terminated byte text unit by unit into a scratch block and
// hands it to use; null or overlong text does nothing.
template <class Use>
void WithWidened(const unsigned char* content, unsigned short* (*alloc)(int), void (*release)(unsigned short*),
                 Use use) {
  if (!content)
    return;
  int n = ByteLength(content);
  if (n < 0)
    return;
  unsigned short* widened = alloc(n + 1);
  for (int i = 0; i <= n; ++i)
    widened[i] = content[i];
  use(widened);
  release(widened);
}

}  // namespace

namespace {

// What differs between the two widths, apart from the conversions that
// only one of them has.
template <class Unit>
struct UnitTraits;

template <>
struct UnitTraits<unsigned char> {
  // -1 for a text too long for the length field.
  static int Length(const unsigned char* content) { return ByteLength(content); }
  // Appending nothing (null or 0 units) fails and leaves the string alone.
  static constexpr bool kAppendNothingFails = true;
};

template <>
struct UnitTraits<unsigned short> {
  static int Length(const unsigned short* content) { return CWordString::GetWordStringLen(content); }
  // Appending nothing succeeds and rewrites the terminator.
  static constexpr bool kAppendNothingFails = false;
};

// Exactly `length` characters, each the low byte of its unit.
template <class Unit>
CString LowBytes(const Unit* content, int length) {
  if (length == 0 || !content)
    return CString();
  if constexpr (sizeof(Unit) == 1)
    return CString(reinterpret_cast<const char*>(content), length);
  std::string text(static_cast<std::size_t>(length), '\0');
  for (int i = 0; i < length; ++i)
    text[static_cast<std::size_t>(i)] = static_cast<char>(content[i] & 0xFF);
  return CString(std::move(text));
}

}  // namespace

// The one body of both string classes: a view of one string's fields and of
// its owner's AllocUnits/FreeUnits pair, through which every block passes.
// The public classes forward to it; only the conversions between the widths
// are their own.
template <class Unit>
struct detail::UnitBlock {
  using Traits = UnitTraits<Unit>;

  Unit*& content;
  int& capacity;
  int& length;
  BOOL& growByDouble;
  Unit* (*alloc)(int);
  void (*release)(Unit*);

  void Empty() {
    if (content)
      release(content);
    content = nullptr;
    capacity = 0;
    length = 0;
  }

  int Allocate(int n) {
    Empty();
    int size = Rounded(n < 1 ? 1 : n);
    if (size == 0)
      return 0;
    content = alloc(size);
    capacity = size;
    length = 0;
    return 1;
  }

  // Takes over a filled, terminated block. The old one goes only now, so the
  // units copied into the new one may have come from it.
  int Adopt(Unit* block, int size, int n) {
    Empty();
    content = block;
    capacity = size;
    length = n;
    return 1;
  }

  // n = -1 counts to the zero unit; n = 0, null content or a bad count give
  // 0 and leave the string as it was. The content may lie inside this string.
  int Assign(const Unit* units, int n) {
    if (n == 0 || !units || n < -1)
      return 0;
    if (n == -1)
      n = Traits::Length(units);
    int size = Rounded(n);
    if (n < 0 || size == 0)
      return 0;
    Unit* block = alloc(size);
    std::memcpy(block, units, static_cast<std::size_t>(n) * sizeof(Unit));
    block[n] = 0;
    return Adopt(block, size, n);
  }

  int ClearContent() {
    if (content) {
      content[0] = 0;
      length = 0;
    }
    return 1;
  }

  // Moves another string's block here, leaving that string with none.
  void TakeFrom(Unit*& otherContent, int& otherCapacity, int& otherLength) {
    Empty();
    content = otherContent;
    capacity = otherCapacity;
    length = otherLength;
    otherContent = nullptr;
    otherCapacity = otherLength = 0;
  }

  // A string with no block yet takes the units as Assign does, so the growth
  // policy does not shape the first block.
  int Append(const Unit* units, int n) {
    if (Traits::kAppendNothingFails && (!units || n == 0 || n < -1))
      return 0;
    if (!content)
      return Assign(units, n);
    if (n == -1)
      n = Traits::Length(units);
    if (!units)
      n = 0;  // nothing to read: only the terminator is rewritten
    return Grow(units, n);
  }

  // Appends n >= 0 units to a string that has a block.
  int Grow(const Unit* units, int n) {
    if (n < 0 || static_cast<std::int64_t>(length) + n > kMaxUnits)
      return 0;
    const std::size_t kUnit = sizeof(Unit);
    int size = GrownCapacity(length, capacity, n, growByDouble);
    if (size) {
      Unit* block = alloc(size);
      std::memcpy(block, content, static_cast<std::size_t>(length) * kUnit);
      if (n)
        std::memcpy(block + length, units, static_cast<std::size_t>(n) * kUnit);
      release(content);
      content = block;
      capacity = size;
    } else if (n) {
      std::memmove(content + length, units, static_cast<std::size_t>(n) * kUnit);
    }
    length += n;
    content[length] = 0;
    return 1;
  }
};

int GetRecommendedStringCapacity(int n) {
  if (n < 0 || n > kMaxUnits)
    return 0;
  return (n + 33) / 32 * 32;
}

// ---------------------------------------------------------------------------
// CByteString

unsigned char* CByteString::AllocUnits(int units) {
  return static_cast<unsigned char*>(::operator new(static_cast<std::size_t>(units)));
}

void CByteString::FreeUnits(unsigned char* block) { ::operator delete(static_cast<void*>(block)); }

detail::UnitBlock<unsigned char> CByteString::Block() {
  return {m_pContent, m_nCapacity, m_nLength, m_bGrowByDouble, AllocUnits, FreeUnits};
}

CByteString::CByteString() : m_pContent(nullptr), m_nCapacity(0), m_nLength(0), m_bGrowByDouble(0) {}

CByteString::CByteString(const unsigned char* content, int n) : CByteString() { Assign(content, n); }

CByteString::CByteString(const CByteString& other) : CByteString() { Assign(other.m_pContent, other.m_nLength); }

CByteString::CByteString(CByteString&& other) noexcept
    : m_pContent(other.m_pContent),
      m_nCapacity(other.m_nCapacity),
      m_nLength(other.m_nLength),
      m_bGrowByDouble(other.m_bGrowByDouble) {
  other.m_pContent = nullptr;
  other.m_nCapacity = other.m_nLength = 0;
}

CByteString::~CByteString() { Empty(); }

int CByteString::Allocate(int n) { return Block().Allocate(n); }

int CByteString::Assign(const unsigned char* content, int n) { return Block().Assign(content, n); }

int CByteString::Assign(const unsigned short* content, int n) {
  Empty();
  if (n == -1)
    n = CWordString::GetWordStringLen(content);
  if (n < 0 || (n > 0 && !content))
    return 0;
  int capacity = Rounded(n);
  if (capacity == 0)
    return 0;
  // A unit of 256 or more writes two bytes, so the block is made large
  // enough for every byte written; the recorded capacity keeps the rule.
  std::int64_t written = n;
  for (int i = 0; i < n; ++i)
    if (content[i] >= 256)
      ++written;
  std::int64_t physical = written + 1 > capacity ? written + 1 : capacity;
  if (physical > INT_MAX)
    return 0;
  m_pContent = AllocUnits(static_cast<int>(physical));
  m_nCapacity = capacity;
  unsigned char* out = m_pContent;
  for (int i = 0; i < n; ++i) {
    unsigned short unit = content[i];
    *out++ = static_cast<unsigned char>(unit & 0xFF);
    if (unit >= 256)
      *out++ = static_cast<unsigned char>(unit >> 8);
  }
  m_nLength = n;
  m_pContent[n] = 0;
  return 1;
}

int CByteString::Append(const unsigned char* content, int n) { return Block().Append(content, n); }

CByteString& CByteString::operator=(unsigned char ch) {
  Assign(&ch, 1);
  return *this;
}

CByteString& CByteString::operator=(const unsigned char* content) {
  Assign(content, -1);
  return *this;
}

CByteString& CByteString::operator=(const char* content) {
  Assign(reinterpret_cast<const unsigned char*>(content), -1);
  return *this;
}

CByteString& CByteString::operator=(const unsigned short* content) {
  Assign(content, -1);
  return *this;
}

CByteString& CByteString::operator=(const CByteString& other) {
  if (&other == this)
    return *this;
  Empty();
  Assign(other.m_pContent, other.m_nLength);
  return *this;
}

CByteString& CByteString::operator=(CByteString&& other) noexcept {
  if (&other != this)
    Block().TakeFrom(other.m_pContent, other.m_nCapacity, other.m_nLength);
  return *this;
}

CByteString& CByteString::operator+=(unsigned char ch) {
  Append(&ch, 1);
  return *this;
}

CByteString& CByteString::operator+=(const unsigned char* content) {
  Append(content, -1);
  return *this;
}

CByteString& CByteString::operator+=(const char* content) {
  Append(reinterpret_cast<const unsigned char*>(content), -1);
  return *this;
}

CByteString& CByteString::operator+=(const unsigned short* content) {
  if (!content)
    return *this;
  int n = CWordString::GetWordStringLen(content);
  unsigned char* narrowed = AllocUnits(n + 1);
  for (int i = 0; i < n; ++i)
    narrowed[i] = static_cast<unsigned char>(content[i] & 0xFF);
  narrowed[n] = 0;
  Append(narrowed, -1);
  FreeUnits(narrowed);
  return *this;
}

CByteString& CByteString::operator+=(const CByteString& other) {
  Append(other.m_pContent, other.m_nLength);
  return *this;
}

int CByteString::Compare(const unsigned char* other) const {
  if (m_nLength == 0)
    return -1;
  static const unsigned char kNothing[1] = {0};
  const unsigned char* a = m_pContent;
  const unsigned char* b = other ? other : kNothing;
  for (;; ++a, ++b) {
    if (*a != *b)
      return *a < *b ? -1 : 1;
    if (*a == 0)
      return 0;
  }
}

int CByteString::Compare(const char* other) const {
  return Compare(reinterpret_cast<const unsigned char*>(other));
}

int CByteString::Compare(const CByteString& other) const { return Compare(other.m_pContent); }

int CByteString::CompareNoCase(const unsigned char* other) const {
  if (m_nLength == 0)
    return -1;
  static const unsigned char kNothing[1] = {0};
  const unsigned char* a = m_pContent;
  const unsigned char* b = other ? other : kNothing;
  for (;; ++a, ++b) {
    int fa = Fold(*a);
    int fb = Fold(*b);
    if (fa != fb || fa == 0)
      return fa - fb;
  }
}

int CByteString::CompareNoCase(const char* other) const {
  return CompareNoCase(reinterpret_cast<const unsigned char*>(other));
}

int CByteString::CompareNoCase(const CByteString& other) const { return CompareNoCase(other.m_pContent); }

int CByteString::LoadFromFile(const char* path) {
  Empty();
  if (!path)
    return 0;
  try {
    CkolmFile file;
    if (!file.Open(path, CkolmFile::modeRead | CkolmFile::typeBinary))
      return 0;
    ULONGLONG size = file.GetLength();
    if (size >= static_cast<ULONGLONG>(kMaxUnits))
      return 0;
    int wanted = static_cast<int>(size);
    if (!Allocate(wanted + 1))
      return 0;
    UINT got = file.Read(m_pContent, static_cast<UINT>(wanted));
    m_nLength = static_cast<int>(got);
    m_pContent[m_nLength] = 0;
    file.Close();
    return 1;
  } catch (...) {
    Empty();
    return 0;
  }
}

int CByteString::SaveToFile(const char* path) const {
  if (!path)
    return 0;
  try {
    CkolmFile file;
    if (!file.Open(path, CkolmFile::modeCreate | CkolmFile::modeWrite | CkolmFile::typeBinary))
      return 0;
    if (m_pContent)
      file.Write(m_pContent, static_cast<UINT>(m_nLength));
    file.Close();
    return 1;
  } catch (...) {
    // The file object is destroyed unclosed: the target is left as it was.
    return 0;
  }
}

CString CByteString::GetString() const { return LowBytes(m_pContent, m_nLength); }

int CByteString::ClearContent() { return Block().ClearContent(); }

void CByteString::Empty() { Block().Empty(); }

// ---------------------------------------------------------------------------
// CWordString

unsigned short* CWordString::AllocUnits(int units) {
  return static_cast<unsigned short*>(::operator new(static_cast<std::size_t>(units) * 2));
}

void CWordString::FreeUnits(unsigned short* block) { ::operator delete(static_cast<void*>(block)); }

detail::UnitBlock<unsigned short> CWordString::Block() {
  return {m_pContent, m_nCapacity, m_nLength, m_bGrowByDouble, AllocUnits, FreeUnits};
}

CWordString::CWordString() : m_pContent(nullptr), m_nCapacity(0), m_nLength(0), m_bGrowByDouble(0) {}

CWordString::CWordString(const unsigned short* content, int n) : CWordString() { Assign(content, n); }

CWordString::CWordString(const CWordString& other) : CWordString() { Assign(other.m_pContent, other.m_nLength); }

CWordString::CWordString(CWordString&& other) noexcept
    : m_pContent(other.m_pContent),
      m_nCapacity(other.m_nCapacity),
      m_nLength(other.m_nLength),
      m_bGrowByDouble(other.m_bGrowByDouble) {
  other.m_pContent = nullptr;
  other.m_nCapacity = other.m_nLength = 0;
}

CWordString::~CWordString() { Empty(); }

int CWordString::GetWordStringLen(const unsigned short* content) {
  if (!content)
    return 0;
  int n = 0;
  while (content[n] != 0 && n < kMaxUnits)
    ++n;
  return n;
}

int CWordString::Allocate(int n) { return Block().Allocate(n); }

int CWordString::Assign(const unsigned short* content, int n) { return Block().Assign(content, n); }

int CWordString::Assign(const unsigned char* content, int n) {
  if (n == 0 || !content || n < -1)
    return 0;
  if (n == -1)
    n = ByteLength(content);
  int capacity = Rounded(n);
  if (n < 0 || capacity == 0)
    return 0;
  unsigned short* block = AllocUnits(capacity);
  for (int i = 0; i < n; ++i)
    block[i] = content[i];
  block[n] = 0;
  return Block().Adopt(block, capacity, n);
}

int CWordString::Append(const unsigned short* content, int n) { return Block().Append(content, n); }

CWordString& CWordString::operator=(unsigned short ch) {
  Assign(&ch, 1);
  return *this;
}

CWordString& CWordString::operator=(const unsigned short* content) {
  Assign(content, -1);
  return *this;
}

CWordString& CWordString::operator=(const unsigned char* content) {
  WithWidened(content, AllocUnits, FreeUnits, [this](const unsigned short* widened) { Assign(widened, -1); });
  return *this;
}

CWordString& CWordString::operator=(const char* content) {
  return operator=(reinterpret_cast<const unsigned char*>(content));
}

CWordString& CWordString::operator=(const CWordString& other) {
  if (&other == this)
    return *this;
  Empty();
  Assign(other.m_pContent, other.m_nLength);
  return *this;
}

CWordString& CWordString::operator=(CWordString&& other) noexcept {
  if (&other != this)
    Block().TakeFrom(other.m_pContent, other.m_nCapacity, other.m_nLength);
  return *this;
}

CWordString& CWordString::operator+=(unsigned short ch) {
  Append(&ch, 1);
  return *this;
}

CWordString& CWordString::operator+=(const unsigned short* content) {
  Append(content, -1);
  return *this;
}

CWordString& CWordString::operator+=(const unsigned char* content) {
  WithWidened(content, AllocUnits, FreeUnits, [this](const unsigned short* widened) { Append(widened, -1); });
  return *this;
}

CWordString& CWordString::operator+=(const char* content) {
  return operator+=(reinterpret_cast<const unsigned char*>(content));
}

CWordString& CWordString::operator+=(const CWordString& other) {
  Append(other.m_pContent, other.m_nLength);
  return *this;
}

CString CWordString::GetString() const { return LowBytes(m_pContent, m_nLength); }

int CWordString::ClearContent() { return Block().ClearContent(); }

void CWordString::Empty() { Block().Empty(); }

}  // namespace telvanix
