// The tag vocabulary: one row per known tag, in the syntax table's stored
// order. Each row gives the tag's enumerator name (CHtmlTagItem::emTagId<Name>),
// its spelling, its id and the six type columns by name (CHtmlTagItem's
// EmOcrType, EmCntType, EmSptType, EmVerType, EmMjrType, EmPrtType). The tag
// ids, the syntax table and the tag sets below all come from here, so a new
// tag is one row.
//
// Rows 0 to 5 are not elements: row 0 answers for an invalid index, rows 1 to
// 5 are what unknown tags point at. The legend element's row is spelled
// "LENGEND" on purpose, so a LEGEND tag in a page stays an unknown tag.
#pragma once

// X(Name, "SPELLING", id, Ocr, Cnt, Spt, Ver, Mjr, Prt)
// clang-format off
#define TELVANIX_TAG_ROWS(X) \
  X(None,           "",           0x0,     BothOptional, Empty,            Ordinary,    All,       InvalidRow,     BlockLine) \
  X(UnknownRow1,    "1",          0x2,     EndOptional,  Unknown,          Ordinary,    All,       InvalidRow,     None) \
  X(UnknownRow2,    "2",          0x3,     EndOptional,  Empty,            Ordinary,    All,       InvalidRow,     None) \
  X(UnknownRow3,    "3",          0x4,     EndOptional,  Empty,            Ordinary,    All,       InvalidRow,     OwnLine) \
  X(UnknownRow4,    "4",          0x5,     EndRequired,  UnknownContainer, Ordinary,    All,       InvalidRow,     Container) \
  X(UnknownRow5,    "5",          0x6,     EndRequired,  UnknownContainer, Ordinary,    All,       InvalidRow,     Container) \
  X(Doctype,        "!DOCTYPE",   0x10,    BothOptional, Empty,            Declaration, All,       DocumentRow,    OwnLine) \
  X(Html,           "HTML",       0x20,    BothOptional, Html,             Ordinary,    All,       DocumentRow,    Document) \
  X(Head,           "HEAD",       0x30,    BothOptional, Head,             Ordinary,    All,       TopLevel,       Container) \
  X(Body,           "BODY",       0x40,    BothOptional, Body,             Ordinary,    All,       TopLevel,       Container) \
  X(Frameset,       "FRAMESET",   0x50,    EndRequired,  Frameset,         Ordinary,    All,       TopLevel,       Container) \
  X(Comment,        "!--",        0x60,    BothOptional, Empty,            Comment,     All,       DocumentRow,    None) \
  X(CommentElement, "COMMENT",    0x70,    EndRequired,  RawText,          RawContent,  All,       DocumentRow,    None) \
  X(XmlDoctype,     "?DOCTYPE",   0x80,    BothOptional, Empty,            Ordinary,    All,       DocumentRow,    OwnLine) \
  X(Title,          "TITLE",      0x10000, EndRequired,  Title,            Ordinary,    All,       HeadTitle,      HeadLine) \
  X(Base,           "BASE",       0x10010, EndOptional,  Empty,            Ordinary,    All,       HeadTitle,      HeadLine) \
  X(Style,          "STYLE",      0x10020, EndRequired,  RawText,          RawContent,  All,       HeadMeta,       None) \
  X(Meta,           "META",       0x10030, EndOptional,  Empty,            Ordinary,    All,       HeadMeta,       HeadLine) \
  X(Link,           "LINK",       0x10040, EndOptional,  Empty,            Ordinary,    All,       HeadMeta,       HeadLine) \
  X(NextId,         "NEXTID",     0x10080, EndOptional,  Empty,            Ordinary,    All,       HeadMeta,       HeadLine) \
  X(Tt,             "TT",         0x20000, EndRequired,  Inline,           Ordinary,    All,       FontStyle,      None) \
  X(I,              "I",          0x20010, EndRequired,  Inline,           Ordinary,    All,       FontStyle,      None) \
  X(B,              "B",          0x20020, EndRequired,  Inline,           Ordinary,    All,       FontStyle,      None) \
  X(U,              "U",          0x20030, EndRequired,  Inline,           Ordinary,    All,       FontStyle,      None) \
  X(S,              "S",          0x20040, EndRequired,  Inline,           Ordinary,    All,       FontStyle,      None) \
  X(Strike,         "STRIKE",     0x20050, EndRequired,  Inline,           Ordinary,    All,       FontStyle,      None) \
  X(Big,            "BIG",        0x20060, EndRequired,  Inline,           Ordinary,    All,       FontStyle,      None) \
  X(Small,          "SMALL",      0x20070, EndRequired,  Inline,           Ordinary,    All,       FontStyle,      None) \
  X(Em,             "EM",         0x20100, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Strong,         "STRONG",     0x20110, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Dfn,            "DFN",        0x20120, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Code,           "CODE",       0x20130, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Samp,           "SAMP",       0x20140, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Kbd,            "KBD",        0x20150, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Var,            "VAR",        0x20160, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Cite,           "CITE",       0x20170, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Acronym,        "ACRONYM",    0x20180, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(Blink,          "BLINK",      0x20190, EndRequired,  Inline,           Ordinary,    All,       Phrase,         None) \
  X(A,              "A",          0x20200, EndRequired,  Anchor,           Ordinary,    All,       SpecialInline,  None) \
  X(Img,            "IMG",        0x20210, EndOptional,  Empty,            Ordinary,    All,       SpecialInline,  None) \
  X(Applet,         "APPLET",     0x20220, EndRequired,  Applet,           Ordinary,    All,       SpecialInline,  None) \
  X(Object,         "OBJECT",     0x20230, EndRequired,  Object,           Ordinary,    All,       SpecialInline,  None) \
  X(Font,           "FONT",       0x20240, EndRequired,  Inline,           Ordinary,    All,       SpecialInline,  None) \
  X(BaseFont,       "BASEFONT",   0x20250, EndOptional,  Empty,            Ordinary,    All,       SpecialInline,  None) \
  X(Br,             "BR",         0x20260, EndOptional,  Empty,            Ordinary,    All,       SpecialInline,  None) \
  X(Script,         "SCRIPT",     0x22060, EndRequired,  RawText,          RawContent,  All,       Script,         None) \
  X(Map,            "MAP",        0x20270, EndRequired,  Map,              Ordinary,    All,       SpecialInline,  None) \
  X(Q,              "Q",          0x20280, EndRequired,  Inline,           Ordinary,    All,       SpecialInline,  None) \
  X(Sub,            "SUB",        0x20290, EndRequired,  Inline,           Ordinary,    All,       SpecialInline,  None) \
  X(Sup,            "SUP",        0x202A0, EndRequired,  Inline,           Ordinary,    All,       SpecialInline,  None) \
  X(Span,           "SPAN",       0x202B0, EndRequired,  Inline,           Ordinary,    All,       SpecialInline,  None) \
  X(Bdo,            "BDO",        0x202C0, EndRequired,  Inline,           Ordinary,    All,       SpecialInline,  None) \
  X(IFrame,         "IFRAME",     0x202E0, EndRequired,  Flow,             Ordinary,    All,       SpecialInline,  None) \
  X(Embed,          "EMBED",      0x202F0, EndRequired,  Embedded,         Ordinary,    All,       SpecialInline,  None) \
  X(NoEmbed,        "NOEMBED",    0x202F1, EndRequired,  Embedded,         Ordinary,    All,       SpecialInline,  None) \
  X(Marquee,        "MARQUEE",    0x202F2, EndRequired,  Flow,             Ordinary,    Extension, SpecialInline,  None) \
  X(NoBr,           "NOBR",       0x202F3, EndRequired,  Flow,             Ordinary,    All,       SpecialInline,  None) \
  X(Wbr,            "WBR",        0x202F4, EndOptional,  Empty,            Ordinary,    All,       SpecialInline,  None) \
  X(Param,          "PARAM",      0x20221, EndOptional,  Empty,            Ordinary,    All,       EmbeddedInline, None) \
  X(Area,           "AREA",       0x20271, EndOptional,  Empty,            Ordinary,    All,       EmbeddedInline, None) \
  X(Input,          "INPUT",      0x20300, EndOptional,  Empty,            Ordinary,    All,       FormControl,    None) \
  X(Select,         "SELECT",     0x20310, EndRequired,  Select,           Ordinary,    All,       FormControl,    None) \
  X(TextArea,       "TEXTAREA",   0x20320, EndRequired,  Embedded,         Ordinary,    All,       FormControl,    None) \
  X(Label,          "LABEL",      0x20330, EndRequired,  Label,            Ordinary,    All,       FormControl,    None) \
  X(Button,         "BUTTON",     0x20340, EndRequired,  Button,           Ordinary,    All,       FormControl,    None) \
  X(Option,         "OPTION",     0x20311, EndOptional,  Embedded,         Ordinary,    All,       EmbeddedInline, None) \
  X(P,              "P",          0x21000, EndOptional,  Paragraph,        Ordinary,    All,       Block,          BlockLine) \
  X(Dl,             "DL",         0x21010, EndRequired,  Dl,               Ordinary,    All,       Block,          Container) \
  X(Div,            "DIV",        0x21020, EndRequired,  Flow,             Ordinary,    All,       Block,          Container) \
  X(Center,         "CENTER",     0x21030, EndRequired,  Flow,             Ordinary,    All,       Block,          Container) \
  X(NoScript,       "NOSCRIPT",   0x21040, EndRequired,  Flow,             Ordinary,    All,       HeadOrBlock,    Container) \
  X(Blockquote,     "BLOCKQUOTE", 0x21050, EndRequired,  Flow,             Ordinary,    All,       Block,          Container) \
  X(Form,           "FORM",       0x21060, EndRequired,  Form,             Ordinary,    All,       Block,          Container) \
  X(IsIndex,        "ISINDEX",    0x21070, EndOptional,  Empty,            Ordinary,    All,       HeadOrBlock,    BlockLine) \
  X(Hr,             "HR",         0x21080, EndOptional,  Empty,            Ordinary,    All,       Block,          None) \
  X(Table,          "TABLE",      0x21090, EndRequired,  Table,            Ordinary,    All,       Block,          Container) \
  X(Fieldset,       "FIELDSET",   0x210A0, EndRequired,  Fieldset,         Ordinary,    All,       Block,          Container) \
  X(Address,        "ADDRESS",    0x210B0, EndRequired,  Address,          Ordinary,    All,       Block,          BlockLine) \
  X(Layer,          "LAYER",      0x210C0, EndRequired,  Flow,             Ordinary,    All,       Block,          Container) \
  X(Dt,             "DT",         0x21011, EndOptional,  Dt,               Ordinary,    All,       ListTablePart,  BlockLine) \
  X(Dd,             "DD",         0x21012, EndOptional,  Dd,               Ordinary,    All,       ListTablePart,  BlockLine) \
  X(Caption,        "CAPTION",    0x21091, EndRequired,  Caption,          Ordinary,    All,       ListTablePart,  Container) \
  X(Thead,          "THEAD",      0x21094, EndOptional,  Thead,            Ordinary,    All,       ListTablePart,  Container) \
  X(Tfoot,          "TFOOT",      0x21095, EndOptional,  Tfoot,            Ordinary,    All,       ListTablePart,  Container) \
  X(Tbody,          "TBODY",      0x21096, BothOptional, Tbody,            Ordinary,    All,       ListTablePart,  Container) \
  X(Col,            "COL",        0x21092, EndOptional,  Empty,            Ordinary,    All,       ListTablePart,  BlockLine) \
  X(Colgroup,       "COLGROUP",   0x21093, EndOptional,  Colgroup,         Ordinary,    All,       ListTablePart,  BlockLine) \
  X(Tr,             "TR",         0x2109A, EndOptional,  Tr,               Ordinary,    All,       ListTablePart,  BlockLine) \
  X(Th,             "TH",         0x2109B, EndOptional,  Th,               Ordinary,    All,       ListTablePart,  BlockLine) \
  X(Td,             "TD",         0x2109C, EndOptional,  Td,               Ordinary,    All,       ListTablePart,  BlockLine) \
  X(Lengend,        "LENGEND",    0x210A1, EndRequired,  Caption,          Ordinary,    All,       ListTablePart,  BlockLine) \
  X(H1,             "H1",         0x21100, EndRequired,  Heading,          Ordinary,    All,       Heading,        BlockLine) \
  X(H2,             "H2",         0x21110, EndRequired,  Heading,          Ordinary,    All,       Heading,        BlockLine) \
  X(H3,             "H3",         0x21120, EndRequired,  Heading,          Ordinary,    All,       Heading,        BlockLine) \
  X(H4,             "H4",         0x21130, EndRequired,  Heading,          Ordinary,    All,       Heading,        BlockLine) \
  X(H5,             "H5",         0x21140, EndRequired,  Heading,          Ordinary,    All,       Heading,        BlockLine) \
  X(H6,             "H6",         0x21150, EndRequired,  Heading,          Ordinary,    All,       Heading,        BlockLine) \
  X(Ul,             "UL",         0x21200, EndRequired,  List,             Ordinary,    All,       List,           Container) \
  X(Ol,             "OL",         0x21210, EndRequired,  List,             Ordinary,    All,       List,           Container) \
  X(Dir,            "DIR",        0x21230, EndRequired,  DirMenu,          Ordinary,    All,       List,           Container) \
  X(Menu,           "MENU",       0x21220, EndRequired,  DirMenu,          Ordinary,    All,       List,           Container) \
  X(Li,             "LI",         0x21201, EndOptional,  Li,               Ordinary,    All,       ListTablePart,  BlockLine) \
  X(Pre,            "PRE",        0x21300, EndRequired,  Preformatted,     Ordinary,    All,       Preformatted,   None) \
  X(Xmp,            "XMP",        0x21310, EndRequired,  Preformatted,     Ordinary,    All,       Preformatted,   None) \
  X(Listing,        "LISTING",    0x21320, EndRequired,  Preformatted,     Ordinary,    All,       Preformatted,   None) \
  X(PlainText,      "PLAINTEXT",  0x21330, EndOptional,  Preformatted,     Ordinary,    All,       Preformatted,   None) \
  X(Ins,            "INS",        0x22000, EndRequired,  Ins,              Ordinary,    Edit,      Edit,           None) \
  X(Del,            "DEL",        0x22010, EndRequired,  Del,              Ordinary,    Edit,      Edit,           None) \
  X(Frame,          "FRAME",      0x34000, EndOptional,  Empty,            Ordinary,    All,       Frame,          BlockLine) \
  X(NoFrames,       "NOFRAMES",   0x34010, EndRequired,  NoFrames,         Ordinary,    All,       DocumentRow,    BlockLine) \
  X(BgSound,        "BGSOUND",    0x40001, EndOptional,  Empty,            Ordinary,    Extension, TopLevel,       None) \
  /* a new tag is one more row above this line */
// clang-format on

// Tag sets, by row name.
// Inline formatting that is carried into the following containers when a
// container closes it (A, SPAN and BDO are not).
#define TELVANIX_TAGSET_REOPENED_FORMATTING(X) \
  X(Tt) X(I) X(B) X(U) X(S) X(Strike) X(Big) X(Small) X(Em) X(Strong) X(Dfn) X(Code) \
  X(Samp) X(Kbd) X(Var) X(Cite) X(Acronym) X(Blink) X(Font) X(Q) X(Sub) X(Sup)
