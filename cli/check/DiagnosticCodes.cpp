#include "cli/check/DiagnosticCodes.h"

#include <algorithm>
#include <vector>

#include "cli/NearestName.h"
#include "cli/Text.h"
#include "cli/Verdict.h"
#include "platform/common/TextTools.h"

namespace {

constexpr std::string_view BLANK = "{}";
constexpr const char* SEVERITIES[] = {"error", "warning", "note"};
constexpr const char CODE_START[] = "DLP";
constexpr const char DIGITS[] = "0123456789";
constexpr std::size_t DIGITS_OF_CODE = 3;

/** @return the code that a number alone stands for; anything else as it is */
std::string Complete(const std::string& strCode) {
    const bool bNumber = strCode.find_first_not_of(DIGITS) == std::string::npos;
    return bNumber && strCode.size() <= DIGITS_OF_CODE
               ? CODE_START + std::string(DIGITS_OF_CODE - strCode.size(), DIGITS[0]) + strCode
               : strCode;
}

}  // namespace

std::string FillSentence(std::string_view strSentence, const std::vector<std::string>& vecTexts) {
    std::string strFilled;
    auto itText = vecTexts.begin();
    for (std::size_t iBlank = strSentence.find(BLANK); iBlank != std::string_view::npos && itText != vecTexts.end();
         iBlank = strSentence.find(BLANK)) {
        strFilled.append(strSentence.substr(0, iBlank)).append(*itText++);
        strSentence.remove_prefix(iBlank + BLANK.size());
    }
    return strFilled.append(strSentence);
}

const SCodeRow& GetCodeRow(ECode eCode) {
    return GetCodeTable()[static_cast<std::size_t>(eCode)];
}

const SCodeRow* FindCode(const std::string& strCode) {
    const std::string strWhole = Complete(strCode);
    const auto itRow = std::find_if(GetCodeTable().begin(), GetCodeTable().end(), [&](const SCodeRow& row) {
        return OS::EqualsNoCase(strWhole, std::string_view(row.pCode)) ||
               OS::EqualsNoCase(strCode, std::string_view(row.pName));
    });
    return itRow == GetCodeTable().end() ? nullptr : &*itRow;
}

std::string SuggestCode(const std::string& strCode) {
    std::vector<std::string> vecNames;
    for (const SCodeRow& row : GetCodeTable()) {
        vecNames.insert(vecNames.end(), {row.pCode, row.pName});
    }
    const std::string strNearest = FindNearestName(strCode, vecNames);
    return strNearest.empty() ? "dlpctl explain lists the codes" : "did you mean " + Text::Quoted(strNearest) + '?';
}

ECode FindAllowed(const std::string& strCode) {
    const SCodeRow* pRow = FindCode(strCode);
    if (pRow == nullptr) {
        throw CToolError(EVerdict::USAGE,
                         "--allow: there is no code " + Text::Quoted(strCode) + "; " + SuggestCode(strCode));
    }
    if (IsAboutNoDocument(pRow->eCode)) {
        throw CToolError(EVerdict::USAGE, std::string("--allow: ") + pRow->pCode + " cannot be allowed");
    }
    return pRow->eCode;
}

const char* GetSeverityName(ESeverity eSeverity) {
    return SEVERITIES[static_cast<std::size_t>(eSeverity)];
}

bool IsAboutNoDocument(ECode eCode) {
    return eCode <= ECode::NOT_XML;
}

bool IsAboutValue(ECode eCode) {
    return eCode == ECode::UNKNOWN_TYPE || eCode == ECode::UNCLEAR_FLAG || eCode == ECode::UNCLEAR_NUMBER;
}

bool IsFixable(ECode eCode) {
    return eCode == ECode::OTHER_SPELLING || IsAboutValue(eCode);
}
