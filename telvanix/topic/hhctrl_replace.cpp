// Reference replacement inside help-control objects and sitemap entries:
// the page's reference walk limited to those sites, and the removal of the
// sitemap entries whose topics are deleted.
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/internal/reference_sites.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

namespace {

// The "name" of the live PARAM at pos, or null.
const char* ParamName(CHtmlTokenList& list, POSITION pos) {
  CHtmlTagItem* tag = LiveTagAt(list, pos);
  return tag && tag->GetTagId() == kTagParam ? tag->GetAttributeValue("name") : nullptr;
}

}  // namespace

int CHtmlFileEx::ReplaceTagHhctrlObjectInHtm(POSITION pos, CReplaceContext& context) {
  try {
    EnsureAnalysed();
    if (!IsHhctrlActivexObject(GetLiveTag(pos)))
      return -1;
    return RunReplace(context, kSiteHhctrl, pos, 0, kReplaceRewrite | kReplaceUnlink);
  } catch (...) {
    return -1;
  }
}

int CHtmlFileEx::ReplaceHhctrlButton(POSITION pos, CReplaceContext& context) {
  return ReplaceHhctrlParam(pos, context, "button", -1);
}

int CHtmlFileEx::ReplaceHhctrlItem(POSITION pos, CReplaceContext& context) {
  return ReplaceHhctrlParam(pos, context, "item", 4);
}

int CHtmlFileEx::ReplaceHhctrlParam(POSITION pos, CReplaceContext& context, const char* name, int length) {
  try {
    EnsureAnalysed();
    const char* param = ParamName(m_TokenList, pos);
    if (!param || MbsNCompareNoCase(param, name, length) != 0)
      return -1;
    return RunReplace(context, kSiteHhctrl, pos, 0, kReplaceRewrite | kReplaceUnlink);
  } catch (...) {
    return -1;
  }
}

int CHtmlFileEx::ReplaceTagObjectInHhc(CReplaceContext& context) {
  return RunReplace(context, kSiteSitemap, nullptr, 0, kReplaceRewrite);
}

int CHtmlFileEx::ReplaceTagObjectInHhk(CReplaceContext& context) {
  return RunReplace(context, kSiteSitemap, nullptr, 1, kReplaceRewrite);
}

int CHtmlFileEx::DeleteObjectInHhc(CReplaceContext& context) {
  return RunReplace(context, kSiteSitemap, nullptr, 0, kReplaceUnlink);
}

int CHtmlFileEx::DeleteObjectInHhk(CReplaceContext& context) {
  return RunReplace(context, kSiteSitemap, nullptr, 1, kReplaceUnlink);
}

int CHtmlFileEx::UnlinkSitemapEntry(const ReferenceSite& site, int indexRule) {
  if (!LiveTagAt(m_TokenList, site.pos) || !LiveTagAt(m_TokenList, site.objectPos))
    return 0;
  // The entry's live PARAMs and what follows its OBJECT.
  std::vector<POSITION> params;
  POSITION after = nullptr, here = nullptr;
  POSITION walk = site.objectPos;
  m_TokenList.GetNext(walk);
  while (CHtmlTagItem* tag = NextLiveTag(m_TokenList, walk, &here)) {
    if (tag->GetTagId() != kTagParam) {
      after = tag->GetTagId() == EndOf(kTagObject) ? walk : here;
      break;
    }
    params.push_back(here);
  }
  // Children: a list opens before the next entry does.
  bool children = false;
  walk = after;
  while (CHtmlTagItem* tag = NextLiveTag(m_TokenList, walk)) {
    if (tag->GetTagId() != EndOf(kTagLi)) {
      children = tag->GetTagId() == kTagUl;
      break;
    }
  }

  if (indexRule) {
    // An index entry: the topic's "Name" goes with its "Local" unless it is
    // the entry's first "Name" (the keyword).
    int names = 0;
    POSITION previous = nullptr;
    for (POSITION p : params) {
      if (p == site.pos)
        break;
      const char* name = ParamName(m_TokenList, p);
      if (name && MbsEqualNoCase(name, "Name"))
        ++names;
      previous = p;
    }
    const char* previousName = previous ? ParamName(m_TokenList, previous) : nullptr;
    if (names > 1 && previousName && MbsEqualNoCase(previousName, "Name"))
      DiscardKeepingBlanks(previous);
    DiscardKeepingBlanks(site.pos);
    for (POSITION p : params) {
      const char* name = ParamName(m_TokenList, p);
      if (name && MbsEqualNoCase(name, "Local"))
        return 1;
    }
  } else if (children) {
    DiscardKeepingBlanks(site.pos);
    return 1;
  }
  if (children) {
    // An index entry without topics keeps its sub-entries.
    return 1;
  }
  // The whole entry: its LI, the OBJECT with its PARAMs, a closing LI.
  POSITION li = site.objectPos;
  m_TokenList.GetPrev(li);
  while (li) {
    CHtmlTokenItem* token = m_TokenList.GetTokenItem(li);
    const bool blank = token && token->IsTextToken() &&
                       CHtmlTextItem::IsSpaceOnly(token->GetOriginalData(),
                                                  token->GetOriginalData() + token->GetOriginalLength() - 1);
    if (token && !token->IsDiscardedToken() && !blank)
      break;
    m_TokenList.GetPrev(li);
  }
  CHtmlTagItem* liTag = LiveTagAt(m_TokenList, li);
  if (liTag && liTag->GetTagId() == kTagLi)
    DiscardKeepingBlanks(li);
  DeleteObject(site.objectPos);
  walk = after;
  if (CHtmlTagItem* close = NextLiveTag(m_TokenList, walk, &here); close && close->GetTagId() == EndOf(kTagLi))
    DiscardKeepingBlanks(here);
  return 1;
}

}  // namespace telvanix
