// The walk of a parsed sitemap page: the token list cuts the page, and the
// reader is handed the tags it cares about in source order. Tags are only
// identified up front; attributes are parsed for the few tags whose
// attributes are asked for, which keeps reading a large index cheap.
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/sitemap/internal/sitemap_reader.h"

namespace telvanix {

namespace {

using T = CHtmlTagItem;
using CReader = CHtmlFileSitemap::CReader;

CReader::EmTagKind TagKind(int baseId) {
  switch (baseId) {
    case T::emTagIdUl:
    case T::emTagIdOl:
      return CReader::emTagList;
    case T::emTagIdLi:
      return CReader::emTagItem;
    case T::emTagIdObject:
      return CReader::emTagObject;
    case T::emTagIdParam:
      return CReader::emTagParam;
    case T::emTagIdTitle:
      return CReader::emTagTitle;
    case T::emTagIdBase:
      return CReader::emTagBase;
    default:
      return CReader::emTagOther;
  }
}

class CTagAttributes : public CReader::CAttributes {
 public:
  explicit CTagAttributes(CHtmlTagItem* tag) : m_pTag(tag) {}
  const char* GetAttributeValue(const char* name) const override { return m_pTag->GetAttributeValue(name); }

 private:
  CHtmlTagItem* m_pTag;
};

}  // namespace

int CHtmlFileSitemap::ReadBytes(const unsigned char* data, int length) {
  if (!data || length <= 0)
    return 0;
  CHtmlTokenList tokens;
  tokens.BuildTokenList(data, data + length, CHtmlTokenItem::emAnalyseIdentify);
  CReader reader(*this);
  POSITION pos = tokens.GetHeadPosition();
  while (pos) {
    CHtmlTokenItem* token = tokens.GetNext(pos);
    if (!token || token->IsDiscardedToken())
      continue;
    if (CHtmlTagItem* tag = token->GetSafeTagItemPtr()) {
      if (tag->IsUnknownTag())
        continue;
      CReader::EmTagKind kind = TagKind(tag->GetTagId() & ~static_cast<int>(CHtmlTagItem::emTagIdEndBit));
      if (tag->IsEndTag())
        reader.EndTag(kind);
      else
        reader.StartTag(kind, CTagAttributes(tag));
    } else if (CHtmlTextItem* text = token->GetSafeTextItemPtr()) {
      if (reader.WantsText())
        reader.Text(text->GetText());
    }
  }
  return reader.Finish();
}

}  // namespace telvanix
