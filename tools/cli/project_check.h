// The analysis behind `telvanix check`: every topic, stylesheet and sitemap
// of a project read once (in parallel), every reference resolved against the
// project's own file list, and the findings sorted into kinds.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace telvanix::tool {

enum class FindingKind {
  kMissingFile,       // a referenced file does not exist
  kInexactReference,  // resolves only case-blind or with "\" turned into "/"
  kMissingBookmark,   // "page#name" where page defines no such bookmark
  kOutsideProject,    // absolute path, drive letter or ".." above the root
  kSitemapMissing,    // a contents/index entry points to a missing topic
  kProjectMissing,    // the project file (.hhp) names a file that does not exist
  kOrphanTopic,       // nothing refers to the topic
  kOrphanImage,       // nothing refers to the image
  kRepairedPage,      // the page's outline needed tags inserted or dropped
  kSitemapStructure,  // a contents/index file that is empty or whose lists do not close
  kBinaryPage,        // a ".htm" file that holds binary data
  kUnreadable,        // an I/O error; makes the exit status 2
};

const char* FindingKindName(FindingKind kind);    // stable identifier for JSON
const char* FindingKindTitle(FindingKind kind);   // heading for the summary

struct Finding {
  FindingKind kind;
  std::string file;       // project-relative file the finding is about
  std::string reference;  // the reference as written (may be empty)
  std::string what;       // what kind of reference, or details
  std::string resolved;   // for inexact references: the name found on disk
  unsigned codePage = 0;  // the charset `reference` is written in (0: the active code page)
};

struct ProjectReport {
  std::string root;
  size_t topics = 0, stylesheets = 0, sitemaps = 0, images = 0, references = 0;
  std::vector<Finding> findings;                 // sorted by kind, file, reference
  std::map<std::string, size_t> topicBuildTags;  // tag -> topics carrying it
  std::map<std::string, size_t> elementBuildTags;  // tag -> elements carrying it
  std::vector<std::string> errors;               // I/O errors, one line each
};

ProjectReport CheckProject(const std::string& root);

}  // namespace telvanix::tool
