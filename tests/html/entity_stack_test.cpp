// The open-element stack: refusals, the fixed top level, the shared sentinel
// at level 0 and what popping it leaves behind, owned attachments, copies.
#include <gtest/gtest.h>

#include <deque>

#include "html/html_test_util.h"
#include "telvanix/html/entity_stack.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {
namespace {

using test::CountedObject;
using test::FakePos;

class EntityStackTest : public ::testing::Test {
 protected:
  CHtmlTagItem* Tag(const char* text) { return &m_Tags.emplace_back(text); }
  std::deque<CHtmlTagItem> m_Tags;
};

TEST_F(EntityStackTest, StartsWithTheSharedSentinel) {
  CHtmlEntityStack stack, other(1);
  EXPECT_EQ(stack.GetStackLevel(), 0);
  EntityStackItem* pItem = stack.GetEntityStackItem(0);
  ASSERT_NE(pItem, nullptr);
  EXPECT_EQ(pItem, stack.GetTop());
  EXPECT_EQ(pItem->m_pTag, CHtmlEntityStack::GetSentinelTag());
  EXPECT_EQ(other.GetTop()->m_pTag, pItem->m_pTag);
  EXPECT_EQ(pItem->m_nTagId, 0);
  EXPECT_EQ(pItem->m_Position, nullptr);
  EXPECT_EQ(pItem->m_pAttachment, nullptr);
  // The sentinel holds nothing and is of the "special" major type.
  EXPECT_EQ(pItem->m_pTag->GetCntType(), 0);
  EXPECT_EQ(pItem->m_pTag->GetMjrType(), 0xFF000008u);
}

TEST_F(EntityStackTest, RefusesEmptyElementsAndEndTagsButTakesUnknownTags) {
  CHtmlEntityStack stack;
  for (const char* refused : {"<BR>", "</P>", "</FOO>"}) EXPECT_EQ(stack.Push(Tag(refused), FakePos(1)), 0) << refused;
  EXPECT_EQ(stack.Push(nullptr, FakePos(4)), 0);
  EXPECT_EQ(stack.GetStackLevel(), 0);
  CHtmlTagItem* pEmptyUnknown = Tag("<foo/>");
  ASSERT_EQ(pEmptyUnknown->GetCntType(), 0);
  EXPECT_EQ(stack.Push(pEmptyUnknown, FakePos(5)), 1);
  CHtmlTagItem* pDiv = Tag("<div class=x>");
  EXPECT_EQ(stack.Push(pDiv, FakePos(6)), 1);
  EXPECT_EQ(stack.GetStackLevel(), 2);
  EntityStackItem* pTop = stack.GetTop();
  EXPECT_EQ(pTop->m_pTag, pDiv);
  EXPECT_EQ(pTop->m_nTagId, pDiv->GetTagId());
  EXPECT_EQ(pTop->m_Position, FakePos(6));
  // Lookups stop at the present level.
  EXPECT_EQ(stack.GetEntityStackItem(-1), nullptr);
  EXPECT_EQ(stack.GetEntityStackItem(3), nullptr);
  EXPECT_EQ(stack.GetEntityStackItem(1)->m_pTag, pEmptyUnknown);
}

TEST_F(EntityStackTest, NeverGrowsPastTheLastLevel) {
  CHtmlEntityStack stack;
  CHtmlTagItem* pDiv = Tag("<DIV>");
  for (int i = 1; i <= 4094; ++i) ASSERT_EQ(stack.Push(pDiv, FakePos(i)), 1) << "push " << i;
  CHtmlTagItem* pLast = Tag("<SPAN>");
  EXPECT_EQ(stack.Push(pLast, FakePos(5000)), 0);  // stored, but full now
  // Beyond the last level nothing is stored at all.
  for (int i = 0; i < 100; ++i) EXPECT_EQ(stack.Push(pDiv, FakePos(6000 + i)), 0);
  EXPECT_EQ(stack.GetStackLevel(), 4095);
  EXPECT_EQ(stack.GetTop()->m_pTag, pLast);
  EXPECT_EQ(stack.GetTop()->m_Position, FakePos(5000));
  EXPECT_EQ(stack.GetEntityStackItem(4096), nullptr);
  EXPECT_EQ(stack.BackStackLevel(0), 1);
  EXPECT_EQ(stack.GetTop()->m_pTag, CHtmlEntityStack::GetSentinelTag());
}

TEST_F(EntityStackTest, PopAtLevelZeroClearsTheSentinelItem) {
  CHtmlEntityStack stack;
  EXPECT_EQ(stack.Push(Tag("<P>"), FakePos(1)), 1);
  EXPECT_EQ(stack.Pop(), 1);
  EXPECT_NE(stack.GetTop()->m_pTag, nullptr);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(stack.Pop(), 0);
    EXPECT_EQ(stack.GetStackLevel(), 0);
    EXPECT_EQ(stack.GetTop()->m_pTag, nullptr);
    EXPECT_EQ(stack.GetTop()->m_nTagId, 0);
  }
  // The shared sentinel itself is untouched; Resume brings it back.
  EXPECT_EQ(stack.Resume(), 1);
  EXPECT_EQ(stack.GetTop()->m_pTag, CHtmlEntityStack::GetSentinelTag());
}

TEST_F(EntityStackTest, BackStackLevelPopsDownToTheTargetAndOwnersDelete) {
  int nDeleted = 0;
  CountedObject kept(&nDeleted);
  {
    CHtmlEntityStack stack(1);
    for (int i = 1; i <= 5; ++i) {
      stack.Push(Tag("<DIV>"), FakePos(i));
      stack.GetTop()->m_pAttachment = new CountedObject(&nDeleted);
    }
    EXPECT_EQ(stack.BackStackLevel(2), 1);
    EXPECT_EQ(stack.GetStackLevel(), 2);
    EXPECT_EQ(nDeleted, 3);
    EXPECT_EQ(stack.GetTop()->m_Position, FakePos(2));
    // Targets that popping cannot reach stop at level 0 instead of looping,
    // and the sentinel is kept.
    EXPECT_EQ(stack.BackStackLevel(7), 1);
    EXPECT_EQ(stack.GetStackLevel(), 0);
    EXPECT_EQ(nDeleted, 5);
    EXPECT_NE(stack.GetTop()->m_pTag, nullptr);
    stack.Push(Tag("<DIV>"), FakePos(9));
    EXPECT_EQ(stack.BackStackLevel(-3), 1);
    EXPECT_EQ(stack.GetStackLevel(), 0);
    stack.Push(Tag("<P>"), FakePos(2));
    stack.GetTop()->m_pAttachment = new CountedObject(&nDeleted);
  }  // the destructor unwinds to level 0
  EXPECT_EQ(nDeleted, 6);
  {
    CHtmlEntityStack stack;  // not owning
    stack.Push(Tag("<DIV>"), FakePos(1));
    stack.GetTop()->m_pAttachment = &kept;
    EXPECT_EQ(stack.Pop(), 1);
    stack.Push(Tag("<DIV>"), FakePos(2));
    stack.GetTop()->m_pAttachment = &kept;
  }
  EXPECT_EQ(nDeleted, 6);
}

TEST_F(EntityStackTest, CopiesAreShallowAndIndependent) {
  CHtmlEntityStack stack, assigned;
  stack.Push(Tag("<TABLE>"), FakePos(1));
  stack.Push(Tag("<TR>"), FakePos(2));
  CHtmlEntityStack copy(stack);
  EXPECT_EQ(copy.GetStackLevel(), 2);
  EXPECT_EQ(copy.GetTop()->m_pTag, stack.GetTop()->m_pTag);
  copy.Pop();
  EXPECT_EQ(copy.GetStackLevel(), 1);
  EXPECT_EQ(stack.GetStackLevel(), 2);
  assigned = stack;
  EXPECT_EQ(assigned.GetStackLevel(), 2);
  EXPECT_EQ(assigned.GetEntityStackItem(1)->m_pTag, stack.GetEntityStackItem(1)->m_pTag);
}

}  // namespace
}  // namespace telvanix
