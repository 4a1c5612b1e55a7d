#include "cli/NearestName.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string_view>

#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"

namespace {

/** Neither the case of letters nor blanks around a name make it another one. */
std::wstring Fold(const std::string& strName) {
    std::wstring strFolded(OS::Trim(OS::WideLenient(strName)));
    for (wchar_t& c : strFolded) {
        if (c >= L'A' && c <= L'Z') {
            c = static_cast<wchar_t>(c - L'A' + L'a');
        }
    }
    return strFolded;
}

/**
 * The number of insertions, deletions, replacements and swaps of neighbours, none of which touches a place twice
 * (optimal string alignment); iLimit or more when it is no smaller than that.
 */
std::size_t GetDistance(std::wstring_view strLeft, std::wstring_view strRight, std::size_t iLimit) {
    const std::size_t iLeft = strLeft.size();
    const std::size_t iRight = strRight.size();
    if (std::max(iLeft, iRight) - std::min(iLeft, iRight) >= iLimit) {
        return iLimit;
    }
    std::vector<std::size_t> vecBefore(iRight + 1);
    std::vector<std::size_t> vecLast(iRight + 1);
    std::vector<std::size_t> vecRow(iRight + 1);
    std::iota(vecLast.begin(), vecLast.end(), std::size_t{0});
    for (std::size_t i = 1; i <= iLeft; ++i) {
        vecRow[0] = i;
        for (std::size_t j = 1; j <= iRight; ++j) {
            const std::size_t iReplaced = vecLast[j - 1] + (strLeft[i - 1] == strRight[j - 1] ? 0 : 1);
            vecRow[j] = std::min({vecLast[j] + 1, vecRow[j - 1] + 1, iReplaced});
            if (i > 1 && j > 1 && strLeft[i - 1] == strRight[j - 2] && strLeft[i - 2] == strRight[j - 1]) {
                vecRow[j] = std::min(vecRow[j], vecBefore[j - 2] + 1);
            }
        }
        // A swap reaches back two rows.
        if (std::min(*std::min_element(vecRow.begin(), vecRow.end()),
                     *std::min_element(vecLast.begin(), vecLast.end())) >= iLimit) {
            return iLimit;
        }
        vecBefore.swap(vecLast);
        vecLast.swap(vecRow);
    }
    return vecLast[iRight];
}

}  // namespace

std::string FindNearestName(const std::string& strWanted, const std::vector<std::string>& vecNames) {
    const std::wstring strFolded = Fold(strWanted);
    std::size_t iLimit = strFolded.size() / 3 + 1;
    std::string strNearest;
    for (const std::string& strName : vecNames) {
        const std::size_t iDistance = GetDistance(strFolded, Fold(strName), iLimit);
        if (iDistance < iLimit) {
            iLimit = iDistance;
            strNearest = strName;
        }
    }
    return strNearest;
}
