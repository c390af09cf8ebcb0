// The project listing and whole-file read, from the library.
#pragma once

#include <string>
#include <vector>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/project/project_files.h"

namespace telvanix::tool {

using project::ClassifyFile;
using project::ClassifyFiles;
using project::FileKind;
using project::ListProjectFiles;
using project::ProjectFile;
using project::ProjectFiles;
using project::kMaxFileBytes;
using project::ReadWholeFile;

}  // namespace telvanix::tool
