// Which children each content model of the tag syntax table holds. A row is
// chosen by the container's content type; a content type without a row holds
// anything. Special children (unknown tags, comments, declarations, HTML,
// NOFRAMES) and text are accepted before this table is asked.
#include <array>

#include "telvanix/html/entity_tree.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {

namespace {

using T = CHtmlTagItem;
// Tag ids of the rows the rules name.
constexpr int kBody = T::emTagIdBody, kScript = T::emTagIdScript, kStyle = T::emTagIdStyle, kMeta = T::emTagIdMeta,
              kLink = T::emTagIdLink, kA = T::emTagIdA, kImg = T::emTagIdImg, kObject = T::emTagIdObject,
              kFont = T::emTagIdFont, kBig = T::emTagIdBig, kSmall = T::emTagIdSmall, kSub = T::emTagIdSub,
              kSup = T::emTagIdSup, kParam = T::emTagIdParam, kArea = T::emTagIdArea, kOption = T::emTagIdOption,
              kLabel = T::emTagIdLabel, kP = T::emTagIdP, kDt = T::emTagIdDt, kDd = T::emTagIdDd,
              kCenter = T::emTagIdCenter, kBlockquote = T::emTagIdBlockquote, kForm = T::emTagIdForm,
              kIsindex = T::emTagIdIsIndex, kTable = T::emTagIdTable, kFieldset = T::emTagIdFieldset,
              kCaption = T::emTagIdCaption, kCol = T::emTagIdCol, kColgroup = T::emTagIdColgroup,
              kThead = T::emTagIdThead, kTfoot = T::emTagIdTfoot, kTbody = T::emTagIdTbody, kTr = T::emTagIdTr,
              kTh = T::emTagIdTh, kTd = T::emTagIdTd, kLengend = T::emTagIdLengend, kUl = T::emTagIdUl,
              kLi = T::emTagIdLi, kOl = T::emTagIdOl, kMenu = T::emTagIdMenu, kDir = T::emTagIdDir,
              kPre = T::emTagIdPre;

// Major-type bits the top-level rules accept (any of them).
constexpr DWORD kHtmlChild = T::emMjrHtmlChild, kHeadChild = T::emMjrHeadChild, kBodyChild = T::emMjrBodyChild,
                kBodyFrame = T::emMjrBodyChild | T::emMjrFramesetChild;

using R = CHtmlEntityTree;
constexpr int kInline = R::emChildInline, kBlock = R::emChildBlock, kPart = R::emChildListTablePart,
              kParamLike = R::emChildParamLike, kFormControl = R::emChildFormControl;

}  // namespace

// clang-format off
const CHtmlEntityTree::TagContainRule CHtmlEntityTree::ms_tTagContainTable[] = {
  // content model         mode            major bits  accept classes             refuse classes  accept ids                          refuse ids                                  ins/del mark ids
  {T::emCntEmpty,          emContainNever,  0,          0,                         0,             {},                                 {},                                         0, {}},
  {T::emCntHtml,           emContainRule,   kHtmlChild, 0,                         0,             {},                                 {},                                         0, {}},  // HTML
  {T::emCntHead,           emContainRule,   kHeadChild, 0,                         0,             {},                                 {},                                         0, {}},  // HEAD
  {T::emCntBody,           emContainRule,   kBodyChild, 0,                         0,             {},                                 {kBody},                                    1, {}},  // BODY
  {T::emCntFrameset,       emContainRule,   kBodyFrame, 0,                         0,             {},                                 {},                                         1, {}},  // FRAMESET
  {T::emCntTitle,          emContainRule,   0,          0,                         0,             {kScript, kStyle, kMeta, kLink}, {},                                       0, {}},  // TITLE
  {T::emCntAnchor,         emContainRule,   0,          kInline,                   0,             {},                                 {kA},                                       1, {}},  // A
  {T::emCntApplet,         emContainRule,   0,          kInline,                   0,             {kParam},                           {},                                         1, {}},  // APPLET
  {T::emCntObject,         emContainRule,   0,          kBlock,                    0,             {kParam, kObject},                  {},                                         1, {}},  // OBJECT
  {T::emCntMap,            emContainRule,   0,          0,                         0,             {kArea},                            {},                                         1, {}},  // MAP
  {T::emCntSelect,         emContainRule,   0,          0,                         0,             {kOption},                          {},                                         1, {}},  // SELECT
  {T::emCntLabel,          emContainRule,   0,          kInline,                   0,             {},                                 {kLabel},                                   1, {}},  // LABEL
  {T::emCntButton,         emContainRule,   0,          kBlock,                    kFormControl,  {},                                 {kA, kForm, kIsindex, kFieldset},           1, {}},  // BUTTON
  {T::emCntDl,             emContainRule,   0,          0,                         0,             {kDt, kDd},                         {},                                         1, {}},  // DL
  {T::emCntForm,           emContainRule,   0,          kBlock,                    0,             {},                                 {kForm},                                    1, {}},  // FORM
  {T::emCntTable,          emContainTable,  0,          0,                         0,             {},                                 {},                                         0,
         {kTr, kTh, kCaption, kCol, kColgroup, kThead, kTfoot, kTbody}},                                                                                              // TABLE: TD is marked
  {T::emCntThead,          emContainRule,   0,          0,                         0,             {kTr},                              {},                                         1, {}},  // THEAD
  {T::emCntTfoot,          emContainRule,   0,          0,                         0,             {kTr},                              {},                                         1, {}},  // TFOOT
  {T::emCntTbody,          emContainRule,   0,          0,                         0,             {kTr},                              {},                                         1, {}},  // TBODY
  {T::emCntColgroup,       emContainRule,   0,          0,                         0,             {kCol},                             {},                                         1, {}},  // COLGROUP
  {T::emCntTr,             emContainRule,   0,          0,                         0,             {kTh, kTd},                         {},                                         1, {}},  // TR
  {T::emCntFieldset,       emContainRule,   0,          kBlock,                    0,             {kLengend},                         {},                                         1, {}},  // FIELDSET
  {T::emCntAddress,        emContainRule,   0,          kInline,                   0,             {kP},                               {},                                         1, {}},  // ADDRESS
  {T::emCntList,           emContainRule,   0,          kBlock,                    0,             {kLi},                              {kTable},                                   1, {}},  // UL, OL
  {T::emCntDirMenu,        emContainRule,   0,          kBlock,                    0,             {kLi},                              {kTable},                                   1, {}},  // DIR, MENU
  {T::emCntPreformatted,   emContainPre,    0,          kInline,                   0,             {kP, kPre},                         {},                                         1,
         {kImg, kBig, kSmall, kSub, kSup, kFont}},                                                                                                                    // PRE family
  {T::emCntSpare25,        emContainRule,   0,          0,                         0,             {},                                 {},                                         1, {}},
  {T::emCntRawText,        emContainRule,   0,          0,                         0,             {},                                 {},                                         1, {}},  // COMMENT, STYLE, SCRIPT
  {T::emCntEmbedded,       emContainRule,   0,          0,                         0,             {},                                 {},                                         1, {}},  // EMBED, NOEMBED, TEXTAREA, OPTION
  {T::emCntFlow,           emContainRule,   0,          kBlock | kPart,            0,             {},                                 {},                                         1, {}},  // DIV family
  {T::emCntInline,         emContainRule,   0,          kInline | kParamLike,      0,             {},                                 {},                                         1, {}},  // inline phrase and font
  {T::emCntCaption,        emContainRule,   0,          kInline | kParamLike,      0,             {},                                 {},                                         1, {}},  // CAPTION, LENGEND
  {T::emCntSpare45,        emContainRule,   0,          kInline | kParamLike,      0,             {},                                 {},                                         1, {}},
  {T::emCntParagraph,      emContainRule,   0,          kInline | kParamLike | kPart, 0,          {kCenter, kBlockquote, kPre},       {},                                         1, {}},  // P
  {T::emCntDt,             emContainRule,   0,          kInline | kParamLike,      0,             {},                                 {},                                         1, {}},  // DT
  {T::emCntHeading,        emContainRule,   0,          kInline | kParamLike,      0,             {kCenter, kBlockquote, kP},         {},                                         1, {}},  // H1..H6
  {T::emCntDd,             emContainRule,   0,          kBlock | kPart,            0,             {},                                 {kDd},                                      1, {}},  // DD
  {T::emCntTh,             emContainRule,   0,          kBlock | kPart,            0,             {},                                 {kTh, kTd, kTr},                            1, {}},  // TH
  {T::emCntTd,             emContainRule,   0,          kBlock | kPart,            0,             {},                                 {kTh, kTd, kTr},                            1, {}},  // TD
  // LI refuses nested lists and tables, so a list after an item's text
  // closes the item and becomes its sibling.
  {T::emCntLi,             emContainRule,   0,          kBlock | kPart,            0,             {},
         {kUl, kOl, kMenu, kDir, kTable, kLi, kTr, kTh, kCaption, kCol, kColgroup, kThead, kTfoot, kTbody},                              1, {}},  // LI
  {T::emCntDel,            emContainRule,   0,          kInline,                   0,             {},                                 {},                                         1, {}},  // DEL
  {T::emCntIns,            emContainRule,   0,          kInline,                   0,             {},                                 {},                                         1, {}},  // INS
};
// clang-format on

const int CHtmlEntityTree::ms_nTagContainTableSize =
    static_cast<int>(sizeof(ms_tTagContainTable) / sizeof(ms_tTagContainTable[0]));

const CHtmlEntityTree::TagContainRule* CHtmlEntityTree::GetTagContainRule(int nCntType) {
  // Content types are small codes: a 256-entry index built once turns the
  // lookup into one load on the tree builder's hot path.
  static const std::array<signed char, 256> s_Index = [] {
    std::array<signed char, 256> index{};
    index.fill(-1);
    for (int i = 0; i < ms_nTagContainTableSize; ++i) index[ms_tTagContainTable[i].m_nCntType & 0xFF] = static_cast<signed char>(i);
    return index;
  }();
  if (nCntType < 0 || nCntType > 255) return nullptr;
  int nRow = s_Index[static_cast<unsigned>(nCntType)];
  return nRow < 0 ? nullptr : &ms_tTagContainTable[nRow];
}

}  // namespace telvanix
