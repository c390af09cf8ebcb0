// Reference replacement inside help-control objects and sitemap entries.
#include "telvanix/topic/html_file_ex.h"

namespace telvanix {

// Not written yet: nothing is changed.
int CHtmlFileEx::ReplaceTagHhctrlObjectInHtm(POSITION, CReplaceContext&) { return -1; }
int CHtmlFileEx::ReplaceHhctrlButton(POSITION, CReplaceContext&) { return -1; }
int CHtmlFileEx::ReplaceHhctrlItem(POSITION, CReplaceContext&) { return -1; }
int CHtmlFileEx::ReplaceTagObjectInHhc(CReplaceContext&) { return -1; }
int CHtmlFileEx::ReplaceTagObjectInHhk(CReplaceContext&) { return -1; }
int CHtmlFileEx::DeleteObjectInHhc(CReplaceContext&) { return -1; }
int CHtmlFileEx::DeleteObjectInHhk(CReplaceContext&) { return -1; }

}  // namespace telvanix
