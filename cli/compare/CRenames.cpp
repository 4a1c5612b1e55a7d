#include "cli/compare/CRenames.h"

#include <string_view>

#include "cli/Kinds.h"
#include "cli/RecordJson.h"
#include "cli/RecordText.h"
#include "cli/compare/ItemContent.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextHash.h"

struct CRenames::SCandidate {
    const std::string* pName;
    const CSettingsRow* pRow;
    std::string strContent;
};

namespace {

/** Those of one content. */
struct SAlike {
    const std::string* pGone = nullptr;
    const std::string* pNew = nullptr;
    bool bSeveral = false;

    void Add(const std::string* SAlike::*pSide, const std::string& strName) {
        bSeveral = bSeveral || this->*pSide != nullptr;
        this->*pSide = &strName;
    }
};

/** @return the items that the other side has not; of those that go by their subject nobody could tell a new name */
template <class C>
std::vector<C> FindAlone(const SPolicy::Items& items, const SPolicy::Items& others) {
    std::vector<C> vecAlone;
    auto itOther = others.begin();
    for (const auto& [strName, row] : items) {
        while (itOther != others.end() && itOther->first < strName) {
            ++itOther;
        }
        const bool bAlone = itOther == others.end() || itOther->first != strName;
        if (bAlone && row.GetText(NAME_COLUMN) == strName) {
            vecAlone.push_back({&strName, &row, MakeFieldContent(row)});
        }
    }
    return vecAlone;
}

/** Leaves out what has no counterpart by what is known so far. */
template <class C>
void KeepMatching(std::vector<C>& vecCandidates, const std::vector<C>& vecOthers) {
    OS::TextSet<std::string_view> setContents;
    for (const C& other : vecOthers) {
        setContents.insert(other.strContent);
    }
    std::erase_if(vecCandidates, [&](const C& candidate) { return setContents.count(candidate.strContent) == 0; });
}

}  // namespace

CRenames::CRenames(const SPolicy& before, const SPolicy& after) {
    // Templates come last: their rules follow what became of the assets.
    for (const ESettingsKind eKind : {ESettingsKind::EXPRESSION, ESettingsKind::KEYWORD, ESettingsKind::TEMPLATE}) {
        Find(eKind, before.Of(eKind), after.Of(eKind));
    }
}

void CRenames::Find(ESettingsKind eKind, const SPolicy::Items& before, const SPolicy::Items& after) {
    auto vecGone = FindAlone<SCandidate>(before, after);
    auto vecNew = FindAlone<SCandidate>(after, before);
    KeepMatching(vecGone, vecNew);
    KeepMatching(vecNew, vecGone);
    Complete(vecGone, true);
    Complete(vecNew, false);
    Pair(eKind, vecGone, vecNew, true);
    Pair(eKind, vecGone, vecNew, false);
}

void CRenames::Complete(std::vector<SCandidate>& vecCandidates, bool bEarlier) const {
    for (SCandidate& candidate : vecCandidates) {
        if (candidate.pRow->GetKind() == ESettingsKind::KEYWORD) {
            candidate.strContent += MakeKeywordContent(*candidate.pRow);
        } else if (candidate.pRow->GetKind() == ESettingsKind::TEMPLATE) {
            std::vector<SMatchRule> vecRules = ReadRules(*candidate.pRow);
            if (bEarlier) {
                Follow(vecRules);
            }
            candidate.strContent += MakeRuleContent(MakeRuleLines(vecRules));
        }
    }
}

void CRenames::Pair(ESettingsKind eKind, const std::vector<SCandidate>& vecGone, const std::vector<SCandidate>& vecNew,
                    bool bDisplayName) {
    const auto fnKey = [&](const SCandidate& candidate) {
        return candidate.strContent + (bDisplayName ? candidate.pRow->GetText(DISPLAY_NAME_COLUMN) : std::string());
    };
    OS::TextMap<std::string, SAlike> mapAlike;
    for (const SCandidate& candidate : vecGone) {
        if (FindNewName(eKind, *candidate.pName) == nullptr) {
            mapAlike[fnKey(candidate)].Add(&SAlike::pGone, *candidate.pName);
        }
    }
    for (const SCandidate& candidate : vecNew) {
        const auto itAlike = IsNewName(eKind, *candidate.pName) ? mapAlike.end() : mapAlike.find(fnKey(candidate));
        if (itAlike != mapAlike.end()) {
            itAlike->second.Add(&SAlike::pNew, *candidate.pName);
        }
    }
    for (const auto& [strContent, alike] : mapAlike) {
        if (!alike.bSeveral && alike.pNew != nullptr) {
            Of(eKind).mapNew.emplace(*alike.pGone, *alike.pNew);
            Of(eKind).setNew.insert(*alike.pNew);
        }
    }
}

const std::string* CRenames::FindNewName(ESettingsKind eKind, const std::string& strName) const {
    const auto itName = Of(eKind).mapNew.find(strName);
    return itName == Of(eKind).mapNew.end() ? nullptr : &itName->second;
}

bool CRenames::IsNewName(ESettingsKind eKind, const std::string& strName) const {
    return Of(eKind).setNew.count(strName) != 0;
}

bool CRenames::HasAssets() const {
    return !Of(ESettingsKind::EXPRESSION).setNew.empty() || !Of(ESettingsKind::KEYWORD).setNew.empty();
}

bool CRenames::Follow(std::vector<SMatchRule>& vecEarlier) const {
    bool bFollowed = false;
    if (!HasAssets()) {
        return bFollowed;
    }
    for (SMatchRule& rule : vecEarlier) {
        for (SRuleElement& element : rule.vecElements) {
            const ESettingsKind eKind =
                element.eType == EElementType::ENTITY ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD;
            const std::string* pNew = FindNewName(eKind, OS::Utf8Lenient(element.strName));
            if (element.eType != EElementType::UNKNOWN && pNew != nullptr) {
                element.strName = OS::WideText(*pNew);
                bFollowed = true;
            }
        }
    }
    return bFollowed;
}
