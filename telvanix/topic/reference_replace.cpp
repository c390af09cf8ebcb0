// Reference replacement in a topic page: one walk over the token list finds
// every value that names a file (tag attributes, PARAM values, url() and
// "@import" in style attributes and STYLE blocks, vector-markup images in
// comments) as a span of a token's source bytes. Listing reads the spans;
// rewriting replaces each changed span inside its token's bytes, so every
// other byte of the page stays as it was read.
#include <cstring>
#include <string>
#include <vector>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/style_values.h"
#include "telvanix/html/reference_text.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/html/internal/markup_scan.h"
#include "telvanix/topic/internal/reference_sites.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;
using markup::CountLines;

namespace {

// Attributes that name a file, by tag, and what unlinking them does.
struct AttributeRule {
  int tagId;
  const char* attribute;
  int kind;
  int unlink;
};
const AttributeRule kAttributeRules[] = {
    {kTagA, "href", CFileReference::emRefLink, kUnlinkAnchor},
    {kTagArea, "href", CFileReference::emRefLink, kUnlinkElement},
    {kTagLink, "href", CFileReference::emRefStyleSheet, kUnlinkElement},
    {kTagImg, "src", CFileReference::emRefImage, kUnlinkElement},
    {kTagImg, "lowsrc", CFileReference::emRefImage, kUnlinkNone},
    {kTagImg, "dynsrc", CFileReference::emRefMedia, kUnlinkNone},
    {kTagImg, "usemap", CFileReference::emRefImage, kUnlinkNone},
    {kTagInput, "src", CFileReference::emRefImage, kUnlinkElement},
    {kTagScript, "src", CFileReference::emRefScript, kUnlinkElement},
    {kTagFrame, "src", CFileReference::emRefLink, kUnlinkElement},
    {kTagIFrame, "src", CFileReference::emRefLink, kUnlinkElement},
    {kTagBgSound, "src", CFileReference::emRefMedia, kUnlinkElement},
    {kTagEmbed, "src", CFileReference::emRefMedia, kUnlinkElement},
    {kTagObject, "data", CFileReference::emRefMedia, kUnlinkObject},
};

// PARAM names that carry a played file in objects other than the help
// control, and the values of a sitemap entry that name files.
const char* const kMediaParams[] = {"src", "filename", "movie", "url", "data"};
const char* const kSitemapParams[] = {"Local", "URL", "ImageList", "Merge"};

// A rule for the tag and attribute (any attribute for a null name).
bool HasAttributeRule(int tagId, const char* name) {
  for (const AttributeRule& rule : kAttributeRules)
    if (rule.tagId == tagId && (!name || MbsEqualNoCase(name, rule.attribute)))
      return true;
  return false;
}

bool InList(const char* name, const char* const* list, int n) {
  for (int i = 0; i < n; ++i)
    if (MbsEqualNoCase(name, list[i]))
      return true;
  return false;
}

// What the OBJECT whose PARAMs the walk is in is.
enum ObjectKind { kNoObject, kHhctrlObject, kSitemapObject, kMediaObject, kOtherObject };

// "background" names a file only when it is not a colour ("white", "#fff").
bool IsBackgroundFile(const char* value) {
  return value && std::strchr(value, '.') && CSttColor(value).GetColorRef() == CSttColor::ms_nNoColor;
}

// A character reference standing for a quote at both ends of a url()
// target written in a style attribute ("&quot;a.gif&quot;"): its length.
int QuoteReferenceLength(const char* text, int n) {
  static const char* const kQuotes[] = {"&quot;", "&#34;", "&#39;", "&apos;", "&#x22;", "&#x27;"};
  for (const char* q : kQuotes) {
    const int k = static_cast<int>(std::strlen(q));
    if (n > 2 * k && MbsNCompareNoCase(text, q, k) == 0 && MbsNCompareNoCase(text + n - k, q, k) == 0)
      return k;
  }
  return 0;
}

bool IsIndexFile(const CString& path) {
  const int n = path.GetLength();
  return n >= 4 && MbsEqualNoCase(path.GetString() + n - 4, ".hhk");
}

}  // namespace

// ---------------------------------------------------------------------------
// the walk

void CHtmlFileEx::CollectReferenceSites(const std::function<void(ReferenceSite&)>& sink, int groups,
                                        POSITION only) {
  int line = 1;
  ObjectKind object = kNoObject;
  POSITION objectPos = nullptr;
  EmHhctrlCommand command = emHhctrlNone;
  bool afterStyle = false;

  for (POSITION pos = m_TokenList.GetHeadPosition(); pos;) {
    const POSITION here = pos;
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    if (!token)
      continue;
    const int tokenLine = line;
    const unsigned char* data = token->GetOriginalData();
    const int length = token->GetOriginalLength();
    line += CountLines(data, length) + CountLines(token->GetIndentAfter(), token->GetIndentAfterLength());
    if (token->IsDiscardedToken() || !data || length <= 0)
      continue;

    auto add = [&](int offset, int n, int html, char quote, int whole, int group, int kind, int unlink,
                   const CString& element, const CString& attribute) {
      // A value holding a zero byte is no file name (and no C string).
      if (!(groups & group) || n < 0 || offset < 0 || offset + n > length ||
          std::memchr(data + offset, 0, static_cast<size_t>(n)))
        return;
      if (only && here != only && objectPos != only)
        return;
      ReferenceSite site;
      site.pos = here;
      site.objectPos = (group & (kSiteHhctrl | kSiteSitemap | kSiteMedia)) || unlink == kUnlinkObject ? objectPos
                                                                                                        : nullptr;
      site.offset = offset;
      site.length = n;
      site.html = html;
      site.quote = quote;
      site.wholeValue = whole;
      site.group = group;
      site.unlink = unlink;
      site.ref.m_nLine = tokenLine + CountLines(data, offset);
      site.ref.m_nKind = kind;
      site.ref.m_strElement = element;
      site.ref.m_strAttribute = attribute;
      site.ref.m_strWritten = CString(reinterpret_cast<const char*>(data) + offset, n);
      sink(site);
    };
    // url() and "@import" targets of stylesheet text at `offset` in the token.
    auto addStyle = [&](int offset, int n, int html, char quote, const CString& element, const char* attribute) {
      CCssPackEx::ForEachUrlTarget(reinterpret_cast<const char*>(data) + offset, n,
                                   [&](int at, int count, int isImport, int) {
                                     const int k = html ? QuoteReferenceLength(
                                                              reinterpret_cast<const char*>(data) + offset + at, count)
                                                        : 0;
                                     add(offset + at + k, count - 2 * k, html, quote, 0, kSiteStyle,
                                         isImport ? CFileReference::emRefStyleSheet : CFileReference::emRefStyleUrl,
                                         kUnlinkNone, element,
                                         attribute ? CString(attribute) : CString(isImport ? "@import" : "url"));
                                   });
    };

    CHtmlTagItem* tag = token->GetSafeTagItemPtr();
    if (!tag) {
      // The text of a STYLE block: stylesheet text, no character references.
      if (afterStyle)
        addStyle(0, length, 0, 0, CString("STYLE"), nullptr);
      afterStyle = false;
      continue;
    }
    afterStyle = false;
    const int id = tag->GetTagId();
    if (id == EndOf(kTagObject)) {
      object = kNoObject;
      objectPos = nullptr;
      continue;
    }
    if (tag->IsEndTag())
      continue;
    CString element;  // the tag's name, made once a site needs it
    auto named = [&]() -> const CString& {
      if (element.IsEmpty())
        element = tag->GetTagName();
      return element;
    };

    if (id == kTagComment) {
      // Vector-markup images keep their "src" inside the comment.
      const char* text = reinterpret_cast<const char*>(data);
      const std::string body(text, static_cast<size_t>(length));
      for (size_t at = body.find("<v:imagedata"); at != std::string::npos; at = body.find("<v:imagedata", at + 1)) {
        const size_t close = body.find('>', at);
        if (close == std::string::npos)
          break;
        CHtmlTagItem inner(body.substr(at, close + 1 - at).c_str());
        for (int i = 0, n = inner.GetTotalAttributesNum(); i < n; ++i) {
          const char* name = nullptr;
          const char* value = nullptr;
          int offset = 0, count = 0;
          if (inner.GetAttributeByNum(i, name, value) && MbsEqualNoCase(name, "src") &&
              inner.GetAttributeValueSpan(i, offset, count)) {
            const char q = offset > 0 ? body[at + static_cast<size_t>(offset) - 1] : 0;
            add(static_cast<int>(at) + offset, count, 1, q == '"' || q == '\'' ? q : 0, 1, kSiteTag,
                CFileReference::emRefImage, kUnlinkNone, CString("v:imagedata"), CString("src"));
          }
        }
      }
      continue;
    }

    if (id == kTagObject) {
      objectPos = here;
      command = emHhctrlNone;
      if (IsHhctrlActivexObject(tag)) {
        object = kHhctrlObject;
        command = GetHhctrlCommandType(here);
      } else if (IsKeywordActiveObject(tag) || IsPopupActivexObject(tag)) {
        object = kOtherObject;
      } else {
        const char* type = tag->GetAttributeValue("type");
        object = type && (MbsEqualNoCase(type, "text/sitemap") || MbsEqualNoCase(type, "text/site properties"))
                     ? kSitemapObject
                     : kMediaObject;
      }
    }
    if (id == kTagStyle)
      afterStyle = true;

    const bool inputImage = id == kTagInput && MbsEqualNoCase(tag->GetAttributeValue("type"), "image");
    for (int i = 0, n = tag->GetTotalAttributesNum(); i < n; ++i) {
      const char* name = nullptr;
      const char* value = nullptr;
      int offset = 0, count = 0;
      if (!tag->GetAttributeByNum(i, name, value) || !name || !value)
        continue;
      // Most attributes name no file: the value is located only for those
      // that may.
      const bool wanted = MbsEqualNoCase(name, "style") || MbsEqualNoCase(name, "background") ||
                          MbsEqualNoCase(name, "srcset") ||
                          (id == kTagParam && object != kNoObject && MbsEqualNoCase(name, "value")) ||
                          HasAttributeRule(id, name);
      if (!wanted || !tag->GetAttributeValueSpan(i, offset, count))
        continue;
      const char before = offset > 0 ? static_cast<char>(data[offset - 1]) : 0;
      const char quote = before == '"' || before == '\'' ? before : 0;
      const CString attribute(name);

      if (MbsEqualNoCase(name, "style")) {
        addStyle(offset, count, 1, quote, named(), "style");
        continue;
      }
      if (MbsEqualNoCase(name, "background")) {
        if (IsBackgroundFile(value))
          add(offset, count, 1, quote, 1, kSiteTag, CFileReference::emRefImage, kUnlinkNone, named(), attribute);
        continue;
      }
      if (MbsEqualNoCase(name, "srcset")) {
        // Candidates: a URL, an optional descriptor, then ",".
        int k = 0;
        while (k < count) {
          while (k < count && (value[k] == ',' || value[k] == ' ' || value[k] == '\t' || value[k] == '\r' ||
                               value[k] == '\n'))
            ++k;
          const int start = k;
          while (k < count && value[k] != ' ' && value[k] != '\t' && value[k] != '\r' && value[k] != '\n')
            ++k;
          int end = k;
          while (end > start && value[end - 1] == ',')
            --end;
          if (end > start)
            add(offset + start, end - start, 1, quote, 0, kSiteTag, CFileReference::emRefImage, kUnlinkNone, named(),
                attribute);
          if (end == k)
            while (k < count && value[k] != ',')
              ++k;
        }
        continue;
      }
      if (id == kTagParam && object != kNoObject) {
        const char* paramName = tag->GetAttributeValue("name");
        if (!paramName || !MbsEqualNoCase(name, "value"))
          continue;
        const CString param(paramName);
        if (object == kHhctrlObject) {
          if (MbsEqualNoCase(paramName, "button")) {
            if (const char* image = command != emHhctrlNone ? ButtonImage(value) : nullptr)
              add(offset + static_cast<int>(image - value), count - static_cast<int>(image - value), 1, quote, 0,
                  kSiteHhctrl, CFileReference::emRefImage, kUnlinkParam, named(), param);
          } else if (MbsNCompareNoCase(paramName, "item", 4) == 0) {
            const char* segment = LastSegment(value);
            int kind = 0;
            if (command == emHhctrlSplash && MbsNCompareNoCase(paramName, "item1", 5) == 0 && !IsPageName(segment))
              kind = CFileReference::emRefImage;
            else if (command == emHhctrlRelatedTopics)
              kind = CFileReference::emRefLink;
            else if (command == emHhctrlContents || command == emHhctrlIndex)
              kind = CFileReference::emRefContentsFile;
            if (kind)
              add(offset + static_cast<int>(segment - value), count - static_cast<int>(segment - value), 1, quote, 0,
                  kSiteHhctrl, kind, kUnlinkParam, named(), param);
          }
        } else if (object == kSitemapObject && InList(paramName, kSitemapParams, 4)) {
          int n2 = count;
          // "Merge" names a compiled file: "other.chm::/toc.hhc".
          if (const char* split = MbsEqualNoCase(paramName, "Merge") ? std::strstr(value, "::") : nullptr)
            n2 = static_cast<int>(split - value);
          add(offset, n2, 1, quote, n2 == count, kSiteSitemap, CFileReference::emRefSitemap,
              MbsEqualNoCase(paramName, "Local") ? kUnlinkSitemapEntry : kUnlinkNone, named(), param);
        } else if (object == kMediaObject && InList(paramName, kMediaParams, 5)) {
          add(offset, count, 1, quote, 1, kSiteMedia, CFileReference::emRefMedia, kUnlinkObject, named(), param);
        }
        continue;
      }
      for (const AttributeRule& rule : kAttributeRules) {
        if (rule.tagId != id || !MbsEqualNoCase(name, rule.attribute) || (id == kTagInput && !inputImage))
          continue;
        int kind = rule.kind;
        if (id == kTagLink) {
          CString rel(tag->GetAttributeValue("rel"));
          rel += " ";
          rel += tag->GetAttributeValue("rev");
          rel.MakeLower();
          if (rel.Find("stylesheet") < 0)
            kind = CFileReference::emRefLink;
        }
        add(offset, count, 1, quote, 1, kSiteTag, kind, rule.unlink, named(), attribute);
        break;
      }
    }
  }
}

void CHtmlFileEx::DecideReferenceSite(ReferenceSite& site, CReplaceContext& context) {
  CFileReference& ref = site.ref;
  ref.m_nChange = site.html ? RewriteHtmlReference(context, ref.m_strWritten, site.quote, site.wholeValue,
                                                   ref.m_strNewValue, &ref.m_strTarget)
                            : context.RewriteReference(ref.m_strWritten, ref.m_strNewValue, &ref.m_strTarget);
  if (!(context.GetOptions() & CReplaceContext::emReplaceNoHook)) {
    context.m_pCurrent = &ref;
    const char* custom = GetNewRelFileNameCustom(ref.m_strWritten, context);
    context.m_pCurrent = nullptr;
    if (custom) {
      const bool same = std::strcmp(custom, ref.m_strWritten) == 0;
      ref.m_strNewValue = same ? CString() : CString(custom);
      ref.m_nChange = same ? CFileMoves::emUnchanged : CFileMoves::emRewritten;
    }
  }
}

int CHtmlFileEx::ApplyReferenceSites(std::vector<ReferenceSite>& sites, CReplaceContext& context, int indexRule) {
  int changed = 0;
  const bool collect = (context.GetOptions() & CReplaceContext::emReplaceCollect) != 0;
  // Rewrites, token by token: the sites of one token come together, in the
  // order of their bytes.
  for (size_t i = 0; i < sites.size();) {
    size_t j = i;
    while (j < sites.size() && sites[j].pos == sites[i].pos)
      ++j;
    CHtmlTokenItem* token = m_TokenList.GetTokenItem(sites[i].pos);
    const char* data = reinterpret_cast<const char*>(token->GetOriginalData());
    const int length = token->GetOriginalLength();
    std::string bytes;
    int done = 0, rewritten = 0;
    for (size_t k = i; k < j; ++k) {
      const ReferenceSite& site = sites[k];
      if (site.ref.m_nChange != CFileMoves::emRewritten || site.offset < done || site.offset + site.length > length)
        continue;
      bytes.append(data + done, static_cast<size_t>(site.offset - done));
      bytes += site.ref.m_strNewValue.str();
      done = site.offset + site.length;
      ++rewritten;
      if (collect)
        context.m_changes.push_back(site.ref);
    }
    if (rewritten) {
      bytes.append(data + done, static_cast<size_t>(length - done));
      token->RewriteOriginalData(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
      changed += rewritten;
    }
    i = j;
  }
  // Unlinks, once the bytes are settled (discarding keeps positions valid).
  if (!(context.GetOptions() & CReplaceContext::emReplaceNoUnlink)) {
    for (const ReferenceSite& site : sites) {
      if (site.ref.m_nChange != CFileMoves::emDeleted || site.unlink == kUnlinkNone)
        continue;
      int done = 0;
      switch (site.unlink) {
        case kUnlinkAnchor:
          done = DeleteAnchor(site.pos);
          break;
        case kUnlinkElement:
        case kUnlinkParam:
          done = DeleteEntity(site.pos);
          break;
        case kUnlinkObject:
          done = DeleteObject(site.objectPos);
          break;
        case kUnlinkSitemapEntry:
          done = UnlinkSitemapEntry(site, indexRule);
          break;
        default:
          break;
      }
      if (done) {
        ++changed;
        if (collect)
          context.m_changes.push_back(site.ref);
      }
    }
  }
  if (changed)
    Analyse();
  return changed;
}

int CHtmlFileEx::CollectDecidedSites(CReplaceContext& context, int groups, POSITION only,
                                     const std::function<void(ReferenceSite&)>& sink) {
  if (context.GetDocumentOldPath().IsEmpty())
    return -1;
  EnsureAnalysed();
  // An empty buffer is a page without references; a file not read is a failure.
  if (!m_bParsed)
    return GetSourceMode() == emSourceBuffer ? 0 : -1;
  CollectReferenceSites(
      [&](ReferenceSite& site) {
        DecideReferenceSite(site, context);
        sink(site);
      },
      groups, only);
  return 1;
}

int CHtmlFileEx::RunReplace(CReplaceContext& context, int groups, POSITION only, int indexRule, int mode) {
  try {
    context.m_changes.clear();
    std::vector<ReferenceSite> sites;
    const int ready =
        CollectDecidedSites(context, groups, only, [&](ReferenceSite& site) { sites.push_back(std::move(site)); });
    if (ready <= 0)
      return ready;
    for (ReferenceSite& site : sites) {
      // A variant that only rewrites, or only unlinks, leaves the rest.
      const int kind = site.ref.m_nChange == CFileMoves::emRewritten ? kReplaceRewrite
                       : site.ref.m_nChange == CFileMoves::emDeleted ? kReplaceUnlink
                                                                     : 0;
      if (kind && !(mode & kind)) {
        site.ref.m_nChange = CFileMoves::emUnchanged;
        site.ref.m_strNewValue.Empty();
      }
    }
    return ApplyReferenceSites(sites, context, indexRule);
  } catch (...) {
    return -1;
  }
}

int CHtmlFileEx::ReplaceFileReference(CReplaceContext& context) {
  return RunReplace(context, kSiteAll, nullptr, IsIndexFile(context.GetDocumentOldPath()) ? 1 : 0,
                    kReplaceRewrite | kReplaceUnlink);
}

int CHtmlFileEx::GetFileReferences(CReplaceContext& context, std::vector<CFileReference>& references) {
  references.clear();
  try {
    const int ready = CollectDecidedSites(context, kSiteAll, nullptr,
                                          [&](ReferenceSite& site) { references.push_back(std::move(site.ref)); });
    return ready <= 0 ? ready : static_cast<int>(references.size());
  } catch (...) {
    references.clear();
    return -1;
  }
}

int CHtmlFileEx::GetFileReferences(std::vector<CFileReference>& references) {
  references.clear();
  const int count = ForEachFileReference([&](CFileReference& ref) { references.push_back(std::move(ref)); });
  if (count < 0)
    references.clear();
  return count;
}

int CHtmlFileEx::ForEachFileReference(const std::function<void(CFileReference&)>& visit) {
  try {
    EnsureAnalysed();
    if (!m_bParsed)
      return GetSourceMode() == emSourceBuffer ? 0 : -1;
    int count = 0;
    CollectReferenceSites(
        [&](ReferenceSite& site) {
          visit(site.ref);
          ++count;
        },
        kSiteAll, nullptr);
    return count;
  } catch (...) {
    return -1;
  }
}

}  // namespace telvanix
