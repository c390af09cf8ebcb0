// The library's string table, ids 3000 to 3020 (3002 is not used). The
// doubled quotes of 3018 and 3019 are part of the stored texts.
#include "telvanix/foundation/internal/module_resources_data.h"

namespace telvanix {

const StringResourceItem g_tStringResourceTable[] = {
    {3000, "Letter"},
    {3001, "Arial"},
    {3003, " CITE.expandspot { font-style : normal;\n\t\tcolor : green;\n\t\tcursor: hand;}\n"},
    {3004, " .mvd-CITE-expandspot { font-style : normal;\n\t\tcolor : green;\n\t\tcursor: hand;}\n"},
    {3005, " DFN.collapsed { font-style : italic;\n\t\tfont-weight : normal;\n\t\tdisplay : 'none';\n\t\tcolor : red;}\n"},
    {3006, " .mvd-DFN-collapsed { font-style : italic;\n\t\tfont-weight : normal;\n\t\tdisplay : 'none';\n\t\tcolor : red;}\n"},
    {3007, " DFN.expanded { font-style : italic;\n\t\tfont-weight : normal;\n\t\tcolor : red;}\n"},
    {3008, " .mvd-DFN-expanded { font-style : italic;\n\t\tfont-weight : normal;\n\t\tcolor : red;}\n"},
    {3009, " EM.dropspot { cursor : hand;\n\t\tcolor : green;}\n"},
    {3010, " .mvd-EM-dropspot { cursor : hand;\n\t\tcolor : green;}\n"},
    {3011, " CITE.glossterm { font-style : normal;\n\t\tcolor : maroon;\n\t\tcursor : hand;}\n"},
    {3012, " .mvd-CITE-glossterm { font-style : normal;\n\t\tcolor : maroon;\n\t\tcursor : hand;}\n"},
    {3013, " DFN.glosscollapsed { font-style : italic;\n\t\tfont-weight : normal;\n\t\tdisplay : 'none';\n\t\tcolor : blue;}\n"},
    {3014, " .mvd-DFN-glosscollapsed { font-style : italic;\n\t\tfont-weight : normal;\n\t\tdisplay : 'none';\n\t\tcolor : blue;}\n"},
    {3015, " DFN.glossexpanded { font-style : italic;\n\t\tfont-weight : normal;\n\t\tcolor : blue;}\n"},
    {3016, " .mvd-DFN-glossexpanded { font-style : italic;\n\t\tfont-weight : normal;\n\t\tcolor : blue;}\n"},
    {3017, "QZTXDHTM.css"},
    {3018, "The following file needs to be writable:\n\n\"\"%s\"\"\n\nWould you like to make this file writable?"},
    {3019, "Unable to make the file\n\n\"\"%s\"\"\n\nwritable."},
    {3020, "The \"Special Effects\" component is not\nproperly installed.  Please reinstall and try again."},
};

const int g_nStringResourceTableSize = sizeof(g_tStringResourceTable) / sizeof(g_tStringResourceTable[0]);

}  // namespace telvanix
