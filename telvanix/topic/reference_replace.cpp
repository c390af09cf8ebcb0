// Reference replacement in a topic page: one walk over the token list finds
// every reference (tag attributes, PARAM values, style attributes, STYLE
// blocks) and either lists it or rewrites its value in place.
#include "telvanix/topic/html_file_ex.h"

namespace telvanix {

// Not written yet: nothing is changed.
int CHtmlFileEx::ReplaceFileReference(CReplaceContext& context) {
  (void)context;
  return -1;
}

int CHtmlFileEx::GetFileReferences(CReplaceContext& context, std::vector<CFileReference>& references) {
  (void)context;
  references.clear();
  return -1;
}

}  // namespace telvanix
