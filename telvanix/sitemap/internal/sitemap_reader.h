// Reading a sitemap page into the model. The page walk hands the reader the
// structural tags (UL, LI, OBJECT, PARAM, TITLE, BASE) in source order; the
// reader keeps the list depth, gathers each OBJECT's parameters and turns them
// into an entry or into the site properties when the object ends. Real files
// are loose (missing end tags, lists around every LI or none at all), so the
// reader relies on nothing but tag order.
#pragma once

#include <vector>

#include "telvanix/platform/string_types.h"
#include "telvanix/sitemap/file_sitemap.h"

namespace telvanix {

class CHtmlFileSitemap::CReader {
 public:
  enum EmTagKind {
    emTagOther = 0,
    emTagList,    // UL, OL
    emTagItem,    // LI
    emTagObject,
    emTagParam,
    emTagTitle,
    emTagBase,
  };

  // Attributes of the tag being handed over; values as written (no decoding).
  class CAttributes {
   public:
    virtual ~CAttributes() = default;
    virtual const char* GetAttributeValue(const char* name) const = 0;
  };

  explicit CReader(CHtmlFileSitemap& file) : m_File(file) {}

  void StartTag(EmTagKind kind, const CAttributes& attributes);
  void EndTag(EmTagKind kind);
  // Decoded text between tags (only the title's is kept).
  void Text(const char* text);
  // True inside the title, where text is worth decoding.
  bool WantsText() const { return m_bInTitle; }
  // Ends the open object; gives the number of sitemap objects found.
  int Finish();

 private:
  struct Param {
    int nCode;
    CString strName;
    CString strValue;
    CString strValue2;
  };
  enum EmObjectKind { emObjectNone, emObjectEntry, emObjectSite, emObjectOther };

  void FlushObject();
  void ReadEntry();
  void ReadSite();
  // True when a reference parameter follows index i in the open object.
  bool HasLaterReference(size_t i) const;

  CHtmlFileSitemap& m_File;
  int m_nDepth = 0;
  int m_nFound = 0;
  bool m_bInTitle = false;
  bool m_bTitleRead = false;
  bool m_bBaseRead = false;
  CString m_strTitle;
  EmObjectKind m_nObject = emObjectNone;
  int m_nObjectLevel = 1;
  CString m_strTarget;
  std::vector<Param> m_arrParams;
};

}  // namespace telvanix
