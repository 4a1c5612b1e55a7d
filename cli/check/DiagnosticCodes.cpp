#include "cli/check/DiagnosticCodes.h"

#include <algorithm>
#include <vector>

#include "cli/NearestName.h"
#include "cli/Text.h"
#include "platform/common/TextTools.h"

namespace {

constexpr const char* SEVERITIES[] = {"error", "warning", "note"};

}  // namespace

const SCodeRow& GetCodeRow(ECode eCode) {
    return GetCodeTable()[static_cast<std::size_t>(eCode)];
}

const SCodeRow* FindCode(const std::string& strCode) {
    const auto itRow = std::find_if(GetCodeTable().begin(), GetCodeTable().end(), [&](const SCodeRow& row) {
        return OS::EqualsNoCase(strCode, std::string_view(row.pCode)) ||
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

const char* GetSeverityName(ESeverity eSeverity) {
    return SEVERITIES[static_cast<std::size_t>(eSeverity)];
}

bool IsAboutNoDocument(ECode eCode) {
    return eCode <= ECode::NOT_XML;
}
