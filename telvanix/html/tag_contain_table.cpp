// Which children each content model of the tag syntax table holds. A row is
// chosen by the container's content type; a content type without a row holds
// anything. Special children (unknown tags, comments, declarations, HTML,
// NOFRAMES) and text are accepted before this table is asked.
#include <array>

#include "telvanix/html/entity_tree.h"

namespace telvanix {

namespace {

// Tag ids of the syntax table rows the rules name.
constexpr int kBody = 0x40;
constexpr int kScript = 0x22060, kStyle = 0x10020, kMeta = 0x10030, kLink = 0x10040;
constexpr int kA = 0x20200, kImg = 0x20210, kObject = 0x20230, kFont = 0x20240;
constexpr int kBig = 0x20060, kSmall = 0x20070, kSub = 0x20290, kSup = 0x202A0;
constexpr int kParam = 0x20221, kArea = 0x20271, kOption = 0x20311, kLabel = 0x20330;
constexpr int kP = 0x21000, kDt = 0x21011, kDd = 0x21012, kCenter = 0x21030, kBlockquote = 0x21050;
constexpr int kForm = 0x21060, kIsindex = 0x21070, kTable = 0x21090, kFieldset = 0x210A0;
constexpr int kCaption = 0x21091, kCol = 0x21092, kColgroup = 0x21093, kThead = 0x21094;
constexpr int kTfoot = 0x21095, kTbody = 0x21096, kTr = 0x2109A, kTh = 0x2109B, kTd = 0x2109C;
constexpr int kLengend = 0x210A1, kUl = 0x21200, kLi = 0x21201, kOl = 0x21210, kMenu = 0x21220;
constexpr int kDir = 0x21230, kPre = 0x21300;

using R = CHtmlEntityTree;
constexpr int kInline = R::emChildInline, kBlock = R::emChildBlock, kPart = R::emChildListTablePart,
              kParamLike = R::emChildParamLike, kFormControl = R::emChildFormControl;

}  // namespace

// clang-format off
const CHtmlEntityTree::TagContainRule CHtmlEntityTree::ms_tTagContainTable[] = {
  // cnt   mode            major bits  accept classes             refuse classes  accept ids                          refuse ids                                  ins/del mark ids
  {0,    emContainNever,  0,          0,                         0,             {},                                 {},                                         0, {}},
  {1,    emContainRule,   0x80000000, 0,                         0,             {},                                 {},                                         0, {}},  // HTML
  {2,    emContainRule,   0x40000000, 0,                         0,             {},                                 {},                                         0, {}},  // HEAD
  {3,    emContainRule,   0x20000000, 0,                         0,             {},                                 {kBody},                                    1, {}},  // BODY
  {4,    emContainRule,   0x30000000, 0,                         0,             {},                                 {},                                         1, {}},  // FRAMESET
  {16,   emContainRule,   0,          0,                         0,             {kScript, kStyle, kMeta, kLink}, {},                                       0, {}},  // TITLE
  {17,   emContainRule,   0,          kInline,                   0,             {},                                 {kA},                                       1, {}},  // A
  {18,   emContainRule,   0,          kInline,                   0,             {kParam},                           {},                                         1, {}},  // APPLET
  {19,   emContainRule,   0,          kBlock,                    0,             {kParam, kObject},                  {},                                         1, {}},  // OBJECT
  {20,   emContainRule,   0,          0,                         0,             {kArea},                            {},                                         1, {}},  // MAP
  {21,   emContainRule,   0,          0,                         0,             {kOption},                          {},                                         1, {}},  // SELECT
  {22,   emContainRule,   0,          kInline,                   0,             {},                                 {kLabel},                                   1, {}},  // LABEL
  {23,   emContainRule,   0,          kBlock,                    kFormControl,  {},                                 {kA, kForm, kIsindex, kFieldset},           1, {}},  // BUTTON
  {24,   emContainRule,   0,          0,                         0,             {kDt, kDd},                         {},                                         1, {}},  // DL
  {25,   emContainRule,   0,          kBlock,                    0,             {},                                 {kForm},                                    1, {}},  // FORM
  {26,   emContainTable,  0,          0,                         0,             {},                                 {},                                         0,
         {kTr, kTh, kCaption, kCol, kColgroup, kThead, kTfoot, kTbody}},                                                                                              // TABLE: TD is marked
  {27,   emContainRule,   0,          0,                         0,             {kTr},                              {},                                         1, {}},  // THEAD
  {28,   emContainRule,   0,          0,                         0,             {kTr},                              {},                                         1, {}},  // TFOOT
  {29,   emContainRule,   0,          0,                         0,             {kTr},                              {},                                         1, {}},  // TBODY
  {30,   emContainRule,   0,          0,                         0,             {kCol},                             {},                                         1, {}},  // COLGROUP
  {31,   emContainRule,   0,          0,                         0,             {kTh, kTd},                         {},                                         1, {}},  // TR
  {32,   emContainRule,   0,          kBlock,                    0,             {kLengend},                         {},                                         1, {}},  // FIELDSET
  {33,   emContainRule,   0,          kInline,                   0,             {kP},                               {},                                         1, {}},  // ADDRESS
  {34,   emContainRule,   0,          kBlock,                    0,             {kLi},                              {kTable},                                   1, {}},  // UL, OL
  {35,   emContainRule,   0,          kBlock,                    0,             {kLi},                              {kTable},                                   1, {}},  // DIR, MENU
  {36,   emContainPre,    0,          kInline,                   0,             {kP, kPre},                         {},                                         1,
         {kImg, kBig, kSmall, kSub, kSup, kFont}},                                                                                                                    // PRE family
  {37,   emContainRule,   0,          0,                         0,             {},                                 {},                                         1, {}},
  {64,   emContainRule,   0,          0,                         0,             {},                                 {},                                         1, {}},  // COMMENT, STYLE, SCRIPT
  {65,   emContainRule,   0,          0,                         0,             {},                                 {},                                         1, {}},  // EMBED, NOEMBED, TEXTAREA, OPTION
  {66,   emContainRule,   0,          kBlock | kPart,            0,             {},                                 {},                                         1, {}},  // DIV family
  {67,   emContainRule,   0,          kInline | kParamLike,      0,             {},                                 {},                                         1, {}},  // inline phrase and font
  {68,   emContainRule,   0,          kInline | kParamLike,      0,             {},                                 {},                                         1, {}},  // CAPTION, LENGEND
  {69,   emContainRule,   0,          kInline | kParamLike,      0,             {},                                 {},                                         1, {}},
  {80,   emContainRule,   0,          kInline | kParamLike | kPart, 0,          {kCenter, kBlockquote, kPre},       {},                                         1, {}},  // P
  {81,   emContainRule,   0,          kInline | kParamLike,      0,             {},                                 {},                                         1, {}},  // DT
  {82,   emContainRule,   0,          kInline | kParamLike,      0,             {kCenter, kBlockquote, kP},         {},                                         1, {}},  // H1..H6
  {96,   emContainRule,   0,          kBlock | kPart,            0,             {},                                 {kDd},                                      1, {}},  // DD
  {97,   emContainRule,   0,          kBlock | kPart,            0,             {},                                 {kTh, kTd, kTr},                            1, {}},  // TH
  {98,   emContainRule,   0,          kBlock | kPart,            0,             {},                                 {kTh, kTd, kTr},                            1, {}},  // TD
  // LI refuses nested lists and tables, so a list after an item's text
  // closes the item and becomes its sibling.
  {99,   emContainRule,   0,          kBlock | kPart,            0,             {},
         {kUl, kOl, kMenu, kDir, kTable, kLi, kTr, kTh, kCaption, kCol, kColgroup, kThead, kTfoot, kTbody},                              1, {}},  // LI
  {112,  emContainRule,   0,          kInline,                   0,             {},                                 {},                                         1, {}},  // DEL
  {113,  emContainRule,   0,          kInline,                   0,             {},                                 {},                                         1, {}},  // INS
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
