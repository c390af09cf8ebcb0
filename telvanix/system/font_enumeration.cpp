// Font families from fontconfig, described the way a font enumeration
// describes them: face name, weight, italic, pitch and family class,
// character set and font type of each family's regular face.
#include "telvanix/system/internal/font_enumeration.h"

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#ifdef TELVANIX_HAVE_FONTCONFIG
#include <fontconfig/fontconfig.h>
#endif

namespace telvanix {

struct DcTag {
  int unused;
};

namespace {

std::mutex& DcLock() {
  static std::mutex lock;
  return lock;
}

std::unordered_set<HDC>& LiveDcs() {
  static auto* dcs = new std::unordered_set<HDC>;
  return *dcs;
}

bool IsLiveDc(HDC dc) {
  std::lock_guard<std::mutex> guard(DcLock());
  return dc && LiveDcs().count(dc) != 0;
}

char AsciiLower(char ch) { return (ch >= 'A' && ch <= 'Z') ? static_cast<char>(ch - 'A' + 'a') : ch; }

std::string AsciiLower(const std::string& text) {
  std::string lower(text);
  for (char& ch : lower) {
    ch = AsciiLower(ch);
  }
  return lower;
}

struct FamilyRecord {
  std::string key;  // lower-case face name, for grouping and order
  ENUMLOGFONTA record;
  DWORD fontType;
  int score;  // lower is closer to the family's regular upright face
};

#ifdef TELVANIX_HAVE_FONTCONFIG

// Copies text into a fixed field, cut at a character boundary of UTF-8 and
// always terminated.
void CopyField(char* field, std::size_t size, const std::string& text) {
  std::memset(field, 0, size);
  std::size_t n = std::min(text.size(), size - 1);
  while (n > 0 && n < text.size() && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80) {
    --n;
  }
  std::memcpy(field, text.data(), n);
}

bool IsAscii(const char* text) {
  for (; *text; ++text) {
    if (static_cast<unsigned char>(*text) >= 0x80) {
      return false;
    }
  }
  return true;
}

// fontconfig lists the typographic family first and the face's own
// (legacy) family name after it; the latter is the name a logical font
// carries, so the last English, preferably ASCII, name wins.
std::string ChooseFamilyName(FcPattern* pattern) {
  std::string english;
  std::string englishAscii;
  std::string first;
  FcChar8* name = nullptr;
  for (int i = 0; FcPatternGetString(pattern, FC_FAMILY, i, &name) == FcResultMatch; ++i) {
    const char* text = reinterpret_cast<const char*>(name);
    if (i == 0) {
      first = text;
    }
    FcChar8* lang = nullptr;
    bool isEnglish = FcPatternGetString(pattern, FC_FAMILYLANG, i, &lang) != FcResultMatch ||
                     std::strcmp(reinterpret_cast<const char*>(lang), "en") == 0;
    if (isEnglish) {
      english = text;
      if (IsAscii(text)) {
        englishAscii = text;
      }
    }
  }
  if (!englishAscii.empty()) {
    return englishAscii;
  }
  return english.empty() ? first : english;
}

bool Contains(const std::string& lower, const char* word) { return lower.find(word) != std::string::npos; }

// The family class a name says outright, or FF_DONTCARE when it says none.
BYTE FamilyClassFromName(const std::string& lower) {
  static const char* const kMono[] = {"mono", "courier", "console", "typewriter", "fixed", "code"};
  static const char* const kSans[] = {"sans", "arial", "helvetica", "verdana", "gothic", "tahoma", "grotesk"};
  static const char* const kSerif[] = {"serif", "times", "roman", "georgia", "mincho", "ming", "song", "garamond"};
  static const char* const kScript[] = {"script", "handwriting", "brush", "chancery"};
  for (const char* word : kMono) {
    if (Contains(lower, word)) return FF_MODERN;
  }
  // "Sans Serif" is sans: look for it before "serif".
  for (const char* word : kSans) {
    if (Contains(lower, word)) return FF_SWISS;
  }
  for (const char* word : kSerif) {
    if (Contains(lower, word)) return FF_ROMAN;
  }
  for (const char* word : kScript) {
    if (Contains(lower, word)) return FF_SCRIPT;
  }
  return FF_DONTCARE;
}

// The generic family fontconfig's own rules file the family under; the
// configuration appends that generic name when it substitutes the family.
BYTE FamilyClassFromConfig(FcConfig* config, const std::string& family) {
  FcPattern* pattern = FcPatternCreate();
  if (!pattern) {
    return FF_DONTCARE;
  }
  BYTE found = FF_DONTCARE;
  FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  if (FcConfigSubstitute(config, pattern, FcMatchPattern)) {
    FcChar8* name = nullptr;
    for (int i = 1; found == FF_DONTCARE && FcPatternGetString(pattern, FC_FAMILY, i, &name) == FcResultMatch; ++i) {
      std::string generic = AsciiLower(reinterpret_cast<const char*>(name));
      if (generic == "serif") found = FF_ROMAN;
      else if (generic == "sans-serif" || generic == "sans") found = FF_SWISS;
      else if (generic == "monospace" || generic == "mono") found = FF_MODERN;
      else if (generic == "cursive") found = FF_SCRIPT;
      else if (generic == "fantasy") found = FF_DECORATIVE;
    }
  }
  FcPatternDestroy(pattern);
  return found;
}

BYTE CharSetFromLangs(FcPattern* pattern) {
  FcLangSet* langs = nullptr;
  if (FcPatternGetLangSet(pattern, FC_LANG, 0, &langs) != FcResultMatch || !langs) {
    return DEFAULT_CHARSET;
  }
  struct LangCharSet {
    const char* lang;
    BYTE charSet;
  };
  // The far-eastern sets first: a font made for them usually covers English too.
  static const LangCharSet kOrder[] = {
      {"ja", SHIFTJIS_CHARSET}, {"ko", HANGUL_CHARSET},   {"zh-cn", GB2312_CHARSET},
      {"zh-tw", CHINESEBIG5_CHARSET}, {"en", ANSI_CHARSET}, {"ru", RUSSIAN_CHARSET},
      {"el", GREEK_CHARSET},    {"tr", TURKISH_CHARSET},  {"he", HEBREW_CHARSET},
      {"ar", ARABIC_CHARSET},   {"th", THAI_CHARSET},     {"vi", VIETNAMESE_CHARSET},
  };
  for (const LangCharSet& row : kOrder) {
    if (FcLangSetHasLang(langs, reinterpret_cast<const FcChar8*>(row.lang)) == FcLangEqual) {
      return row.charSet;
    }
  }
  FcStrSet* all = FcLangSetGetLangs(langs);
  bool none = true;
  if (all) {
    FcStrList* list = FcStrListCreate(all);
    if (list) {
      none = FcStrListNext(list) == nullptr;
      FcStrListDone(list);
    }
    FcStrSetDestroy(all);
  }
  // A font that covers no language at all is a symbol font.
  return none ? SYMBOL_CHARSET : DEFAULT_CHARSET;
}

bool DescribeFace(FcConfig* config, FcPattern* pattern, FamilyRecord& out) {
  std::string family = ChooseFamilyName(pattern);
  FcChar8* any = nullptr;
  if (FcPatternGetString(pattern, FC_FAMILY, 0, &any) != FcResultMatch) {
    return false;
  }
  std::memset(&out.record, 0, sizeof(out.record));
  LOGFONTA& lf = out.record.elfLogFont;
  CopyField(lf.lfFaceName, sizeof(lf.lfFaceName), family);
  out.key = AsciiLower(lf.lfFaceName);

  double weight = FC_WEIGHT_REGULAR;
  FcPatternGetDouble(pattern, FC_WEIGHT, 0, &weight);
  int openType = FcWeightToOpenType(static_cast<int>(weight));
  lf.lfWeight = openType > 0 ? std::clamp(openType, 1, 1000) : FW_NORMAL;

  int slant = FC_SLANT_ROMAN;
  FcPatternGetInteger(pattern, FC_SLANT, 0, &slant);
  lf.lfItalic = slant != FC_SLANT_ROMAN ? 1 : 0;

  int spacing = FC_PROPORTIONAL;
  FcPatternGetInteger(pattern, FC_SPACING, 0, &spacing);
  bool fixed = spacing == FC_MONO || spacing == FC_CHARCELL || spacing == FC_DUAL;
  BYTE familyClass = fixed ? FF_MODERN : FamilyClassFromName(out.key);
  if (familyClass == FF_DONTCARE) {
    familyClass = FamilyClassFromConfig(config, family);
  }
  lf.lfPitchAndFamily = static_cast<BYTE>((fixed ? FIXED_PITCH : VARIABLE_PITCH) | familyClass);
  lf.lfCharSet = CharSetFromLangs(pattern);

  FcBool scalable = FcTrue;
  FcPatternGetBool(pattern, FC_SCALABLE, 0, &scalable);
  if (scalable) {
    FcChar8* format = nullptr;
    bool trueType = FcPatternGetString(pattern, FC_FONTFORMAT, 0, &format) == FcResultMatch &&
                    (std::strcmp(reinterpret_cast<const char*>(format), "TrueType") == 0 ||
                     std::strcmp(reinterpret_cast<const char*>(format), "CFF") == 0);
    out.fontType = trueType ? TRUETYPE_FONTTYPE : 0;
    lf.lfOutPrecision = OUT_STROKE_PRECIS;
    lf.lfClipPrecision = CLIP_STROKE_PRECIS;
  } else {
    out.fontType = RASTER_FONTTYPE;
    double pixels = 0;
    if (FcPatternGetDouble(pattern, FC_PIXEL_SIZE, 0, &pixels) == FcResultMatch && pixels > 0 && pixels < 1000) {
      lf.lfHeight = static_cast<LONG>(pixels + 0.5);
    }
    lf.lfOutPrecision = OUT_STRING_PRECIS;
    lf.lfClipPrecision = CLIP_STROKE_PRECIS;
  }
  lf.lfQuality = DRAFT_QUALITY;

  FcChar8* fullName = nullptr;
  std::string full = family;
  if (FcPatternGetString(pattern, FC_FULLNAME, 0, &fullName) == FcResultMatch) {
    full = reinterpret_cast<const char*>(fullName);
  }
  CopyField(reinterpret_cast<char*>(out.record.elfFullName), sizeof(out.record.elfFullName), full);
  FcChar8* style = nullptr;
  if (FcPatternGetString(pattern, FC_STYLE, 0, &style) == FcResultMatch) {
    CopyField(reinterpret_cast<char*>(out.record.elfStyle), sizeof(out.record.elfStyle),
              reinterpret_cast<const char*>(style));
  }
  out.score = (lf.lfItalic ? 10000 : 0) + std::abs(static_cast<int>(lf.lfWeight) - FW_NORMAL);
  return true;
}

std::vector<FamilyRecord> ListFamilies() {
  std::vector<FamilyRecord> families;
  FcConfig* config = FcConfigGetCurrent();
  FcPattern* all = FcPatternCreate();
  FcObjectSet* objects = FcObjectSetBuild(FC_FAMILY, FC_FAMILYLANG, FC_STYLE, FC_FULLNAME, FC_WEIGHT, FC_SLANT,
                                          FC_SPACING, FC_SCALABLE, FC_PIXEL_SIZE, FC_FONTFORMAT, FC_LANG,
                                          static_cast<char*>(nullptr));
  FcFontSet* set = (config && all && objects) ? FcFontList(config, all, objects) : nullptr;
  if (set) {
    std::vector<FamilyRecord> faces;
    faces.reserve(static_cast<std::size_t>(set->nfont));
    for (int i = 0; i < set->nfont; ++i) {
      FamilyRecord face;
      if (DescribeFace(config, set->fonts[i], face)) {
        faces.push_back(std::move(face));
      }
    }
    FcFontSetDestroy(set);
    std::stable_sort(faces.begin(), faces.end(), [](const FamilyRecord& a, const FamilyRecord& b) {
      return a.key != b.key ? a.key < b.key : a.score < b.score;
    });
    for (FamilyRecord& face : faces) {
      if (families.empty() || families.back().key != face.key) {
        families.push_back(std::move(face));
      }
    }
  }
  if (objects) FcObjectSetDestroy(objects);
  if (all) FcPatternDestroy(all);
  return families;
}

#else

std::vector<FamilyRecord> ListFamilies() { return {}; }

#endif

}  // namespace

HDC CreateDCA(LPCSTR driver, LPCSTR device, LPCSTR output, const void* initData) {
  (void)device;
  (void)output;
  (void)initData;
  if (!driver || strcasecmp(driver, "DISPLAY") != 0) {
    return nullptr;
  }
#ifdef TELVANIX_HAVE_FONTCONFIG
  if (!FcInit()) {
    return nullptr;
  }
#endif
  try {
    HDC dc = new DcTag{0};
    std::lock_guard<std::mutex> guard(DcLock());
    LiveDcs().insert(dc);
    return dc;
  } catch (...) {
    return nullptr;
  }
}

BOOL DeleteDC(HDC dc) {
  {
    std::lock_guard<std::mutex> guard(DcLock());
    if (!dc || LiveDcs().erase(dc) == 0) {
      return FALSE;
    }
  }
  delete dc;
  return TRUE;
}

int EnumFontFamiliesA(HDC dc, LPCSTR family, FONTENUMPROCA proc, LPARAM data) {
  if (!proc || !IsLiveDc(dc)) {
    return 0;
  }
  std::vector<FamilyRecord> families;
  try {
    families = ListFamilies();
  } catch (...) {
    return 0;
  }
  std::string wanted = family ? AsciiLower(family) : std::string();
  int result = 0;
  for (const FamilyRecord& face : families) {
    if (family && face.key != wanted) {
      continue;
    }
    result = proc(&face.record.elfLogFont, nullptr, face.fontType, data);
    if (result == 0) {
      break;
    }
  }
  return result;
}

}  // namespace telvanix
