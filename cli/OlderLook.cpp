#include "cli/OlderLook.h"

#include "cli/CommandContext.h"
#include "cli/Text.h"
#include "cli/check/DiagnosticCodes.h"
#include "platform/xml/CXMLView.h"
#include "templates/DLPXmlNormalizer.h"
#include "xml/Vocabulary.h"

namespace {

constexpr const char UNLESS_MEANT[] = " if that is not what it is";

/** In the order of EOlderLook. */
constexpr SOlderWords WORDS[] = {{"", UNLESS_MEANT}, {"", UNLESS_MEANT}, {" and nothing of it is taken", ""}};

}  // namespace

EOlderLook LookAtOlder(const CXMLView& root) {
    bool bPresent = static_cast<bool>(root.FirstChild(TagUtf8::DIGITAL_ASSETS));
    bool bOlder = false;
    for (CXMLView section = root.FirstChild(TagUtf8::COMPLIANCE_TEMPLATES); section;
         section = section.NextSibling(TagUtf8::COMPLIANCE_TEMPLATES)) {
        for (CXMLView child = section.FirstChild(TagUtf8::TEMPLATE); child;
             child = child.NextSibling(TagUtf8::TEMPLATE)) {
            bPresent = bPresent || child.HasAttribute(TagUtf8::DISPLAY_NAME);
            bOlder = bOlder || child.HasAttribute(CDLPXmlNormalizer::OLDER_DISPLAY_NAME) ||
                     child.HasAttribute(CDLPXmlNormalizer::OLDER_BUILT_IN);
        }
    }
    return !bPresent ? EOlderLook::OLDER : bOlder ? EOlderLook::MIXED : EOlderLook::FORGOTTEN;
}

const SOlderWords& GetOlderWords(EOlderLook eLook) {
    return WORDS[static_cast<std::size_t>(eLook)];
}

void WarnOfOlder(CCommandContext& context, const std::string& strFile, EOlderLook eLook) {
    if (eLook == EOlderLook::OLDER) {
        return;
    }
    const SCodeRow& row = GetCodeRow(ECode::OLDER_LAYOUT);
    const SOlderWords& words = GetOlderWords(eLook);
    context.Warn(Text::Printable(strFile) + ": " + FillSentence(row.pWhat, {words.pWhat}) + "; " +
                 FillSentence(row.pAdvice, {words.pAdvice}));
}

std::string AdviseVersion() {
    return FillSentence(GetCodeRow(ECode::OLDER_LAYOUT).pAdvice, {GetOlderWords(EOlderLook::FORGOTTEN).pAdvice});
}
