#include "telvanix/sitemap/file_sitemap.h"

#include "telvanix/sitemap/internal/owned_array.h"

namespace telvanix {

CHtmlFileSitemap::CHtmlFileSitemap() = default;

CHtmlFileSitemap::CHtmlFileSitemap(const CHtmlFileSitemap& other) : CRglObject() { CopyFrom(other); }

CHtmlFileSitemap& CHtmlFileSitemap::operator=(const CHtmlFileSitemap& other) {
  if (this != &other) {
    DeleteOwned();
    CopyFrom(other);
  }
  return *this;
}

CHtmlFileSitemap::~CHtmlFileSitemap() { DeleteOwned(); }

void CHtmlFileSitemap::DeleteOwned() { sitemap_detail::DeleteOwned(m_arrSitemaps); }

void CHtmlFileSitemap::CopyFrom(const CHtmlFileSitemap& other) {
  m_strBase = other.m_strBase;
  m_strTitle = other.m_strTitle;
  sitemap_detail::CopyOwned(m_arrSitemaps, other.m_arrSitemaps);
  m_SiteProperties = other.m_SiteProperties;
  m_arrNeedFrameNames.Copy(other.m_arrNeedFrameNames);
  m_arrNeedWindowNames.Copy(other.m_arrNeedWindowNames);
  m_setNeedFrameNames = other.m_setNeedFrameNames;
  m_setNeedWindowNames = other.m_setNeedWindowNames;
  m_nUnclosedLists = other.m_nUnclosedLists;
  m_nStrayListEnds = other.m_nStrayListEnds;
}

void CHtmlFileSitemap::Default() {
  DeleteOwned();
  m_strBase.Empty();
  m_strTitle.Empty();
  m_SiteProperties.Default();
  m_arrNeedFrameNames.RemoveAll();
  m_arrNeedWindowNames.RemoveAll();
  m_setNeedFrameNames.clear();
  m_setNeedWindowNames.clear();
  m_nUnclosedLists = 0;
  m_nStrayListEnds = 0;
}

const char* CHtmlFileSitemap::GetTitle() const { return m_strTitle.IsEmpty() ? nullptr : static_cast<const char*>(m_strTitle); }
int CHtmlFileSitemap::SetTitle(const char* title) {
  if (!title)
    return 0;
  m_strTitle = title;
  return 1;
}
const char* CHtmlFileSitemap::GetBase() const { return m_strBase.IsEmpty() ? nullptr : static_cast<const char*>(m_strBase); }
int CHtmlFileSitemap::SetBase(const char* base) {
  if (!base)
    return 0;
  m_strBase = base;
  return 1;
}

int CHtmlFileSitemap::AddSitemap(CHtmlSitemap* sitemap) { return sitemap_detail::AddOwned(m_arrSitemaps, sitemap); }
CHtmlSitemap* CHtmlFileSitemap::GetSitemap(int index) const { return sitemap_detail::OwnedAt(m_arrSitemaps, index); }

int CHtmlFileSitemap::AddNeedName(CStringArray& names, std::unordered_set<std::string>& known, const char* name) {
  if (!name || !*name)
    return 0;
  CString folded(name);
  folded.MakeLower();
  if (!known.insert(folded.str()).second)
    return 0;
  names.Add(CString(name));
  return 1;
}

int CHtmlFileSitemap::AddNeedFrameName(const char* name) {
  return AddNeedName(m_arrNeedFrameNames, m_setNeedFrameNames, name);
}
int CHtmlFileSitemap::AddNeedWindowName(const char* name) {
  return AddNeedName(m_arrNeedWindowNames, m_setNeedWindowNames, name);
}

const char* CHtmlFileSitemap::GetFirstFrameName(int& cursor) const {
  cursor = 0;
  return GetNextFrameName(cursor);
}
const char* CHtmlFileSitemap::GetNextFrameName(int& cursor) const {
  if (cursor < 0 || cursor >= m_arrNeedFrameNames.GetSize())
    return nullptr;
  return m_arrNeedFrameNames.GetAt(cursor++);
}
const char* CHtmlFileSitemap::GetFirstWindowName(int& cursor) const {
  cursor = 0;
  return GetNextWindowName(cursor);
}
const char* CHtmlFileSitemap::GetNextWindowName(int& cursor) const {
  if (cursor < 0 || cursor >= m_arrNeedWindowNames.GetSize())
    return nullptr;
  return m_arrNeedWindowNames.GetAt(cursor++);
}

}  // namespace telvanix
