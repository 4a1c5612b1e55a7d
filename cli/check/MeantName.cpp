#include "cli/check/MeantName.h"

#include <algorithm>
#include <iterator>

#include "cli/NearestName.h"
#include "cli/Text.h"
#include "cli/check/DiagnosticCodes.h"
#include "cli/check/DocumentShape.h"
#include "platform/common/TextTools.h"
#include "xml/Vocabulary.h"

namespace {

/** A word that people write for a name to which it has hardly a letter in common. */
struct SSlip {
    std::string_view strPlace;
    std::string_view strWritten;
    const char* pMeant;
};

constexpr SSlip SLIPS[] = {
    {TagUtf8::SA_POLICY, "assets", TagUtf8::DIGITAL_ASSETS},
    {TagUtf8::SA_POLICY, "entity", TagUtf8::DIGITAL_ASSETS},
    {TagUtf8::SA_POLICY, "entities", TagUtf8::DIGITAL_ASSETS},
    {TagUtf8::SA_POLICY, "dictionary", TagUtf8::DIGITAL_ASSETS},
    {TagUtf8::SA_POLICY, "dictionaries", TagUtf8::DIGITAL_ASSETS},
    {TagUtf8::SA_POLICY, "template", TagUtf8::COMPLIANCE_TEMPLATES},
    {TagUtf8::SA_POLICY, "templates", TagUtf8::COMPLIANCE_TEMPLATES},
    {TagUtf8::SA_POLICY, "industry", TagUtf8::INDUSTRIES},
    {TagUtf8::SA_POLICY, "region", TagUtf8::REGIONS},
    {TagUtf8::SA_POLICY, "version", TagUtf8::TEMPLATE_VERSION},
    {TagUtf8::SA_POLICY, "language", TagUtf8::LOCALIZATION_LANGUAGE},
    {TagUtf8::DIGITAL_ASSETS, "expression", TagUtf8::ENTITY},
    {TagUtf8::DIGITAL_ASSETS, "keywords", TagUtf8::DICTIONARY},
    {TagUtf8::DIGITAL_ASSETS, "keywordList", TagUtf8::DICTIONARY},
    {TagUtf8::DIGITAL_ASSETS, "list", TagUtf8::DICTIONARY},
    {TagUtf8::ENTITY, "pattern", TagUtf8::REGULAR_EXPRESSION},
    {TagUtf8::ENTITY, "regex", TagUtf8::REGULAR_EXPRESSION},
    {TagUtf8::ENTITY, "expression", TagUtf8::REGULAR_EXPRESSION},
    {TagUtf8::ENTITY, "alphabet", TagUtf8::ALPHABET_CHARSET},
    {TagUtf8::ENTITY, "charset", TagUtf8::ALPHABET_CHARSET},
    {TagUtf8::DICTIONARY, "word", TagUtf8::KEYWORD},
    {TagUtf8::DICTIONARY, "phrase", TagUtf8::KEYWORD},
    {TagUtf8::DICTIONARY, "term", TagUtf8::KEYWORD},
    {TagUtf8::DICTIONARY, "key", TagUtf8::KEYWORD},
    {TagUtf8::DICTIONARY, "distance", TagUtf8::NUMBER},
    {TagUtf8::KEYWORD, "weight", TagUtf8::SCORE},
    {TagUtf8::KEYWORD, "points", TagUtf8::SCORE},
    {TagUtf8::COMPLIANCE_TEMPLATES, "complianceTemplate", TagUtf8::TEMPLATE},
    {TagUtf8::COMPLIANCE_TEMPLATES, "policy", TagUtf8::TEMPLATE},
    {TagUtf8::TEMPLATE, "rule", TagUtf8::MATCH_RULE},
    {TagUtf8::MATCH_RULE, "block", TagUtf8::BUILDING_BLOCK},
    {TagUtf8::BUILDING_BLOCK, "hits", TagUtf8::ENTITY_HITS},
    {TagUtf8::BUILDING_BLOCK, "count", TagUtf8::ENTITY_HITS},
    {TagUtf8::BUILDING_BLOCK, "type", TagUtf8::SOURCE_TYPE},
    {TagUtf8::BUILDING_BLOCK, "name", TagUtf8::SOURCE_NAME},
    {TagUtf8::BUILDING_BLOCK, "source", TagUtf8::SOURCE_NAME},
    {TagUtf8::BUILDING_BLOCK, "op", TagUtf8::OPERATION},
    {TagUtf8::MATCH_RULE, "op", TagUtf8::OPERATION},
    {TagUtf8::INDUSTRIES, "sector", TagUtf8::INDUSTRY},
    {TagUtf8::INDUSTRY, "template", TagUtf8::TEMPLATE_ID},
    {TagUtf8::REGIONS, "country", TagUtf8::REGION},
    {TagUtf8::REGION, "template", TagUtf8::TEMPLATE_ID},
};

/** The sections whose items people take for elements of their own. */
constexpr std::pair<std::string_view, const char*> CATEGORIES[] = {{TagUtf8::INDUSTRIES, TagUtf8::INDUSTRY},
                                                                   {TagUtf8::REGIONS, TagUtf8::REGION}};

constexpr const char CORRECT[] = "correct its name, or remove it";

const CDocumentShape& Shapes() {
    static const CDocumentShape s_shapes(false);
    return s_shapes;
}

}  // namespace

std::string FindSlip(std::string_view strPlace, std::string_view strWritten) {
    const auto* pSlip = std::find_if(std::begin(SLIPS), std::end(SLIPS), [&](const SSlip& slip) {
        return slip.strPlace == strPlace && OS::EqualsNoCase(slip.strWritten, strWritten);
    });
    return pSlip == std::end(SLIPS) ? std::string() : pSlip->pMeant;
}

std::string AdviseElement(std::string_view strPlace, std::string_view strWritten, const std::string& strMeant) {
    if (!strMeant.empty()) {
        return "did you mean " + Text::Quoted(strMeant) + '?';
    }
    if (Shapes().Find(strWritten) != nullptr) {
        return GetCodeRow(ECode::MISPLACED_ELEMENT).pAdvice;
    }
    for (const auto& [strSection, pItem] : CATEGORIES) {
        if (strSection == strPlace) {
            return std::string("write <") + pItem + " name=\"" + Text::Printable(strWritten) +
                   "\"> if that is its name, or remove it";
        }
    }
    return CORRECT;
}

std::string CMeantNames::Find(std::string_view strPlace, std::string_view strWritten,
                              const std::vector<std::string>& vecNames) {
    const std::string strSlip = FindSlip(strPlace, strWritten);
    if (CDocumentShape::IndexOf(vecNames, strSlip) != vecNames.size()) {
        return strSlip;
    }
    const std::string_view strLocal = strWritten.substr(strWritten.rfind(':') + 1);  // all of it without a prefix
    if (CDocumentShape::IndexOf(vecNames, strLocal) != vecNames.size()) {
        return std::string(strLocal);
    }
    const std::pair key{std::string(strPlace), std::string(strWritten)};
    const auto itMeant = m_mapMeant.find(key);
    if (itMeant != m_mapMeant.end() || IsFull()) {
        return itMeant != m_mapMeant.end() ? itMeant->second : std::string();
    }
    return m_mapMeant.emplace(key, FindNearestName(key.second, vecNames)).first->second;
}

std::string CMeantNames::FindElement(std::string_view strPlace, std::string_view strWritten) {
    const SShape* pPlace = Shapes().Find(strPlace);
    return pPlace == nullptr ? std::string() : Find(strPlace, strWritten, pPlace->vecChildren);
}
