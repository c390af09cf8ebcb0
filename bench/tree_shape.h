// The shape of an element tree, for checking that a repaired page reads back
// to the same tree (bench/tree_corpus_check.cpp and fuzz/html_fuzz.cpp): node
// kinds and tag ids in preorder, each with its depth. Neighbouring text leaves
// count as one and blank ones not at all, since saving joins texts on either
// side of a discarded tag and turns a blank text into the indent after of the
// tag before it.
#pragma once

#include <utility>
#include <vector>

#include "telvanix/html/entity_tree.h"
#include "telvanix/html/token_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/html/tree_node.h"

namespace telvanix::bench {

struct ShapeItem {
  int depth;
  int kind;   // 1 leaf, 2 element
  int tagId;
  bool operator==(const ShapeItem&) const = default;
};

// A text token of blanks only (or none).
inline bool IsBlankText(CHtmlTokenItem* token) {
  if (token == nullptr || !token->IsTextToken())
    return false;
  const unsigned char* p = token->GetOriginalData();
  const int n = token->GetOriginalLength();
  return n <= 0 || CHtmlTextItem::IsSpaceOnly(p, p + n - 1);
}

inline std::vector<ShapeItem> TreeShape(CHtmlEntityTree* tree) {
  constexpr int kTextId = 0x40000000;
  std::vector<ShapeItem> out;
  if (tree == nullptr || tree->GetRootNode() == nullptr)
    return out;
  std::vector<std::pair<CHtmlTreeNode*, int>> todo{{tree->GetRootNode(), 0}};
  std::vector<CHtmlTreeNode*> children;
  while (!todo.empty()) {
    auto [node, depth] = todo.back();
    todo.pop_back();
    const ShapeItem item{depth, node->GetNodeType(), node->GetTagId()};
    CHtmlTokenItem* token = tree->GetBasedTokenList()->GetTokenItem(node->GetTokenPosition());
    if (!(item.tagId == kTextId && ((!out.empty() && out.back() == item) || IsBlankText(token))))
      out.push_back(item);
    if (!node->IsEntityNode())
      continue;
    auto* element = static_cast<CHtmlEntityNode*>(node);
    children.clear();
    for (POSITION p = element->GetFirstChildPosition(); p != nullptr;)
      children.push_back(element->GetNextChild(p));
    for (auto it = children.rbegin(); it != children.rend(); ++it)
      todo.push_back({*it, depth + 1});
  }
  return out;
}

}  // namespace telvanix::bench
