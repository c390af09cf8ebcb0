// The help project file (".hhp"): its sections and the file names it holds
// ([OPTIONS] keys, [WINDOWS] fields, [FILES], [ALIAS], [TEXT POPUPS] and
// every "#include"), each with its place in the bytes, so that a value can be
// changed and the file written back byte for byte everywhere else.
#pragma once

#include <string>
#include <vector>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CHtmlHelpProject {
 public:
  // What a file name in the project file stands for.
  enum EmFileRole {
    emRoleCompiledFile = 1,  // [OPTIONS] Compiled file: written by the compiler
    emRoleContentsFile,      // [OPTIONS] Contents file
    emRoleIndexFile,         // [OPTIONS] Index file
    emRoleDefaultTopic,      // [OPTIONS] Default topic
    emRoleOptionFile,        // another [OPTIONS] key naming a file (stop list, log file)
    emRoleWindowFile,        // a [WINDOWS] field: contents, index, default, home or jump file
    emRoleListedFile,        // a line of [FILES]
    emRoleAliasTopic,        // the topic of an [ALIAS] line
    emRoleIncludeFile,       // "#include" in [MAP], [ALIAS] or elsewhere
    emRolePopupFile,         // a line of [TEXT POPUPS]
  };

  // One file name as written: bytes [m_nOffset, m_nOffset + m_nLength) of the
  // file hold m_strValue (without quotes); m_nLine counts from 1.
  struct CFileValue {
    EmFileRole m_emRole;
    int m_nLine;
    int m_nOffset;
    int m_nLength;
    std::string m_strValue;
    std::string m_strKey;  // the option key, window name or alias id; "" otherwise
  };

  CHtmlHelpProject() = default;

  // Reads and analyses a project file. 1 done; 0 when it cannot be read
  // (the object is then empty).
  int Read(const char* path);
  // Analyses bytes held by the caller (copied). 1 done; 0 for a null buffer
  // or a negative length.
  int Analyse(const unsigned char* bytes, int length);

  // The bytes as read, with every change made since.
  const std::string& GetBytes() const { return m_bytes; }
  int IsChanged() const { return m_bChanged ? 1 : 0; }

  // The sections in file order, by their names as written ("OPTIONS").
  const std::vector<std::string>& GetSectionNames() const { return m_sections; }

  // The value of an [OPTIONS] key (letter case ignored); empty when absent.
  CString GetOption(const char* key) const;

  // Every file name, in file order.
  const std::vector<CFileValue>& GetFileValues() const { return m_values; }
  // True for the roles whose file must exist before compiling (not the
  // compiled file, not a log file).
  static int IsInputRole(EmFileRole role, const std::string& key);

  // Replaces the value of GetFileValues()[index] by `value` (written as
  // given; quotes stay as they were). 1 done, 0 for a bad index or null
  // value. The other values' offsets follow.
  int SetFileValue(int index, const char* value);
  // Removes the line of a [FILES], [TEXT POPUPS] entry, or empties any other
  // value. 1 done, 0 for a bad index.
  int RemoveFileValue(int index);

 private:
  void Scan();

  std::string m_bytes;
  std::vector<std::string> m_sections;
  std::vector<CFileValue> m_values;
  std::vector<std::pair<std::string, std::string>> m_options;  // key, value
  bool m_bChanged = false;
};

}  // namespace telvanix
