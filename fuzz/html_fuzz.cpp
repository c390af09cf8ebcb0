// Arbitrary bytes as a page: read at level 2, pair the tags, change an
// attribute of the first tag, insert a piece of the input as markup, and
// save with every save flag. Nothing may crash or read out of bounds, and
// saving an unchanged list writes the page's bytes in order, only ever
// leaving some out (the tokenizer drops a few malformed pieces), never
// adding or moving any.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "telvanix/html/html_pack.h"

using namespace telvanix;

namespace {

std::string Saved(CHtmlPack& pack, CHtmlPack::EmSaveFlag flag) {
  CByteString out;
  pack.Save(&out, flag);
  return out.GetLength() ? std::string(reinterpret_cast<const char*>(out.GetContent()), out.GetLength())
                         : std::string();
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
  return 0;
}
