#include "cli/compare/PolicyDiff.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>
#include <utility>

#include "cli/Progress.h"
#include "cli/RecordText.h"
#include "cli/Signals.h"
#include "cli/compare/ItemContent.h"

namespace {

bool IsColumnEqual(const CSettingsRow& before, const CSettingsRow& after, std::size_t iColumn) {
    switch (GetSettingsTable(before.GetKind()).pColumns[iColumn].eType) {
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            return before.GetNumber(iColumn) == after.GetNumber(iColumn);
        case EColumnType::TEXT_LIST: {
            const std::vector<std::string>& vecBefore = before.GetList(iColumn);
            const std::vector<std::string>& vecAfter = after.GetList(iColumn);
            return vecBefore == vecAfter || std::set<std::string>(vecBefore.begin(), vecBefore.end()) ==
                                                std::set<std::string>(vecAfter.begin(), vecAfter.end());
        }
        case EColumnType::TEXT:
        case EColumnType::NULLABLE_TEXT:
            break;
    }
    return before.GetText(iColumn) == after.GetText(iColumn);
}

std::vector<std::size_t> FindColumns(const CSettingsRow& before, const CSettingsRow& after) {
    std::vector<std::size_t> vecColumns;
    for (std::size_t i = 0; i < GetSettingsTable(before.GetKind()).iColumns; ++i) {
        if (IsCompared(before.GetKind(), i) && !IsColumnEqual(before, after, i)) {
            vecColumns.push_back(i);
        }
    }
    return vecColumns;
}

bool IsLess(const SKeyword& left, const SKeyword& right) {
    return std::tie(left.strKeyword, left.strDescription, left.iScore, left.bCaseSensitive) <
           std::tie(right.strKeyword, right.strDescription, right.iScore, right.bCaseSensitive);
}

/** Drops what both sorted lists hold. */
void DropCommon(std::vector<SKeyword>& vecFirst, std::vector<SKeyword>& vecSecond) {
    auto itFirst = vecFirst.begin();
    auto itSecond = vecSecond.begin();
    auto itFirstKept = itFirst;
    auto itSecondKept = itSecond;
    const auto fnKeep = [](auto& itKept, auto& it) {
        if (itKept != it) {
            *itKept = std::move(*it);
        }
        ++itKept;
        ++it;
    };
    while (itFirst != vecFirst.end() && itSecond != vecSecond.end()) {
        if (IsLess(*itFirst, *itSecond)) {
            fnKeep(itFirstKept, itFirst);
        } else if (IsLess(*itSecond, *itFirst)) {
            fnKeep(itSecondKept, itSecond);
        } else {
            ++itFirst;
            ++itSecond;
        }
    }
    vecFirst.erase(itFirstKept, itFirst);
    vecSecond.erase(itSecondKept, itSecond);
}

SKeywordsChange CompareKeywords(const CSettingsRow& before, const CSettingsRow& after) {
    SKeywordsChange change;
    if (before.GetText(KeywordColumn::TEXT) != after.GetText(KeywordColumn::TEXT)) {
        change = {ReadKeywords(before), ReadKeywords(after)};
        std::sort(change.vecBefore.begin(), change.vecBefore.end(), IsLess);
        std::sort(change.vecAfter.begin(), change.vecAfter.end(), IsLess);
        DropCommon(change.vecBefore, change.vecAfter);
    }
    return change;
}

std::optional<SRulesChange> CompareTemplates(const CSettingsRow& before, const CSettingsRow& after,
                                             const CRenames& renames) {
    const bool bSameText = before.GetText(TemplateColumn::ELEMENT) == after.GetText(TemplateColumn::ELEMENT);
    if (bSameText && !renames.HasAssets()) {
        return std::nullopt;
    }
    std::vector<SMatchRule> vecBefore = ReadRules(before);
    if (!renames.Follow(vecBefore) && bSameText) {
        return std::nullopt;
    }
    const std::vector<SMatchRule> vecAfter = ReadRules(after);
    SRulesChange change{MakeRuleLines(vecBefore), MakeRuleLines(vecAfter), CompareRules(vecBefore, vecAfter)};
    if (change.vecBefore == change.vecAfter && change.comparison.eRelation == ERelation::SAME) {
        return std::nullopt;
    }
    return change;
}

/** @return what became of an item whose name only the earlier policy has; one that was renamed has the same content */
SItemChange CompareGone(const SPolicy::Items::value_type& item, const SPolicy::Items& after, const CRenames& renames) {
    const auto& [strName, row] = item;
    SItemChange change{row.GetKind(), strName, &row, nullptr};
    if (const std::string* pNewName = renames.FindNewName(row.GetKind(), strName)) {
        change.strNewName = *pNewName;
        change.pAfter = &after.at(*pNewName);
        change.vecColumns = FindColumns(row, *change.pAfter);
    }
    return change;
}

void CompareItems(const SPolicy::Items& before, const SPolicy::Items& after, const CRenames& renames,
                  std::vector<SItemChange>& vecChanges) {
    CProgress::Expect(before.size() + after.size());
    auto itBefore = before.begin();
    auto itAfter = after.begin();
    while (itBefore != before.end() || itAfter != after.end()) {
        Signals::ThrowIfCaught();
        const int iOrder = itAfter == after.end()     ? -1
                           : itBefore == before.end() ? 1
                                                      : itBefore->first.compare(itAfter->first);
        if (iOrder < 0) {
            vecChanges.push_back(CompareGone(*itBefore, after, renames));
        } else if (iOrder > 0) {
            if (!renames.IsNewName(itAfter->second.GetKind(), itAfter->first)) {
                vecChanges.push_back(CompareItem(itAfter->first, nullptr, &itAfter->second));
            }
        } else {
            SItemChange change = CompareItem(itBefore->first, &itBefore->second, &itAfter->second, renames);
            if (change.IsDifference() || change.rules) {
                vecChanges.push_back(std::move(change));
            }
        }
        CProgress::Step(iOrder == 0 ? 2 : 1);
        itBefore = iOrder <= 0 ? std::next(itBefore) : itBefore;
        itAfter = iOrder >= 0 ? std::next(itAfter) : itAfter;
    }
}

}  // namespace

void SKeywordsChange::ForEach(const std::function<void(const SKeyword*, const SKeyword*)>& fnPair) const {
    auto itBefore = vecBefore.begin();
    auto itAfter = vecAfter.begin();
    while (itBefore != vecBefore.end() || itAfter != vecAfter.end()) {
        const int iOrder = itAfter == vecAfter.end()     ? -1
                           : itBefore == vecBefore.end() ? 1
                                                         : itBefore->strKeyword.compare(itAfter->strKeyword);
        fnPair(iOrder <= 0 ? &*itBefore++ : nullptr, iOrder >= 0 ? &*itAfter++ : nullptr);
    }
}

bool SItemChange::IsDifference() const {
    const bool bRules =
        rules && rules->comparison.eRelation != ERelation::SAME && rules->comparison.eRelation != ERelation::REORDERED;
    return pBefore == nullptr || pAfter == nullptr || !strNewName.empty() || !vecColumns.empty() || keywords.IsAny() ||
           bRules;
}

SItemChange CompareItem(const std::string& strName, const CSettingsRow* pBefore, const CSettingsRow* pAfter,
                        const CRenames& renames) {
    // cppcheck-suppress nullPointer; one of them is there
    SItemChange change{(pBefore != nullptr ? pBefore : pAfter)->GetKind(), strName, pBefore, pAfter};
    if (pBefore == nullptr || pAfter == nullptr) {
        return change;
    }
    change.vecColumns = FindColumns(*pBefore, *pAfter);
    if (change.eKind == ESettingsKind::KEYWORD) {
        change.keywords = CompareKeywords(*pBefore, *pAfter);
    } else if (change.eKind == ESettingsKind::TEMPLATE) {
        change.rules = CompareTemplates(*pBefore, *pAfter, renames);
    }
    return change;
}

std::vector<SItemChange> ComparePolicies(const SPolicy& before, const SPolicy& after) {
    const CRenames renames(before, after);
    std::vector<SItemChange> vecChanges;
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        CompareItems(before.Of(eKind), after.Of(eKind), renames, vecChanges);
    }
    return vecChanges;
}
