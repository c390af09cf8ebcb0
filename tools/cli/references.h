// Reference resolution, from the library's project subsystem.
#pragma once

#include "cli/project_files.h"
#include "telvanix/project/project_references.h"

namespace telvanix::tool {

using project::BookmarkLookup;
using project::Decoded;
using project::DirectoryOf;
using project::kNoFile;
using project::PageBookmarks;
using project::ParseReference;
using project::Presence;
using project::ProjectIndex;
using project::Reference;
using project::RefKind;
using project::Resolution;

}  // namespace telvanix::tool
