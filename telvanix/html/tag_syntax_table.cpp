// The tag syntax table, built from the vocabulary (tag_vocabulary.h) when the
// library is compiled: every row's name hashed, the rows sorted by hash, and
// the lookup index filled. Nothing is prepared at run time, so no lock and no
// first-use order matter.
#include <algorithm>
#include <array>

#include "telvanix/html/tag_item.h"
#include "telvanix/html/internal/tag_syntax_index.h"

namespace telvanix {

namespace {

using T = CHtmlTagItem;
constexpr int kRows = T::emTagSyntaxTableRows;

constexpr std::array<TagSyntaxItem, kRows> SortedRows() {
  std::array<TagSyntaxItem, kRows> rows = {{
#define TELVANIX_TAG_ROW(name, spelling, id, ocr, cnt, spt, ver, mjr, prt)                                   \
  {tagindex::HashName(spelling), id, spelling, T::emOcr##ocr, T::emCnt##cnt, T::emSpt##spt, T::emVer##ver, \
   T::emMjr##mjr, T::emPrt##prt},
      TELVANIX_TAG_ROWS(TELVANIX_TAG_ROW)
#undef TELVANIX_TAG_ROW
  }};
  std::sort(rows.begin(), rows.end(),
            [](const TagSyntaxItem& a, const TagSyntaxItem& b) { return a.m_nHashCode < b.m_nHashCode; });
  return rows;
}

constexpr std::array<TagSyntaxItem, kRows> kSorted = SortedRows();

constexpr bool HashesUnique() {
  for (int i = 1; i < kRows; ++i)
    if (kSorted[i - 1].m_nHashCode == kSorted[i].m_nHashCode)
      return false;
  return true;
}
static_assert(HashesUnique(), "two tag names hash alike");
static_assert(kSorted[T::emUnknownTagIndex].m_nTagId == T::emTagIdUnknownRow1 &&
                  kSorted[T::emUnknownLastRowIndex].m_nTagId == T::emTagIdUnknownRow5,
              "the unknown-tag rows sort right after row 0");

// The stored position of each row, so that the public table below can be
// spelled as one element per row.
enum StoredRow : int {
#define TELVANIX_TAG_STORED(name, ...) kStored##name,
  TELVANIX_TAG_ROWS(TELVANIX_TAG_STORED)
#undef TELVANIX_TAG_STORED
};

}  // namespace

// Element i is the i-th row in hash order.
const TagSyntaxItem CHtmlTagItem::ms_tTagSyntaxTable[CHtmlTagItem::emTagSyntaxTableRows] = {
#define TELVANIX_TAG_SORTED(name, ...) kSorted[kStored##name],
    TELVANIX_TAG_ROWS(TELVANIX_TAG_SORTED)
#undef TELVANIX_TAG_SORTED
};

namespace tagindex {

constexpr std::array<Slot, kSlots> BuildLookup() {
  std::array<Slot, kSlots> slots{};
  for (int i = 0; i < kRows; ++i) {
    const DWORD h = kSorted[i].m_nHashCode;
    unsigned s = SlotOf(h);
    while (slots[s].index)
      s = (s + 1) & (kSlots - 1);
    slots[s] = Slot{h, i + 1};
  }
  return slots;
}

extern constexpr std::array<Slot, kSlots> kLookup = BuildLookup();

}  // namespace tagindex

}  // namespace telvanix
