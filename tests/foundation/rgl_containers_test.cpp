#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "telvanix/foundation/rgl_array.h"
#include "telvanix/foundation/rgl_list.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/string_types.h"

using namespace telvanix;

namespace {

struct Item {
  int id;
};

template <class List>
std::vector<int> Forward(const List& list) {
  std::vector<int> ids;
  for (POSITION pos = list.GetHeadPosition(); pos;)
    ids.push_back(list.GetNext(pos)->id);
  return ids;
}

template <class List>
std::vector<int> Backward(const List& list) {
  std::vector<int> ids;
  for (POSITION pos = list.GetTailPosition(); pos;)
    ids.push_back(list.GetPrev(pos)->id);
  return ids;
}

class Counted : public CRglObject {
 public:
  static int s_alive;
  Counted() { ++s_alive; }
  ~Counted() override { --s_alive; }
};
int Counted::s_alive = 0;

}  // namespace

TEST(RglObject, DerivedObjectsGoThroughTheClassOperators) {
  CRglObject* object = new Counted;
  EXPECT_EQ(Counted::s_alive, 1);
  delete object;  // virtual destructor reaches the derived class
  EXPECT_EQ(Counted::s_alive, 0);
  alignas(Counted) unsigned char storage[sizeof(Counted)];
  Counted* placed = new (storage) Counted;
  EXPECT_EQ(static_cast<void*>(placed), static_cast<void*>(storage));
  placed->~Counted();
}

TEST(RglPlex, ChainsBlocksAtTheFront) {
  CRglPlex* head = nullptr;
  CRglPlex* first = CRglPlex::Create(head, 4, 16);
  CRglPlex* second = CRglPlex::Create(head, 4, 16);
  EXPECT_EQ(head, second);
  EXPECT_EQ(second->pNext, first);
  EXPECT_EQ(CRglPlex::Create(head, 0, 16), nullptr);
  head->FreeDataChain();  // the sanitizer build sees any block left over
}

TEST(RglList, NodeBlocksAreReusedAndReleased) {
  Item items[25];
  CRglList<Item*> list;
  std::vector<POSITION> positions;
  for (int i = 0; i < 25; ++i) {
    items[i].id = i;
    positions.push_back(list.AddTail(&items[i]));
  }
  EXPECT_EQ(list.GetCount(), 25);
  const int blocks = list.GetBlockCount();
  // A freed node is reused before any new block is made.
  list.RemoveAt(positions[5]);
  EXPECT_EQ(list.AddTail(&items[5]), positions[5]);
  EXPECT_EQ(list.GetBlockCount(), blocks);
  list.RemoveAll();
  EXPECT_EQ(list.GetBlockCount(), 0);
  EXPECT_EQ(list.GetHeadPosition(), nullptr);
  EXPECT_EQ(list.GetTailPosition(), nullptr);
  // Removing the last element one at a time releases the blocks too.
  CRglList<Item*> small(3);
  EXPECT_EQ(small.GetBlockSize(), 3);
  for (int i = 0; i < 4; ++i)
    small.AddHead(&items[i]);
  while (!small.IsEmpty())
    small.RemoveAt(small.GetTailPosition());
  EXPECT_EQ(small.GetBlockCount(), 0);
}

// Blocks from an outside source are carved from a plain buffer here: were
// the list to free one, the sanitizer would report a bad free.
TEST(RglList, NodeBlocksFromASourceAreNeverFreedByTheList) {
  struct Source {
    alignas(16) unsigned char buffer[4096];
    std::size_t used = 0;
    int calls = 0;
    static void* Take(void* self, std::size_t bytes) {
      auto* s = static_cast<Source*>(self);
      ++s->calls;
      void* p = s->buffer + s->used;
      s->used += (bytes + 15) & ~static_cast<std::size_t>(15);
      return s->used <= sizeof(s->buffer) ? p : nullptr;
    }
  } source;
  std::vector<Item> items(25);
  {
    CRglList<Item*> list;
    list.SetBlockSource(&Source::Take, &source);
    for (int i = 0; i < 25; ++i) {
      items[i].id = i;
      list.AddTail(&items[i]);
    }
    EXPECT_EQ(source.calls, 3);
    EXPECT_EQ(list.GetBlockCount(), 3);
    EXPECT_EQ(Forward(list).back(), 24);
    list.RemoveAt(list.GetHeadPosition());
    list.AddHead(&items[0]);
    EXPECT_EQ(source.calls, 3);  // the freed node is reused
    list.RemoveAll();
    EXPECT_EQ(list.GetBlockCount(), 0);
    list.AddTail(&items[1]);
    EXPECT_EQ(source.calls, 4);
  }
}

// A source that runs dry gives bad_alloc, as the heap would.
TEST(RglList, AnEmptySourceThrowsLikeTheHeap) {
  CRglList<Item*> list;
  list.SetBlockSource([](void*, std::size_t) -> void* { return nullptr; }, nullptr);
  Item a{1};
  EXPECT_THROW(list.AddTail(&a), std::bad_alloc);
  EXPECT_TRUE(list.IsEmpty());
}
TEST(RglList, InsertionKeepsHeadTailAndLinks) {
  Item items[6];
  for (int i = 0; i < 6; ++i)
    items[i].id = i;
  CRglList<Item*> list;
  POSITION p2 = list.AddTail(&items[2]);
  list.AddHead(&items[0]);
  POSITION p4 = list.AddTail(&items[4]);
  list.InsertBefore(p2, &items[1]);
  list.InsertAfter(p2, &items[3]);
  list.InsertAfter(p4, &items[5]);  // new tail
  EXPECT_EQ(Forward(list), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(Backward(list), (std::vector<int>{5, 4, 3, 2, 1, 0}));
  EXPECT_EQ(list.GetHead()->id, 0);
  EXPECT_EQ(list.GetTail()->id, 5);

  // Null positions mean the ends.
  Item first{-1}, last{9};
  list.InsertBefore(nullptr, &first);
  list.InsertAfter(nullptr, &last);
  EXPECT_EQ(list.GetHead()->id, -1);
  EXPECT_EQ(list.GetTail()->id, 9);

  EXPECT_EQ(list.RemoveHead()->id, -1);
  EXPECT_EQ(list.RemoveTail()->id, 9);
  list.RemoveAt(list.GetHeadPosition());
  list.RemoveAt(list.GetTailPosition());
  list.RemoveAt(list.Find(&items[3]));
  EXPECT_EQ(Forward(list), (std::vector<int>{1, 2, 4}));
  EXPECT_EQ(Backward(list), (std::vector<int>{4, 2, 1}));
}

TEST(RglList, LookupAndBadPositions) {
  Item items[3] = {{0}, {1}, {2}};
  CRglList<Item*> list;
  for (auto& item : items)
    list.AddTail(&item);
  list.AddTail(&items[1]);
  POSITION firstOne = list.Find(&items[1]);
  ASSERT_NE(firstOne, nullptr);
  EXPECT_EQ(list.Find(&items[1], firstOne), list.FindIndex(3));
  EXPECT_EQ(list.GetAt(list.FindIndex(2))->id, 2);
  EXPECT_EQ(list.FindIndex(4), nullptr);
  EXPECT_EQ(list.FindIndex(-1), nullptr);
  list.SetAt(list.FindIndex(0), &items[2]);
  EXPECT_EQ(list.GetHead()->id, 2);

  POSITION none = nullptr;
  EXPECT_EQ(list.GetNext(none), nullptr);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(list.GetAt(nullptr), nullptr);
  list.RemoveAt(nullptr);
  list.SetAt(nullptr, &items[0]);
  EXPECT_EQ(list.GetCount(), 4);

  CRglList<Item*> empty;
  EXPECT_EQ(empty.GetHead(), nullptr);
  EXPECT_EQ(empty.GetTail(), nullptr);
  EXPECT_EQ(empty.RemoveHead(), nullptr);
  EXPECT_EQ(empty.RemoveTail(), nullptr);
  EXPECT_EQ(empty.Find(&items[0]), nullptr);
}

TEST(RglList, CopiesOtherListsAndOwnsValues) {
  CRglList<CString> a, b;
  a.AddTail(CString("x"));
  a.AddTail(CString("y"));
  b.AddTail(CString("z"));
  b.AddHead(&a);
  b.AddTail(&a);
  b.AddTail(&b);  // adding a list to itself is refused
  std::string joined;
  for (POSITION pos = b.GetHeadPosition(); pos;)
    joined += b.GetNext(pos).GetString();
  EXPECT_EQ(joined, "xyzxy");
  EXPECT_EQ(b.RemoveHead(), "x");
  EXPECT_TRUE(b.Find(CString("z")) != nullptr);
}

TEST(RglArray, GrowingKeepsTheElements) {
  for (int growBy : {0, 10}) {
    CRglArray<int, int> array;
    array.SetGrowBy(growBy);
    for (int i = 0; i < 20000; ++i)
      array.Add(i);
    EXPECT_EQ(array.GetSize(), 20000);
    EXPECT_GE(array.GetAllocSize(), 20000);
    EXPECT_EQ(array[19999], 19999);
    EXPECT_EQ(array[12345], 12345);
    array.SetSize(20001, 0);  // back to automatic growth
    EXPECT_EQ(array.GetGrowBy(), 0);
    CRglArray<int, int> copy;
    copy.Add(-1);
    copy = array;  // replaces, not appends
    EXPECT_EQ(copy.GetSize(), 20001);
    EXPECT_EQ(copy[12345], 12345);
  }
}

TEST(RglArray, NewElementsAreZero) {
  CRglArray<int, int> array;
  array.SetSize(10);
  for (int i = 0; i < 10; ++i)
    array[i] = 7;
  array.SetSize(5);
  array.SetSize(10);  // within the block: the reused slots are cleared again
  EXPECT_EQ(array[4], 7);
  EXPECT_EQ(array[5], 0);
  array.SetSize(0);
  EXPECT_EQ(array.GetData(), nullptr);
}

TEST(RglArray, SettingPastTheEndGrows) {
  CRglArray<int, int> array;
  array.SetAt(3, 9);
  EXPECT_EQ(array.GetSize(), 4);
  EXPECT_EQ(array[0], 0);
  EXPECT_EQ(array[3], 9);
  array.SetAt(-1, 5);
  EXPECT_EQ(array.GetSize(), 4);
  EXPECT_EQ(array.GetAt(4), 0);
  EXPECT_EQ(array.GetAt(-1), 0);
  array.SetSize(-3);
  EXPECT_EQ(array.GetSize(), 4);

  // Growing from one of its own elements must copy it before the move.
  CRglArray<CString> strings;
  strings.Add(CString("first"));
  strings.SetAtGrow(40, strings[0]);
  EXPECT_EQ(strings[40], "first");
}

TEST(RglArray, InsertAndRemoveShiftElements) {
  CRglArray<int, int> array;
  for (int i = 0; i < 6; ++i)
    array.Add(i);
  auto elements = [&array] { return std::vector<int>(array.GetData(), array.GetData() + array.GetSize()); };
  array.InsertAt(2, 99, 2);
  EXPECT_EQ(elements(), (std::vector<int>{0, 1, 99, 99, 2, 3, 4, 5}));
  array.RemoveAt(1, 3);
  EXPECT_EQ(elements(), (std::vector<int>{0, 2, 3, 4, 5}));
  array.RemoveAt(3, 100);  // clamped to the end
  array.RemoveAt(7);
  array.RemoveAt(-1);
  EXPECT_EQ(elements(), (std::vector<int>{0, 2, 3}));
  array.InsertAt(5, 1);  // past the end: grows with zeros between
  EXPECT_EQ(elements(), (std::vector<int>{0, 2, 3, 0, 0, 1}));
}

TEST(RglArray, OwningElementsSurviveMoves) {
  CRglArray<CString> array;
  for (const char* word : {"a", "b", "c", "d"})
    array.Add(CString(word));
  array.InsertAt(1, CString("x"), 3);
  array.RemoveAt(0);
  std::string joined;
  for (int i = 0; i < array.GetSize(); ++i)
    joined += array[i].GetString();
  EXPECT_EQ(joined, "xxxbcd");

  CRglArray<CString> other;
  other.Add(CString("z"));
  array.InsertAt(2, &other);
  EXPECT_EQ(array[2], "z");
  EXPECT_EQ(array.Append(array), 7);  // appending itself doubles it
  EXPECT_EQ(array.GetSize(), 14);
  EXPECT_EQ(array[9], "z");
  other.Copy(array);
  EXPECT_EQ(other.GetSize(), 14);
  array.FreeExtra();
  EXPECT_EQ(array.GetAllocSize(), 14);
  EXPECT_EQ(array[13], "d");
}
