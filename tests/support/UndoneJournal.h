#pragma once

#include <string>

/** The engine's journal of a file that had no page before: the next to open the file makes it empty again. */
inline std::string JournalOfAnEmptyFile() {
    std::string strJournal(512, '\0');
    strJournal.replace(0, 8, "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7");
    strJournal[22] = 2;     // a sector has 512 bytes
    strJournal[26] = 0x20;  // a page has 8,192
    return strJournal;
}
