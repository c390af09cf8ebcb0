// Character-entity conversion of CHtmlPack: raw HTML text to 16-bit text and
// back, through the named-reference table in char_entity_table.cpp.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "telvanix/html/internal/char_entity_index.h"
#include "telvanix/html/html_pack.h"

namespace telvanix {

namespace {

constexpr int kMaxReferenceChars = 31;
// Longest encoded form of one unit: "&" + six-letter name + ";".
constexpr int kMaxEncodedUnit = 8;
constexpr int kStackUnits = 1024;

inline bool IsAsciiLetter(unsigned char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
inline bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }

// Code of the named reference [p, end), or -1.
int LookupName(const unsigned char* p, const unsigned char* end) {
  const DWORD hash = charentity::HashName(p, end);
  const TagHtmlCharEntity* table = CHtmlPack::ms_tTagHtmlCharTable;
  int lo = 0;
  int hi = CHtmlPack::ms_nHtmlCharTableSize - 1;
  while (lo <= hi) {
    const int mid = lo + (hi - lo) / 2;
    if (table[mid].hash == hash) {
      const size_t n = static_cast<size_t>(end - p);
      const char* name = table[mid].name;
      if (std::strncmp(name, reinterpret_cast<const char*>(p), n) == 0 && name[n] == 0 && table[mid].code != 0)
        return table[mid].code;
      return -1;
    }
    if (table[mid].hash < hash) lo = mid + 1;
    else hi = mid - 1;
  }
  return -1;
}

int HexValue(unsigned char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Value of the numeric reference text [p, end): "x" first reads hexadecimal
// as "%x" reads "0" + text; anything else reads as decimal up to the first
// non-digit, so "X41" and "" give 0. Values wrap at 32 bits.
DWORD NumericValue(const unsigned char* p, const unsigned char* end) {
  DWORD value = 0;
  if (p < end && *p == 'x') {
    for (++p; p < end && HexValue(*p) >= 0; ++p) value = value * 16u + static_cast<DWORD>(HexValue(*p));
  } else {
    for (; p < end && IsDigit(*p); ++p) value = value * 10u + static_cast<DWORD>(*p - '0');
  }
  return value;
}

// Decodes [p, end) into dst (room for end - p units); gives the unit count.
int DecodeUnits(const unsigned char* p, const unsigned char* end, unsigned short* dst, bool mark) {
  unsigned short* const start = dst;
  while (p < end) {
    const unsigned char* amp = static_cast<const unsigned char*>(std::memchr(p, '&', static_cast<size_t>(end - p)));
    const unsigned char* plainEnd = amp ? amp : end;
    while (p < plainEnd) *dst++ = *p++;
    if (!amp) break;

    const unsigned char* run = p + 1;
    const unsigned char* runEnd = run;
    DWORD value = 0;
    bool isReference = false;
    if (run < end && *run == '#') {
      run = runEnd = p + 2;
      while (runEnd < end && runEnd - run <= kMaxReferenceChars && (IsDigit(*runEnd) || IsAsciiLetter(*runEnd)))
        ++runEnd;
      if (runEnd - run <= kMaxReferenceChars) {
        value = NumericValue(run, runEnd);
        isReference = true;
      }
    } else if (run < end && IsAsciiLetter(*run)) {
      while (runEnd < end && runEnd - run <= kMaxReferenceChars && IsAsciiLetter(*runEnd)) ++runEnd;
      if (runEnd - run <= kMaxReferenceChars) {
        const int code = LookupName(run, runEnd);
        if (code > 0) {
          value = static_cast<DWORD>(code);
          isReference = true;
        }
      }
    }
    if (!isReference) {
      *dst++ = '&';
      ++p;
      continue;
    }
    if (runEnd < end && *runEnd == ';') ++runEnd;
    unsigned short unit = static_cast<unsigned short>(value);
    if (mark && value < 256) unit = static_cast<unsigned short>(unit | 0xFF00);
    *dst++ = unit;
    p = runEnd;
  }
  return static_cast<int>(dst - start);
}

// Units to bytes: a unit of 255 or more is decided by the unit after it,
// which names the Windows-1252 punctuation byte to write.
int NarrowUnits(const unsigned short* units, int n, unsigned char* dst) {
  for (int i = 0; i < n; ++i) {
    const unsigned short u = units[i];
    unsigned char b = static_cast<unsigned char>(u & 0xFF);
    if (u >= 255 && i + 1 < n) {
      switch (units[i + 1]) {
        case 8364: b = 128; break;
        case 402: b = 131; break;
        case 381: b = 142; break;
        case 382: b = 158; break;
        case 376: b = 159; break;
        default: break;
      }
    }
    dst[i] = b;
  }
  return n;
}

// Writes the encoded form of one unit to dst (when not null); gives its size.
inline int EncodeUnit(unsigned u, unsigned char* dst) {
  if (u < 32) {
    if (u == '\t' || u == '\n' || u == '\r') {
      if (dst) *dst = static_cast<unsigned char>(u);
      return 1;
    }
    return 0;
  }
  if (u < 128) {
    const char* ref = nullptr;
    int size = 0;
    switch (u) {
      case '"': ref = "&quot;"; size = 6; break;
      case '&': ref = "&amp;"; size = 5; break;
      case '<': ref = "&lt;"; size = 4; break;
      case '>': ref = "&gt;"; size = 4; break;
      default:
        if (dst) *dst = static_cast<unsigned char>(u);
        return 1;
    }
    if (dst) std::memcpy(dst, ref, static_cast<size_t>(size));
    return size;
  }
  if (u > 0xFF00) {
    const unsigned low = u & 0xFF;
    const char* name = low >= 160 ? charentity::kNameByCode[low] : nullptr;
    char buffer[kMaxEncodedUnit + 4];
    int size;
    if (name) {
      const size_t n = std::strlen(name);
      buffer[0] = '&';
      std::memcpy(buffer + 1, name, n);
      buffer[n + 1] = ';';
      size = static_cast<int>(n) + 2;
    } else {
      // "&#%d;" of a byte value
      size = 0;
      buffer[size++] = '&';
      buffer[size++] = '#';
      if (low >= 100) buffer[size++] = static_cast<char>('0' + low / 100);
      if (low >= 10) buffer[size++] = static_cast<char>('0' + low / 10 % 10);
      buffer[size++] = static_cast<char>('0' + low % 10);
      buffer[size++] = ';';
    }
    if (dst) std::memcpy(dst, buffer, static_cast<size_t>(size));
    return size;
  }
  if (dst) *dst = static_cast<unsigned char>(u & 0xFF);
  return 1;
}

template <typename Unit>
int EncodeAppend(CByteString& out, const Unit* text, int length) {
  size_t size = 0;
  for (int i = 0; i < length; ++i) size += static_cast<size_t>(EncodeUnit(text[i], nullptr));
  if (size == 0) return 1;
  std::unique_ptr<unsigned char[]> buffer(new unsigned char[size]);
  unsigned char* dst = buffer.get();
  for (int i = 0; i < length; ++i) dst += EncodeUnit(text[i], dst);
  out.Append(buffer.get(), static_cast<int>(size));
  return 1;
}

// Scratch space for a conversion: on the stack when small.
template <typename T>
class Scratch {
 public:
  explicit Scratch(int count) : m_p(m_local) {
    if (count > kStackUnits) {
      m_heap.reset(new T[static_cast<size_t>(count)]);
      m_p = m_heap.get();
    }
  }
  T* get() { return m_p; }

 private:
  T m_local[kStackUnits];
  std::unique_ptr<T[]> m_heap;
  T* m_p;
};

// Length of the input, or -1 when it is not usable.
int InputLength(const unsigned char* text, int length) {
  if (!text || length < -1) return -1;
  return length == -1 ? static_cast<int>(std::strlen(reinterpret_cast<const char*>(text))) : length;
}

// The Unicode decoding, below the byte forms.
void DecodeToUtf8(std::string& out, const unsigned char* p, const unsigned char* end, UINT codePage);

}  // namespace

int CHtmlPack::InitializeHtmlCharTable() { return 1; }

int CHtmlPack::HtmlToText(CWordString& out, const unsigned char* text, int length, int mark) {
  const int n = InputLength(text, length);
  if (n < 0) return 0;
  Scratch<unsigned short> units(n);
  const int count = DecodeUnits(text, text + n, units.get(), mark == 1);
  if (count == 0) out.ClearContent();
  else out.Assign(units.get(), count);
  return 1;
}

int CHtmlPack::HtmlToText(CByteString& out, const unsigned char* text, int length) {
  const int n = InputLength(text, length);
  if (n < 0) return 0;
  if (GetActiveCodePage() == CP_UTF8) {
    // The page's bytes are UTF-8 already; a reference becomes its UTF-8 bytes.
    std::string utf8;
    DecodeToUtf8(utf8, text, text + n, 0);
    out.Assign(reinterpret_cast<const unsigned char*>(utf8.data()), static_cast<int>(utf8.size()));
    return 1;
  }
  Scratch<unsigned short> units(n);
  const int count = DecodeUnits(text, text + n, units.get(), false);
  if (count == 0) {
    out.ClearContent();
    return 1;
  }
  Scratch<unsigned char> bytes(count);
  NarrowUnits(units.get(), count, bytes.get());
  out.Assign(bytes.get(), count);
  return 1;
}

CString CHtmlPack::HtmlToText(const char* text) {
  CByteString bytes;
  if (!text || !HtmlToText(bytes, reinterpret_cast<const unsigned char*>(text), -1) || bytes.IsEmpty())
    return CString();
  return CString(static_cast<const char*>(bytes), bytes.GetLength());
}

int CHtmlPack::TextToHtml(CByteString& out, const unsigned short* text, int length) {
  if (!text) return 0;
  if (length == -1) length = CWordString::GetWordStringLen(text);
  if (length < 1) return 1;
  return EncodeAppend(out, text, length);
}

int CHtmlPack::TextToHtml(CByteString& out, const unsigned char* text, int length) {
  if (!text) return 0;
  if (length == -1) length = static_cast<int>(std::strlen(reinterpret_cast<const char*>(text)));
  if (length < 1) return 1;
  return EncodeAppend(out, text, length);
}

CString CHtmlPack::TextToHtml(const char* text) {
  CByteString bytes;
  if (!text || !TextToHtml(bytes, reinterpret_cast<const unsigned char*>(text), -1) || bytes.IsEmpty())
    return CString();
  return CString(static_cast<const char*>(bytes), bytes.GetLength());
}

namespace {

inline bool IsAsciiAlnum(unsigned char c) { return IsAsciiLetter(c) || IsDigit(c); }

// A reference's character as a browser shows it: the punctuation rows and
// numeric references in 128-159 are Windows-1252 bytes; zero, surrogates and
// values past Unicode are U+FFFD.
char32_t ReferenceCharacter(DWORD value) {
  if (value >= 0x80 && value <= 0x9F) return Cp1252ToUnicode(static_cast<BYTE>(value));
  if (value == 0 || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return 0xFFFD;
  return value;
}

// Reads the reference at p ("&..."); gives its end, or null when the "&" starts none.
const unsigned char* ReadUnicodeReference(const unsigned char* p, const unsigned char* end, char32_t& ch) {
  const unsigned char* run = p + 1;
  const unsigned char* runEnd = run;
  if (run < end && *run == '#') {
    run = runEnd = p + 2;
    const bool hex = runEnd < end && (*runEnd == 'x' || *runEnd == 'X');
    if (hex) ++runEnd;
    DWORD value = 0;
    const unsigned char* digits = runEnd;
    for (; runEnd < end && (hex ? HexValue(*runEnd) >= 0 : IsDigit(*runEnd)); ++runEnd)
      value = value > 0x10FFFF ? value : value * (hex ? 16u : 10u) + static_cast<DWORD>(HexValue(*runEnd));
    if (runEnd == digits) return nullptr;
    ch = ReferenceCharacter(value);
  } else if (run < end && IsAsciiLetter(*run)) {
    while (runEnd < end && runEnd - run <= kMaxReferenceChars && IsAsciiAlnum(*runEnd)) ++runEnd;
    const int code = runEnd - run <= kMaxReferenceChars ? LookupName(run, runEnd) : -1;
    if (code <= 0) return nullptr;
    ch = ReferenceCharacter(static_cast<DWORD>(code));
  } else {
    return nullptr;
  }
  return runEnd < end && *runEnd == ';' ? runEnd + 1 : runEnd;
}

// Decodes [p, end) to UTF-8: references to their Unicode characters, the
// bytes between them converted from codePage, or, with codePage 0, copied
// as they are.
void DecodeToUtf8(std::string& out, const unsigned char* p, const unsigned char* const end, UINT codePage) {
  while (p < end) {
    const unsigned char* amp = static_cast<const unsigned char*>(std::memchr(p, '&', static_cast<size_t>(end - p)));
    const unsigned char* plainEnd = amp ? amp : end;
    if (codePage)
      CodePageToUtf8(codePage, reinterpret_cast<const char*>(p), static_cast<size_t>(plainEnd - p), out);
    else
      out.append(reinterpret_cast<const char*>(p), static_cast<size_t>(plainEnd - p));
    p = plainEnd;
    if (!amp) break;
    char32_t ch = 0;
    if (const unsigned char* next = ReadUnicodeReference(p, end, ch)) {
      AppendUtf8(out, ch);
      p = next;
    } else {
      out += '&';
      ++p;
    }
  }
}

}  // namespace

int CHtmlPack::HtmlToUtf8(std::string& out, const unsigned char* text, int length, UINT codePage) {
  if (!text) return 0;
  length = InputLength(text, length);
  if (length < 0) return 0;
  if (codePage == CP_ACP) codePage = GetActiveCodePage();
  if (!IsValidCodePage(codePage)) return 0;
  const std::size_t start = out.size();
  DecodeToUtf8(out, text, text + length, codePage);
  // A byte order mark is no character of the text.
  for (std::size_t at; (at = out.find("\xEF\xBB\xBF", start)) != std::string::npos;) out.erase(at, 3);
  return 1;
}

}  // namespace telvanix
