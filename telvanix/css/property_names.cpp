#include "telvanix/css/property_names.h"

namespace telvanix {

CCssPropertyNames::EmPropertyNameId CCssPropertyNames::GetPropertyNameId(const char* name) {
  if (!name)
    return emPropertyUnknown;
  const int id = QuickMapStringToValue(ms_tPropertyNameTable, ms_nPropertyNameTableSize, name, 0);
  return id == -1 ? emPropertyUnknown : static_cast<EmPropertyNameId>(id);
}

const char* CCssPropertyNames::GetPropertyNameString(EmPropertyNameId id) {
  // The first search sorts the rows; make sure that has happened before the
  // rows are read here, so this scan never meets a table being reordered.
  static const bool prepared =
      QuickMapStringToValue(ms_tPropertyNameTable, ms_nPropertyNameTableSize, "font", 0) != -1;
  (void)prepared;
  for (const QuickMapStringToValueItem& row : ms_tPropertyNameTable)
    if (row.nValue == id)
      return row.pszKey;
  return nullptr;
}

int CCssPropertyNames::GetFontSizeInPtByIndex(int index) {
  static const int kPoints[7] = {9, 10, 12, 14, 18, 24, 36};
  if (index <= 1)
    return kPoints[0];
  if (index >= 7)
    return kPoints[6];
  return kPoints[index - 1];
}

}  // namespace telvanix
