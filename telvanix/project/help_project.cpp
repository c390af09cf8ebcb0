#include "telvanix/project/help_project.h"

#include <cctype>
#include <cstring>

#include "telvanix/project/project_files.h"

namespace telvanix {

namespace {

bool SameNoCase(const std::string& a, const char* b) {
  size_t n = std::strlen(b);
  if (a.size() != n) return false;
  for (size_t i = 0; i < n; ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// [OPTIONS] keys whose value names a file, and their roles.
struct OptionFile {
  const char* key;
  CHtmlHelpProject::EmFileRole role;
};
constexpr OptionFile kOptionFiles[] = {
    {"Compiled file", CHtmlHelpProject::emRoleCompiledFile},
    {"Contents file", CHtmlHelpProject::emRoleContentsFile},
    {"Index file", CHtmlHelpProject::emRoleIndexFile},
    {"Default topic", CHtmlHelpProject::emRoleDefaultTopic},
    {"Error log file", CHtmlHelpProject::emRoleOptionFile},
    {"Full text search stop list file", CHtmlHelpProject::emRoleOptionFile},
    {"Sample list file", CHtmlHelpProject::emRoleOptionFile},
};

// The fields of a window definition that name files: contents, index,
// default topic, home, jump 1 and jump 2 (after the title).
constexpr bool kWindowFileField[] = {false, true, true, true, true, true, false, true};

}  // namespace

int CHtmlHelpProject::Read(const char* path) {
  m_bytes.clear();
  m_sections.clear();
  m_values.clear();
  m_options.clear();
  m_bChanged = false;
  CByteString bytes;
  std::string error;
  if (!path || !project::ReadWholeFile(path, bytes, error)) return 0;
  if (bytes.GetLength() > 0) m_bytes.assign(reinterpret_cast<const char*>(bytes.GetContent()), static_cast<size_t>(bytes.GetLength()));
  Scan();
  return 1;
}

int CHtmlHelpProject::Analyse(const unsigned char* bytes, int length) {
  if (!bytes || length < 0) return 0;
  m_bytes.assign(reinterpret_cast<const char*>(bytes), static_cast<size_t>(length));
  m_bChanged = false;
  Scan();
  return 1;
}

void CHtmlHelpProject::Scan() {
  m_sections.clear();
  m_values.clear();
  m_options.clear();
  std::string section;
  int lineNo = 0;
  for (size_t start = 0; start < m_bytes.size();) {
    size_t end = m_bytes.find('\n', start);
    size_t next = end == std::string::npos ? m_bytes.size() : end + 1;
    if (end == std::string::npos) end = m_bytes.size();
    if (end > start && m_bytes[end - 1] == '\r') --end;
    ++lineNo;
    size_t b = start, e = end;
    while (b < e && IsBlank(m_bytes[b])) ++b;
    while (e > b && IsBlank(m_bytes[e - 1])) --e;
    auto add = [&](EmFileRole role, size_t vb, size_t ve, std::string key) {
      while (vb < ve && IsBlank(m_bytes[vb])) ++vb;
      while (ve > vb && IsBlank(m_bytes[ve - 1])) --ve;
      if (ve - vb >= 2 && m_bytes[vb] == '"' && m_bytes[ve - 1] == '"') ++vb, --ve;
      if (ve <= vb) return;
      m_values.push_back({role, lineNo, static_cast<int>(vb), static_cast<int>(ve - vb),
                          m_bytes.substr(vb, ve - vb), std::move(key)});
    };
    start = next;
    if (b == e || m_bytes[b] == ';') continue;  // blank line or comment
    if (m_bytes[b] == '[' && m_bytes[e - 1] == ']') {
      section = m_bytes.substr(b + 1, e - b - 2);
      m_sections.push_back(section);
      continue;
    }
    if (e - b > 8 && m_bytes.compare(b, 8, "#include") == 0 && IsBlank(m_bytes[b + 8])) {
      add(emRoleIncludeFile, b + 9, e, "");
      continue;
    }
    size_t eq = m_bytes.find('=', b);
    if (eq >= e) eq = std::string::npos;
    if (SameNoCase(section, "OPTIONS") && eq != std::string::npos) {
      size_t ke = eq;
      while (ke > b && IsBlank(m_bytes[ke - 1])) --ke;
      std::string key = m_bytes.substr(b, ke - b);
      size_t vb = eq + 1;
      while (vb < e && IsBlank(m_bytes[vb])) ++vb;
      m_options.emplace_back(key, m_bytes.substr(vb, e - vb));
      for (const OptionFile& o : kOptionFiles)
        if (SameNoCase(key, o.key)) add(o.role, eq + 1, e, key);
    } else if (SameNoCase(section, "WINDOWS") && eq != std::string::npos) {
      std::string name = m_bytes.substr(b, eq - b);
      while (!name.empty() && IsBlank(name.back())) name.pop_back();
      // Comma-separated fields; a comma inside quotes is text.
      size_t field = 0, fb = eq + 1;
      bool quoted = false;
      for (size_t k = eq + 1; k <= e; ++k) {
        if (k < e && m_bytes[k] == '"') quoted = !quoted;
        if (k == e || (!quoted && m_bytes[k] == ',')) {
          if (field < sizeof kWindowFileField && kWindowFileField[field]) add(emRoleWindowFile, fb, k, name);
          ++field;
          fb = k + 1;
        }
      }
    } else if (SameNoCase(section, "FILES")) {
      add(emRoleListedFile, b, e, "");
    } else if (SameNoCase(section, "TEXT POPUPS")) {
      add(emRolePopupFile, b, e, "");
    } else if (SameNoCase(section, "ALIAS") && eq != std::string::npos) {
      std::string id = m_bytes.substr(b, eq - b);
      while (!id.empty() && IsBlank(id.back())) id.pop_back();
      add(emRoleAliasTopic, eq + 1, e, id);
    }
  }
}

CString CHtmlHelpProject::GetOption(const char* key) const {
  if (!key) return CString();
  for (const auto& [k, v] : m_options)
    if (SameNoCase(k, key)) return CString(v.size() >= 2 && v.front() == '"' && v.back() == '"' ? v.substr(1, v.size() - 2) : v);
  return CString();
}

int CHtmlHelpProject::IsInputRole(EmFileRole role, const std::string& key) {
  if (role == emRoleCompiledFile) return 0;
  if (role == emRoleOptionFile && SameNoCase(key, "Error log file")) return 0;
  return 1;
}

int CHtmlHelpProject::SetFileValue(int index, const char* value) {
  if (!value || index < 0 || index >= static_cast<int>(m_values.size())) return 0;
  const CFileValue& v = m_values[static_cast<size_t>(index)];
  if (v.m_strValue == value) return 1;
  m_bytes.replace(static_cast<size_t>(v.m_nOffset), static_cast<size_t>(v.m_nLength), value);
  m_bChanged = true;
  Scan();
  return 1;
}

int CHtmlHelpProject::RemoveFileValue(int index) {
  if (index < 0 || index >= static_cast<int>(m_values.size())) return 0;
  const CFileValue& v = m_values[static_cast<size_t>(index)];
  if (v.m_emRole == emRoleListedFile || v.m_emRole == emRolePopupFile) {
    size_t b = m_bytes.rfind('\n', static_cast<size_t>(v.m_nOffset));
    b = b == std::string::npos ? 0 : b + 1;
    size_t e = m_bytes.find('\n', static_cast<size_t>(v.m_nOffset));
    e = e == std::string::npos ? m_bytes.size() : e + 1;
    m_bytes.erase(b, e - b);
  } else {
    m_bytes.erase(static_cast<size_t>(v.m_nOffset), static_cast<size_t>(v.m_nLength));
  }
  m_bChanged = true;
  Scan();
  return 1;
}

}  // namespace telvanix
