#include "telvanix/html/html_pack.h"

#include <cstring>
#include <exception>
#include <strings.h>
#include <sys/mman.h>

#include "telvanix/foundation/path_utils.h"
#include "telvanix/html/entity_tree.h"
#include "telvanix/html/tag_item.h"

namespace telvanix {

namespace {

constexpr DWORD kFileAttributeReadonly = 0x1;
constexpr DWORD kFileAttributeNormal = 0x80;

// Analysis flags each parse depth adds.
constexpr int kParseFlagBits[6] = {0, 0x1, 0x3, 0x7, 0x10007, 0x20007};

constexpr int kIndentBufferSize = 288;
constexpr int kIndentTakenOverMax = 254;

struct IndentBuffer {
  char text[kIndentBufferSize];
  int length = 0;

  void Apply(int type) {
    switch (type) {
      case 1:
        length = 0;
        break;
      case 2:
        text[0] = ' ';
        length = 1;
        break;
      case 3:
        text[0] = text[1] = ' ';
        length = 2;
        break;
      case 5:
        if (length < kIndentBufferSize - 1)
          text[length++] = ' ';
        break;
      case 6:
        if (length > 0 && text[length - 1] == ' ')
          --length;
        break;
      default:  // 0: no line handling; 4: kept
        break;
    }
  }
};

inline bool IsBlankByte(unsigned char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

// ---- Construction ----

CHtmlPack::CHtmlPack()
    : m_nSourceMode(emSourceEmpty),
      m_bParsed(1),
      m_hFile(nullptr),
      m_hMapping(nullptr),
      m_pMappedView(nullptr),
      m_nMappedSize(0),
      m_pSource(nullptr),
      m_nAnalyseFlags(0) {
  CHtmlTagItem::InitializeSyntaxTable();
}

CHtmlPack::CHtmlPack(const char* path) : CHtmlPack() {
  m_nSourceMode = emSourceFile;
  m_bParsed = 0;
  m_strPathName = path;
}

CHtmlPack::CHtmlPack(CByteString& source, const char* path) : CHtmlPack() {
  m_nSourceMode = path ? emSourceFile : emSourceBuffer;
  m_bParsed = 0;
  if (path)
    m_strPathName = path;
  m_pSource = &source;
}

CHtmlPack::~CHtmlPack() {
  CloseMappingView();
  m_TokenList.ClearAll();
  m_strPathName.Empty();
}

int CHtmlPack::SetSource(CByteString& source) {
  CloseMappingView();
  m_TokenList.ClearAll();
  m_nSourceMode = m_strPathName.IsEmpty() ? emSourceBuffer : emSourceFile;
  m_nAnalyseFlags = 0;
  m_bParsed = 0;
  m_pSource = &source;
  return 1;
}

// ---- Parsing ----

int CHtmlPack::Parse(EmParseFlag nFlag) {
  try {
    if (nFlag < 1 || nFlag > 5)
      return 0;
    m_nAnalyseFlags |= kParseFlagBits[nFlag];
    if (m_nSourceMode == emSourceFile || m_nSourceMode == emSourceBuffer)
      m_nAnalyseFlags |= emAnalyseOriginalMark;
    if (m_nSourceMode == emSourceEmpty && (nFlag == emParseTokens || nFlag == emParseAttributes))
      return 1;

    if (!m_bParsed) {
      const unsigned char* first = nullptr;
      std::size_t size = 0;
      bool mapped = false;
      if (m_pSource && m_pSource->GetLength() > 0) {
        first = m_pSource->GetContent();
        size = static_cast<std::size_t>(m_pSource->GetLength());
      } else if (m_nSourceMode == emSourceFile) {
        CString path(m_strPathName);
        if (!OpenMappingView(path))
          return 0;
        first = m_pMappedView;
        size = m_nMappedSize;
        mapped = true;
      } else {
        return 0;
      }
      int result = 1;
      if (size > 0) {
        // Every token is analysed with these flags as it is read, so the
        // list needs no second pass of AnalyseList here.
        result = m_TokenList.BuildTokenList(first, first + size, m_nAnalyseFlags);
        if (result && (m_nAnalyseFlags & emAnalyseTree))
          result = m_TokenList.BuildEntityTree(m_nAnalyseFlags);
      }
      // The tokens hold copies of their bytes: the view is not needed now.
      if (mapped)
        CloseMappingView();
      m_bParsed = 1;
      return result;
    }

    if (!m_TokenList.AnalyseList(m_nAnalyseFlags))
      return 0;
    if (m_nAnalyseFlags & emAnalyseTree)
      return m_TokenList.BuildEntityTree(m_nAnalyseFlags);
    return 1;
  } catch (const std::exception&) {
    CloseMappingView();
    return 0;
  }
}

int CHtmlPack::RebuildEntityTree() {
  try {
    int flags = (m_nAnalyseFlags & emAnalyseTree) ? m_nAnalyseFlags : (emAnalyseHtmlTree | emAnalyseTree);
    return m_TokenList.BuildEntityTree(flags);
  } catch (const std::exception&) {
    return 0;
  }
}

// ---- Mapping ----

int CHtmlPack::OpenMappingView(const char* path) {
  CloseMappingView();
  if (!path)
    return 0;
  m_strPathName = CString(path);
  HANDLE file = kolmCreateFile(m_strPathName, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               kFileAttributeReadonly | kFileAttributeNormal, nullptr);
  if (file == INVALID_HANDLE_VALUE || !file)
    return 0;
  LONGLONG size = kolmGetFileSize(file);
  int fd = kolmGetFileDescriptor(file);
  // A zero-length file cannot be mapped.
  if (size <= 0 || fd < 0) {
    kolmCloseFile(file);
    return 0;
  }
  void* view = mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_PRIVATE, fd, 0);
  if (view == MAP_FAILED) {
    kolmCloseFile(file);
    return 0;
  }
  m_hFile = file;
  m_hMapping = view;  // the view stands for the mapping object here
  m_pMappedView = static_cast<const unsigned char*>(view);
  m_nMappedSize = static_cast<std::size_t>(size);
  return 1;
}

int CHtmlPack::CloseMappingView() {
  if (m_pMappedView)
    munmap(const_cast<unsigned char*>(m_pMappedView), m_nMappedSize);
  if (m_hFile)
    kolmCloseFile(m_hFile);
  m_hFile = nullptr;
  m_hMapping = nullptr;
  m_pMappedView = nullptr;
  m_nMappedSize = 0;
  return 1;
}

// ---- State ----

int CHtmlPack::IsTokenListModified() {
  for (POSITION pos = m_TokenList.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    if (!token)
      continue;
    DWORD flags = token->GetTokenFlag();
    if (flags & (CHtmlTokenItem::emTokenDiscarded | CHtmlTokenItem::emTokenInserted | CHtmlTokenItem::emTokenModified |
                 CHtmlTokenItem::emTokenRewritten))
      return 1;
    if (!(flags & CHtmlTokenItem::emTokenAnalyseMark))
      return 1;
  }
  return 0;
}

CString CHtmlPack::GetFilePathName(const char* name) {
  if (m_nSourceMode != emSourceFile)
    return CString();
  if (!name)
    return m_strPathName;
  return GetNormalizedFullPathName(name, m_strPathName);
}

int CHtmlPack::ChangeFilename(const char* path) {
  if (!path || !*path)
    return 0;
  try {
    CString target(path);
    if (m_nSourceMode == emSourceFile) {
      // Keep the old content before the target changes.
      if (!m_bParsed)
        Parse(emParseTokens);
      m_strPathName = target;
      return 1;
    }
    if (m_nSourceMode == emSourceEmpty) {
      if (!IsExistingFile(target) || !m_TokenList.IsEmpty())
        return 0;
      m_nSourceMode = emSourceFile;
      m_strPathName = target;
      m_bParsed = 0;
      Parse(emParseTokens);
      return 1;
    }
    return 0;
  } catch (const std::exception&) {
    return 0;
  }
}

// ---- Saving ----

int CHtmlPack::Save(const char* path, EmSaveFlag nFlag) {
  try {
    CString target;
    bool ownFile = false;
    if (!path) {
      if (m_nSourceMode != emSourceFile || m_strPathName.IsEmpty())
        return 0;
      target = m_strPathName;
      ownFile = true;
    } else {
      target = path;
      ownFile = m_nSourceMode == emSourceFile && !m_strPathName.IsEmpty() &&
                strcasecmp(target, m_strPathName) == 0;
    }
    if (nFlag != emSaveLayout && ownFile && !IsTokenListModified())
      return 1;
    if (nFlag == emSaveNoOverwrite && IsExistingFile(target))
      return 0;
    // A source never read has an empty token list; writing that would wipe
    // the page, so read it first (as ChangeFilename does) or write nothing.
    if (!m_bParsed && m_nSourceMode != emSourceEmpty && !Parse(emParseTokens))
      return 0;
    CByteString buffer;
    SaveTokenListToByteString(buffer, nFlag);
    CkolmStdioFile file;
    if (!file.Open(target, CkolmFile::modeCreate | CkolmFile::modeWrite | CkolmFile::typeBinary))
      return 0;
    if (buffer.GetLength() > 0)
      file.Write(buffer.GetContent(), static_cast<UINT>(buffer.GetLength()));
    file.Close();
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

int CHtmlPack::Save(CByteString* pTarget, EmSaveFlag nFlag) {
  if (!pTarget)
    return 0;
  try {
    return SaveTokenListToByteString(*pTarget, nFlag);
  } catch (const std::exception&) {
    return 0;
  }
}

int CHtmlPack::GetTagPrintType(CHtmlTagItem* pTag, int& nBefore, int& nAfter) {
  nBefore = 0;
  nAfter = 0;
  if (!pTag)
    return 0;
  DWORD code = pTag->GetPrtType();
  int shift = pTag->IsEndTag() ? 16 : 0;
  DWORD flags = pTag->GetTokenFlag();
  if (flags & CHtmlTokenItem::emTokenManualIndentBefore2)
    nBefore = 4;
  else if (flags & CHtmlTokenItem::emTokenManualIndentBefore1)
    nBefore = 1;
  else
    nBefore = static_cast<int>((code >> shift) & 0xFF);
  if (flags & CHtmlTokenItem::emTokenManualIndentAfter2)
    nAfter = 4;
  else if (flags & CHtmlTokenItem::emTokenManualIndentAfter1)
    nAfter = 1;
  else
    nAfter = static_cast<int>((code >> (shift + 8)) & 0xFF);
  return 1;
}

int CHtmlPack::SaveTokenListToByteString(CByteString& out, EmSaveFlag nFlag) {
  // Room for the whole page up front: appending grows the buffer only to
  // the size asked for, which would copy a large page over and over.
  std::size_t estimate = 65536;
  for (POSITION pos = m_TokenList.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    if (token)
      estimate += static_cast<std::size_t>(token->GetOriginalLength()) + token->GetIndentAfterLength() + 4;
  }
  bool growByDouble = out.IsGrowByDoubleSize();
  out.Empty();
  out.Allocate(estimate > 0x7FFFFFF0u ? 0x7FFFFFF0 : static_cast<int>(estimate));
  out.ClearContent();
  out.SetGrowByDoubleSize();

  const bool layout = nFlag == emSaveLayout || nFlag == emSaveLayoutObject;
  const CHtmlTokenItem::EmTextFlag printFlag =
      layout ? CHtmlTokenItem::emTextTokenOnly : CHtmlTokenItem::emTextWithIndentAfter;
  IndentBuffer indent;
  CHtmlTokenItem* previousOriginal = nullptr;
  bool firstToken = true;
  CByteString piece;

  for (POSITION pos = m_TokenList.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    if (!token || token->IsDiscardedToken())
      continue;
    const bool original = (token->GetTokenFlag() & CHtmlTokenItem::emTokenAnalyseMark) != 0;

    if (token->IsTextToken()) {
      if (layout) {
        piece.ClearContent();
        token->AppendPrintableText(piece, printFlag);
        const unsigned char* p = piece.GetContent();
        int n = piece.GetLength();
        int a = 0;
        while (a < n && IsBlankByte(p[a]))
          ++a;
        while (n > a && IsBlankByte(p[n - 1]))
          --n;
        if (n > a)
          out.Append(p + a, n - a);
      } else {
        token->AppendPrintableText(out, printFlag);
      }
    } else {
      CHtmlTagItem* tag = static_cast<CHtmlTagItem*>(token);
      int before = 0, after = 0;
      GetTagPrintType(tag, before, after);
      if (nFlag == emSaveLayoutObject) {
        DWORD id = static_cast<DWORD>(tag->GetTagId());
        if (id == CHtmlTagItem::emTagIdComment) {
          before = 4;
          after = 4;
        } else if (id == CHtmlTagItem::emTagIdObject) {
          before = 0;
          after = 5;
        } else if (id == (static_cast<DWORD>(CHtmlTagItem::emTagIdObject) | CHtmlTagItem::emTagIdEndBit)) {
          before = 6;
          after = 0;
        }
      }
      // Outside layout mode runs of original tokens print exactly as read.
      const bool keepAfter = layout || !original;
      const bool skipBefore = !layout && original && previousOriginal;

      if (!skipBefore && before >= 1 && before <= 6) {
        const unsigned char* data = out.GetContent();
        int end = out.GetLength();
        int k = end;
        while (k > 0 && (data[k - 1] == ' ' || data[k - 1] == '\t'))
          --k;
        bool atLineStart = k > 0 && (data[k - 1] == '\r' || data[k - 1] == '\n');
        bool writeBreak = false, writeIndent = false;
        if (!atLineStart) {
          writeBreak = writeIndent = true;
        } else if (k == end) {
          writeIndent = true;
        } else {
          int n = end - k;
          if (n > kIndentTakenOverMax)
            n = kIndentTakenOverMax;
          std::memcpy(indent.text, data + k, static_cast<std::size_t>(n));
          indent.length = n;
        }
        indent.Apply(before);
        if ((writeBreak || writeIndent) && !firstToken) {
          if (writeBreak)
            out += "\r\n";
          if (indent.length)
            out.Append(reinterpret_cast<const unsigned char*>(indent.text), indent.length);
        }
      }
      tag->AppendPrintableText(out, printFlag);
      if (keepAfter)
        indent.Apply(after);
    }

    if (!layout)
      previousOriginal = original ? token : nullptr;
    firstToken = false;
  }

  if (!growByDouble)
    out.SetGrowByRecommendSize();
  return 1;
}

UINT CHtmlPack::GetPageCodePage(UINT fallback) {
  UINT fromHttpEquiv = 0;
  bool first = true;
  for (POSITION pos = m_TokenList.GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = m_TokenList.GetNext(pos);
    if (!token) continue;
    const unsigned char* data = token->GetOriginalData();
    if (first && token->GetOriginalLength() >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
      return CP_UTF8;
    first = false;
    CHtmlTagItem* tag = token->GetSafeTagItemPtr();
    if (!tag || tag->IsEndTag()) continue;
    if (tag->IsTagNameSameAs("body")) break;  // a declaration after the head is not heeded
    if (!tag->IsTagNameSameAs("meta")) continue;
    if (UINT cp = CodePageFromName(tag->GetAttributeValue("charset"))) return cp;
    const char* equiv = tag->GetAttributeValue("http-equiv");
    const char* content = tag->GetAttributeValue("content");
    if (fromHttpEquiv || !equiv || !content || ::strcasecmp(equiv, "content-type") != 0) continue;
    if (const char* at = ::strcasestr(content, "charset=")) {
      std::string label(at + 8);
      if (!label.empty() && (label[0] == '"' || label[0] == '\'')) label.erase(0, 1);
      label = label.substr(0, label.find_first_of(";, \t\"'"));
      fromHttpEquiv = CodePageFromName(label.c_str());
    }
  }
  if (fromHttpEquiv) return fromHttpEquiv;
  return fallback == CP_ACP ? GetActiveCodePage() : fallback;
}

}  // namespace telvanix
