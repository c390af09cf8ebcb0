// Moves and deletions of files and folders inside a help project, and what
// they do to one reference written in one document: the reference is
// resolved against the document's old folder, followed through the moves and
// written again relative to the document's new folder, keeping how it was
// written: "?query" and "#fragment" as they stood, the slash style ("\" or
// "/"), %-encoding of the characters that were %-encoded, leading blanks.
//
// Paths given to and returned by this class are project paths: relative to
// one root the host chooses (the project folder), "/" separated ("\" is read
// as "/"), without a leading "/" or drive, "." and ".." collapsed. Names are
// matched without regard to ASCII letter case; new names are written as the
// move gives them. Texts here are plain (no character references): the HTML
// layer decodes and re-encodes them (CHtmlFileEx::CReplaceContext).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"

namespace telvanix {

// One reference found in a document, where it stands and what it names.
struct TELVANIX_API CFileReference {
  // What kind of thing refers; a host groups or filters by it.
  enum EmKind : int32_t {
    emRefLink = 1,         // A, AREA href; FRAME, IFRAME src; related topics
    emRefImage = 2,        // IMG src/lowsrc/usemap/dynsrc, INPUT image, background, help-control images
    emRefStyleSheet = 3,   // LINK href, "@import"
    emRefScript = 4,       // SCRIPT src
    emRefMedia = 5,        // BGSOUND, EMBED src, OBJECT data, PARAM values naming files
    emRefStyleUrl = 6,     // url(...) in a STYLE block, a style attribute or a sheet
    emRefSitemap = 7,      // contents and index entries: Local, URL, ImageList, Merge
    emRefContentsFile = 8  // help-control contents and index files
  };
  int m_nLine = 0;          // 1-based line of the value itself
  int m_nKind = 0;          // EmKind
  // Where it stands: the tag as written and its attribute ("IMG" "src"), a
  // PARAM's name ("param" "Local"), a style attribute ("P" "style"), a STYLE
  // block ("STYLE" "url" or "@import"), or in a sheet "url" or "@import" and "".
  CString m_strElement;
  CString m_strAttribute;
  CString m_strWritten;     // the reference as written (character references kept), blanks included
  CString m_strTarget;      // the project path it names; "" when it names none (remote, "#x", outside)
  CString m_strNewValue;    // what a rewrite writes instead; "" when it leaves it (see m_nChange)
  int m_nChange = 0;        // CFileMoves::EmRewrite the moves give it
};

class TELVANIX_API CFileMoves {
 public:
  // What the moves do to one path or reference.
  enum EmRewrite : int32_t { emUnchanged = 0, emRewritten = 1, emDeleted = 2 };

  CFileMoves();
  virtual ~CFileMoves();
  CFileMoves(const CFileMoves&) = default;
  CFileMoves& operator=(const CFileMoves&) = default;

  // A file (isFolder 0) or a folder with everything below it moves. 0 for an
  // empty or absolute path, one above the root, a folder moved into itself,
  // a source given twice, or a move onto itself.
  int AddMove(const char* oldPath, const char* newPath, int isFolder);
  // A file or folder is deleted: references to it are unlinked by the users
  // of this class. 0 as AddMove.
  int AddDeletion(const char* path, int isFolder);
  // The document whose references are read: where it was read from and
  // where it will be written (null or "" newPath: it stays). Its own move
  // counts as a move of the file. 0 for an invalid path.
  int SetDocument(const char* oldPath, const char* newPath);
  void RemoveAll();
  int GetMoveCount() const;

  const CString& GetDocumentOldPath() const { return m_strDocOld; }
  const CString& GetDocumentNewPath() const { return m_strDocNew; }

  // Where a project path goes: emUnchanged (out is the path), emRewritten
  // (out the new path) or emDeleted (out empty). The longest matching move
  // wins; a folder move carries the rest of the path as it was written.
  EmRewrite MapPath(const char* path, CString& out) const;

  // The project path a plain reference written in the document names; ""
  // when it names none: empty, a scheme ("http:", "mailto:", "javascript:",
  // two letters or more), a compiled-file reference ("x.chm::/a.htm"), a
  // same-page "#x", a drive or leading "/", ".." above the root, or a path
  // holding a character no file name holds (control, '"', "<>|*:"). The
  // path is %-decoded and "?query" and "#fragment" are cut off.
  CString ResolveReference(const char* written) const;

  // The plain reference written again for the new layout. emRewritten sets
  // out; emUnchanged and emDeleted leave out empty. A reference stays as
  // written when neither it nor the document's folder moves, or when it
  // already reads as the new relative path. A reference above
  // the root names a file beside the project: it is re-based when the
  // document moves, so it keeps naming that file.
  // `target`, when given, gets what ResolveReference gives (one walk for both).
  EmRewrite RewriteReference(const char* written, CString& out, CString* target = nullptr) const;

 private:
  struct Move {
    CString from;  // project path, as given
    CString to;    // "" for a deletion
    int folder;
    int deletion;
  };
  int Add(const char* oldPath, const char* newPath, int isFolder, int deletion);
  // The path a written reference names from the document's old folder;
  // `above` lets it climb above the root ("../x").
  bool Resolve(const char* written, std::string& resolved, bool above) const;

  std::vector<Move> m_moves;
  CString m_strDocOld;
  CString m_strDocNew;
};

}  // namespace telvanix
