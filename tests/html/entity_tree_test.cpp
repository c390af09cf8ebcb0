// The tree builder: tag matching and its counts, outline repair, containment,
// reopening of misnested inline tags, lookups, the XML flavour, and pages
// nested deeper than the open-element stack.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "golden_cases.h"
#include "html/html_test_util.h"
#include "html/tree_dump.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"

namespace telvanix {
namespace {

constexpr DWORD kDiscarded = 0x10, kRecovered = 0x10000, kMisplaced = 0x40000;

// A page tokenised and analysed, with its tree built with the given flags.
struct Page {
  explicit Page(const std::string& text, int nTreeFlags = 0x10007) {
    list.BuildTokenList(test::U(text.data()), test::U(text.data()) + text.size(), 0x103);
    list.AnalyseList(0x103);
    built = list.BuildEntityTree(nTreeFlags);
  }
  CHtmlEntityTree* Tree() { return list.GetEntityTree(); }
  std::string Dump(bool bFlags = true) { return test::DumpTree(&list, bFlags); }

  // The n-th token (discarded ones count) whose printed text is exactly text.
  POSITION FindPos(const char* text, int n = 0) {
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr; list.GetNext(pos))
      if (test::PrintableText(list.GetTokenItem(pos)) == text && n-- == 0) return pos;
    return nullptr;
  }
  CHtmlTokenItem* Find(const char* text, int n = 0) { return list.GetTokenItem(FindPos(text, n)); }
  // Every token in list order, discarded ones marked "(d)".
  std::string Tokens() {
    std::string out;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
      CHtmlTokenItem* pToken = list.GetNext(pos);
      out += test::TokenText(pToken) + (pToken->IsDiscardedToken() ? "(d) " : " ");
    }
    return out;
  }

  CHtmlTokenList list;
  int built = 0;
};

// ---- containment ----

// tests/data/html/contain/NAME.tags: a container and the tags it is offered,
// tab-separated, one container a line; "#" starts a comment.
TEST(TagContainTest, FollowsTheContentModelOfTheContainer) {
  test::RunGoldenCases("html/contain", ".tags", [](const std::string&, const std::string& input) {
    std::string out;
    std::istringstream lines(input);
    for (std::string line; std::getline(lines, line);) {
      if (line.empty() || line[0] == '#') continue;
      std::istringstream fields(line);
      std::string container, child;
      std::getline(fields, container, '\t');
      while (std::getline(fields, child, '\t')) {
        CHtmlTagItem parent(container.c_str()), item(child.c_str());
        if (parent.IsUnknownTag() && container.find("paired") != std::string::npos)
          parent.SetTokenFlag(CHtmlTokenItem::emTokenPairedUnknown);
        CHtmlEntityTree tree;
        const int taken = tree.TagContain(&parent, &item);
        out += container + " offered " + child + (taken ? ": taken" : ": refused");
        out += (item.GetTokenFlag() & kMisplaced) ? ", misplaced\n" : "\n";
      }
    }
    return out;
  });
}

TEST(TagContainTableTest, RowsAreUniqueAndUnlistedTypesHoldAnything) {
  for (int i = 0; i < CHtmlEntityTree::ms_nTagContainTableSize; ++i) {
    const auto& row = CHtmlEntityTree::ms_tTagContainTable[i];
    EXPECT_EQ(CHtmlEntityTree::GetTagContainRule(row.m_nCntType), &row) << "content type " << row.m_nCntType;
  }
  for (int nCntType : {5 /* NOFRAMES */, 0x81 /* unknown tags */, 255, -1, 4096})
    EXPECT_EQ(CHtmlEntityTree::GetTagContainRule(nCntType), nullptr) << nCntType;
}

// ---- matching ----

// Flags, counts and shapes of matching are pinned by the page cases under
// data/tree; here: what those pictures do not show.
TEST(EntityTreeMatchTest, StrayEndTagsAndUnknownRows) {
  Page stray("<HTML><BODY>a</I>b</BODY></HTML>");
  CHtmlEntityNode* pBody = stray.Tree()->GetEntityNode(CHtmlEntityTree::emBodyEntity);
  ASSERT_NE(pBody, nullptr);
  EXPECT_EQ(stray.Tree()->SearchParentEntityNode(stray.FindPos("</I>"), pBody), pBody);
  EXPECT_EQ(stray.Tree()->HasText(), 1);
  // Passed over by an end tag: empty (row 2), no content type. Paired: a
  // container (row 4) holding its text and end tag. Left open: empty.
  Page inDiv("<DIV><BAZ>x</DIV>"), page("<FOO>x</FOO><BAR>y");
  EXPECT_EQ(inDiv.Find("<BAZ>")->GetSafeTagItemPtr()->GetCntType(), 0);
  std::string rows = std::to_string(inDiv.Find("<BAZ>")->GetSafeTagItemPtr()->GetTagIndex());
  for (const char* tag : {"<FOO>", "</FOO>", "<BAR>"})
    rows += std::to_string(page.Find(tag)->GetSafeTagItemPtr()->GetTagIndex());
  EXPECT_EQ(rows, "2442");
  CHtmlEntityNode* pNode = page.Tree()->SearchParentEntityNode(page.FindPos("</FOO>"), nullptr);
  ASSERT_NE(pNode, nullptr);
  EXPECT_EQ(pNode->GetTokenPosition(), page.FindPos("<FOO>"));
  EXPECT_EQ(pNode->GetChildCount(), 3);
}

TEST(EntityTreeMatchTest, StepsCanBeRunAlone) {
  // A second matching pass over the same tokens counts the same faults.
  Page stray("</I>x</B>", 0);
  EXPECT_EQ(stray.Tree()->GetMismatchCount(), 2);
  EXPECT_EQ(stray.Tree()->CheckMatchTags(0), 1);
  EXPECT_EQ(stray.Tree()->GetMismatchCount(), 2);
  EXPECT_EQ(Page("<P>x", 0).Tree()->CheckMatchTags(0), 0);
}

// ---- outline repair ----

TEST(EntityTreeOutlineTest, AnEmptyListGetsTheBareOutline) {
  CHtmlTokenList list;
  EXPECT_EQ(list.BuildEntityTree(0x10004), 1);
  EXPECT_EQ(test::DumpTree(&list, false), "+ <HTML>\n  + <BODY>\n    </BODY>\n  </HTML>\n");
}

// Only the HTML flavour repairs (tree/*.expected show what it does): the XML
// flavour and a plain build leave the page as it is, from the list or from
// the pack's levels 3 and 5.
TEST(EntityTreeOutlineTest, OtherFlavoursRepairNothing) {
  const char* const kShape = "\"junk\"\n+ <P>\n  \"a\"\n+ <P>\n  \"bb\"\n";
  for (int nFlags : {0x20007, 0x7, 0}) {
    SCOPED_TRACE(nFlags);
    Page page("junk<P>a<P>bb", nFlags);
    EXPECT_EQ(page.Tokens(), "\"junk\" <P> \"a\" <P> \"bb\" ");
    EXPECT_EQ(page.Dump(false), kShape);
    EXPECT_EQ(page.Tree()->GetEntityNode(CHtmlEntityTree::emHtmlEntity), nullptr);
    EXPECT_EQ(page.Tree()->GetOutlineRecord(CHtmlEntityTree::emOutlineBodyContent)->m_posFirst, nullptr);
  }
  for (int nLevel : {3, 5}) {
    test::ParsedPack page("junk<P>a<P>bb", nLevel);
    EXPECT_EQ(test::CountTokensWithFlag(page.List(), kRecovered | kDiscarded), 0) << nLevel;
    EXPECT_EQ(test::DumpTree(page.List(), false), kShape) << nLevel;
  }
}

TEST(EntityTreeOutlineTest, RecordsAndRegisteredElements) {
  Page page("<HTML><BODY>a</BODY><BODY>b</BODY></HTML>");
  const CHtmlEntityTree::OutlineRecord* pBody = page.Tree()->GetOutlineRecord(CHtmlEntityTree::emOutlineBody);
  ASSERT_NE(pBody, nullptr);
  EXPECT_EQ(pBody->m_nStartCount, 2);
  EXPECT_EQ(pBody->m_nEndCount, 2);
  EXPECT_EQ(pBody->m_posFirst, page.FindPos("<BODY>"));
  EXPECT_EQ(page.Tree()->GetOutlineRecord(7), nullptr);
  EXPECT_EQ(page.Tree()->GetOutlineRecord(-1), nullptr);
  // The inner end and start tags lie between the outer ones and go.
  EXPECT_EQ(page.Tokens(), "<HTML> <BODY> \"a\" </BODY>(d) <BODY>(d) \"b\" </BODY> </HTML> ");

  // The last element of each outline kind is registered.
  Page frames("<HTML><HEAD><TITLE>t</TITLE></HEAD><FRAMESET><FRAME src=a.htm></FRAMESET></HTML>");
  for (auto [nType, pszTag] : {std::pair{CHtmlEntityTree::emHeadEntity, "<HEAD>"}, {CHtmlEntityTree::emFramesetEntity, "<FRAMESET>"}}) {
    ASSERT_NE(frames.Tree()->GetEntityNode(nType), nullptr);
    EXPECT_EQ(frames.Tree()->GetEntityNode(nType)->GetTokenPosition(), frames.FindPos(pszTag));
  }
  for (int nType : {5, -1}) EXPECT_EQ(frames.Tree()->GetEntityNode(static_cast<CHtmlEntityTree::EmEntityNodeType>(nType)), nullptr);
}

// ---- building ----

TEST(EntityTreeBuildTest, ParentSearchDescendsOnlyThroughFirstElements) {
  Page page("<HTML><BODY><P>a</P><P>b</P></BODY></HTML>");
  CHtmlEntityTree* pTree = page.Tree();
  CHtmlEntityNode* pFirstP = pTree->SearchParentEntityNode(page.FindPos("a"), nullptr);
  ASSERT_NE(pFirstP, nullptr);
  EXPECT_EQ(pFirstP->GetTokenPosition(), page.FindPos("<P>"));
  // The second P is never visited, unless the search starts there.
  EXPECT_EQ(pTree->SearchParentEntityNode(page.FindPos("b"), nullptr), nullptr);
  EXPECT_EQ(pTree->SearchParentEntityNode(page.FindPos("<HTML>"), nullptr),
            pTree->GetEntityNode(CHtmlEntityTree::emHtmlEntity));
  CHtmlEntityNode* pSecondP = static_cast<CHtmlEntityNode*>(pFirstP->GetNextSiblingNode());
  ASSERT_NE(pSecondP, nullptr);
  EXPECT_EQ(pTree->SearchParentEntityNode(page.FindPos("b"), pSecondP), pSecondP);
  // Leaves lead back to their tokens.
  CHtmlTokenNode* pStart = pSecondP->GetStartTagNode();
  CHtmlTokenNode* pText = static_cast<CHtmlTokenNode*>(pStart->GetNextSiblingNode());
  EXPECT_EQ(pStart->GetTagItem(&page.list), page.list.GetTagItem(pStart->GetTokenPosition()));
  EXPECT_EQ(pStart->GetTextItem(&page.list), nullptr);
  ASSERT_NE(pText->GetTextItem(&page.list), nullptr);
  EXPECT_EQ(test::Str(pText->GetTextItem(&page.list)->GetText()), "b");
  EXPECT_EQ(pText->GetTagItem(&page.list), nullptr);
}

TEST(EntityTreeBuildTest, BuildNeedsAListAndMayRunTwice) {
  CHtmlEntityTree tree;
  EXPECT_EQ(tree.Build(nullptr, 0x10007), 0);
  EXPECT_EQ(tree.GetEntityNode(CHtmlEntityTree::emRootEntity), nullptr);
  EXPECT_EQ(tree.BuildTree(0), 0);
  EXPECT_EQ(tree.CheckMatchTags(0x10000), 1);

  Page page("<HTML><BODY><P>x</P></BODY></HTML>");
  EXPECT_EQ(page.built, 1);
  std::string once = page.Dump();
  EXPECT_EQ(page.list.BuildEntityTree(0x10007), 1);
  EXPECT_EQ(page.Dump(), once);
  // The same tree object over the same list, rebuilt in place.
  CHtmlEntityTree* pTree = page.Tree();
  EXPECT_EQ(pTree->Build(&page.list, 0x10007), 1);
  EXPECT_EQ(pTree->GetBasedTokenList(), &page.list);
  EXPECT_EQ(page.Dump(), once);
  // A pack read without a tree builds one when asked.
  test::ParsedPack pack("<P>one<P>two", 2);
  EXPECT_EQ(pack.pack.GetEntityTree(), nullptr);
  EXPECT_EQ(pack.pack.RebuildEntityTree(), 1);
  ASSERT_NE(pack.pack.GetEntityTree(), nullptr);
  EXPECT_NE(pack.pack.GetEntityTree()->GetEntityNode(CHtmlEntityTree::emBodyEntity), nullptr);
}

// Calls f on every leaf below an element, without recursion.
template <class F>
int ForEachLeaf(CHtmlEntityNode* pTop, F f) {
  int nLeaves = 0;
  std::vector<CHtmlEntityNode*> work{pTop};
  while (!work.empty()) {
    CHtmlEntityNode* pNode = work.back();
    work.pop_back();
    for (POSITION pos = pNode->GetFirstChildPosition(); pos != nullptr;) {
      CHtmlTreeNode* pChild = pNode->GetNextChild(pos);
      if (pChild->IsEntityNode()) {
        work.push_back(static_cast<CHtmlEntityNode*>(pChild));
      } else {
        f(static_cast<CHtmlTokenNode*>(pChild));
        ++nLeaves;
      }
    }
  }
  return nLeaves;
}

TEST(EntityTreeBuildTest, RebuildingDeletesWhatHostsHungOnNodes) {
  int nDeleted = 0;
  Page page("<HTML><BODY><P>a<B>b</B></P></BODY></HTML>");
  CHtmlEntityNode* pBody = page.Tree()->GetEntityNode(CHtmlEntityTree::emBodyEntity);
  ASSERT_NE(pBody, nullptr);
  // A format on every leaf, a parameter on an element, and a node the host
  // made itself and added.
  const int nLeaves =
      ForEachLeaf(pBody, [&](CHtmlTokenNode* pLeaf) { pLeaf->SetTagFormat(new test::CountedObject(&nDeleted)); });
  EXPECT_EQ(nLeaves, 8);
  pBody->SetExParam(new CHtmlTreeNode::CExParam(1));
  CHtmlTokenNode* pOwn = new CHtmlTokenNode(pBody, nullptr, 0x40000000);
  pOwn->SetTagFormat(new test::CountedObject(&nDeleted));
  pBody->AddChildNode(pOwn);
  for (int i = 0; i < 25; ++i) pBody->AddChildNode(new CHtmlTokenNode(pBody, nullptr, 0x40000000));

  EXPECT_EQ(page.list.BuildEntityTree(0x10007), 1);
  EXPECT_EQ(nDeleted, nLeaves + 1);
}

TEST(EntityTreeBuildTest, ATreeOwningOneThingStillReleasesIt) {
  // One parameter deep inside, or one node of the host's linked in through
  // the list itself: either must be released with the tree (the sanitizer
  // build reports a leak otherwise).
  int nDeleted = 0;
  {
    Page page("<HTML><BODY><P>a<B>b</B></P></BODY></HTML>");
    CHtmlEntityNode* pP = page.Tree()->SearchParentEntityNode(page.FindPos("a"), nullptr);
    ASSERT_NE(pP, nullptr);
    pP->GetLastChild()->SetExParam(new CHtmlTreeNode::CExParam(5));
  }
  {
    Page page("<HTML><BODY><P>a</P></BODY></HTML>");
    CHtmlEntityNode* pP = page.Tree()->SearchParentEntityNode(page.FindPos("a"), nullptr);
    ASSERT_NE(pP, nullptr);
    CHtmlTokenNode* pOwn = new CHtmlTokenNode(pP, nullptr, 0x40000000);
    pOwn->SetTagFormat(new test::CountedObject(&nDeleted));
    pP->m_ChildList.InsertAfter(pP->GetFirstChildPosition(), pOwn);
  }
  EXPECT_EQ(nDeleted, 1);
}

// ---- pages deeper than the stack ----

std::string Repeat(const std::string& s, int n) {
  std::string out;
  out.reserve(s.size() * static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

int Depth(CHtmlEntityNode* pRoot) {
  int nDepth = 0;
  for (CHtmlEntityNode* pNode = pRoot; pNode != nullptr; ++nDepth) {
    CHtmlEntityNode* pNext = nullptr;
    for (POSITION pos = pNode->GetLastChildPosition(); pos != nullptr && pNext == nullptr;) {
      CHtmlTreeNode* pChild = pNode->GetPrevChild(pos);
      if (pChild->IsEntityNode()) pNext = static_cast<CHtmlEntityNode*>(pChild);
    }
    pNode = pNext;
  }
  return nDepth;
}

TEST(EntityTreeDepthTest, NestingBeyondTheStackNeitherCrashesNorOverruns) {
  for (const std::string& open : {std::string("<DIV>"), std::string("<foo>"), std::string("<B>")}) {
    SCOPED_TRACE(open);
    Page page(Repeat(open, 10000) + "x" + Repeat("</DIV>", 3));
    ASSERT_EQ(page.built, 1);
    CHtmlEntityNode* pRoot = page.Tree()->GetEntityNode(CHtmlEntityTree::emRootEntity);
    ASSERT_NE(pRoot, nullptr);
    EXPECT_GT(Depth(pRoot), 100);
    // Every non-discarded token has a leaf somewhere.
    const int nLeaves = ForEachLeaf(pRoot, [](CHtmlTokenNode*) {});
    int nTokens = 0;
    for (POSITION pos = page.list.GetHeadPosition(); pos != nullptr;)
      if (!page.list.GetNext(pos)->IsDiscardedToken()) ++nTokens;
    EXPECT_EQ(nLeaves, nTokens);
  }  // the tree is deleted here, level by level without recursion
}

TEST(EntityTreeDepthTest, DeepPageSurvivesTheWholePackCycle) {
  test::ParsedPack page(Repeat("<SPAN><FONT>", 6000) + "deep" + Repeat("</FONT></SPAN>", 6000), 4);
  ASSERT_EQ(page.parsed, 1);
  EXPECT_NE(page.Saved(), "(save failed)");
  EXPECT_EQ(page.pack.RebuildEntityTree(), 1);
}

TEST(EntityTreeDepthTest, ManyUnclosedInlineTagsReopenInBoundedNumbers) {
  // Each P reopens the B tags left open; without a bound this page (7 KB)
  // grows to a million tokens.
  test::ParsedPack page(Repeat("<b>", 1000) + Repeat("<p>x", 1000), 4);
  ASSERT_EQ(page.parsed, 1);
  EXPECT_LT(page.List()->GetCount(), 3000 + 1000 * 40);
  // The few that are reopened still are: the first P's text sits inside B.
  const std::string saved = page.Saved();
  EXPECT_NE(saved.find("<p><b>"), std::string::npos) << saved.substr(0, 400);
}

}  // namespace
}  // namespace telvanix
