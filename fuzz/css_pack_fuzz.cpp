// Stylesheet parsing and saving on arbitrary bytes: Parse over a terminated
// copy, BuildList over an exact-size one (so any read past the end shows),
// then everything a host reads back from the lines: names, selector chains,
// declaration lists and the typed format built from them (the value readers
// on real declarations), edits, copies and merges. The first byte also
// picks the code page, so lead bytes are read both ways.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/css_style.h"
#include "telvanix/css/style_format.h"
#include "telvanix/css/style_property.h"
#include "telvanix/platform/code_page.h"

using namespace telvanix;

namespace {

// Restores the code page whatever the input did.
struct CodePageScope {
  explicit CodePageScope(UINT cp) : previous(SetActiveCodePage(cp)) {}
  ~CodePageScope() { SetActiveCodePage(previous); }
  UINT previous;
};

void ReadStyle(CCssStyle* style, CCssPack& pack) {
  style->GetStyleName();
  style->GetStyleNameHash();
  CCssStyleSelectors* chain = style->GetStyleSelectors();
  for (int i = 0; i < chain->GetSize(); ++i)
    chain->GetAt(i)->GetElementName();
  style->IsContextualSelector();
  style->GetLastSelector();
  style->GetUniqueBlockStyleName();
  style->GetOriginalString();
  style->GetPrintableString(&pack);
  CCssStyleProperty* list = style->GetStyleProperty();
  int index = 0;
  list->GetFirstPropertyPair(index);
  while (CCssStyleProperty::CPropertyPair* pair = list->GetNextPropertyPair(index))
    CCssStyleProperty::GetFileNameFromUrlPairValue(pair->GetValue());
  if (CCssStyleFormat* format = style->GetStyleFormat())
    format->GetFirstFontFamily();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20))
    return 0;
  CodePageScope codePage(size && (data[0] & 1) ? 932 : 1252);
  CByteString content(data, static_cast<int>(size));
  CCssPackEx pack(&content);
  pack.Parse();
  CByteString saved;
  pack.Save(saved);

  POSITION pos = nullptr;
  CCssStyle* first = nullptr;
  for (CCssStyle* style = pack.GetFirstStyle(pos); style; style = pack.GetNextStyle(pos)) {
    ReadStyle(style, pack);
    if (!first)
      first = style;
  }
  for (CString url = pack.GetFirstImportCssUrl(pos); !url.IsEmpty(); url = pack.GetNextImportCssUrl(pos)) {
  }
  UINT index = 0;
  for (CString name = pack.GetFirstBaggageFile(index); !name.IsEmpty(); name = pack.GetNextBaggageFile(index)) {
  }

  if (first) {
    // A copy taken from a parsed rule, merged back into the pack (into the
    // rule itself), then edited.
    CCssStyle copy;
    copy.Copy(first);
    pack.AddStyleItem(&copy);
    ReadStyle(&copy, pack);
    CCssStyleProperty* list = first->GetStyleProperty();
    list->SetProperty("color", "red");
    list->DeleteProperty("font-size");
    list->Concat(copy.GetStyleProperty());
    ReadStyle(first, pack);
    CByteString again;
    pack.Save(again);
  }

  // Saved text must read again without trouble.
  CCssPack reread(&saved);
  reread.Parse();

  std::vector<unsigned char> exact(data, data + size);
  CCssPack direct(static_cast<const CByteString*>(nullptr));
  direct.BuildList(exact.data(), exact.data() + exact.size());
  return 0;
}
