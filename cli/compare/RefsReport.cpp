#include "cli/compare/RefsReport.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/Kinds.h"
#include "cli/NearestName.h"
#include "cli/Text.h"

namespace {

using Json = nlohmann::ordered_json;
using Asset = SReferences::Asset;

struct SAssetWord {
    const char* pCode;
    const char* pWord;
    const char* pShape;
};

/** In the order of EElementType. */
constexpr SAssetWord ASSETS[] = {
    {"expression", "expression", "ellipse"},
    {"keyword", "keyword list", "note"},
    {"unknown", "unknown type", "diamond"},
};

struct SUseWord {
    const char* pCode;
    const char* pStyle;
};

/** In the order of EUse. */
constexpr SUseWord USES[] = {{"used", ""}, {"unused", ", style=dotted"}, {"missing", ", style=dashed, color=red"}};

constexpr const char TEMPLATE[] = "template";

const SAssetWord& Row(const Asset& asset) {
    return ASSETS[static_cast<std::size_t>(asset.first)];
}
const SUseWord& Row(const SReferences::SAsset& asset) {
    return USES[static_cast<std::size_t>(asset.GetUse())];
}

[[noreturn]] void RefuseName(const char* pWord, const std::string& strName, const std::vector<std::string>& vecNames) {
    const std::string strNearest = FindNearestName(strName, vecNames);
    throw CToolError(EVerdict::FINDINGS, std::string("no ") + pWord + " is named " + Text::Quoted(strName) +
                                             (strNearest.empty() ? "; dlpctl refs POLICY lists the names"
                                                                 : "; did you mean " + Text::Quoted(strNearest) + '?'));
}

std::set<std::string> FindTemplates(const SReferences& all, const std::vector<std::string>& vecNames) {
    for (const std::string& strName : vecNames) {
        if (all.mapTemplates.count(strName) == 0) {
            std::vector<std::string> vecKnown;
            std::transform(all.mapTemplates.begin(), all.mapTemplates.end(), std::back_inserter(vecKnown),
                           [](const auto& entry) { return entry.first; });
            RefuseName(TEMPLATE, strName, vecKnown);
        }
    }
    return {vecNames.begin(), vecNames.end()};
}

void FindAssets(const SReferences& all, EElementType eType, const std::vector<std::string>& vecNames,
                std::set<Asset>& assets) {
    for (const std::string& strName : vecNames) {
        const Asset asset{eType, strName};
        if (all.mapAssets.count(asset) == 0) {
            std::vector<std::string> vecKnown;
            for (const auto& [known, use] : all.mapAssets) {
                if (known.first == eType) {
                    vecKnown.push_back(known.second);
                }
            }
            RefuseName(Row(asset).pWord, strName, vecKnown);
        }
        assets.insert(asset);
    }
}

/** Narrows references down to those that are asked for. */
class CChoice {
  public:
    CChoice(SReferences&& all, const SRefsChoice& choice)
        : m_all(std::move(all)), m_bUnused(choice.bUnused), m_templates(FindTemplates(m_all, choice.vecTemplates)) {
        FindAssets(m_all, EElementType::ENTITY, choice.vecExpressions, m_assets);
        FindAssets(m_all, EElementType::KEYWORD, choice.vecKeywords, m_assets);
    }

    SReferences Make() const {
        SReferences chosen;
        for (const auto& [asset, use] : m_all.mapAssets) {
            if (IsChosen(asset, use)) {
                chosen.mapAssets.emplace(asset, use);
            }
        }
        const bool bAll = m_templates.empty() && m_assets.empty() && !m_bUnused;
        for (const auto& [strTemplate, uses] : m_all.mapTemplates) {
            std::set<Asset> rest;
            std::copy_if(uses.begin(), uses.end(), std::inserter(rest, rest.end()),
                         [&](const Asset& asset) { return chosen.mapAssets.count(asset) != 0; });
            if (bAll || m_templates.count(strTemplate) != 0 || (m_templates.empty() && !rest.empty())) {
                chosen.mapTemplates.emplace(strTemplate, std::move(rest));
            }
        }
        return chosen;
    }

  private:
    bool IsChosen(const Asset& asset, const SReferences::SAsset& use) const {
        const bool bNeeded =
            m_templates.empty() || std::any_of(use.users.begin(), use.users.end(), [this](const std::string& strUser) {
                return m_templates.count(strUser) != 0;
            });
        return bNeeded && (m_assets.empty() || m_assets.count(asset) != 0) &&
               (!m_bUnused || use.GetUse() == EUse::UNUSED);
    }

    const SReferences m_all;
    const bool m_bUnused;
    const std::set<std::string> m_templates;
    std::set<Asset> m_assets;
};

std::string Join(const std::set<std::string>& texts) {
    std::string strJoined;
    for (const std::string& strText : texts) {
        strJoined += (strJoined.empty() ? "" : ", ") + strText;
    }
    return strJoined;
}

Json DisplayName(const SPolicy& policy, ESettingsKind eKind, const std::string& strName) {
    const auto itRow = policy.Of(eKind).find(strName);
    return itRow == policy.Of(eKind).end() ? Json() : Json(itRow->second.GetText(DISPLAY_NAME_COLUMN));
}

Json DisplayName(const SPolicy& policy, const Asset& asset) {
    return asset.first == EElementType::UNKNOWN
               ? Json()
               : DisplayName(policy,
                             asset.first == EElementType::ENTITY ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD,
                             asset.second);
}

Json AssetToJson(const Asset& asset) {
    return {{"kind", Row(asset).pCode}, {"name", asset.second}};
}

/** A node's name, or a label: what would be read as more than itself is escaped. */
std::string GraphText(const std::string& strText) {
    std::string strQuoted = "\"";
    for (const char c : Text::Printable(strText)) {
        if (c == '"' || c == '\\') {
            strQuoted += '\\';
        }
        strQuoted += c;
    }
    return strQuoted + '"';
}

std::string GraphNode(const std::string& strKind, const std::string& strName) {
    return GraphText(strKind + ' ' + strName);
}

}  // namespace

EVerdict SRefsReport::GetVerdict() const {
    const bool bFound = std::any_of(chosen.mapAssets.begin(), chosen.mapAssets.end(), [this](const auto& entry) {
        const EUse eUse = entry.second.GetUse();
        return eUse == EUse::MISSING || (choice.bUnused && eUse == EUse::UNUSED);
    });
    return bFound || !policy.vecLeftOut.empty() ? EVerdict::FINDINGS : EVerdict::DONE;
}

SRefsReport MakeRefsReport(const SPolicy& policy, const SRefsChoice& choice) {
    const CChoice chosen(FindReferences(policy), choice);
    return {policy, choice, chosen.Make()};
}

std::string MakeRefsText(const SRefsReport& report, std::size_t iWidth) {
    CTextTable table({"KIND", "NAME", "STATE", "USED BY"});
    table.WrapLast();
    for (const auto& [asset, use] : report.chosen.mapAssets) {
        table.Add({Row(asset).pWord, asset.second, Row(use).pCode, Join(use.users)});
    }
    return report.chosen.mapAssets.empty() ? std::string() : table.ToString(iWidth);
}

Json MakeRefsJson(const SRefsReport& report, const char* pFormat) {
    Json assets = Json::array();
    for (const auto& [asset, use] : report.chosen.mapAssets) {
        Json& object = assets.emplace_back(AssetToJson(asset));
        object["display_name"] = DisplayName(report.policy, asset);
        object["state"] = Row(use).pCode;
        object["used_by"] = use.users;
    }
    Json templates = Json::array();
    for (const auto& [strName, uses] : report.chosen.mapTemplates) {
        Json list = Json::array();
        std::transform(uses.begin(), uses.end(), std::back_inserter(list), AssetToJson);
        templates.push_back({{"name", strName},
                             {"display_name", DisplayName(report.policy, ESettingsKind::TEMPLATE, strName)},
                             {"uses", std::move(list)}});
    }
    Json leftOut = Json::array();
    std::transform(report.policy.vecLeftOut.begin(), report.policy.vecLeftOut.end(), std::back_inserter(leftOut),
                   MakeItemJson);
    return {{"format", pFormat},
            {"verdict", GetVerdictName(report.GetVerdict())},
            {"policy", report.policy.strPlace},
            {"left_out", std::move(leftOut)},
            {"assets", std::move(assets)},
            {"templates", std::move(templates)}};
}

std::string MakeRefsGraph(const SRefsReport& report) {
    std::string strGraph = "digraph policy {\n    rankdir=LR;\n";
    for (const auto& [strTemplate, uses] : report.chosen.mapTemplates) {
        strGraph += "    " + GraphNode(TEMPLATE, strTemplate) + " [shape=box, label=" + GraphText(strTemplate) + "];\n";
    }
    for (const auto& [asset, use] : report.chosen.mapAssets) {
        strGraph += "    " + GraphNode(Row(asset).pCode, asset.second) + " [shape=" + Row(asset).pShape +
                    ", label=" + GraphText(asset.second) + Row(use).pStyle + "];\n";
    }
    for (const auto& [strTemplate, uses] : report.chosen.mapTemplates) {
        for (const Asset& asset : uses) {
            strGraph +=
                "    " + GraphNode(TEMPLATE, strTemplate) + " -> " + GraphNode(Row(asset).pCode, asset.second) + ";\n";
        }
    }
    return strGraph + "}\n";
}
