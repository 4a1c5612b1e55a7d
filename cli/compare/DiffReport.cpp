#include "cli/compare/DiffReport.h"

#include <algorithm>
#include <iterator>

#include <nlohmann/json.hpp>

#include "cli/Colours.h"
#include "cli/Kinds.h"
#include "cli/Text.h"
#include "cli/compare/RuleText.h"
#include "platform/store/SettingsSchema.h"

namespace {

using Json = nlohmann::ordered_json;

enum class EChange { ADDED, REMOVED, CHANGED, RENAMED, SAME };

struct SChangeWord {
    const char* pCode;
    char cMark;
    const char* pColour;
};

/** In the order of EChange. */
constexpr SChangeWord CHANGES[] = {
    {"added", '+', Colours::GREEN},
    {"removed", '-', Colours::RED},
    {"changed", '~', Colours::YELLOW},
    {"renamed", '~', Colours::YELLOW},
    {"same", '=', ""},
};
constexpr std::size_t CHANGE_COUNT = std::size(CHANGES);
constexpr const char SAME_POLICIES[] = "The policies are the same.";

EChange GetChange(const SItemChange& change) {
    if (change.pBefore == nullptr) {
        return EChange::ADDED;
    }
    if (change.pAfter == nullptr) {
        return EChange::REMOVED;
    }
    if (!change.strNewName.empty()) {
        return EChange::RENAMED;
    }
    return change.IsDifference() ? EChange::CHANGED : EChange::SAME;
}

const SChangeWord& Row(EChange eChange) {
    return CHANGES[static_cast<std::size_t>(eChange)];
}

std::string Join(const std::vector<std::string>& vecTexts) {
    std::string strJoined;
    for (const std::string& strText : vecTexts) {
        strJoined += (strJoined.empty() ? "" : ", ") + strText;
    }
    return strJoined;
}

std::string ToCell(const Json& value) {
    if (value.is_string()) {
        return Text::Printable(value.get<std::string>());
    }
    if (value.is_array()) {
        return Text::Printable(Join(value.get<std::vector<std::string>>()));
    }
    return value.is_boolean() ? Text::YesNo(value.get<bool>()) : value.dump();
}

/** Writes the lines of one item. */
class CChangeText {
  public:
    CChangeText(const SItemChange& change, bool bColour) : m_change(change), m_bColour(bColour) {}

    std::string Make() {
        const std::string strRenamed =
            m_change.strNewName.empty() ? "" : ": renamed to " + Text::Quoted(m_change.strNewName);
        const std::string strRelation =
            m_change.rules ? std::string(": ") + GetRelationName(m_change.rules->comparison.eRelation) : "";
        AddLine(GetChange(m_change), std::string(GetKind(m_change.eKind).pWord) + ' ' + Text::Quoted(m_change.strName) +
                                         strRenamed + strRelation);
        AddFields();
        AddKeywords();
        AddRules();
        return std::move(m_strText);
    }

  private:
    void AddLine(EChange eChange, const std::string& strLine) {
        const SChangeWord& word = Row(eChange);
        m_strText += m_bColour ? word.pColour : "";
        m_strText += word.cMark + std::string(" ") + strLine;
        m_strText += m_bColour && *word.pColour != '\0' ? Colours::PLAIN : "";
        m_strText += '\n';
    }
    void AddDetail(EChange eChange, const std::string& strLine) { AddLine(eChange, "  " + strLine); }
    void AddPlain(const std::string& strLine) { m_strText += "    " + strLine + '\n'; }

    void AddField(EChange eChange, const CSettingsRow& row, std::size_t iColumn) {
        const std::string strValue = ToCell(ColumnToJson(row, iColumn));
        const char* pField = GetSettingsTable(m_change.eKind).pColumns[iColumn].pName;
        AddDetail(eChange, std::string(pField) + ':' + (strValue.empty() ? "" : ' ' + strValue));
    }

    void AddFields() {
        for (const std::size_t iColumn : m_change.vecColumns) {
            AddField(EChange::REMOVED, *m_change.pBefore, iColumn);
            AddField(EChange::ADDED, *m_change.pAfter, iColumn);
        }
    }

    void AddKeyword(EChange eChange, const SKeyword* pKeyword) {
        if (pKeyword != nullptr) {
            AddDetail(eChange,
                      "keyword " + Text::Quoted(pKeyword->strKeyword) + ", score " + std::to_string(pKeyword->iScore) +
                          (pKeyword->bCaseSensitive ? ", case matters" : "") +
                          (pKeyword->strDescription.empty() ? "" : ": ") + Text::Printable(pKeyword->strDescription));
        }
    }

    void AddKeywords() {
        m_change.keywords.ForEach([this](const SKeyword* pBefore, const SKeyword* pAfter) {
            AddKeyword(EChange::REMOVED, pBefore);
            AddKeyword(EChange::ADDED, pAfter);
        });
    }

    /** Rules at the start and the end that are alike on both sides are shown once. */
    void AddRules() {
        if (!m_change.rules) {
            return;
        }
        const auto& [vecBefore, vecAfter, comparison] = *m_change.rules;
        const auto [itBefore, itAfter] =
            std::mismatch(vecBefore.begin(), vecBefore.end(), vecAfter.begin(), vecAfter.end());
        const auto [itBeforeEnd, itAfterEnd] = std::mismatch(vecBefore.rbegin(), std::make_reverse_iterator(itBefore),
                                                             vecAfter.rbegin(), std::make_reverse_iterator(itAfter));
        std::for_each(vecBefore.begin(), itBefore, [this](const auto& strRule) { AddPlain(RuleLine(strRule)); });
        std::for_each(itBefore, itBeforeEnd.base(),
                      [this](const auto& strRule) { AddDetail(EChange::REMOVED, RuleLine(strRule)); });
        std::for_each(itAfter, itAfterEnd.base(),
                      [this](const auto& strRule) { AddDetail(EChange::ADDED, RuleLine(strRule)); });
        std::for_each(itAfterEnd.base(), vecAfter.end(), [this](const auto& strRule) { AddPlain(RuleLine(strRule)); });
        AddExample("now matches", comparison.gained);
        AddExample("no longer matches", comparison.lost);
    }

    static std::string RuleLine(const std::string& strRule) { return "rule: " + Text::Printable(strRule); }

    void AddExample(const char* pWhat, const std::optional<std::vector<SCondition>>& example) {
        if (example) {
            std::vector<std::string> vecHeld;
            std::transform(example->begin(), example->end(), std::back_inserter(vecHeld), FormatCondition);
            AddPlain(std::string(pWhat) + " content with " +
                     (vecHeld.empty() ? "none of what the rules name" : Text::Printable(Join(vecHeld)) + " alone"));
        }
    }

    const SItemChange& m_change;
    bool m_bColour;
    std::string m_strText;
};

Json KeywordToJson(const SKeyword* pKeyword) {
    return pKeyword != nullptr ? Json{{"description", pKeyword->strDescription},
                                      {"score", pKeyword->iScore},
                                      {"case_sensitive", pKeyword->bCaseSensitive}}
                               : Json();
}

Json ExampleToJson(const std::optional<std::vector<SCondition>>& example) {
    if (!example) {
        return {};
    }
    Json list = Json::array();
    for (const SCondition& condition : *example) {
        list.push_back(ConditionToJson(condition));
    }
    return list;
}

Json RulesToJson(const SRulesChange& rules) {
    return {{"relation", GetRelationName(rules.comparison.eRelation)},
            {"before", rules.vecBefore},
            {"after", rules.vecAfter},
            {"now_matches", ExampleToJson(rules.comparison.gained)},
            {"no_longer_matches", ExampleToJson(rules.comparison.lost)}};
}

Json FieldsToJson(const SItemChange& change) {
    Json list = Json::array();
    for (const std::size_t iColumn : change.vecColumns) {
        list.push_back({{"field", GetSettingsTable(change.eKind).pColumns[iColumn].pName},
                        {"before", ColumnToJson(*change.pBefore, iColumn)},
                        {"after", ColumnToJson(*change.pAfter, iColumn)}});
    }
    return list;
}

Json KeywordsToJson(const SKeywordsChange& keywords) {
    Json list = Json::array();
    keywords.ForEach([&list](const SKeyword* pBefore, const SKeyword* pAfter) {
        list.push_back({{"keyword", (pBefore != nullptr ? pBefore : pAfter)->strKeyword},
                        {"before", KeywordToJson(pBefore)},
                        {"after", KeywordToJson(pAfter)}});
    });
    return list;
}

Json ItemsToJson(const ReportItems& vecItems) {
    Json list = Json::array();
    for (const SReportItem& item : vecItems) {
        list.push_back(MakeItemJson(item));
    }
    return list;
}

Json PolicyToJson(const SPolicy& policy) {
    return {{"policy", policy.strPlace},
            {"left_out", ItemsToJson(policy.vecLeftOut)},
            {"refused", ItemsToJson(policy.vecRefused)}};
}

}  // namespace

EVerdict SDiffReport::GetVerdict() const {
    const bool bDiffers = std::any_of(vecChanges.begin(), vecChanges.end(),
                                      [](const SItemChange& change) { return change.IsDifference(); });
    return bDiffers || !before.vecLeftOut.empty() || !after.vecLeftOut.empty() ? EVerdict::FINDINGS : EVerdict::DONE;
}

std::string MakeChangeText(const SItemChange& change, bool bColour) {
    return CChangeText(change, bColour).Make();
}

Json MakeChangeJson(const SItemChange& change) {
    Json item = {
        {"kind", GetKind(change.eKind).pSingular},     {"name", change.strName},
        {"change", Row(GetChange(change)).pCode},      {"fields", FieldsToJson(change)},
        {"keywords", KeywordsToJson(change.keywords)}, {"rules", change.rules ? RulesToJson(*change.rules) : Json()}};
    if (!change.strNewName.empty()) {
        item["new_name"] = change.strNewName;
    }
    return item;
}

std::string MakeDiffSummary(const SDiffReport& report) {
    std::size_t aCounts[CHANGE_COUNT] = {};
    for (const SItemChange& change : report.vecChanges) {
        ++aCounts[static_cast<std::size_t>(GetChange(change))];
    }
    std::vector<std::string> vecParts;
    for (std::size_t i = 0; i < CHANGE_COUNT; ++i) {
        if (aCounts[i] != 0 && i != static_cast<std::size_t>(EChange::SAME)) {
            vecParts.push_back(std::to_string(aCounts[i]) + ' ' + CHANGES[i].pCode);
        }
    }
    return vecParts.empty() ? SAME_POLICIES : Join(vecParts) + '.';
}

Json MakeDiffJson(const SDiffReport& report, const char* pFormat) {
    Json items = Json::array();
    for (const SItemChange& change : report.vecChanges) {
        items.push_back(MakeChangeJson(change));
    }
    return {{"format", pFormat},
            {"verdict", GetVerdictName(report.GetVerdict())},
            {"before", PolicyToJson(report.before)},
            {"after", PolicyToJson(report.after)},
            {"items", std::move(items)}};
}
