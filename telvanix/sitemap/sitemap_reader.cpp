#include "telvanix/sitemap/internal/sitemap_reader.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "telvanix/foundation/color_names.h"
#include "telvanix/html/html_pack.h"

namespace telvanix {

namespace {

bool IsBlank(char ch) { return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n'; }

// Leading blanks, an optional sign and at least one decimal digit; what
// follows the digits is ignored. 0 when there is no number.
int ParseInt(const char* text, int& number) {
  if (!text)
    return 0;
  while (IsBlank(*text))
    ++text;
  bool negative = false;
  if (*text == '-' || *text == '+')
    negative = *text++ == '-';
  if (*text < '0' || *text > '9')
    return 0;
  long long value = 0;
  while (*text >= '0' && *text <= '9') {
    if (value < 0x100000000LL)
      value = value * 10 + (*text - '0');
    ++text;
  }
  if (negative)
    value = -value;
  number = value > INT_MAX ? INT_MAX : (value < INT_MIN ? INT_MIN : static_cast<int>(value));
  return 1;
}

// "0x" hexadecimal or decimal digits, as window styles and colours are
// written; 0 when the text holds no such number.
int ParseNumber(const char* text, DWORD& number) {
  if (!text)
    return 0;
  while (IsBlank(*text))
    ++text;
  const char* digits = text;
  int base = 10;
  if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    digits = text + 2;
    base = 16;
  }
  unsigned long long value = 0;
  const char* p = digits;
  for (;; ++p) {
    int d;
    if (*p >= '0' && *p <= '9')
      d = *p - '0';
    else if (base == 16 && *p >= 'a' && *p <= 'f')
      d = *p - 'a' + 10;
    else if (base == 16 && *p >= 'A' && *p <= 'F')
      d = *p - 'A' + 10;
    else
      break;
    value = (value * static_cast<unsigned>(base) + static_cast<unsigned>(d)) & 0xFFFFFFFFull;
  }
  if (p == digits)
    return 0;
  while (IsBlank(*p))
    ++p;
  if (*p)
    return 0;
  number = static_cast<DWORD>(value);
  return 1;
}

int ParseColor(const char* text, COLORREF& color) {
  DWORD number;
  if (ParseNumber(text, number)) {
    color = number;
    return 1;
  }
  COLORREF named;
  if (ColorNameToColor(text, named)) {
    color = named;
    return 1;
  }
  return 0;
}

// The writer prefixes drive and network paths with "file://"; take it off
// again for exactly those, and keep every other value as written.
CString StripFileUrl(const CString& value) {
  if (value.GetLength() > 7 && strncmp(value, "file://", 7) == 0) {
    const char* rest = static_cast<const char*>(value) + 7;
    bool drive = rest[0] != '\0' && rest[1] == ':';
    bool network = (rest[0] == '/' && rest[1] == '/') || (rest[0] == '\\' && rest[1] == '\\');
    if (drive || network)
      return CString(rest);
  }
  return value;
}

bool IsReference(int code) {
  return code == CHtmlFileSitemap::emParamLocal || code == CHtmlFileSitemap::emParamUrl ||
         code == CHtmlFileSitemap::emParamSecondary;
}

}  // namespace

// --- events ----------------------------------------------------------------

void CHtmlFileSitemap::CReader::StartTag(EmTagKind kind, const CAttributes& attributes) {
  if (kind != emTagOther)
    m_bInTitle = false;
  switch (kind) {
    case emTagList:
      FlushObject();
      ++m_nDepth;
      break;
    case emTagItem:
      FlushObject();
      break;
    case emTagObject: {
      FlushObject();
      const char* type = attributes.GetAttributeValue("type");
      // Our own writer's spelling for entries with a target.
      if (!type)
        type = attributes.GetAttributeValue("typetype");
      CString kindText(type);
      kindText.Trim();
      if (kindText.CompareNoCase("text/sitemap") == 0)
        m_nObject = emObjectEntry;
      else if (kindText.CompareNoCase("text/site properties") == 0)
        m_nObject = emObjectSite;
      else
        m_nObject = emObjectOther;
      m_nObjectLevel = m_nDepth < 1 ? 1 : m_nDepth;
      m_strTarget = attributes.GetAttributeValue("target");
      m_arrParams.clear();
      break;
    }
    case emTagParam: {
      if (m_nObject != emObjectEntry && m_nObject != emObjectSite)
        break;
      const char* name = attributes.GetAttributeValue("name");
      if (!name)
        break;
      Param param;
      param.strName = name;
      param.strValue = attributes.GetAttributeValue("value");
      param.strValue2 = attributes.GetAttributeValue("value2");
      param.nCode = CHtmlFileSitemap::GetSiteParamCode(name);
      m_arrParams.push_back(std::move(param));
      break;
    }
    case emTagTitle:
      if (!m_bTitleRead)
        m_bInTitle = true;
      break;
    case emTagBase:
      if (!m_bBaseRead) {
        if (const char* href = attributes.GetAttributeValue("href")) {
          m_File.m_strBase = href;
          m_bBaseRead = true;
        }
      }
      break;
    case emTagOther:
      break;
  }
}

void CHtmlFileSitemap::CReader::EndTag(EmTagKind kind) {
  switch (kind) {
    case emTagList:
      FlushObject();
      if (m_nDepth > 0)
        --m_nDepth;
      else
        ++m_File.m_nStrayListEnds;
      break;
    case emTagItem:
    case emTagObject:
      FlushObject();
      break;
    case emTagTitle:
      if (m_bInTitle) {
        m_bInTitle = false;
        m_bTitleRead = true;
        m_File.m_strTitle = m_strTitle.Trim();
      }
      break;
    default:
      break;
  }
}

void CHtmlFileSitemap::CReader::Text(const char* text) {
  if (m_bInTitle && text)
    m_strTitle += text;
}

int CHtmlFileSitemap::CReader::Finish() {
  FlushObject();
  if (m_bInTitle && !m_bTitleRead)
    m_File.m_strTitle = m_strTitle.Trim();
  m_bInTitle = false;
  m_File.m_nUnclosedLists = m_nDepth;
  return m_nFound;
}

void CHtmlFileSitemap::CReader::FlushObject() {
  if (m_nObject == emObjectEntry) {
    ReadEntry();
    ++m_nFound;
  } else if (m_nObject == emObjectSite) {
    ReadSite();
    ++m_nFound;
  }
  m_nObject = emObjectNone;
  m_arrParams.clear();
  m_strTarget.Empty();
}

bool CHtmlFileSitemap::CReader::HasLaterReference(size_t i) const {
  for (size_t j = i + 1; j < m_arrParams.size(); ++j) {
    if (IsReference(m_arrParams[j].nCode))
      return true;
  }
  return false;
}

// --- one entry -------------------------------------------------------------

void CHtmlFileSitemap::CReader::ReadEntry() {
  CHtmlSitemap* entry = new CHtmlSitemap;
  m_File.AddSitemap(entry);
  entry->SetLevel(m_nObjectLevel);
  if (!m_strTarget.IsEmpty())
    entry->SetTargetAttribute(m_strTarget);

  // What the last Type or Name parameter opened: references that follow it
  // belong to it rather than to the entry itself.
  CHtmlSitemapTypeInfo* typeInfo = nullptr;
  CHtmlSitemapSection* section = nullptr;
  // Own references as read, so that the getters' fall-backs do not mislead.
  CString primary, secondary;

  // A second reference of the entry itself means the file lists several
  // topics for one keyword: the first pair becomes a section like the rest.
  auto openSections = [&]() {
    if (entry->GetSectionArraySize() == 0 && (!primary.IsEmpty() || !secondary.IsEmpty()))
      entry->AddSection(entry->GetName() ? entry->GetName() : "", primary, secondary);
  };

  for (size_t i = 0; i < m_arrParams.size(); ++i) {
    const Param& param = m_arrParams[i];
    switch (param.nCode) {
      case emParamName: {
        CString name = CHtmlPack::HtmlToText(param.strValue);
        if (!entry->GetName() && entry->GetSectionArraySize() == 0) {
          entry->SetName(name);
        } else if (!name.IsEmpty()) {
          openSections();
          section = entry->GetSection(entry->AddSection(name, nullptr, nullptr));
          typeInfo = nullptr;
        }
        break;
      }
      case emParamType:
        if (!typeInfo || typeInfo->GetPrimary()) {
          typeInfo = new CHtmlSitemapTypeInfo;
          entry->AddTypeInfo(typeInfo);
        }
        typeInfo->AddTypeInfo(param.strValue);
        section = nullptr;
        break;
      case emParamLocal:
      case emParamUrl: {
        bool local = param.nCode == emParamLocal;
        CString value = StripFileUrl(param.strValue);
        if (typeInfo && !typeInfo->GetSecondary() && (!local || !typeInfo->GetPrimary()) &&
            HasLaterReference(i)) {
          if (local)
            typeInfo->SetPrimary(value);
          else
            typeInfo->SetSecondary(value);
          break;
        }
        typeInfo = nullptr;
        if (section && !section->GetSecondary() && (!local || !section->GetPrimary())) {
          if (local)
            section->SetPrimary(value);
          else
            section->SetSecondary(value);
          break;
        }
        section = nullptr;
        CString& own = local ? primary : secondary;
        if (own.IsEmpty() && entry->GetSectionArraySize() == 0) {
          own = value;
          if (local)
            entry->SetPrimary(value);
          else
            entry->SetSecondary(value);
        } else {
          openSections();
          section = entry->GetSection(entry->AddSection(nullptr, local ? static_cast<const char*>(value) : nullptr,
                                                        local ? nullptr : static_cast<const char*>(value)));
        }
        break;
      }
      case emParamSecondary:
        entry->SetThirdReference(StripFileUrl(param.strValue));
        break;
      case emParamFrameName:
      case emParamFrame:
        if (!entry->GetFrameName())
          entry->SetFrameName(param.strValue);
        m_File.AddNeedFrameName(param.strValue);
        break;
      case emParamWindowName:
        if (!entry->GetWindowName())
          entry->SetWindowName(param.strValue);
        m_File.AddNeedWindowName(param.strValue);
        break;
      case emParamSeeAlso:
        entry->SetSeeAlso(param.strValue);
        break;
      case emParamComment:
        entry->SetComment(param.strValue);
        break;
      case emParamNew:
        entry->SetNew(param.strValue);
        break;
      case emParamSendEvent:
        entry->SetSendEvent(param.strValue);
        break;
      case emParamSync:
        entry->SetSync(param.strValue);
        break;
      case emParamMerge:
        entry->SetMerge(param.strValue);
        entry->SetMerge2(param.strValue2);
        break;
      case emParamImageNumber: {
        int number;
        if (ParseInt(param.strValue, number))
          entry->SetImageNumber(number);
        break;
      }
      case emParamSiteType:
        if (param.strValue.CompareNoCase("toc") == 0)
          m_File.m_SiteProperties.SetSiteType(CHtmlSiteProperties::emSiteTypeContents);
        else if (param.strValue.CompareNoCase("index") == 0)
          m_File.m_SiteProperties.SetSiteType(CHtmlSiteProperties::emSiteTypeIndex);
        break;
      default:
        // Not an entry's parameter (or not known at all): kept as it stands.
        entry->AddUnknownParam(param.strName, param.strValue);
        break;
    }
  }
}

// --- the site properties ---------------------------------------------------

void CHtmlFileSitemap::CReader::ReadSite() {
  CHtmlSiteProperties& site = m_File.m_SiteProperties;
  CHtmlSiteCategory* category = nullptr;
  CHtmlSiteCategoryTypeInfo* typeInfo = nullptr;
  auto currentCategory = [&]() {
    if (!category) {
      category = new CHtmlSiteCategory;
      site.AddSiteCategory(category);
    }
    return category;
  };
  auto addTypeInfo = [&](CHtmlSiteCategoryTypeInfo::EmHtmlSiteTypeInfoType type, const char* name) {
    typeInfo = new CHtmlSiteCategoryTypeInfo(type, name);
    currentCategory()->AddCategoryTypeInfo(typeInfo);
  };

  for (const Param& param : m_arrParams) {
    const char* value = param.strValue;
    switch (param.nCode) {
      case emParamFrameName:
        if (!site.GetFrameName())
          site.SetFrameName(value);
        m_File.AddNeedFrameName(value);
        break;
      case emParamWindowName:
        site.SetWindowName(value);
        m_File.AddNeedWindowName(value);
        break;
      case emParamCategory:
        category = new CHtmlSiteCategory(value);
        site.AddSiteCategory(category);
        typeInfo = nullptr;
        break;
      case emParamCategoryDesc:
        // A category has one description; a second one stands for a category
        // whose name was empty (it prints so), not for a correction.
        if (currentCategory()->GetDesc()) {
          category = new CHtmlSiteCategory;
          site.AddSiteCategory(category);
          typeInfo = nullptr;
        }
        category->SetDesc(value);
        break;
      case emParamType:
        addTypeInfo(CHtmlSiteCategoryTypeInfo::emTypeInfoInclusive, value);
        break;
      case emParamTypeExclusive:
        addTypeInfo(CHtmlSiteCategoryTypeInfo::emTypeInfoExclusive, value);
        break;
      case emParamTypeHidden:
        addTypeInfo(CHtmlSiteCategoryTypeInfo::emTypeInfoHidden, value);
        break;
      case emParamTypeDesc:
      case emParamTypeExclusiveDesc:
        // Likewise a second description starts a type without a name.
        if (!typeInfo || typeInfo->GetTypeDesc())
          addTypeInfo(param.nCode == emParamTypeDesc ? CHtmlSiteCategoryTypeInfo::emTypeInfoInclusive
                                                     : CHtmlSiteCategoryTypeInfo::emTypeInfoExclusive,
                      nullptr);
        typeInfo->SetTypeDesc(value);
        break;
      case emParamFontTypes:
        site.SetFontTypes(value);
        break;
      case emParamFontInstructions:
        site.SetFontInstructions(value);
        break;
      case emParamBackground:
      case emParamForeground: {
        COLORREF color;
        if (ParseColor(value, color)) {
          if (param.nCode == emParamBackground)
            site.SetBackground(color);
          else
            site.SetForeground(color);
        }
        break;
      }
      case emParamBackgroundImage:
        site.SetBackgroundImage(value);
        break;
      case emParamFont:
        site.SetFont(value);
        break;
      case emParamImageList:
        site.SetImageList(value);
        break;
      case emParamImageType:
        site.SetImageType(value);
        break;
      case emParamNumberImages:
      case emParamImageWidth: {
        int number;
        if (ParseInt(value, number)) {
          if (param.nCode == emParamNumberImages)
            site.SetNumberImages(number);
          else
            site.SetImageWidth(number);
        }
        break;
      }
      case emParamWindowStyles:
      case emParamExWindowStyles: {
        DWORD styles;
        if (ParseNumber(value, styles)) {
          if (param.nCode == emParamWindowStyles)
            site.SetWindowStyles(styles);
          else
            site.SetExWindowStyles(styles);
        }
        break;
      }
      case emParamInstruction:
        site.AddInstruction(param.strName, value);
        break;
      case emParamAutoGenerated:
        site.SetAutoGenerated(value);
        break;
      case emParamSiteType:
        if (param.strValue.CompareNoCase("toc") == 0)
          site.SetSiteType(CHtmlSiteProperties::emSiteTypeContents);
        else if (param.strValue.CompareNoCase("index") == 0)
          site.SetSiteType(CHtmlSiteProperties::emSiteTypeIndex);
        break;
      default:
        // "NumberTypes" and the entries' parameters have no field here.
        site.AddUnknownParam(param.strName, value);
        break;
    }
  }
}

// --- entry points ----------------------------------------------------------

int CHtmlFileSitemap::Read(const char* path) {
  if (!path || !*path) {
    Default();
    return 0;
  }
  try {
    CByteString source;
    if (!source.LoadFromFile(path)) {
      Default();
      return 0;
    }
    return Read(source);
  } catch (...) {
    return 0;
  }
}

int CHtmlFileSitemap::Read(CByteString& source) {
  try {
    Default();
    if (source.GetLength() <= 0 || !source.GetContent())
      return 0;
    return ReadBytes(source.GetContent(), source.GetLength()) > 0 ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

}  // namespace telvanix
