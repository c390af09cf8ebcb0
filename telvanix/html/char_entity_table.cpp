// The named character references. Codes are Windows-1252 byte values; the
// punctuation rows (130 to 159) and the extra names "helip", "ldots",
// "lsquor", "rsquor", "ldquor", "rdquor", "endash" and "emdash" are
// accepted on purpose beside the standard ones. The rows are hashed and
// sorted by hash when the library is compiled.
#include <algorithm>
#include <array>

#include "telvanix/html/internal/char_entity_index.h"
#include "telvanix/html/html_pack.h"

namespace telvanix {

namespace {

constexpr int kRows = CHtmlPack::ms_nHtmlCharTableSize;

constexpr std::array<TagHtmlCharEntity, kRows> kStored = {{
    {"lt", 0, 60}, {"gt", 0, 62}, {"amp", 0, 38}, {"quot", 0, 34}, {"lsquor", 0, 130},
    {"fnof", 0, 131}, {"ldquor", 0, 132}, {"helip", 0, 133}, {"ldots", 0, 133}, {"dagger", 0, 134},
    {"Dagger", 0, 135}, {"permil", 0, 137}, {"Scaron", 0, 138}, {"lsaquo", 0, 139},
    {"OElig", 0, 140}, {"lsquo", 0, 145}, {"rsquor", 0, 145}, {"rsquo", 0, 146}, {"ldquo", 0, 147},
    {"rdquor", 0, 147}, {"rdquo", 0, 148}, {"bull", 0, 149}, {"ndash", 0, 150}, {"endash", 0, 150},
    {"mdash", 0, 151}, {"emdash", 0, 151}, {"tilde", 0, 152}, {"trade", 0, 153}, {"scaron", 0, 154},
    {"rsaquo", 0, 155}, {"oelig", 0, 156}, {"Yuml", 0, 159}, {"nbsp", 0, 160}, {"iexcl", 0, 161},
    {"cent", 0, 162}, {"pound", 0, 163}, {"curren", 0, 164}, {"yen", 0, 165}, {"brvbar", 0, 166},
    {"sect", 0, 167}, {"uml", 0, 168}, {"copy", 0, 169}, {"ordf", 0, 170}, {"laquo", 0, 171},
    {"not", 0, 172}, {"shy", 0, 173}, {"reg", 0, 174}, {"macr", 0, 175}, {"deg", 0, 176},
    {"plusmn", 0, 177}, {"sup2", 0, 178}, {"sup3", 0, 179}, {"acute", 0, 180}, {"micro", 0, 181},
    {"para", 0, 182}, {"middot", 0, 183}, {"cedil", 0, 184}, {"sup1", 0, 185}, {"ordm", 0, 186},
    {"raquo", 0, 187}, {"frac14", 0, 188}, {"frac12", 0, 189}, {"frac34", 0, 190},
    {"iquest", 0, 191}, {"Agrave", 0, 192}, {"Aacute", 0, 193}, {"Acirc", 0, 194},
    {"Atilde", 0, 195}, {"Auml", 0, 196}, {"Aring", 0, 197}, {"AElig", 0, 198}, {"Ccedil", 0, 199},
    {"Egrave", 0, 200}, {"Eacute", 0, 201}, {"Ecirc", 0, 202}, {"Euml", 0, 203}, {"Igrave", 0, 204},
    {"Iacute", 0, 205}, {"Icirc", 0, 206}, {"Iuml", 0, 207}, {"ETH", 0, 208}, {"Ntilde", 0, 209},
    {"Ograve", 0, 210}, {"Oacute", 0, 211}, {"Ocirc", 0, 212}, {"Otilde", 0, 213}, {"Ouml", 0, 214},
    {"times", 0, 215}, {"Oslash", 0, 216}, {"Ugrave", 0, 217}, {"Uacute", 0, 218},
    {"Ucirc", 0, 219}, {"Uuml", 0, 220}, {"Yacute", 0, 221}, {"THORN", 0, 222}, {"szlig", 0, 223},
    {"agrave", 0, 224}, {"aacute", 0, 225}, {"acirc", 0, 226}, {"atilde", 0, 227}, {"auml", 0, 228},
    {"aring", 0, 229}, {"aelig", 0, 230}, {"ccedil", 0, 231}, {"egrave", 0, 232},
    {"eacute", 0, 233}, {"ecirc", 0, 234}, {"euml", 0, 235}, {"igrave", 0, 236}, {"iacute", 0, 237},
    {"icirc", 0, 238}, {"iuml", 0, 239}, {"eth", 0, 240}, {"ntilde", 0, 241}, {"ograve", 0, 242},
    {"oacute", 0, 243}, {"ocirc", 0, 244}, {"otilde", 0, 245}, {"ouml", 0, 246}, {"divide", 0, 247},
    {"oslash", 0, 248}, {"ugrave", 0, 249}, {"uacute", 0, 250}, {"ucirc", 0, 251}, {"uuml", 0, 252},
    {"yacute", 0, 253}, {"thorn", 0, 254}, {"yuml", 0, 255},
}};

constexpr std::array<TagHtmlCharEntity, kRows> SortedRows() {
  std::array<TagHtmlCharEntity, kRows> rows = kStored;
  for (TagHtmlCharEntity& row : rows) {
    const char* end = row.name;
    while (*end)
      ++end;
    row.hash = charentity::HashName(row.name, end);
  }
  std::sort(rows.begin(), rows.end(),
            [](const TagHtmlCharEntity& a, const TagHtmlCharEntity& b) { return a.hash < b.hash; });
  return rows;
}

constexpr std::array<TagHtmlCharEntity, kRows> kSorted = SortedRows();

constexpr bool HashesUnique() {
  for (int i = 1; i < kRows; ++i)
    if (kSorted[i - 1].hash == kSorted[i].hash)
      return false;
  return true;
}
static_assert(HashesUnique(), "two entity names hash alike");

}  // namespace

#define TELVANIX_ROWS8(i)                                                                                  \
  kSorted[i], kSorted[i + 1], kSorted[i + 2], kSorted[i + 3], kSorted[i + 4], kSorted[i + 5], kSorted[i + 6], \
      kSorted[i + 7],
#define TELVANIX_ROWS64(i)                                                                                     \
  TELVANIX_ROWS8(i) TELVANIX_ROWS8(i + 8) TELVANIX_ROWS8(i + 16) TELVANIX_ROWS8(i + 24) TELVANIX_ROWS8(i + 32) \
      TELVANIX_ROWS8(i + 40) TELVANIX_ROWS8(i + 48) TELVANIX_ROWS8(i + 56)
static_assert(kRows == 128, "the table below is spelled as 128 elements");
const TagHtmlCharEntity CHtmlPack::ms_tTagHtmlCharTable[CHtmlPack::ms_nHtmlCharTableSize] = {
    TELVANIX_ROWS64(0) TELVANIX_ROWS64(64)};
#undef TELVANIX_ROWS64
#undef TELVANIX_ROWS8

namespace charentity {

// The first row in hash order for each code 160 to 255.
constexpr std::array<const char*, 256> BuildNameByCode() {
  std::array<const char*, 256> names{};
  for (int i = kRows - 1; i >= 0; --i)
    if (kSorted[i].code >= 160 && kSorted[i].code <= 255)
      names[kSorted[i].code] = kSorted[i].name;
  return names;
}

extern constexpr std::array<const char*, 256> kNameByCode = BuildNameByCode();

}  // namespace charentity

}  // namespace telvanix
