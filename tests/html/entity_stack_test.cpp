// The open-element stack: refusals, the fixed top level, the shared sentinel
// at level 0 and what popping it leaves behind.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "html/html_test_util.h"
#include "telvanix/html/entity_stack.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {
namespace {

using test::CountedObject;
using test::FakePos;

class EntityStackTest : public ::testing::Test {
 protected:
  CHtmlTagItem* Tag(const char* text) {
    m_Tags.push_back(std::make_unique<CHtmlTagItem>(text));
    return m_Tags.back().get();
  }
  std::vector<std::unique_ptr<CHtmlTagItem>> m_Tags;
};

TEST_F(EntityStackTest, StartsWithTheSharedSentinel) {
  CHtmlEntityStack stack;
  EXPECT_EQ(stack.GetStackLevel(), 0);
  EntityStackItem* pItem = stack.GetEntityStackItem(0);
  ASSERT_NE(pItem, nullptr);
  EXPECT_EQ(pItem, stack.GetTop());
  ASSERT_NE(pItem->m_pTag, nullptr);
  EXPECT_EQ(pItem->m_pTag, CHtmlEntityStack::GetSentinelTag());
  EXPECT_EQ(pItem->m_nTagId, 0);
  EXPECT_EQ(pItem->m_Position, nullptr);
  EXPECT_EQ(pItem->m_pAttachment, nullptr);
  // The sentinel holds nothing and is of the "special" major type.
  EXPECT_EQ(pItem->m_pTag->GetCntType(), 0);
  EXPECT_EQ(pItem->m_pTag->GetOcrType(), 0);
  EXPECT_EQ(pItem->m_pTag->GetMjrType(), 0xFF000008u);

  CHtmlEntityStack other(1);
  EXPECT_EQ(other.GetTop()->m_pTag, pItem->m_pTag);
}

TEST_F(EntityStackTest, RefusesEmptyElementsAndEndTagsButTakesUnknownTags) {
  CHtmlEntityStack stack;
  EXPECT_EQ(stack.Push(Tag("<BR>"), FakePos(1)), 0);
  EXPECT_EQ(stack.GetStackLevel(), 0);
  EXPECT_EQ(stack.Push(Tag("</P>"), FakePos(2)), 0);
  EXPECT_EQ(stack.Push(Tag("</FOO>"), FakePos(3)), 0);
  EXPECT_EQ(stack.GetStackLevel(), 0);
  EXPECT_EQ(stack.Push(nullptr, FakePos(4)), 0);

  CHtmlTagItem* pEmptyUnknown = Tag("<foo/>");
  ASSERT_TRUE(pEmptyUnknown->IsUnknownTag());
  ASSERT_EQ(pEmptyUnknown->GetCntType(), 0);
  EXPECT_EQ(stack.Push(pEmptyUnknown, FakePos(5)), 1);
  EXPECT_EQ(stack.GetStackLevel(), 1);

  CHtmlTagItem* pDiv = Tag("<div class=x>");
  EXPECT_EQ(stack.Push(pDiv, FakePos(6)), 1);
  EntityStackItem* pTop = stack.GetTop();
  EXPECT_EQ(pTop->m_pTag, pDiv);
  EXPECT_EQ(pTop->m_nTagId, 0x21020);
  EXPECT_EQ(pTop->m_Position, FakePos(6));
  EXPECT_EQ(pTop->m_pAttachment, nullptr);
}

TEST_F(EntityStackTest, NeverGrowsPastTheLastLevel) {
  CHtmlEntityStack stack;
  CHtmlTagItem* pDiv = Tag("<DIV>");
  for (int i = 1; i <= 4094; ++i) {
    ASSERT_EQ(stack.Push(pDiv, FakePos(i)), 1) << "push " << i;
    ASSERT_EQ(stack.GetStackLevel(), i);
  }
  CHtmlTagItem* pLast = Tag("<SPAN>");
  EXPECT_EQ(stack.Push(pLast, FakePos(5000)), 0);
  EXPECT_EQ(stack.GetStackLevel(), 4095);
  EXPECT_EQ(stack.GetTop()->m_pTag, pLast);
  EXPECT_EQ(stack.GetTop()->m_Position, FakePos(5000));

  // Beyond the last level nothing is stored at all.
  CHtmlTagItem* pBeyond = Tag("<B>");
  for (int i = 0; i < 100; ++i) EXPECT_EQ(stack.Push(pBeyond, FakePos(6000 + i)), 0);
  EXPECT_EQ(stack.GetStackLevel(), 4095);
  EXPECT_EQ(stack.GetTop()->m_pTag, pLast);
  EXPECT_EQ(stack.GetTop()->m_Position, FakePos(5000));
  EXPECT_EQ(stack.GetEntityStackItem(4096), nullptr);

  // And it unwinds back to the sentinel.
  EXPECT_EQ(stack.BackStackLevel(0), 1);
  EXPECT_EQ(stack.GetStackLevel(), 0);
  EXPECT_EQ(stack.GetTop()->m_pTag, CHtmlEntityStack::GetSentinelTag());
}

TEST_F(EntityStackTest, PopAtLevelZeroClearsTheSentinelItem) {
  CHtmlEntityStack stack;
  EXPECT_EQ(stack.Push(Tag("<P>"), FakePos(1)), 1);
  EXPECT_EQ(stack.Pop(), 1);
  EXPECT_EQ(stack.GetStackLevel(), 0);
  EXPECT_NE(stack.GetTop()->m_pTag, nullptr);

  EXPECT_EQ(stack.Pop(), 0);
  EXPECT_EQ(stack.GetStackLevel(), 0);
  EXPECT_EQ(stack.GetTop()->m_pTag, nullptr);
  EXPECT_EQ(stack.GetTop()->m_nTagId, 0);
  EXPECT_EQ(stack.Pop(), 0);
  EXPECT_EQ(stack.GetStackLevel(), 0);
  // The shared sentinel itself is untouched; Resume brings it back.
  EXPECT_EQ(CHtmlEntityStack::GetSentinelTag()->GetTagId(), 0);
  EXPECT_EQ(stack.Resume(), 1);
  EXPECT_EQ(stack.GetTop()->m_pTag, CHtmlEntityStack::GetSentinelTag());
}

TEST_F(EntityStackTest, ItemLookupIsBoundedByThePresentLevel) {
  CHtmlEntityStack stack;
  EXPECT_EQ(stack.GetEntityStackItem(-1), nullptr);
  EXPECT_EQ(stack.GetEntityStackItem(1), nullptr);
  stack.Push(Tag("<UL>"), FakePos(1));
  stack.Push(Tag("<LI>"), FakePos(2));
  EXPECT_EQ(stack.GetEntityStackItem(3), nullptr);
  ASSERT_NE(stack.GetEntityStackItem(2), nullptr);
  EXPECT_EQ(stack.GetEntityStackItem(2)->m_nTagId, 0x21201);
  EXPECT_EQ(stack.GetEntityStackItem(1)->m_nTagId, 0x21200);
}

TEST_F(EntityStackTest, BackStackLevelPopsExactlyDownToTheTarget) {
  CHtmlEntityStack stack(1);
  int nDeleted = 0;
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
}

TEST_F(EntityStackTest, OnlyAnOwningStackDeletesAttachments) {
  int nDeleted = 0;
  CountedObject kept(&nDeleted);
  {
    CHtmlEntityStack stack;  // not owning
    stack.Push(Tag("<DIV>"), FakePos(1));
    stack.GetTop()->m_pAttachment = &kept;
    EXPECT_EQ(stack.Pop(), 1);
    stack.Push(Tag("<DIV>"), FakePos(2));
    stack.GetTop()->m_pAttachment = &kept;
  }
  EXPECT_EQ(nDeleted, 0);
  {
    CHtmlEntityStack stack(1);
    stack.Push(Tag("<DIV>"), FakePos(1));
    stack.GetTop()->m_pAttachment = new CountedObject(&nDeleted);
    stack.Push(Tag("<P>"), FakePos(2));
    stack.GetTop()->m_pAttachment = new CountedObject(&nDeleted);
    EXPECT_EQ(stack.Pop(), 1);
    EXPECT_EQ(nDeleted, 1);
    EXPECT_EQ(stack.GetTop()->m_pAttachment != nullptr, true);
  }  // the destructor unwinds to level 0
  EXPECT_EQ(nDeleted, 2);
}

TEST_F(EntityStackTest, CopiesAreShallowAndIndependent) {
  CHtmlEntityStack stack;
  stack.Push(Tag("<TABLE>"), FakePos(1));
  stack.Push(Tag("<TR>"), FakePos(2));
  CHtmlEntityStack copy(stack);
  EXPECT_EQ(copy.GetStackLevel(), 2);
  EXPECT_EQ(copy.GetTop()->m_pTag, stack.GetTop()->m_pTag);
  copy.Pop();
  EXPECT_EQ(copy.GetStackLevel(), 1);
  EXPECT_EQ(stack.GetStackLevel(), 2);

  CHtmlEntityStack assigned;
  assigned = stack;
  EXPECT_EQ(assigned.GetStackLevel(), 2);
  EXPECT_EQ(assigned.GetEntityStackItem(1)->m_nTagId, 0x21090);
}

}  // namespace
}  // namespace telvanix
