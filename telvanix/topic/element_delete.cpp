// Removing a link, an object or an element from a page by discarding tokens.
#include "telvanix/topic/html_file_ex.h"

namespace telvanix {

// Not written yet: nothing is changed.
int CHtmlFileEx::DeleteAnchor(POSITION) { return 0; }
int CHtmlFileEx::DeleteObject(POSITION) { return 0; }
int CHtmlFileEx::DeleteEntity(POSITION) { return 0; }

}  // namespace telvanix
