// Keyword tables of URL schemes and multimedia extensions. The repeated
// ".rmi" and ".wax" rows are harmless and kept.
#include "telvanix/foundation/url_tables.h"

namespace telvanix {

QuickMapStringToValueItem g_tUrlSchemeTable[12] = {
    {0, "javascript", 1}, {0, "ftp", 2},     {0, "http", 3},   {0, "https", 4},
    {0, "gopher", 5},     {0, "mailto", 6},  {0, "news", 7},   {0, "nntp", 8},
    {0, "telnet", 9},     {0, "wais", 10},   {0, "file", 11},  {0, "prospero", 12},
};

QuickMapStringToValueItem g_tMultimediaExtTable[25] = {
    {0, ".au", 1},  {0, ".avi", 1}, {0, ".mid", 1}, {0, ".mpg", 1}, {0, ".mpeg", 1},
    {0, ".mpe", 1}, {0, ".mp3", 1}, {0, ".rmi", 1}, {0, ".wav", 1}, {0, ".asf", 1},
    {0, ".asx", 1}, {0, ".mov", 1}, {0, ".qt", 1},  {0, ".ra", 1},  {0, ".ram", 1},
    {0, ".rm", 1},  {0, ".rmi", 1}, {0, ".rpm", 1}, {0, ".swf", 1}, {0, ".wax", 1},
    {0, ".wma", 1}, {0, ".wmv", 1}, {0, ".wax", 1}, {0, ".wvx", 1}, {0, ".mp4", 1},
};

}  // namespace telvanix
