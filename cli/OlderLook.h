#pragma once

#include <string>

class CCommandContext;
class CXMLView;

/** Of which layout a document is by what stands in it, when it is read as one of the older layout. */
enum class EOlderLook {
    OLDER,      ///< nothing in it is of the present layout alone
    MIXED,      ///< there is something of each
    FORGOTTEN,  ///< of the present layout: its version was forgotten, and nothing of it is taken
};

EOlderLook LookAtOlder(const CXMLView& root);

/** What the sentences of the code of such a document lack. */
struct SOlderWords {
    const char* pWhat;
    const char* pAdvice;
};
const SOlderWords& GetOlderWords(EOlderLook eLook);

/** Warns of a document that most likely is not meant as one of the older layout: how it is read, and what to do. */
void WarnOfOlder(CCommandContext& context, const std::string& strFile, EOlderLook eLook);
/** @return what to do about what follows from a forgotten version */
std::string AdviseVersion();
