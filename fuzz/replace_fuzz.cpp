// Arbitrary bytes as a page (and as a stylesheet) with moves picked by the
// first two bytes. Three promises are checked:
// - only reference values change: every reference is rewritten to a marker
//   through the hook, and putting each reference's old text back in place of
//   its marker must give the unchanged page byte for byte;
// - the moves then the inverse moves give the page back, wherever every
//   reference is written the way the library writes one (see Canonical);
// - nothing crashes, hangs or reads out of bounds.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/foundation/path_utils.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/topic/html_file_ex.h"

using namespace telvanix;
using Context = CHtmlFileEx::CReplaceContext;

namespace {

// Sources are names a page may use; targets start with "zz" so that a page
// without "zz" names none of them before the move.
struct Move {
  const char* from;
  const char* to;
  int folder;
};
const Move kMoves[] = {
    {"x.htm", "zz/x.htm", 0},   {"img", "zzimg", 1},        {"sub/y.htm", "zzy.htm", 0},
    {"a/b", "zza/zzb/zzc", 1},  {"img/a.gif", "zz.gif", 0}, {"sub", "zzsub/deeper", 1},
    {"a/b/c.htm", "a/zzc.htm", 0}, {"b.htm", "zzp/b.htm", 0},
};
const char* const kDocuments[] = {"page.htm", "sub/page.htm", "a/b/page.htm", "a/page.htm"};
const char* const kNewDocuments[] = {nullptr, "zzd/page.htm", "zzd/zze/p.htm", "zzq.htm"};

std::string Saved(CHtmlFileEx& page) {
  CByteString out;
  page.Save(&out, CHtmlPack::emSave);
  return std::string(reinterpret_cast<const char*>(out.GetContent()), static_cast<size_t>(out.GetLength()));
}

// Every reference becomes "\x01N\x02"; remembers what it stood for.
class CMarkedPage : public CHtmlFileEx {
 public:
  using CHtmlFileEx::CHtmlFileEx;
  std::vector<std::string> written;
  std::string marker;

 protected:
  const char* GetNewRelFileNameCustom(const char* name, CReplaceContext&) override {
    marker = "\x01" + std::to_string(written.size()) + "\x02";
    written.push_back(name);
    return marker.c_str();
  }
};

// The markers of `text` replaced by what they stood for.
std::string Unmarked(const std::string& text, const std::vector<std::string>& written) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    const size_t close = text[i] == '\x01' ? text.find('\x02', i) : std::string::npos;
    if (close == std::string::npos) {
      out += text[i];
      continue;
    }
    const size_t k = std::strtoul(text.substr(i + 1, close - i - 1).c_str(), nullptr, 10);
    if (k >= written.size())
      std::abort();
    out += written[k];
    i = close;
  }
  return out;
}

// A reference the library would write the same way: the relative path of
// what it names in one slash style, lower case, without blanks, character
// references or %-encoding (whose spelling a rewrite may not keep when the names around
// them go).
bool Canonical(const CFileReference& ref, const CString& document) {
  std::string path = ref.m_strWritten.str();
  path = path.substr(0, path.find_first_of("?#"));
  // One slash style: a rewrite writes the reference's "\" everywhere.
  if (path.find('\\') != std::string::npos && path.find('/') != std::string::npos)
    return false;
  for (char& c : path) {
    if (c == '%' || c == '&' || c == ' ' || c == '\t' || c == '\r' || c == '\n' || (c >= 'A' && c <= 'Z'))
      return false;
    if (c == '\\')
      c = '/';
  }
  return ref.m_strTarget.IsEmpty() || path == GetRelativePathNameByFilePathNames(ref.m_strTarget, document).str();
}

void CheckPage(const std::string& bytes, Context& forward, Context& backward) {
  CByteString content(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  CHtmlFileEx plain(content, "page.htm");
  plain.Analyse();
  const std::string original = Saved(plain);

  CMarkedPage marked(content, "page.htm");
  if (marked.ReplaceFileReference(forward) < 0)
    return;
  // (a page holding the marker bytes itself cannot be told apart)
  if (original.find_first_of("\x01\x02") == std::string::npos &&
      Unmarked(Saved(marked), marked.written) != original)
    std::abort();

  // The inverse is compared on a page that saves back as it reads: the
  // tokenizer's own losses (a lone byte at the end) are not the rewrite's.
  CByteString stable(reinterpret_cast<const unsigned char*>(original.data()), static_cast<int>(original.size()));
  CHtmlFileEx again(stable, "page.htm");
  again.Analyse();
  if (original.empty() || Saved(again) != original)
    return;
  CHtmlFileEx moved(stable, "page.htm");
  std::vector<CFileReference> refs;
  moved.GetFileReferences(forward, refs);
  bool invertible = original.find("zz") == std::string::npos && original.find("ZZ") == std::string::npos;
  for (const CFileReference& ref : refs)
    invertible = invertible && Canonical(ref, forward.GetDocumentOldPath());
  if (moved.ReplaceFileReference(forward) < 0)
    std::abort();
  const std::string after = Saved(moved);
  CByteString afterBytes(reinterpret_cast<const unsigned char*>(after.data()), static_cast<int>(after.size()));
  CHtmlFileEx back(afterBytes, "page.htm");
  back.ReplaceFileReference(backward);
  if (invertible && Saved(back) != original)
    std::abort();
}

void CheckSheet(const std::string& bytes, Context& forward) {
  std::vector<std::string> written;
  CByteString out;
  CCssPackEx::ReplaceUrlsInText(
      bytes.data(), static_cast<int>(bytes.size()),
      [&](CFileReference& ref) {
        ref.m_strNewValue = ("\x01" + std::to_string(written.size()) + "\x02").c_str();
        ref.m_nChange = CFileMoves::emRewritten;
        written.push_back(ref.m_strWritten.str());
      },
      out, nullptr, 1);
  const std::string text(reinterpret_cast<const char*>(out.GetContent()), static_cast<size_t>(out.GetLength()));
  if (bytes.find_first_of("\x01\x02") == std::string::npos && Unmarked(text, written) != bytes)
    std::abort();
  CByteString content(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  CCssPackEx sheet(&content);
  sheet.ReplaceFileReference(forward);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2 || size > 64 * 1024)
    return 0;
  const unsigned moves = data[0];
  const unsigned doc = data[1];
  Context forward, backward;
  const char* oldDoc = kDocuments[doc & 3];
  const char* newDoc = kNewDocuments[(doc >> 2) & 3];
  forward.SetDocument(oldDoc, newDoc);
  backward.SetDocument(newDoc ? newDoc : oldDoc, oldDoc);
  for (unsigned i = 0; i < sizeof(kMoves) / sizeof(kMoves[0]); ++i) {
    if (!(moves & (1u << i)))
      continue;
    // A move that overlaps one taken already is refused; its inverse is not
    // added either.
    if (forward.AddMove(kMoves[i].from, kMoves[i].to, kMoves[i].folder))
      backward.AddMove(kMoves[i].to, kMoves[i].from, kMoves[i].folder);
  }
  const std::string bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  CheckPage(bytes, forward, backward);
  CheckSheet(bytes, forward);
  return 0;
}
