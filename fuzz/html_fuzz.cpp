// Arbitrary bytes as a page: read at level 2, pair the tags, change an
// attribute of the first tag, insert a piece of the input as markup, and
// save with every save flag. Nothing may crash or read out of bounds, and
// saving an unchanged list writes the page's bytes in order, only ever
// leaving some out (the tokenizer drops a few malformed pieces), never
// adding or moving any.
// The same bytes are also read at level 4 (tree with the HTML repairs), the
// repaired page saved with every flag, and the flag-2 save read at level 4
// again: a repaired page needs no second repair (nothing inserted or
// discarded) and gives a tree of the same shape (but see ReopensIntoAnOpenQuote).
// A build without nodes over the level-2 reading must repair the list
// exactly as the full build does: the same tokens with the same flags.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <vector>

#include "bench/tree_shape.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/html/tree_node.h"

using namespace telvanix;

namespace {

std::string Saved(CHtmlPack& pack, CHtmlPack::EmSaveFlag flag) {
  CByteString out;
  pack.Save(&out, flag);
  return out.GetLength() ? std::string(reinterpret_cast<const char*>(out.GetContent()), out.GetLength())
                         : std::string();
}

using bench::TreeShape;

// Tokens carrying any of the flags.
int CountFlagged(CHtmlPack& pack, DWORD flags) {
  int n = 0;
  CHtmlTokenList* list = pack.GetTokenList();
  for (POSITION pos = list->GetHeadPosition(); pos;)
    if (list->GetNext(pos)->GetTokenFlag() & flags)
      ++n;
  return n;
}

// Whether the page has a tag whose quote never closed and a reopened copy
// that holds a quote. Such a tag ended at its first ">" only because no
// closing quote followed in the rest of the page; the copy supplies one, so
// the saved page reads differently ("<s\"\"><p\">" reopens S inside P, and
// read again P runs to the copy's quote). A known limit of reopening by
// copy, left out of the stability check.
bool ReopensIntoAnOpenQuote(CHtmlPack& pack) {
  bool openQuote = false, quotedCopy = false;
  CHtmlTokenList* list = pack.GetTokenList();
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list->GetNext(pos);
    if (!token->IsTagToken())
      continue;
    unsigned char quote = 0;
    bool quoted = false;
    const unsigned char* p = token->GetOriginalData();
    for (int i = 0; p != nullptr && i < token->GetOriginalLength(); ++i) {
      if (quote ? p[i] == quote : (p[i] == '"' || p[i] == '\'')) {
        quote = quote ? 0 : p[i];
        quoted = true;
      }
    }
    openQuote = openQuote || quote != 0;
    quotedCopy = quotedCopy || (quoted && (token->GetTokenFlag() & CHtmlEntityTree::emTokenReopenedFlag));
  }
  return openQuote && quotedCopy;
}

// Whether a tag start the tokenizer left as text ("<script\"" with no ">"
// outside quotes after it) is followed by more of the page. Whether such a
// start becomes a tag depends on every byte after it, so a saved page that
// differs there (the dropped last byte, an added end tag) can read it
// otherwise. A known limit, left out of the stability check; a rejected
// start at the very end is handled by the repair and stays checked.
bool RejectedTagStartBeforeMore(CHtmlPack& pack) {
  bool rejected = false;
  CHtmlTokenList* list = pack.GetTokenList();
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list->GetNext(pos);
    const DWORD flags = token->GetTokenFlag();
    if (flags & (CHtmlTokenItem::emTokenDiscarded | CHtmlTokenItem::emTokenRecoveryInserted))
      continue;
    if (rejected)
      return true;
    rejected = token->IsTextToken() && (flags & CHtmlTokenItem::emTokenRejectedTagText) != 0;
  }
  return false;
}

// Every token's flags, in list order.
std::vector<DWORD> FlagsInOrder(CHtmlPack& pack) {
  std::vector<DWORD> flags;
  CHtmlTokenList* list = pack.GetTokenList();
  for (POSITION pos = list->GetHeadPosition(); pos;)
    flags.push_back(list->GetNext(pos)->GetTokenFlag());
  return flags;
}

void CheckRepairIsStable(CByteString& source) {
  CHtmlPack first(source, nullptr);
  if (!first.Parse(CHtmlPack::emParseHtmlTree))
    return;
  const std::string repaired = Saved(first, CHtmlPack::emSave);
  CHtmlPack bare(source, nullptr);
  if (bare.Parse(CHtmlPack::emParseAttributes) &&
      bare.GetTokenList()->BuildEntityTree(CHtmlEntityTree::emBuildHtml | CHtmlEntityTree::emBuildNoNodes) &&
      (Saved(bare, CHtmlPack::emSave) != repaired || FlagsInOrder(bare) != FlagsInOrder(first)))
    std::abort();
  Saved(first, CHtmlPack::emSaveLayout);
  Saved(first, CHtmlPack::emSaveLayoutObject);
  if (ReopensIntoAnOpenQuote(first) || RejectedTagStartBeforeMore(first))
    return;
  // Reopened copies can leave more start tags open at once than the
  // matching stack holds (4095 levels); nesting that deep is not supported.
  int starts = 0;
  CHtmlTokenList* list = first.GetTokenList();
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    CHtmlTagItem* tag = list->GetNext(pos)->GetSafeTagItemPtr();
    if (tag != nullptr && !tag->IsEndTag())
      ++starts;
  }
  if (starts >= 4095)
    return;

  CByteString again;
  if (!repaired.empty())
    again.Assign(reinterpret_cast<const unsigned char*>(repaired.data()), static_cast<int>(repaired.size()));
  CHtmlPack second(again, nullptr);
  if (!second.Parse(CHtmlPack::emParseHtmlTree))
    return;
  if (CountFlagged(second, CHtmlEntityTree::emTokenRecoveredFlag | CHtmlEntityTree::emTokenDiscardedFlag) != 0)
    std::abort();
  if (TreeShape(first.GetEntityTree()) != TreeShape(second.GetEntityTree()))
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20))
    return 0;
  CByteString source;
  if (size)
    source.Assign(data, static_cast<int>(size));
  CHtmlPack pack(source, nullptr);
  if (!pack.Parse(CHtmlPack::emParseAttributes))
    return 0;

  // The page as Unicode text, in its own charset and in ones it may claim:
  // always well-formed UTF-8, whatever the bytes and references.
  for (UINT codePage : {pack.GetPageCodePage(1252), UINT(CP_UTF8), UINT(932), UINT(1252)}) {
    std::string utf8;
    CHtmlPack::HtmlToUtf8(utf8, data, static_cast<int>(size), codePage);
    if (!IsValidUtf8(utf8.data(), utf8.size()))
      std::abort();
  }

  // Unchanged: the saved bytes are the page's bytes with some left out.
  std::string first = Saved(pack, CHtmlPack::emSave);
  std::size_t at = 0;
  for (char c : first) {
    while (at < size && static_cast<char>(data[at]) != c)
      ++at;
    if (at == size)
      std::abort();
    ++at;
  }

  CHtmlTokenList* list = pack.GetTokenList();
  list->MarkTags();
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list->GetNext(pos);
    if (CHtmlTagItem* tag = token->GetSafeTagItemPtr()) {
      tag->SetAttribute("id", "fuzz");
      tag->GetXmlType();
      tag->GetTagName();
      CString mark, text;
      CHtmlTagItem::GetCommentMark(tag, mark, text);
      break;
    }
  }
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list->GetNext(pos);
    if (CHtmlTextItem* text = token->GetSafeTextItemPtr()) {
      text->GetText();
      text->GetWordText();
    }
  }
  if (list->GetHeadPosition()) {
    std::string piece(reinterpret_cast<const char*>(data), size / 2);
    list->InsertHtmlStream(list->GetHeadPosition(), reinterpret_cast<const unsigned char*>(piece.c_str()), 1);
  }
  for (int flag = 1; flag <= 4; ++flag)
    Saved(pack, static_cast<CHtmlPack::EmSaveFlag>(flag));

  CheckRepairIsStable(source);
  return 0;
}
