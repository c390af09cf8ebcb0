#include "telvanix/sitemap/sitemap_entry.h"

#include "telvanix/sitemap/internal/owned_array.h"
#include "telvanix/sitemap/internal/text_field.h"

namespace telvanix {

using sitemap_detail::AddOwned;
using sitemap_detail::CopyOwned;
using sitemap_detail::DeleteOwned;
using sitemap_detail::OwnedAt;
using sitemap_detail::SetText;
using sitemap_detail::TextOrNull;

// --- CHtmlSiteParamCouple --------------------------------------------------

CHtmlSiteParamCouple::CHtmlSiteParamCouple(const char* name, const char* value) : m_strName(name), m_strValue(value) {}
CHtmlSiteParamCouple::~CHtmlSiteParamCouple() = default;

const char* CHtmlSiteParamCouple::GetName() const { return TextOrNull(m_strName); }
int CHtmlSiteParamCouple::SetName(const char* name) { return SetText(m_strName, name); }
const char* CHtmlSiteParamCouple::GetValue() const { return TextOrNull(m_strValue); }
int CHtmlSiteParamCouple::SetValue(const char* value) { return SetText(m_strValue, value); }

// --- CHtmlSitemapSection ---------------------------------------------------

CHtmlSitemapSection::CHtmlSitemapSection(const char* name, const char* primary, const char* secondary)
    : m_strName(name), m_strPrimary(primary), m_strSecondary(secondary) {}
CHtmlSitemapSection::~CHtmlSitemapSection() = default;

const char* CHtmlSitemapSection::GetName() const { return TextOrNull(m_strName); }
int CHtmlSitemapSection::SetName(const char* name) { return SetText(m_strName, name); }
const char* CHtmlSitemapSection::GetPrimary() const {
  return m_strPrimary.IsEmpty() ? TextOrNull(m_strSecondary) : static_cast<const char*>(m_strPrimary);
}
int CHtmlSitemapSection::SetPrimary(const char* primary) { return SetText(m_strPrimary, primary); }
const char* CHtmlSitemapSection::GetSecondary() const { return TextOrNull(m_strSecondary); }
int CHtmlSitemapSection::SetSecondary(const char* secondary) { return SetText(m_strSecondary, secondary); }

// --- CHtmlSitemapTypeInfo --------------------------------------------------

CHtmlSitemapTypeInfo::~CHtmlSitemapTypeInfo() = default;

int CHtmlSitemapTypeInfo::AddTypeInfo(const char* type) {
  if (!type)
    return 0;
  m_arrTypes.Add(CString(type));
  return 1;
}

const char* CHtmlSitemapTypeInfo::GetTypeInfoString(int index) const {
  if (index < 0 || index >= m_arrTypes.GetSize())
    return "";
  return m_arrTypes.GetAt(index);
}

const char* CHtmlSitemapTypeInfo::GetPrimary() const {
  return m_strPrimary.IsEmpty() ? TextOrNull(m_strSecondary) : static_cast<const char*>(m_strPrimary);
}
int CHtmlSitemapTypeInfo::SetPrimary(const char* primary) { return SetText(m_strPrimary, primary); }
const char* CHtmlSitemapTypeInfo::GetSecondary() const { return TextOrNull(m_strSecondary); }
int CHtmlSitemapTypeInfo::SetSecondary(const char* secondary) { return SetText(m_strSecondary, secondary); }

// --- CHtmlSitemap ----------------------------------------------------------

CHtmlSitemap::CHtmlSitemap() : m_nSitemapFlags(0), m_nLevel(-1), m_nImageNumber(-1) {}

CHtmlSitemap::CHtmlSitemap(const CHtmlSitemap& other) : CRglObject(), m_nSitemapFlags(0), m_nLevel(-1), m_nImageNumber(-1) {
  CopyFrom(other);
}

CHtmlSitemap& CHtmlSitemap::operator=(const CHtmlSitemap& other) {
  if (this != &other) {
    DeleteOwned();
    CopyFrom(other);
  }
  return *this;
}

CHtmlSitemap::~CHtmlSitemap() { DeleteOwned(); }

void CHtmlSitemap::DeleteOwned() {
  sitemap_detail::DeleteOwned(m_arrUnknownParams);
  sitemap_detail::DeleteOwned(m_arrSections);
  sitemap_detail::DeleteOwned(m_arrTypeInfos);
}

void CHtmlSitemap::CopyFrom(const CHtmlSitemap& other) {
  m_nSitemapFlags = other.m_nSitemapFlags;
  m_nLevel = other.m_nLevel;
  m_strName = other.m_strName;
  m_strFrameName = other.m_strFrameName;
  m_strWindowName = other.m_strWindowName;
  m_strComment = other.m_strComment;
  m_strNew = other.m_strNew;
  m_strMerge = other.m_strMerge;
  m_strMerge2 = other.m_strMerge2;
  m_strSendEvent = other.m_strSendEvent;
  m_nImageNumber = other.m_nImageNumber;
  m_strSeeAlso = other.m_strSeeAlso;
  m_strSync = other.m_strSync;
  m_strPrimary = other.m_strPrimary;
  m_strSecondary = other.m_strSecondary;
  m_strThirdReference = other.m_strThirdReference;
  CopyOwned(m_arrUnknownParams, other.m_arrUnknownParams);
  CopyOwned(m_arrSections, other.m_arrSections);
  CopyOwned(m_arrTypeInfos, other.m_arrTypeInfos);
  m_strTargetAttribute = other.m_strTargetAttribute;
}

void CHtmlSitemap::Default() {
  DeleteOwned();
  CopyFrom(CHtmlSitemap());
}

const char* CHtmlSitemap::GetName() const { return TextOrNull(m_strName); }
int CHtmlSitemap::SetName(const char* name) { return SetText(m_strName, name); }
const char* CHtmlSitemap::GetFrameName() const { return TextOrNull(m_strFrameName); }
int CHtmlSitemap::SetFrameName(const char* name) { return SetText(m_strFrameName, name); }
const char* CHtmlSitemap::GetWindowName() const { return TextOrNull(m_strWindowName); }
int CHtmlSitemap::SetWindowName(const char* name) { return SetText(m_strWindowName, name); }
const char* CHtmlSitemap::GetComment() const { return TextOrNull(m_strComment); }
int CHtmlSitemap::SetComment(const char* comment) { return SetText(m_strComment, comment); }
const char* CHtmlSitemap::GetNew() const { return TextOrNull(m_strNew); }
int CHtmlSitemap::SetNew(const char* text) { return SetText(m_strNew, text); }
const char* CHtmlSitemap::GetMerge() const { return TextOrNull(m_strMerge); }
int CHtmlSitemap::SetMerge(const char* merge) { return SetText(m_strMerge, merge); }
const char* CHtmlSitemap::GetMerge2() const { return TextOrNull(m_strMerge2); }
int CHtmlSitemap::SetMerge2(const char* merge) { return SetText(m_strMerge2, merge); }
const char* CHtmlSitemap::GetSendEvent() const { return TextOrNull(m_strSendEvent); }
int CHtmlSitemap::SetSendEvent(const char* event) { return SetText(m_strSendEvent, event); }
const char* CHtmlSitemap::GetSeeAlso() const { return TextOrNull(m_strSeeAlso); }
int CHtmlSitemap::SetSeeAlso(const char* seeAlso) { return SetText(m_strSeeAlso, seeAlso); }
const char* CHtmlSitemap::GetSync() const { return TextOrNull(m_strSync); }
int CHtmlSitemap::SetSync(const char* sync) { return SetText(m_strSync, sync); }
const char* CHtmlSitemap::GetTargetAttribute() const { return TextOrNull(m_strTargetAttribute); }
int CHtmlSitemap::SetTargetAttribute(const char* target) { return SetText(m_strTargetAttribute, target); }

const char* CHtmlSitemap::GetPrimary() const {
  if (!m_strPrimary.IsEmpty())
    return m_strPrimary;
  if (!m_strSecondary.IsEmpty())
    return m_strSecondary;
  return TextOrNull(m_strThirdReference);
}
int CHtmlSitemap::SetPrimary(const char* primary) { return SetText(m_strPrimary, primary); }
const char* CHtmlSitemap::GetSecondary() const {
  return m_strSecondary.IsEmpty() ? TextOrNull(m_strThirdReference) : static_cast<const char*>(m_strSecondary);
}
int CHtmlSitemap::SetSecondary(const char* secondary) { return SetText(m_strSecondary, secondary); }
const char* CHtmlSitemap::GetThirdReference() const { return TextOrNull(m_strThirdReference); }
int CHtmlSitemap::SetThirdReference(const char* reference) { return SetText(m_strThirdReference, reference); }

int CHtmlSitemap::AddUnknownParam(const char* name, const char* value) {
  if (!name)
    return 0;
  m_arrUnknownParams.Add(new CHtmlSiteParamCouple(name, value));
  return 1;
}
CHtmlSiteParamCouple* CHtmlSitemap::GetUnknownParam(int index) const { return OwnedAt(m_arrUnknownParams, index); }

int CHtmlSitemap::AddSection(const char* name, const char* primary, const char* secondary) {
  return m_arrSections.Add(new CHtmlSitemapSection(name, primary, secondary));
}
int CHtmlSitemap::AddSection(CHtmlSitemapSection* section) { return AddOwned(m_arrSections, section); }
CHtmlSitemapSection* CHtmlSitemap::GetSection(int index) const { return OwnedAt(m_arrSections, index); }

int CHtmlSitemap::AddTypeInfo(CHtmlSitemapTypeInfo* typeInfo) { return AddOwned(m_arrTypeInfos, typeInfo); }
CHtmlSitemapTypeInfo* CHtmlSitemap::GetTypeInfo(int index) const { return OwnedAt(m_arrTypeInfos, index); }

}  // namespace telvanix
