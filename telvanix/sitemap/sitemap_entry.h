// The entries of a contents or index sitemap: one CHtmlSitemap per OBJECT of
// type "text/sitemap", with its sections (further name/reference pairs of an
// index keyword), its type information and the parameters kept as they were
// read without being understood. The sitemap file object fills and prints them.
#pragma once

#include "telvanix/foundation/rgl_array.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// Text fields throughout this family: a getter gives null for an empty field;
// a setter given null keeps the old text and gives 0, otherwise assigns and gives 1.

// A PARAM name and value kept as written.
class TELVANIX_API CHtmlSiteParamCouple : public CRglObject {
 public:
  CHtmlSiteParamCouple(const char* name = nullptr, const char* value = nullptr);
  CHtmlSiteParamCouple(const CHtmlSiteParamCouple& other) = default;
  CHtmlSiteParamCouple& operator=(const CHtmlSiteParamCouple& other) = default;
  ~CHtmlSiteParamCouple() override;

  const char* GetName() const;
  int SetName(const char* name);
  const char* GetValue() const;
  int SetValue(const char* value);

 private:
  CString m_strName;
  CString m_strValue;
};

// One further name with its references inside an index entry.
class TELVANIX_API CHtmlSitemapSection : public CRglObject {
 public:
  CHtmlSitemapSection(const char* name = nullptr, const char* primary = nullptr, const char* secondary = nullptr);
  CHtmlSitemapSection(const CHtmlSitemapSection& other) = default;
  CHtmlSitemapSection& operator=(const CHtmlSitemapSection& other) = default;
  ~CHtmlSitemapSection() override;

  const char* GetName() const;
  int SetName(const char* name);
  // Falls back to the secondary text when the primary one is empty.
  const char* GetPrimary() const;
  int SetPrimary(const char* primary);
  const char* GetSecondary() const;
  int SetSecondary(const char* secondary);

 private:
  CString m_strName;
  CString m_strPrimary;
  CString m_strSecondary;
};

// Type strings of an entry with the references they apply to.
class TELVANIX_API CHtmlSitemapTypeInfo : public CRglObject {
 public:
  CHtmlSitemapTypeInfo() = default;
  CHtmlSitemapTypeInfo(const CHtmlSitemapTypeInfo& other) = default;
  CHtmlSitemapTypeInfo& operator=(const CHtmlSitemapTypeInfo& other) = default;
  ~CHtmlSitemapTypeInfo() override;

  // Appends a type string; null gives 0.
  int AddTypeInfo(const char* type);
  // "" for an index out of range, never null.
  const char* GetTypeInfoString(int index) const;
  int GetTypeInfoArraySize() const { return m_arrTypes.GetSize(); }

  // Falls back to the secondary text when the primary one is empty.
  const char* GetPrimary() const;
  int SetPrimary(const char* primary);
  const char* GetSecondary() const;
  int SetSecondary(const char* secondary);

 private:
  CStringArray m_arrTypes;
  CString m_strPrimary;
  CString m_strSecondary;
};

// One entry of a table of contents or an index. Owns its sections, type
// information and unknown parameters.
class TELVANIX_API CHtmlSitemap : public CRglObject {
 public:
  CHtmlSitemap();
  CHtmlSitemap(const CHtmlSitemap& other);
  CHtmlSitemap& operator=(const CHtmlSitemap& other);
  ~CHtmlSitemap() override;

  // Back to a new entry: level -1, image number -1, every text empty, no arrays.
  void Default();

  int GetSitemapFlags() const { return m_nSitemapFlags; }
  int SetSitemapFlags(int flags) { m_nSitemapFlags = flags; return 1; }
  // Nesting depth in the file, 1 for the outermost list; below 1 means "where it stands".
  int GetLevel() const { return m_nLevel; }
  int SetLevel(int level) { m_nLevel = level; return 1; }

  const char* GetName() const;
  int SetName(const char* name);
  const char* GetFrameName() const;
  int SetFrameName(const char* name);
  const char* GetWindowName() const;
  int SetWindowName(const char* name);
  const char* GetComment() const;
  int SetComment(const char* comment);
  const char* GetNew() const;
  int SetNew(const char* text);
  const char* GetMerge() const;
  int SetMerge(const char* merge);
  const char* GetMerge2() const;
  int SetMerge2(const char* merge);
  const char* GetSendEvent() const;
  int SetSendEvent(const char* event);
  int GetImageNumber() const { return m_nImageNumber; }
  int SetImageNumber(int number) { m_nImageNumber = number; return 1; }
  const char* GetSeeAlso() const;
  int SetSeeAlso(const char* seeAlso);
  const char* GetSync() const;
  int SetSync(const char* sync);
  const char* GetTargetAttribute() const;
  int SetTargetAttribute(const char* target);

  // The primary text, else the secondary, else the third reference: an entry
  // that only has a secondary or third reference still yields a primary one.
  const char* GetPrimary() const;
  int SetPrimary(const char* primary);
  // The secondary text, else the third reference.
  const char* GetSecondary() const;
  int SetSecondary(const char* secondary);
  // The third reference ("Secondary" in the file) as read; the getters above fall back to it.
  const char* GetThirdReference() const;
  int SetThirdReference(const char* reference);

  // Unknown parameters, kept in file order. Null name gives 0.
  int AddUnknownParam(const char* name, const char* value);
  int GetUnknownParamArraySize() const { return m_arrUnknownParams.GetSize(); }
  // Null for an index out of range.
  CHtmlSiteParamCouple* GetUnknownParam(int index) const;

  // Appends a section made of the texts; gives its index.
  int AddSection(const char* name, const char* primary, const char* secondary = nullptr);
  // Takes ownership; gives the index, or -1 for null.
  int AddSection(CHtmlSitemapSection* section);
  int GetSectionArraySize() const { return m_arrSections.GetSize(); }
  CHtmlSitemapSection* GetSection(int index) const;

  // Takes ownership; gives the index, or -1 for null.
  int AddTypeInfo(CHtmlSitemapTypeInfo* typeInfo);
  int GetTypeInfoArraySize() const { return m_arrTypeInfos.GetSize(); }
  CHtmlSitemapTypeInfo* GetTypeInfo(int index) const;

 private:
  void DeleteOwned();
  void CopyFrom(const CHtmlSitemap& other);

  int m_nSitemapFlags;
  int m_nLevel;
  CString m_strName;
  CString m_strFrameName;
  CString m_strWindowName;
  CString m_strComment;
  CString m_strNew;
  CString m_strMerge;
  CString m_strMerge2;
  CString m_strSendEvent;
  int m_nImageNumber;
  CString m_strSeeAlso;
  CString m_strSync;
  CString m_strPrimary;
  CString m_strSecondary;
  CString m_strThirdReference;
  CRglArray<CHtmlSiteParamCouple*, CHtmlSiteParamCouple*> m_arrUnknownParams;
  CRglArray<CHtmlSitemapSection*, CHtmlSitemapSection*> m_arrSections;
  CRglArray<CHtmlSitemapTypeInfo*, CHtmlSitemapTypeInfo*> m_arrTypeInfos;
  CString m_strTargetAttribute;
};

}  // namespace telvanix
