// Text pictures of a built tree and of a token list, for the entity-tree
// tests: one line per node, children indented by two spaces.
#pragma once

#include <string>

#include "telvanix/html/entity_tree.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/html/tree_node.h"

namespace telvanix::test {

// The flags the tree pass sets, as letters: u paired unknown, s stray end,
// o left open, p paired, i inserted by repair, x outside HTML, m misplaced,
// r reopened copy.
inline std::string TreeFlagLetters(DWORD dwFlags) {
  static const struct {
    DWORD bit;
    char letter;
  } kLetters[] = {{0x1000, 'u'}, {0x2000, 's'}, {0x4000, 'o'},  {0x8000, 'p'},
                  {0x10000, 'i'}, {0x20000, 'x'}, {0x40000, 'm'}, {0x80000, 'r'}};
  std::string out;
  for (const auto& l : kLetters)
    if (dwFlags & l.bit) out += l.letter;
  return out;
}

inline std::string TokenText(CHtmlTokenItem* pToken) {
  if (pToken == nullptr) return "(null)";
  CString text = pToken->GetPrintableText(CHtmlTokenItem::emTextTokenOnly);
  std::string s(static_cast<const char*>(text), text.GetLength());
  std::string out;
  for (char c : s) {
    if (c == '\r') out += "\\r";
    else if (c == '\n') out += "\\n";
    else out += c;
  }
  return pToken->IsTextToken() ? "\"" + out + "\"" : out;
}

inline std::string Trimmed(const std::string& s) {
  std::size_t b = s.find_first_not_of(" \t\r\n");
  if (b == std::string::npos) return "";
  std::size_t e = s.find_last_not_of(" \t\r\n");
  return s.substr(b, e - b + 1);
}

inline std::string TokenLine(CHtmlTokenItem* pToken, bool bFlags) {
  std::string line = TokenText(pToken);
  if (bFlags && pToken != nullptr) {
    std::string letters = TreeFlagLetters(pToken->GetTokenFlag());
    if (!letters.empty()) line += " [" + letters + "]";
  }
  return line;
}

// An element prints as its start tag, with its children below it; its own
// start-tag leaf (the first child) is not repeated. A leaf whose id differs
// from its token's id, or an element without its start leaf, is called out.
// Without flags the picture is of the shape only: text is trimmed of white
// space and neighbouring text leaves are shown as one (a saved page joins the
// runs that a discarded tag used to separate).
inline void DumpNode(CHtmlTokenList* pList, CHtmlTreeNode* pNode, int nDepth, bool bFlags, std::string& out) {
  std::string indent(static_cast<std::size_t>(nDepth) * 2, ' ');
  CHtmlTokenItem* pToken = pList->GetTokenItem(pNode->GetTokenPosition());
  if (pNode->IsTokenNode()) {
    out += indent + TokenLine(pToken, bFlags);
    int nExpectedId = pToken != nullptr && pToken->IsTextToken() ? 0x40000000
                      : pToken != nullptr                         ? pToken->GetSafeTagItemPtr()->GetTagId()
                                                                  : -1;
    if (pNode->GetTagId() != nExpectedId) out += " !id";
    out += "\n";
    return;
  }
  CHtmlEntityNode* pEntity = static_cast<CHtmlEntityNode*>(pNode);
  POSITION pos = pEntity->GetFirstChildPosition();
  if (pEntity->GetParentNode() != nullptr) {
    out += indent + "+ " + TokenLine(pToken, bFlags);
    CHtmlTokenNode* pStart = pEntity->GetStartTagNode();
    if (pStart == nullptr || pStart->GetTagId() != pEntity->GetTagId())
      out += " !nostart";
    else
      pEntity->GetNextChild(pos);
    out += "\n";
  }
  const int nChildDepth = pEntity->GetParentNode() != nullptr ? nDepth + 1 : nDepth;
  std::string text;  // shape mode: the text run being joined
  bool bInText = false;
  for (; pos != nullptr;) {
    CHtmlTreeNode* pChild = pEntity->GetNextChild(pos);
    if (pChild->GetParentNode() != pEntity) out += indent + "  !parent\n";
    CHtmlTokenItem* pChildToken = pList->GetTokenItem(pChild->GetTokenPosition());
    if (!bFlags && pChild->IsTokenNode() && pChildToken != nullptr && pChildToken->IsTextToken()) {
      CString s = pChildToken->GetPrintableText(CHtmlTokenItem::emTextTokenOnly);
      text += std::string(static_cast<const char*>(s), s.GetLength());
      bInText = true;
      continue;
    }
    if (bInText) {
      out += std::string(static_cast<std::size_t>(nChildDepth) * 2, ' ') + "\"" + Trimmed(text) + "\"\n";
      text.clear();
      bInText = false;
    }
    DumpNode(pList, pChild, nChildDepth, bFlags, out);
  }
  if (bInText) out += std::string(static_cast<std::size_t>(nChildDepth) * 2, ' ') + "\"" + Trimmed(text) + "\"\n";
}

inline std::string DumpTree(CHtmlTokenList* pList, bool bFlags = true) {
  CHtmlEntityTree* pTree = pList != nullptr ? pList->GetEntityTree() : nullptr;
  if (pTree == nullptr || pTree->GetRootNode() == nullptr) return "(no tree)\n";
  std::string out;
  DumpNode(pList, pTree->GetRootNode(), 0, bFlags, out);
  return out;
}

// The discarded tokens, one a line, with their flags.
inline std::string DumpDiscarded(CHtmlTokenList* pList) {
  std::string out;
  for (POSITION pos = pList->GetHeadPosition(); pos != nullptr;) {
    CHtmlTokenItem* pToken = pList->GetTokenItem(pos);
    pList->GetNext(pos);
    if (pToken != nullptr && pToken->IsDiscardedToken()) out += TokenLine(pToken, true) + "\n";
  }
  return out;
}

inline int CountTokensWithFlag(CHtmlTokenList* pList, DWORD dwFlag) {
  int n = 0;
  for (POSITION pos = pList->GetHeadPosition(); pos != nullptr;) {
    CHtmlTokenItem* pToken = pList->GetTokenItem(pos);
    pList->GetNext(pos);
    if (pToken != nullptr && (pToken->GetTokenFlag() & dwFlag) != 0) ++n;
  }
  return n;
}

}  // namespace telvanix::test
