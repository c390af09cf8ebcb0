// CHtmlFileEx: the topic document of a help project. A page is loaded into a
// token list by CHtmlPack and analysed once: a single walk records where the
// structural tags stand and collects the positions of every tag the authoring
// tool cares about (links, anchors, images, objects, scripts, META tags,
// comments, styled tags). Getters read those tokens; setters insert, change or
// discard tokens, so a save writes every untouched source byte as it was.
//
// Every getter and setter analyses the page first when that has not been done.
// Results are 1 (done / true) or 0 (failed / false); nothing is thrown.
// Positions handed out are token-list positions, valid until the token list
// is cleared.
#pragma once

#include <functional>
#include <vector>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/foundation/file_moves.h"
#include "telvanix/foundation/keyword_map.h"
#include "telvanix/foundation/rgl_array.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

namespace topic_detail {
struct ReferenceSite;
}

class TELVANIX_API CHtmlFileEx : public CHtmlPack {
 public:
  using CPositionArray = CRglArray<POSITION, POSITION>;
  using CStringArrayEx = CRglArray<CString, CString&>;

  // Attributes of the BODY tag that SetColor and GetColor address.
  enum EmColor : int32_t { emColorLink = 1, emColorVLink = 2, emColorALink = 3, emColorBgColor = 4, emColorText = 5 };

  // Class of an anchor target, keyed by its scheme.
  enum EmAnchorHrefType : int32_t {
    emHrefNone = 0,
    emHrefNull = 1,
    emHrefJavaScript = 2,
    emHrefFtp = 10,
    emHrefHttp = 11,
    emHrefHttps = 12,
    emHrefGopher = 13,
    emHrefMailto = 14,
    emHrefTelnet = 15,
    emHrefNews = 16,
    emHrefNntp = 17,
    emHrefWais = 18,
    emHrefFile = 19,
    emHrefProspero = 20,
    emHrefCompiledHelp = 100
  };

  // The "command" parameter of a help-control object; 0 is none.
  enum EmHhctrlCommand : int32_t {
    emHhctrlNone = 0,
    emHhctrlContents = 1,
    emHhctrlHHVersion = 2,
    emHhctrlIndex = 3,
    emHhctrlRelatedTopics = 4,
    emHhctrlShortCut = 5,
    emHhctrlSplash = 6,
    emHhctrlWinHelp = 7,
    emHhctrlTCard = 8,
    emHhctrlClose = 9,
    emHhctrlMinimize = 10,
    emHhctrlMaximize = 11,
    emHhctrlHHWinPrint = 12,
    emHhctrlKLink = 13,
    emHhctrlALink = 14
  };

  // What GetNextHhctrlItemValue collects.
  enum EmHhctrlObjectItemType : int32_t {
    emHhctrlItemBaggageImage = 1,
    emHhctrlItemRelatedTopic = 2,
    emHhctrlItemContentOrIndex = 3
  };

  // Rewriting of references when files move (defined after this class).
  class CReplaceContext;

  // Rows of the two keyword tables (text, value); searched case-blind.
  static QuickMapStringToValueItem ms_tAnchorHrefTypeTable[12];
  static QuickMapStringToValueItem ms_tHhctrlCommandTable[16];

  // ---- construction ----
  // An empty document (source kind 1).
  CHtmlFileEx();
  // A document bound to a file.
  explicit CHtmlFileEx(const char* path);
  // A document over bytes in memory (remembered, not copied); path is what
  // relative references are resolved against.
  CHtmlFileEx(CByteString& bytes, const char* path);
  // Copies the tokens (discarded ones included) and the source binding; the
  // recorded positions are re-made over the copied list when the other
  // document was analysed, and the collected file lists are copied.
  CHtmlFileEx(const CHtmlFileEx& other);
  CHtmlFileEx& operator=(const CHtmlFileEx& other);
  ~CHtmlFileEx() override;

  // ---- analysis ----
  // Parses (level 1) and walks the list. 1 when both succeeded; the analysed
  // flag is set even when the parse failed.
  int Analyse();
  int IsAnalysed() const { return m_bAnalysed; }
  // New bytes for the same page (see CHtmlPack::SetSource); what was
  // analysed goes with the old tokens.
  int SetSource(CByteString& source) override;

  // ---- page skeleton ----
  // Replaces the page by "<HTML><HEAD></HEAD><BODY></BODY></HTML>" (six tags,
  // no text between them) and analyses it. 1.
  int CreateDefaultHtmlFile();

  // ---- body ----
  // Inserts HTML after the BODY start tag (atStart) or before the BODY end
  // tag, creating BODY tags when missing; re-analyses. 0 for null/empty html.
  int SetBodyHtmlText(const char* html, int atStart);
  // The tokens strictly between the BODY start and end tags, each printed
  // alone (without the whitespace that followed it). 0 without both tags.
  int GetBodyHtmlText(CString& out);
  // The words a reader sees, for an indexer (pure_text.h): option 2 breaks lines at
  // blocks and BR, 0 gives one line; window is never used; a non-null name is the
  // text of a page that has no words. Empty on failure.
  CString GetPureText(int option, HWND window, const char* name);
  // The same words as UTF-8, read in the page's own charset (GetPageCodePage)
  // with every reference as its Unicode character.
  CString GetPureTextUtf8(int option);

  // ---- colours and background (BODY start tag) ----
  // 0xFF000000 deletes the attribute; other values are written as a colour
  // name or "#rrggbb". 0 without a BODY tag or for `which` outside 1..5.
  int SetColor(EmColor which, COLORREF rgb);
  int GetColor(EmColor which, COLORREF& rgb);
  int SetWaterMark(int fixed);
  int GetWaterMark(int& fixed);
  // A null or empty name deletes "background". 1.
  int SetBackgroundImage(const char* file);
  // Decoded from HTML. 0 without BODY or "background".
  int GetBackgroundImage(CString& file);

  // ---- background sound ----
  // loop 1 writes no "loop" attribute; a null or empty name removes the tag.
  int SetBackgroundSound(const char* file, int loop);
  // loop is -1 when the tag has no "loop". 0 without a BGSOUND tag.
  int GetBackgroundSound(CString& file, int& loop);

  // ---- title ----
  // Encoded for HTML; creates TITLE (and HEAD) when missing. 0 for null or
  // a page without HTML and HEAD.
  int SetHtmlTitle(const char* title);
  // Line breaks removed, blanks trimmed, not decoded.
  int GetHtmlTitle(CString& title);
  // The title as UTF-8 from the page's own charset, references decoded;
  // empty when the page has none.
  CString GetHtmlTitleUtf8();

  // ---- external stylesheet ----
  // Sets or inserts the stylesheet LINK; a null or empty name removes it.
  int SetExternalStyleSheetFileName(const char* file);
  // The stylesheet LINK's href, then every "@import" URL of the STYLE blocks,
  // all decoded; `files` is emptied first. 1.
  int GetExternalStyleSheetFileNameEx(CStringArrayEx& files);
  int GetExternalStyleSheetFileName(CString& file);

  // ---- enumerators (caller-held cursors; null or "" ends a walk) ----
  // "src" of each SCRIPT that has one, as written.
  const char* GetFirstScriptSource(unsigned int& index);
  const char* GetNextScriptSource(unsigned int& index);
  // "src" of each IMG that has one, decoded.
  CString GetFirstImage(unsigned int& index);
  CString GetNextImage(unsigned int& index);
  // Help-control images, then inline-style, embedded-style and special-tag
  // baggage. In stages 1 to 3 `stage` packs the index (high 16 bits) and the
  // stage number (low 8 bits); `index` is the help-control cursor.
  CString GetFirstBaggageImage(unsigned int& index, unsigned int& stage);
  CString GetNextBaggageImage(unsigned int& index, unsigned int& stage);
  const char* GetFirstHhctrlBaggageImage(unsigned int& cursor);
  const char* GetNextHhctrlBaggageImage(unsigned int& cursor);
  const char* GetFirstRelatedTopic(unsigned int& cursor);
  const char* GetNextRelatedTopic(unsigned int& cursor);
  const char* GetFirstContentOrIndex(unsigned int& cursor);
  const char* GetNextContentOrIndex(unsigned int& cursor);
  // Multimedia files (collected once per analysis), decoded.
  CString GetFirstMultimediaFile(unsigned int& index);
  CString GetNextMultimediaFile(unsigned int& index);

  // Host accessors beyond the authoring tool's own set.
  // "href" of every A tag in document order, then of every AREA tag, as
  // written; tags without "href" are passed over.
  const char* GetFirstAnchorHref(unsigned int& index);
  const char* GetNextAnchorHref(unsigned int& index);
  // Bookmarks in document order: the "name" of each A tag and the "id" of
  // every tag (an A with both gives its name first), as written.
  const char* GetFirstBookmark(unsigned int& index);
  const char* GetNextBookmark(unsigned int& index);
  // "src" of each FRAME (document order), then of each IFRAME, as written.
  const char* GetFirstFrameSource(unsigned int& index);
  const char* GetNextFrameSource(unsigned int& index);

  // Read-only views of what the walk recorded (each analyses first when
  // needed; setters other than SetBodyHtmlText do not re-run the walk).
  POSITION GetHtmlStartPosition() { EnsureAnalysed(); return m_posHtmlStart; }
  POSITION GetHtmlEndPosition() { EnsureAnalysed(); return m_posHtmlEnd; }
  POSITION GetHeadStartPosition() { EnsureAnalysed(); return m_posHeadStart; }
  POSITION GetHeadEndPosition() { EnsureAnalysed(); return m_posHeadEnd; }
  POSITION GetBodyStartPosition() { EnsureAnalysed(); return m_posBodyStart; }
  POSITION GetBodyEndPosition() { EnsureAnalysed(); return m_posBodyEnd; }
  POSITION GetFramesetStartPosition() { EnsureAnalysed(); return m_posFramesetStart; }
  POSITION GetFramesetEndPosition() { EnsureAnalysed(); return m_posFramesetEnd; }
  POSITION GetTitlePosition() { EnsureAnalysed(); return m_posTitle; }
  POSITION GetBasePosition() { EnsureAnalysed(); return m_posBase; }
  POSITION GetStyleSheetLinkPosition() { EnsureAnalysed(); return m_posStyleSheetLink; }
  POSITION GetBgSoundPosition() { EnsureAnalysed(); return m_posBgSound; }
  const CPositionArray& GetLinkTagPositions() { EnsureAnalysed(); return m_arrLinkTags; }
  const CPositionArray& GetAnchorPositions() { EnsureAnalysed(); return m_arrAnchors; }
  const CPositionArray& GetNamedAnchorPositions() { EnsureAnalysed(); return m_arrNamedAnchors; }
  const CPositionArray& GetMapTagPositions() { EnsureAnalysed(); return m_arrMapTags; }
  const CPositionArray& GetImagePositions() { EnsureAnalysed(); return m_arrImages; }
  const CPositionArray& GetObjectPositions() { EnsureAnalysed(); return m_arrObjects; }
  const CPositionArray& GetEmbedPositions() { EnsureAnalysed(); return m_arrEmbeds; }
  const CPositionArray& GetFramePositions() { EnsureAnalysed(); return m_arrFrames; }
  const CPositionArray& GetIFramePositions() { EnsureAnalysed(); return m_arrIFrames; }
  const CPositionArray& GetScriptPositions() { EnsureAnalysed(); return m_arrScripts; }
  const CPositionArray& GetMetaPositions() { EnsureAnalysed(); return m_arrMetas; }
  const CPositionArray& GetStylePositions() { EnsureAnalysed(); return m_arrStyles; }
  const CPositionArray& GetCommentPositions() { EnsureAnalysed(); return m_arrComments; }
  const CPositionArray& GetStyledTagPositions() { EnsureAnalysed(); return m_arrStyledTags; }
  // Tags carrying an "id" attribute, and A tags with a "name" (bookmarks).
  const CPositionArray& GetBookmarkTagPositions() { EnsureAnalysed(); return m_arrBookmarkTags; }

  // ---- referenced files ----
  // Fills the multimedia list once per analysis. 1.
  int GetMultimediaFilesReference();
  // An OBJECT other than the help control that names a multimedia file.
  int IsMultimediaActivexObject(CHtmlTagItem* tag, POSITION pos);
  // The media file an OBJECT plays (the value of its media parameter), as
  // written; "" when none.
  CString GetMultimediaFileOfObject(POSITION pos);
  // 1 when href begins with "javascript:" in any letter case.
  int IsJavaScriptAnchorHref(const char* href);
  EmAnchorHrefType GetAnchorHrefType(const char* href);
  // The three baggage lists, filled on first request (host accessors).
  const CStringArrayEx& GetInlineStyleBaggage();
  const CStringArrayEx& GetEmbeddedStyleBaggage();
  const CStringArrayEx& GetSpecialTagBaggage();

  // ---- help-control objects ----
  int IsHhctrlActivexObject(CHtmlTagItem* tag);
  int IsKeywordActiveObject(CHtmlTagItem* tag);
  int IsPopupActivexObject(CHtmlTagItem* tag);
  // The command of the help-control object at pos; 0 when none.
  EmHhctrlCommand GetHhctrlCommandType(POSITION pos);
  // Item values of the help-control objects: pointers into the PARAM's
  // attribute text (valid while the token is unchanged), null at the end.
  // The cursor packs the object index (high 16 bits) and next parameter.
  const char* GetFirstHhctrlItemValue(unsigned int& cursor, EmHhctrlObjectItemType type);
  const char* GetNextHhctrlItemValue(unsigned int& cursor, EmHhctrlObjectItemType type);
  // K ("Keyword") and A ("ALink Name") keywords of the keyword object. The
  // getters append; the setters replace, writing the parameters in reverse
  // array order (a null array gives 0).
  int SetKeywordK(CStringArrayEx* keywords);
  int GetKeywordK(CStringArrayEx& keywords);
  int SetKeywordA(CStringArrayEx* keywords);
  int GetKeywordA(CStringArrayEx& keywords);
  // flags: 0x10 K keywords (else A), 0x02 read, 0x01 write. 1.
  int SetGetKeywordX(CStringArrayEx& keywords, int flags);

  // ---- references when files move (reference_replace.cpp) ----
  // Every reference is rewritten in place: only the changed attribute value
  // (or url() text) changes, every other byte of the page stays as read.
  // Kept: "#fragment", "?query", slash style, %-encoding, character
  // references such as "&amp;", the attribute's quotes. Untouched: remote
  // URLs, "mailto:", "javascript:", same-page "#x", files that did not move.
  // Each reference is offered to GetNewRelFileNameCustom first.
  //
  // Rewrites every reference of the page to a moved file (and re-bases the
  // page's own relative references when the page itself moves): A, AREA,
  // IMG (src, lowsrc, usemap, dynsrc), INPUT image, every LINK, SCRIPT,
  // FRAME, IFRAME, "background" on any tag, BGSOUND, EMBED, OBJECT data and
  // the PARAM values naming files, help-control items, sitemap entries, and
  // url() / "@import" in STYLE blocks and style attributes. References to
  // deleted files are unlinked: an A is unwrapped (DeleteAnchor), an OBJECT
  // removed (DeleteObject), IMG, AREA, EMBED, SCRIPT, LINK, FRAME, IFRAME,
  // BGSOUND elements, help-control item PARAMs and sitemap entries removed
  // (DeleteEntity, DeleteObjectInHhc); other values naming them are left.
  // Gives the count of references changed (0: the page is as it was), or -1
  // when the page cannot be read or the context has no document; the page
  // is then unchanged. The page is re-analysed afterwards when it changed.
  int ReplaceFileReference(CReplaceContext& context);
  // Every reference the page holds, in document order, with its position,
  // what it names (resolved from the context's document old path) and what
  // ReplaceFileReference would write: the same walk, nothing changed. A
  // context without moves just lists. Gives the count, -1 as above.
  int GetFileReferences(CReplaceContext& context, std::vector<CFileReference>& references);
  // The same walk for positions alone (line, element, attribute, as
  // written): nothing resolved, no context needed. Count, or -1 as above.
  int GetFileReferences(std::vector<CFileReference>& references);
  // The same walk handing each reference to `visit` as it is found, so that
  // a page of many references is never held twice. Count, or -1 as above.
  int ForEachFileReference(const std::function<void(CFileReference&)>& visit);

  // The items of the help-control object whose OBJECT start tag is at pos
  // (buttons, splash images, related topics, contents and index files).
  // Count changed, -1 when pos is not a help-control object.
  int ReplaceTagHhctrlObjectInHtm(POSITION pos, CReplaceContext& context);
  // One "button" PARAM ("bitmap:x.bmp", "icon:x.ico"): the image after ":".
  // 1 changed, 0 unchanged, -1 when pos is not such a PARAM.
  int ReplaceHhctrlButton(POSITION pos, CReplaceContext& context);
  // One "itemN" PARAM: the file in its last ";" segment. 1 / 0 / -1 as above.
  int ReplaceHhctrlItem(POSITION pos, CReplaceContext& context);

  // A contents (".hhc") or index (".hhk") file read as a page: the "Local",
  // "URL", "ImageList" and "Merge" values of its OBJECT entries, decoded and
  // re-encoded as they were written ("a&amp;b.htm"). Count changed or -1.
  int ReplaceTagObjectInHhc(CReplaceContext& context);
  int ReplaceTagObjectInHhk(CReplaceContext& context);
  // Removes the entries whose topic ("Local") the context deletes. A
  // contents entry with children keeps them and its name and loses its
  // "Local" PARAM; an entry without children goes with its LI. An index
  // entry loses the Name/Local pairs of deleted topics and goes when none
  // is left (sub-entries kept). Count of PARAMs or entries removed, or -1.
  int DeleteObjectInHhc(CReplaceContext& context);
  int DeleteObjectInHhk(CReplaceContext& context);

  // The delete family; pos is the element's start tag. Each gives 1, or 0
  // when pos is not such a tag. Tokens are discarded, never rebuilt, so the
  // rest of the page saves as it was. The blanks after a removed tag stay;
  // a tag that began a line takes its line with it (no blank line is left).
  // Unwraps the link: the A start and end tags go, the text between stays.
  int DeleteAnchor(POSITION pos);
  // The OBJECT, its PARAMs, its fallback content and its end tag go.
  int DeleteObject(POSITION pos);
  // The element with everything up to its matching end tag goes (a tag
  // without one, such as IMG, goes alone).
  int DeleteEntity(POSITION pos);

  // ---- topic properties (META tags in the head) ----
  // A null value removes the property. An existing tag gets the value as
  // given; a new tag gets it encoded for HTML.
  int SetTopicAuthor(const char* value);
  int GetTopicAuthor(CString& value);
  int SetTopicStatus(const char* value);
  int GetTopicStatus(CString& value);
  int SetTopicPriority(int value);
  // -1 and 0 when absent; leading digits otherwise.
  int GetTopicPriority(int& value);
  int SetTopicTimeEstimate(int value);
  int GetTopicTimeEstimate(int& value);
  // Items joined with ","; 0 for a null list.
  int SetTopicCheckList(CStringList* items);
  // Appends the stored items; 0 when absent or empty.
  int GetTopicCheckList(CStringList& items);
  int SetTopicComment(const char* value);
  int GetTopicComment(CString& value);
  int SetTopicId(const char* value);
  int GetTopicId(CString& value);
  int SetTopicSourceDigitalSignature(const char* value);
  int GetTopicSourceDigitalSignature(CString& value);

  // ---- build tags ----
  // The "build tags" META of the topic; null or empty text removes it.
  int SetTopicBuildTags(const char* tags);
  // As written in the page (not decoded). 0 when there is none.
  int GetTopicBuildTags(CString& tags);
  // The "x-condition" property of an element's "style" attribute.
  int HasInlineBuildTags(CHtmlTagItem* tag);
  int GetInlineBuildTags(CHtmlTagItem* tag, CString& tags);
  // Null tags delete the property; an emptied style becomes " ".
  int SetInlineBuildTags(CHtmlTagItem* tag, const char* tags);
  // Styled tags with build tags, in order; "" at the end.
  CString GetFirstInlineBuildTags(unsigned int& index, POSITION* pos);
  CString GetNextInlineBuildTags(unsigned int& index, POSITION* pos);
  // Appends the trimmed, non-empty pieces between commas. 0 for null/empty.
  int ParseBuildTags(const char* text, CStringList& tags);
  // Non-empty items joined with ","; 0 for a null list.
  int MakeBuildTags(CStringList* tags, CString& text);
  // Renames (or, with a null or empty new name, removes) a build tag in the
  // topic's and every element's build tags; names compared with case.
  int ReplaceBuildTag(const char* oldTag, const char* newTag);

 protected:
  virtual int ClearAllAnalysedData();
  virtual int WalkThroughTokenList();
  // A derived document's own new text for one reference during replacement;
  // its answer goes before the library's rule. `name` is the reference as
  // written (character references kept); context.GetCurrentReference() tells
  // where it stands and what the library would write (m_nChange,
  // m_strNewValue). Non-null: written verbatim as the new value (copied at
  // once; equal to `name` keeps it). Null (the default): the library decides.
  virtual const char* GetNewRelFileNameCustom(const char* name, CReplaceContext& context);

  // Analyses when that has not been done yet.
  void EnsureAnalysed();

 private:
  // Tells which OBJECT start tags hide their content from the text.
  std::function<int(CHtmlTagItem*)> HiddenObjects();
  int InsertHeadTags();
  int InsertBodyTags();
  // Makes a tag token from its text and links it after (before) pos.
  POSITION InsertTagAfter(POSITION pos, const char* text);
  POSITION InsertTagBefore(POSITION pos, const char* text);
  CHtmlTagItem* GetLiveTag(POSITION pos);
  void CopyFrom(const CHtmlFileEx& other);

  int GetBaggageFilesReference();
  int GetBaggageFilesInSpecialTag(POSITION pos);
  int GetBaggageFilesInInlineStyle(POSITION pos);
  int GetBaggageFilesInEmbeddedStyle(POSITION pos);
  int CollectVectorMarkupImages(POSITION pos);
  CString GetMediaParameterName(POSITION pos);

  // Walks the parameters of the object at pos (PARAM tags, discarded ones
  // included) into `params`.
  void CollectObjectParams(POSITION pos, CPositionArray& params);
  EmHhctrlCommand GetCommandOfParams(const CPositionArray& params);

  // Reference replacement (reference_replace.cpp): the walk that finds
  // every site of the groups asked for (topic_detail::SiteGroup), limited to
  // one token or object when `only` is set; deciding one site; applying the
  // decisions (rewrites, then unlinks; the count changed); the sites of a
  // run, each decided and handed on (-1 failure, 0 an empty page, 1 ready); and a whole run
  // doing what `mode` (topic_detail::ReplaceMode) allows.
  void CollectReferenceSites(const std::function<void(topic_detail::ReferenceSite&)>& sink, int groups,
                             POSITION only);
  void DecideReferenceSite(topic_detail::ReferenceSite& site, CReplaceContext& context);
  int ApplyReferenceSites(std::vector<topic_detail::ReferenceSite>& sites, CReplaceContext& context, int indexRule);
  int CollectDecidedSites(CReplaceContext& context, int groups, POSITION only,
                          const std::function<void(topic_detail::ReferenceSite&)>& sink);
  int RunReplace(CReplaceContext& context, int groups, POSITION only, int indexRule, int mode);
  // ReplaceHhctrlButton and ReplaceHhctrlItem: the PARAM at pos, whose name
  // begins with `name` (length characters; -1 the whole name).
  int ReplaceHhctrlParam(POSITION pos, CReplaceContext& context, const char* name, int length);
  int UnlinkSitemapEntry(const topic_detail::ReferenceSite& site, int indexRule);
  // Discards the token at pos; its trailing blanks go to the live token
  // before it unless that one ends at the start of a line.
  void DiscardKeepingBlanks(POSITION pos);
  // The matching end tag of the element at pos (same id, nesting counted),
  // or null.
  POSITION FindMatchingEnd(POSITION pos);

  int SetTopicText(const char* metaName, const char* value);
  int GetTopicText(const char* metaName, CString& value);
  int SetTopicNumber(const char* metaName, int value);
  int GetTopicNumber(const char* metaName, int& value);
  POSITION FindBuildTagsMeta();
  int ReplaceInList(CStringList& list, const char* oldTag, const char* newTag);

  POSITION m_posHtmlStart;
  POSITION m_posHtmlEnd;
  POSITION m_posHeadStart;
  POSITION m_posHeadEnd;
  POSITION m_posBodyStart;
  POSITION m_posBodyEnd;
  POSITION m_posFramesetStart;
  POSITION m_posFramesetEnd;
  POSITION m_posTitle;
  POSITION m_posBase;
  POSITION m_posStyleSheetLink;
  POSITION m_posBgSound;
  CPositionArray m_arrLinkTags;
  CPositionArray m_arrAnchors;
  CPositionArray m_arrNamedAnchors;
  CPositionArray m_arrMapTags;
  CPositionArray m_arrImages;
  CPositionArray m_arrObjects;
  CPositionArray m_arrEmbeds;
  CPositionArray m_arrFrames;
  CPositionArray m_arrIFrames;
  CPositionArray m_arrScripts;
  CPositionArray m_arrMetas;
  CPositionArray m_arrStyles;
  CPositionArray m_arrComments;
  CPositionArray m_arrStyledTags;
  int m_bAnalysed;
  int m_bBaggageCollected;
  CStringArrayEx m_arrEmbeddedStyleBaggage;
  CStringArrayEx m_arrInlineStyleBaggage;
  CStringArrayEx m_arrSpecialTagBaggage;
  int m_bMultimediaCollected;
  CStringArrayEx m_arrMultimediaFiles;
  // Host accessors' list, after the authoring tool's own members.
  CPositionArray m_arrBookmarkTags;
};

// The moves a reference replacement follows (CFileMoves: project paths,
// document old and new location) with the options and the state of one run.
// It serves one document at a time: threads copy it (and set each copy's
// document).
class TELVANIX_API CHtmlFileEx::CReplaceContext : public CFileMoves {
 public:
  enum EmReplaceOption : uint32_t {
    emReplaceDefault = 0,
    emReplaceNoHook = 0x1,      // GetNewRelFileNameCustom is not asked
    emReplaceNoUnlink = 0x2,    // references to deleted files are left as they are
    emReplaceCollect = 0x4      // ReplaceFileReference also fills GetChanges()
  };
  CReplaceContext() = default;
  explicit CReplaceContext(uint32_t options) : m_nOptions(options) {}

  uint32_t GetOptions() const { return m_nOptions; }
  void SetOptions(uint32_t options) { m_nOptions = options; }
  // The reference being decided while the hook runs; null otherwise.
  const CFileReference* GetCurrentReference() const { return m_pCurrent; }
  // With emReplaceCollect: each reference the last run changed.
  const std::vector<CFileReference>& GetChanges() const { return m_changes; }

 private:
  friend class CHtmlFileEx;
  uint32_t m_nOptions = emReplaceDefault;
  const CFileReference* m_pCurrent = nullptr;
  std::vector<CFileReference> m_changes;
};

}  // namespace telvanix
