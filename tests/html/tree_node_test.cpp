// Tree nodes: leaf kinds, ownership of formats and host parameters, child
// walking, and deleting a very deep tree without recursion.
#include <gtest/gtest.h>

#include <utility>

#include "html/html_test_util.h"
#include "telvanix/html/tree_node.h"

namespace telvanix {
namespace {

using test::CountedObject;
using test::FakePos;

TEST(TreeNodeTest, TextAndTagLeavesAreToldApartByBit30Only) {
  CHtmlTokenNode text(nullptr, FakePos(1), 0x40000000), endTag(nullptr, FakePos(2), 0x21000 | 0x10000000),
      unknownTag(nullptr, FakePos(3), 0x20000000 | 0x1234);
  EXPECT_EQ(text.IsTextNode(), 1);
  EXPECT_EQ(text.IsTagNode(), 0);
  EXPECT_EQ(text.IsTokenNode(), 1);
  EXPECT_EQ(text.IsEntityNode(), 0);
  EXPECT_EQ(text.GetNodeType(), CHtmlTreeNode::emTokenNode);
  EXPECT_EQ(endTag.IsTagNode(), 1);
  EXPECT_EQ(endTag.IsTextNode(), 0);
  EXPECT_EQ(unknownTag.IsTagNode(), 1);
  // Token lookups need a list and a position.
  EXPECT_EQ(text.GetTagItem(nullptr), nullptr);
  EXPECT_EQ(text.GetTextItem(nullptr), nullptr);
}

TEST(TreeNodeTest, TagFormatsAndParametersAreOwned) {
  int nDeleted = 0;
  {
    CHtmlTokenNode leaf(nullptr, FakePos(1), 0x21000);
    EXPECT_EQ(leaf.GetTagFormat(), nullptr);
    CountedObject* pFirst = new CountedObject(&nDeleted);
    EXPECT_EQ(leaf.SetTagFormat(pFirst), 1);
    EXPECT_EQ(leaf.GetTagFormat(), pFirst);
    EXPECT_EQ(leaf.SetTagFormat(new CountedObject(&nDeleted)), 1);
    EXPECT_EQ(nDeleted, 1);
    EXPECT_EQ(leaf.SetTagFormat(leaf.GetTagFormat()), 1);  // the one it holds is not deleted
    EXPECT_EQ(nDeleted, 1);
    EXPECT_EQ(leaf.RemoveTagFormat(), 1);
    EXPECT_EQ(nDeleted, 2);
    EXPECT_EQ(leaf.GetTagFormat(), nullptr);
    EXPECT_EQ(leaf.RemoveTagFormat(), 1);
    leaf.SetTagFormat(new CountedObject(&nDeleted));
  }
  EXPECT_EQ(nDeleted, 3);

  CHtmlTreeNode::CExParam param(7), other(1);
  EXPECT_EQ(CHtmlTreeNode::CExParam(param).GetParam(), 7);
  other = param;
  other.SetParam(9);
  EXPECT_EQ(param.GetParam(), 7);
  CHtmlEntityNode node(nullptr, FakePos(1), 0x21020);
  EXPECT_EQ(node.GetExParam(), nullptr);
  node.SetExParam(new CHtmlTreeNode::CExParam(3));
  node.SetExParam(new CHtmlTreeNode::CExParam(4));  // the first is deleted (sanitizers see a leak otherwise)
  ASSERT_NE(node.GetExParam(), nullptr);
  EXPECT_EQ(node.GetExParam()->GetParam(), 4);
}

TEST(TreeNodeTest, LeafCopiesAreShallow) {
  CHtmlEntityNode parent(nullptr, nullptr, 0);
  CHtmlTokenNode leaf(&parent, FakePos(5), 0x20020), assigned(nullptr, nullptr, 0x40000000), blank(nullptr, nullptr, 0);
  int nDeleted = 0;
  leaf.SetTagFormat(new CountedObject(&nDeleted));
  CHtmlTokenNode copy(leaf);
  assigned = copy;
  for (CHtmlTokenNode* pCopy : {&copy, &assigned}) {
    EXPECT_EQ(pCopy->GetParentNode(), &parent);
    EXPECT_EQ(pCopy->GetTokenPosition(), FakePos(5));
    EXPECT_EQ(pCopy->GetTagId(), 0x20020);
    EXPECT_EQ(pCopy->GetTagFormat(), leaf.GetTagFormat());
  }
  // Only one of them may delete the shared format; the others forget it.
  copy.SetTagFormat(nullptr);
  EXPECT_EQ(nDeleted, 1);
  leaf = blank;
  assigned = blank;
  EXPECT_EQ(nDeleted, 1);
}

TEST(TreeNodeTest, ChildrenAreWalkedInOrderAndSiblingsFound) {
  CHtmlEntityNode root(nullptr, nullptr, 0);
  EXPECT_EQ(root.GetChildCount(), 0);
  EXPECT_EQ(root.GetFirstChild(), nullptr);
  EXPECT_EQ(root.GetLastChild(), nullptr);
  EXPECT_EQ(root.GetFirstChildPosition(), nullptr);
  EXPECT_EQ(root.GetStartTagNode(), nullptr);
  CHtmlEntityNode* pP = new CHtmlEntityNode(&root, FakePos(1), 0x21000);
  root.AddChildNode(pP);
  CHtmlTreeNode* const children[] = {new CHtmlTokenNode(pP, FakePos(1), 0x21000),
                                     new CHtmlTokenNode(pP, FakePos(2), 0x40000000),
                                     new CHtmlTokenNode(pP, FakePos(3), 0x21000 | 0x10000000)};
  for (CHtmlTreeNode* pChild : children) pP->AddChildNode(pChild);
  EXPECT_EQ(pP->GetChildCount(), 3);
  EXPECT_EQ(pP->GetStartTagNode(), children[0]);
  EXPECT_EQ(pP->GetFirstChild(), children[0]);
  EXPECT_EQ(pP->GetLastChild(), children[2]);
  POSITION pos = pP->GetFirstChildPosition(), back = pP->GetLastChildPosition();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(pP->GetNextChild(pos), children[i]);
    EXPECT_EQ(pP->GetPrevChild(back), children[2 - i]);
    EXPECT_EQ(children[i]->GetNextSiblingNode(), i < 2 ? children[i + 1] : nullptr);
    EXPECT_EQ(children[i]->GetPrevSiblingNode(), i > 0 ? children[i - 1] : nullptr);
  }
  EXPECT_EQ(pos, nullptr);
  EXPECT_EQ(pP->GetNextChild(pos), nullptr);
  EXPECT_EQ(root.GetNextSiblingNode(), nullptr);
  EXPECT_EQ(pP->GetParentNode(), &root);
}

// Deep enough that one destructor frame per level would exhaust the call
// stack; then wide: every node and every format goes.
TEST(TreeNodeTest, DeletingDeepAndWideTreesDeletesEveryNodeWithoutRecursion) {
  for (auto [nDepth, nWidth] : {std::pair{300000, 1}, std::pair{1, 1250}}) {
    int nFormats = 0;
    CHtmlEntityNode* pRoot = new CHtmlEntityNode(nullptr, nullptr, 0);
    CHtmlEntityNode* pCurrent = pRoot;
    for (int i = 0; i < nDepth; ++i) {
      CHtmlEntityNode* pChild = new CHtmlEntityNode(pCurrent, FakePos(i + 1), 0x21020);
      pCurrent->AddChildNode(pChild);
      for (int j = 0; j < nWidth; ++j) {
        CHtmlTokenNode* pLeaf = new CHtmlTokenNode(pChild, FakePos(i + 1), 0x21020);
        pLeaf->SetTagFormat(new CountedObject(&nFormats));
        pChild->AddChildNode(pLeaf);
      }
      pCurrent = pChild;
    }
    delete pRoot;
    EXPECT_EQ(nFormats, nDepth * nWidth);
  }
}

}  // namespace
}  // namespace telvanix
