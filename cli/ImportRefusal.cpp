#include "cli/ImportRefusal.h"

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/Text.h"
#include "digital_assets/DigitalAssets.h"
#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLView.h"
#include "xml/Vocabulary.h"

namespace {

constexpr const char NO_TEMPLATE[] = "the document holds no template";
constexpr const char ASSETS_ONLY[] =
    "the document holds no template, only digital assets; dlpctl assets import FILE takes them";
constexpr const char ALL_BUILT_IN[] =
    "every template of the document is built in, and none of the older layout is taken that is";
constexpr const char NO_REASON[] = "the import failed; --log - --log-level all shows where";

std::size_t CountChildren(const CXMLView& root, const char* pSection, const char* pName = nullptr) {
    std::size_t iChildren = 0;
    for (CXMLView section = root.FirstChild(pSection); section; section = section.NextSibling(pSection)) {
        for (CXMLView child = section.FirstChild(pName); child; child = child.NextSibling(pName)) {
            ++iChildren;
        }
    }
    return iChildren;
}

std::string ExplainLanguage(const CXMLView& root) {
    const std::string strDocument(root.Attribute(TagUtf8::LOCALIZATION_LANGUAGE));
    const std::string strOurs = OS::Utf8Lenient(CDLPDigitalAssetsParser::GetLanguage());
    return "the document's language is " + Text::Quoted(strDocument) + ", and " +
           (strOurs.empty() ? "none is set here" : "here it is " + Text::Quoted(strOurs)) + "; --language " +
           Text::Quoted(strDocument) + " takes it";
}

std::string ExplainFailure(const CXMLView& root) {
    if (CountTemplates(root) == 0) {
        return CountChildren(root, TagUtf8::DIGITAL_ASSETS) == 0 ? NO_TEMPLATE : ASSETS_ONLY;
    }
    return IsOlderLayout(root) ? ALL_BUILT_IN : NO_REASON;
}

}  // namespace

std::size_t CountItems(const CXMLView& root) {
    return CountChildren(root, TagUtf8::DIGITAL_ASSETS) + CountChildren(root, TagUtf8::COMPLIANCE_TEMPLATES);
}

std::size_t CountTemplates(const CXMLView& root) {
    return CountChildren(root, TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::TEMPLATE);
}

bool IsOlderLayout(const CXMLView& root) {
    return root.Name() == TagUtf8::SA_POLICY && root.Attribute(TagUtf8::TEMPLATE_VERSION).empty();
}

std::string ExplainRefusal(const CXMLView& root, int iResult) {
    if (root.Name() != TagUtf8::SA_POLICY) {
        return "no policy: the root element is " + Text::Quoted(root.Name()) + ", not " +
               Text::Quoted(TagUtf8::SA_POLICY);
    }
    return iResult == DigitalAssets::RESULT_WRONG_LANGUAGE ? ExplainLanguage(root) : ExplainFailure(root);
}

ECode GetRefusalCode(const CXMLView& root, int iResult) {
    if (root.Name() != TagUtf8::SA_POLICY) {
        return ECode::WRONG_ROOT;
    }
    return iResult == DigitalAssets::RESULT_WRONG_LANGUAGE ? ECode::WRONG_LANGUAGE : ECode::NO_TEMPLATES;
}
