// Arbitrary bytes as a topic page: analyse it, run every query a host makes
// of a topic (referenced files, help-control items, keywords, properties,
// build tags, words), change it the way an authoring tool does, save it, and
// read the saved page again. Nothing may crash, hang or read out of bounds,
// and a topic property the tool wrote must read back from the saved page,
// unless the page holds a tag whose end depends on the bytes after it (see
// EndsOnLaterBytes): such a tag swallows what is inserted after it when the
// saved page is read again. The saved page read into the first document
// again must read as it does in a fresh one.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "telvanix/platform/code_page.h"
#include "telvanix/topic/html_file_ex.h"

using namespace telvanix;
using CStringArrayEx = CHtmlFileEx::CStringArrayEx;
using CPositionArray = CHtmlFileEx::CPositionArray;

namespace {

// Every getter and enumerator once; their results only have to be safe.
void QueryAll(CHtmlFileEx& doc) {
  doc.Analyse();
  CString text;
  int n = 0;
  COLORREF rgb = 0;
  doc.GetHtmlTitle(text);
  doc.GetBodyHtmlText(text);
  doc.GetPureText(2, nullptr, nullptr);
  doc.GetPureText(0, nullptr, "empty");
  for (const CString& utf8 : {doc.GetPureTextUtf8(0), doc.GetPureTextUtf8(2), doc.GetHtmlTitleUtf8()})
    if (!IsValidUtf8(utf8.str().data(), utf8.str().size()))
      std::abort();
  for (int which = 1; which <= 5; ++which)
    doc.GetColor(static_cast<CHtmlFileEx::EmColor>(which), rgb);
  doc.GetWaterMark(n);
  doc.GetBackgroundImage(text);
  doc.GetBackgroundSound(text, n);
  CStringArrayEx files;
  doc.GetExternalStyleSheetFileNameEx(files);
  doc.GetExternalStyleSheetFileName(text);

  unsigned int i = 0, stage = 0;
  for (const char* s = doc.GetFirstScriptSource(i); s && *s; s = doc.GetNextScriptSource(i)) {
  }
  for (CString s = doc.GetFirstImage(i); !s.IsEmpty(); s = doc.GetNextImage(i)) {
  }
  for (CString s = doc.GetFirstBaggageImage(i, stage); !s.IsEmpty(); s = doc.GetNextBaggageImage(i, stage)) {
  }
  for (const char* s = doc.GetFirstHhctrlBaggageImage(i); s && *s; s = doc.GetNextHhctrlBaggageImage(i)) {
  }
  for (const char* s = doc.GetFirstRelatedTopic(i); s && *s; s = doc.GetNextRelatedTopic(i)) {
  }
  for (const char* s = doc.GetFirstContentOrIndex(i); s && *s; s = doc.GetNextContentOrIndex(i)) {
  }
  for (CString s = doc.GetFirstMultimediaFile(i); !s.IsEmpty(); s = doc.GetNextMultimediaFile(i)) {
  }
  for (const char* s = doc.GetFirstAnchorHref(i); s && *s; s = doc.GetNextAnchorHref(i))
    doc.GetAnchorHrefType(s);
  for (const char* s = doc.GetFirstBookmark(i); s && *s; s = doc.GetNextBookmark(i)) {
  }
  for (const char* s = doc.GetFirstFrameSource(i); s && *s; s = doc.GetNextFrameSource(i)) {
  }
  for (int type = 0; type <= 4; ++type) {
    const auto item = static_cast<CHtmlFileEx::EmHhctrlObjectItemType>(type);
    for (const char* s = doc.GetFirstHhctrlItemValue(i, item); s; s = doc.GetNextHhctrlItemValue(i, item)) {
    }
  }
  const CPositionArray& objects = doc.GetObjectPositions();
  for (int k = 0; k < objects.GetSize(); ++k)
    doc.GetHhctrlCommandType(objects[k]);
  doc.GetInlineStyleBaggage();
  doc.GetEmbeddedStyleBaggage();
  doc.GetSpecialTagBaggage();

  CStringArrayEx keywords;
  doc.GetKeywordK(keywords);
  doc.GetKeywordA(keywords);
  doc.GetTopicAuthor(text);
  doc.GetTopicStatus(text);
  doc.GetTopicPriority(n);
  doc.GetTopicTimeEstimate(n);
  CStringList items;
  doc.GetTopicCheckList(items);
  doc.GetTopicComment(text);
  doc.GetTopicId(text);
  doc.GetTopicBuildTags(text);
  POSITION pos = nullptr;
  for (CString s = doc.GetFirstInlineBuildTags(i, &pos); !s.IsEmpty(); s = doc.GetNextInlineBuildTags(i, &pos)) {
  }
}

// A tag that prints with a ">" inside an unclosed quote (the tokenizer ended
// it there by its fallback), text that begins with a "<" the tokenizer
// refused, a tag holding a zero byte, or a changed tag with a double quote in a value (values print
// re-quoted with double quotes as they are, by rule): where such a token ends
// or how its attributes split is decided by the bytes after it, so a tag
// inserted after it, or its own attributes, may read back differently.
bool QuoteInAttributes(CHtmlTagItem* tag) {
  const char* name = nullptr;
  const char* value = nullptr;
  for (int i = 0; tag->GetAttributeByNum(i, name, value); ++i) {
    int quotes = 0;
    for (const char* c = name; c && *c; ++c)
      quotes += *c == '"';
    if (quotes % 2 || (value && std::strchr(value, '"')))
      return true;
  }
  return false;
}

bool EndsOnLaterBytes(CHtmlFileEx& doc) {
  CHtmlTokenList* list = doc.GetTokenList();
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list->GetNext(pos);
    if (token->IsDiscardedToken())
      continue;
    if (token->GetTokenFlag() & CHtmlTokenItem::emTokenRejectedTagText)
      return true;
    CHtmlTagItem* tag = token->GetSafeTagItemPtr();
    if (!tag || tag->GetTagId() == CHtmlTagItem::emTagIdComment)
      continue;
    if (tag->IsModifiedToken() && QuoteInAttributes(tag))
      return true;
    const CString text = tag->GetPrintableText(CHtmlTokenItem::emTextTokenOnly);
    const char* data = text.GetString();
    const int length = text.GetLength();
    // Attribute names and values are C strings: a zero byte in a tag hides
    // its quotes from the check above.
    if (std::memchr(data, 0, static_cast<size_t>(length)))
      return true;
    // A closed CDATA section ends where it says; an open one ended at some
    // ">" by the fallback, and a ">" inserted after it may end it sooner.
    if (length > 9 && strncasecmp(data, "<![CDATA[", 9) == 0) {
      if (length >= 12 && std::memcmp(data + length - 3, "]]>", 3) == 0)
        continue;
      return true;
    }
    char quote = 0;
    for (int i = 1; i < length - 1; ++i) {
      if (!quote && (data[i] == '"' || data[i] == '\''))
        quote = data[i];
      else if (data[i] == quote)
        quote = 0;
    }
    if (quote)
      return true;
  }
  return false;
}

CByteString SavedCopy(CHtmlFileEx& doc, CHtmlPack::EmSaveFlag flag) {
  CByteString out;
  doc.Save(&out, flag);
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0 || size > (1u << 16))
    return 0;
  CByteString source(data, static_cast<int>(size));
  CHtmlFileEx doc(source, "/fuzz/topic/page.htm");
  QueryAll(doc);

  // What an authoring tool changes in a topic.
  // No double quote: an existing tag takes the value unencoded, by rule.
  const char* author = "Writer <one> & two";
  const bool authorSet = doc.SetTopicAuthor(author) == 1;
  doc.SetHtmlTitle("New & title");
  doc.SetColor(CHtmlFileEx::emColorText, 0x00336699);
  doc.SetBackgroundImage("back.gif");
  doc.SetExternalStyleSheetFileName("style.css");
  CStringArrayEx keywords;
  CString alpha("alpha"), beta("beta; gamma");
  keywords.Add(alpha);
  keywords.Add(beta);
  doc.SetKeywordK(&keywords);
  doc.SetTopicBuildTags("web, print");
  doc.ReplaceBuildTag("web", "online");
  doc.SetBodyHtmlText("<p>added</p>", 1);
  QueryAll(doc);

  const bool checkReadBack = authorSet && !EndsOnLaterBytes(doc);
  CString before;
  if (checkReadBack)
    doc.GetTopicAuthor(before);
  for (int flag = 2; flag <= 4; ++flag)
    SavedCopy(doc, static_cast<CHtmlPack::EmSaveFlag>(flag));

  // The saved page read back keeps what was written into it.
  CByteString saved = SavedCopy(doc, CHtmlPack::emSave);
  CHtmlFileEx again(saved, "/fuzz/topic/page.htm");
  QueryAll(again);
  if (checkReadBack) {
    CString after;
    again.GetTopicAuthor(after);
    if (after != before)
      std::abort();
  }

  // The saved page read into the used document (over the memory of the
  // first reading) gives what the fresh document gave.
  doc.SetSource(saved);
  QueryAll(doc);
  const CByteString reused = SavedCopy(doc, CHtmlPack::emSaveLayout), fresh = SavedCopy(again, CHtmlPack::emSaveLayout);
  if (reused.GetLength() != fresh.GetLength() ||
      (fresh.GetLength() && std::memcmp(reused.GetContent(), fresh.GetContent(), fresh.GetLength()) != 0) ||
      doc.GetPureTextUtf8(0) != again.GetPureTextUtf8(0))
    std::abort();
  return 0;
}
