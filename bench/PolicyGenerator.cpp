#include "bench/PolicyGenerator.h"

namespace PolicyGenerator {

namespace {

constexpr int KEYWORDS_PER_LIST = 20;
constexpr int RULES_PER_TEMPLATE = 3;
constexpr int CATEGORIES = 10;

void AppendExpression(std::string& strOut, int i) {
    const std::string strNumber = std::to_string(i);
    strOut +=
        "<entity name=\"expression " + strNumber + "\" type=\"Type 1\" caseSensitive=\"false\" validator=\"luhn\"";
    strOut += " minLength=\"12\" maxLength=\"19\" display_name=\"Expression " + strNumber + "\"";
    strOut += " description=\"Card &amp; account numbers, variant " + strNumber + "\" pre-defined=\"false\">";
    strOut += "<regularExpression>\\b[0-9]{4}([ -]?[0-9]{4}){2}[ -]?[0-9]{" + std::to_string(1 + i % 7);
    strOut += "}\\b</regularExpression><alphabetCharset>0123456789 -</alphabetCharset>";
    strOut += "<patternForDisplay>nnnn nnnn nnnn nnnn</patternForDisplay><examples>4111 1111 1111 1111</examples>";
    strOut += "</entity>";
}

void AppendKeywordList(std::string& strOut, int i) {
    const std::string strNumber = std::to_string(i);
    strOut += "<dictionary name=\"list " + strNumber + "\" type=\"Threshold\" threshold=\"3\" display_name=\"List ";
    strOut += strNumber + "\" description=\"Words of list " + strNumber + "\" pre-defined=\"false\">";
    for (int k = 0; k < KEYWORDS_PER_LIST; ++k) {
        strOut += "<keyword description=\"\" score=\"1\" caseSensitive=\"false\">internal term " + strNumber + " ";
        strOut += std::to_string(k) + "</keyword>";
    }
    strOut += "</dictionary>";
}

void AppendTemplate(std::string& strOut, int i, int iItems) {
    const std::string strNumber = std::to_string(i);
    strOut += "<template name=\"template " + strNumber + "\" display_name=\"Template " + strNumber;
    strOut += "\" description=\"Made for measuring\" pre-defined=\"false\">";
    for (int r = 0; r < RULES_PER_TEMPLATE; ++r) {
        strOut +=
            "<matchRule operation=\"OR\"><buildingBlock sourceType=\"ENTITY\" entityHits=\"2\" "
            "sourceName=\"expression ";
        strOut += std::to_string((i + r) % iItems) + "\"/><buildingBlock sourceType=\"KEYWORD\" sourceName=\"list ";
        strOut += std::to_string((i * 7 + r) % iItems) + "\" operation=\"AND\"/></matchRule>";
    }
    strOut += "</template>";
}

}  // namespace

std::string Make(int iItems) {
    std::string strOut = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><SAPolicy template_version=\"3.0.1000\">";
    strOut += "<digitalAssets command=\"overwrite\">";
    for (int i = 0; i < iItems; ++i) {
        AppendExpression(strOut, i);
    }
    for (int i = 0; i < iItems; ++i) {
        AppendKeywordList(strOut, i);
    }
    strOut += "</digitalAssets><complianceTemplates command=\"overwrite\">";
    for (int i = 0; i < iItems; ++i) {
        AppendTemplate(strOut, i, iItems);
    }
    strOut += "</complianceTemplates><industries>";
    for (int k = 0; k < CATEGORIES; ++k) {
        strOut += "<industry name=\"industry " + std::to_string(k) + "\" display_name=\"Industry\">";
        for (int i = k; i < iItems; i += CATEGORIES) {
            strOut += "<template_id>template " + std::to_string(i) + "</template_id>";
        }
        strOut += "</industry>";
    }
    strOut += "</industries><regions/></SAPolicy>";
    return strOut;
}

}  // namespace PolicyGenerator
