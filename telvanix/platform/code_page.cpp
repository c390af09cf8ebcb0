#include "telvanix/platform/code_page.h"

#include <iconv.h>
#include <strings.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

namespace telvanix {

namespace {

// Charset labels as pages write them, with the code page each is read in.
// Like browsers, the Latin-1 and ASCII labels read as 1252 (a superset), and
// the UTF-16 labels of a META (which bytes cannot carry) as UTF-8.
struct CharsetLabel {
  const char* label;
  UINT codePage;
};
constexpr CharsetLabel kCharsetLabels[] = {
    {"utf-8", 65001},          {"utf8", 65001},           {"unicode-1-1-utf-8", 65001},
    {"utf-16", 65001},         {"utf-16le", 65001},       {"utf-16be", 65001},
    {"us-ascii", 1252},        {"ascii", 1252},           {"iso-8859-1", 1252},
    {"iso8859-1", 1252},       {"iso_8859-1", 1252},      {"latin1", 1252},
    {"l1", 1252},              {"cp819", 1252},           {"ibm819", 1252},
    {"iso-8859-9", 1254},      {"latin5", 1254},          {"iso-8859-11", 874},
    {"tis-620", 874},          {"iso-8859-2", 28592},     {"latin2", 28592},
    {"iso-8859-3", 28593},     {"iso-8859-4", 28594},     {"iso-8859-5", 28595},
    {"iso-8859-6", 28596},     {"iso-8859-7", 28597},     {"iso-8859-8", 28598},
    {"iso-8859-8-i", 28598},   {"iso-8859-10", 28600},    {"iso-8859-13", 28603},
    {"iso-8859-14", 28604},    {"iso-8859-15", 28605},    {"latin9", 28605},
    {"iso-8859-16", 28606},    {"koi8-r", 20866},         {"koi8-u", 21866},
    {"shift_jis", 932},        {"shift-jis", 932},        {"sjis", 932},
    {"ms_kanji", 932},         {"x-sjis", 932},           {"windows-31j", 932},
    {"csshiftjis", 932},       {"euc-jp", 51932},         {"iso-2022-jp", 50220},
    {"gb2312", 936},           {"gbk", 936},              {"x-gbk", 936},
    {"gb_2312-80", 936},       {"csgb2312", 936},         {"chinese", 936},
    {"gb18030", 54936},        {"big5", 950},             {"big5-hkscs", 950},
    {"cn-big5", 950},          {"x-x-big5", 950},         {"euc-kr", 949},
    {"ks_c_5601-1987", 949},   {"korean", 949},           {"macintosh", 10000},
    {"x-mac-roman", 10000},    {"ibm866", 866},
};

// Converter names for the code pages whose name is not "CP" and the number.
struct ConverterName {
  UINT codePage;
  const char* name;
};
constexpr ConverterName kConverterNames[] = {
    {28592, "ISO-8859-2"},  {28593, "ISO-8859-3"},  {28594, "ISO-8859-4"},  {28595, "ISO-8859-5"},
    {28596, "ISO-8859-6"},  {28597, "ISO-8859-7"},  {28598, "ISO-8859-8"},  {28600, "ISO-8859-10"},
    {28603, "ISO-8859-13"}, {28604, "ISO-8859-14"}, {28605, "ISO-8859-15"}, {28606, "ISO-8859-16"},
    {20866, "KOI8-R"},      {21866, "KOI8-U"},      {51932, "EUC-JP"},      {50220, "ISO-2022-JP"},
    {54936, "GB18030"},     {10000, "MACINTOSH"},   {20127, "ASCII"},
};

std::string ConverterNameOf(UINT codePage) {
  for (const ConverterName& c : kConverterNames)
    if (c.codePage == codePage)
      return c.name;
  return "CP" + std::to_string(codePage);
}

// The system converters know the code page (asked once per code page; the
// answer does not change while the process runs).
bool ConverterExists(UINT codePage) {
  static std::mutex s_lock;
  static std::string s_known, s_unknown;  // ",932,936," style lists
  const std::string key = "," + std::to_string(codePage) + ",";
  std::lock_guard<std::mutex> guard(s_lock);
  if (s_known.find(key) != std::string::npos)
    return true;
  if (s_unknown.find(key) != std::string::npos)
    return false;
  iconv_t cd = ::iconv_open("UTF-8", ConverterNameOf(codePage).c_str());
  const bool ok = cd != reinterpret_cast<iconv_t>(-1);
  if (ok)
    ::iconv_close(cd);
  (ok ? s_known : s_unknown) += key;
  return ok;
}

UINT ParseCodePageNumber(const char* text) {
  if (::strncasecmp(text, "windows-", 8) == 0)
    text += 8;
  else if (::strncasecmp(text, "x-cp", 4) == 0)
    text += 4;
  else if (::strncasecmp(text, "cp", 2) == 0)
    text += 2;
  if (*text < '0' || *text > '9')
    return 0;
  char* end = nullptr;
  unsigned long value = std::strtoul(text, &end, 10);
  if (*end != '\0' || value == 0 || value > 65535)
    return 0;
  return static_cast<UINT>(value);
}

// What TELVANIX_CODEPAGE asks for: 0 when unset, -1 when it names nothing valid.
long EnvironmentRequest() {
  static const long s_request = [] {
    const char* text = std::getenv("TELVANIX_CODEPAGE");
    if (!text || !*text)
      return 0L;
    UINT cp = CodePageFromName(text);
    return cp ? static_cast<long>(cp) : -1L;
  }();
  return s_request;
}

// Read once: the environment is not consulted again after the first query.
UINT EnvironmentCodePage() {
  const long request = EnvironmentRequest();
  return request > 0 ? static_cast<UINT>(request) : kDefaultCodePage;
}

std::atomic<UINT> g_activeCodePage{0};  // 0: not set by the host

constexpr char32_t kReplacement = 0xFFFD;

// Unicode of 0x80-0x9F in 1252; 0 marks the five unassigned bytes.
constexpr char16_t kCp1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// Decodes one UTF-8 character at p (p < end); invalid or overlong sequences
// give U+FFFD and consume one byte.
char32_t NextUtf8(const unsigned char*& p, const unsigned char* end) {
  const unsigned char c = *p++;
  if (c < 0x80)
    return c;
  int extra;
  char32_t ch;
  char32_t min;
  if (c >= 0xC2 && c <= 0xDF) {
    extra = 1, ch = c & 0x1F, min = 0x80;
  } else if (c >= 0xE0 && c <= 0xEF) {
    extra = 2, ch = c & 0x0F, min = 0x800;
  } else if (c >= 0xF0 && c <= 0xF4) {
    extra = 3, ch = c & 0x07, min = 0x10000;
  } else {
    return kReplacement;
  }
  if (end - p < extra)
    return kReplacement;
  for (int i = 0; i < extra; ++i) {
    if ((p[i] & 0xC0) != 0x80)
      return kReplacement;
    ch = (ch << 6) | (p[i] & 0x3F);
  }
  if (ch < min || ch > 0x10FFFF || (ch >= 0xD800 && ch <= 0xDFFF))
    return kReplacement;
  p += extra;
  return ch;
}

void AppendUtf8Checked(std::string& out, const unsigned char* p, std::size_t n) {
  const unsigned char* end = p + n;
  while (p < end) {
    const unsigned char* run = p;
    while (p < end && *p < 0x80)
      ++p;
    out.append(reinterpret_cast<const char*>(run), static_cast<std::size_t>(p - run));
    if (p < end)
      AppendUtf8(out, NextUtf8(p, end));
  }
}

// One open converter per thread and direction, kept while the code page
// stays the same: pages are converted token by token.
class CConverterCache {
 public:
  ~CConverterCache() { Close(); }
  iconv_t Get(UINT codePage, bool toUtf8) {
    if (m_cd != Invalid() && m_nCodePage == codePage && m_bToUtf8 == toUtf8) {
      ::iconv(m_cd, nullptr, nullptr, nullptr, nullptr);  // back to the initial state
      return m_cd;
    }
    Close();
    const std::string name = ConverterNameOf(codePage);
    m_cd = toUtf8 ? ::iconv_open("UTF-8", name.c_str()) : ::iconv_open(name.c_str(), "UTF-8");
    m_nCodePage = codePage;
    m_bToUtf8 = toUtf8;
    return m_cd;
  }
  static iconv_t Invalid() { return reinterpret_cast<iconv_t>(-1); }

 private:
  void Close() {
    if (m_cd != Invalid())
      ::iconv_close(m_cd);
    m_cd = Invalid();
  }
  iconv_t m_cd = Invalid();
  UINT m_nCodePage = 0;
  bool m_bToUtf8 = true;
};

thread_local CConverterCache t_converters;

// Runs the converter over [in, in + n), calling onStuck for every input
// position it cannot convert; onStuck says how many input bytes to skip.
template <typename OnStuck>
void RunConverter(iconv_t cd, const char* in, std::size_t n, std::string& out, OnStuck onStuck) {
  char buffer[1024];
  char* src = const_cast<char*>(in);
  std::size_t left = n;
  while (left > 0) {
    char* dst = buffer;
    std::size_t room = sizeof buffer;
    const std::size_t rc = ::iconv(cd, &src, &left, &dst, &room);
    out.append(buffer, static_cast<std::size_t>(dst - buffer));
    if (rc != static_cast<std::size_t>(-1) || errno == E2BIG)
      continue;
    // EILSEQ or EINVAL (a sequence cut short at the end): skip what cannot go.
    const std::size_t skip = onStuck(src, left);
    src += skip;
    left -= skip;
  }
  char* dst = buffer;
  std::size_t room = sizeof buffer;
  ::iconv(cd, nullptr, nullptr, &dst, &room);  // the shift back of stateful encodings
  out.append(buffer, static_cast<std::size_t>(dst - buffer));
}

}  // namespace

UINT CodePageFromName(const char* name) {
  if (!name)
    return 0;
  while (*name == ' ' || *name == '\t')
    ++name;
  std::string label(name);
  while (!label.empty() && (label.back() == ' ' || label.back() == '\t'))
    label.pop_back();
  if (label.empty())
    return 0;
  for (const CharsetLabel& l : kCharsetLabels)
    if (::strcasecmp(l.label, label.c_str()) == 0)
      return l.codePage;
  const UINT cp = ParseCodePageNumber(label.c_str());
  return cp && IsValidCodePage(cp) ? cp : 0;
}

BOOL IsValidCodePage(UINT codePage) {
  if (codePage == CP_UTF8 || codePage == kDefaultCodePage)
    return TRUE;
  if (codePage == CP_ACP)
    return FALSE;
  return ConverterExists(codePage) ? TRUE : FALSE;
}

const char* GetCodePageEnvironmentError() {
  static const std::string s_error = [] {
    if (EnvironmentRequest() >= 0)
      return std::string();
    return "unknown code page '" + std::string(std::getenv("TELVANIX_CODEPAGE")) + "' in TELVANIX_CODEPAGE";
  }();
  return s_error.empty() ? nullptr : s_error.c_str();
}

UINT GetActiveCodePage() {
  UINT cp = g_activeCodePage.load(std::memory_order_relaxed);
  return cp ? cp : EnvironmentCodePage();
}

UINT SetActiveCodePage(UINT codePage) {
  UINT previous = GetActiveCodePage();
  g_activeCodePage.store(codePage, std::memory_order_relaxed);
  return previous;
}

void AppendUtf8(std::string& out, char32_t ch) {
  if (ch > 0x10FFFF || (ch >= 0xD800 && ch <= 0xDFFF))
    ch = kReplacement;
  if (ch < 0x80) {
    out += static_cast<char>(ch);
  } else if (ch < 0x800) {
    out += static_cast<char>(0xC0 | (ch >> 6));
    out += static_cast<char>(0x80 | (ch & 0x3F));
  } else if (ch < 0x10000) {
    out += static_cast<char>(0xE0 | (ch >> 12));
    out += static_cast<char>(0x80 | ((ch >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (ch & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (ch >> 18));
    out += static_cast<char>(0x80 | ((ch >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((ch >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (ch & 0x3F));
  }
}

bool IsValidUtf8(const char* text, std::size_t length) {
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* end = p + length;
  while (p < end) {
    const unsigned char* at = p;
    // A bad sequence decodes to U+FFFD over one byte; the character itself
    // takes three.
    if (NextUtf8(p, end) == kReplacement && p - at != 3)
      return false;
  }
  return true;
}

char32_t Cp1252ToUnicode(BYTE ch) {
  if (ch >= 0x80 && ch <= 0x9F && kCp1252High[ch - 0x80])
    return kCp1252High[ch - 0x80];
  return ch;
}

bool CodePageToUtf8(UINT codePage, const char* bytes, std::size_t length, std::string& utf8) {
  if (codePage == CP_ACP)
    codePage = GetActiveCodePage();
  if (!bytes && length)
    return false;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes);
  if (codePage == CP_UTF8) {
    AppendUtf8Checked(utf8, p, length);
    return true;
  }
  if (codePage == kDefaultCodePage) {
    for (std::size_t i = 0; i < length; ++i)
      AppendUtf8(utf8, Cp1252ToUnicode(p[i]));
    return true;
  }
  // The converter cache answers for validity: no lock on every piece of text.
  iconv_t cd = t_converters.Get(codePage, true);
  if (cd == CConverterCache::Invalid())
    return false;
  RunConverter(cd, bytes, length, utf8, [&utf8](const char*, std::size_t) {
    AppendUtf8(utf8, kReplacement);
    return std::size_t{1};
  });
  return true;
}

bool Utf8ToCodePage(UINT codePage, const char* utf8, std::size_t length, std::string& bytes,
                    UnmappableCharHandler unmappable) {
  if (codePage == CP_ACP)
    codePage = GetActiveCodePage();
  if (!utf8 && length)
    return false;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(utf8);
  const unsigned char* end = p + length;
  auto replace = [&bytes, unmappable](char32_t ch) {
    if (unmappable)
      unmappable(ch, bytes);
    else
      bytes += '?';
  };
  if (codePage == CP_UTF8) {
    AppendUtf8Checked(bytes, p, length);
    return true;
  }
  if (codePage == kDefaultCodePage) {
    while (p < end) {
      const char32_t ch = NextUtf8(p, end);
      if (ch < 0x80 || (ch >= 0xA0 && ch <= 0xFF) || ch == 0x81 || ch == 0x8D || ch == 0x8F || ch == 0x90 ||
          ch == 0x9D) {
        bytes += static_cast<char>(ch);
        continue;
      }
      int byte = -1;
      for (int i = 0; i < 32 && byte < 0; ++i)
        if (kCp1252High[i] == ch)
          byte = 0x80 + i;
      if (byte >= 0)
        bytes += static_cast<char>(byte);
      else
        replace(ch);
    }
    return true;
  }
  iconv_t cd = t_converters.Get(codePage, false);
  if (cd == CConverterCache::Invalid())
    return false;
  // Clean the input first, so that the converter only stops at characters
  // the code page lacks, each of which is then one whole UTF-8 sequence.
  std::string clean;
  AppendUtf8Checked(clean, p, length);
  RunConverter(cd, clean.data(), clean.size(), bytes, [&replace](const char* at, std::size_t left) {
    const unsigned char* q = reinterpret_cast<const unsigned char*>(at);
    replace(NextUtf8(q, q + left));
    return static_cast<std::size_t>(q - reinterpret_cast<const unsigned char*>(at));
  });
  return true;
}

BOOL IsDBCSCodePage(UINT codePage) {
  switch (codePage) {
    case 932:
    case 936:
    case 949:
    case 950:
      return TRUE;
    default:
      return FALSE;
  }
}

BOOL IsDBCSLeadByteEx(UINT codePage, BYTE ch) {
  if (codePage == CP_ACP)
    codePage = GetActiveCodePage();
  switch (codePage) {
    case 932:  // Shift-JIS: 0x81-0x9F and 0xE0-0xFC
      return ((ch >= 0x81 && ch <= 0x9F) || (ch >= 0xE0 && ch <= 0xFC)) ? TRUE : FALSE;
    case 936:  // GBK
    case 949:  // Unified Hangul Code
    case 950:  // Big5
      return (ch >= 0x81 && ch <= 0xFE) ? TRUE : FALSE;
    default:
      return FALSE;
  }
}

BOOL IsDBCSLeadByte(BYTE ch) { return IsDBCSLeadByteEx(GetActiveCodePage(), ch); }

}  // namespace telvanix
