#include "cli/compare/References.h"

#include <string>

#include "cli/Signals.h"
#include "platform/xml/CXMLParser.h"
#include "templates/TemplateXml.h"

namespace {

constexpr std::pair<EElementType, ESettingsKind> ASSET_KINDS[] = {
    {EElementType::ENTITY, ESettingsKind::EXPRESSION},
    {EElementType::KEYWORD, ESettingsKind::KEYWORD},
};

}  // namespace

SReferences FindReferences(const SPolicy& policy) {
    SReferences references;
    for (const auto& [eType, eKind] : ASSET_KINDS) {
        for (const auto& [strName, row] : policy.Of(eKind)) {
            references.mapAssets[{eType, strName}].bHeld = true;
        }
    }
    for (const auto& [strTemplate, row] : policy.Of(ESettingsKind::TEMPLATE)) {
        Signals::ThrowIfCaught();
        std::set<SReferences::Asset>& assets = references.mapTemplates[strTemplate];
        CXMLParser document;
        document.LoadUtf8(row.GetText(TemplateColumn::ELEMENT));
        for (CXMLView rule = document.RootView().FirstChild(); rule; rule = rule.NextSibling()) {
            for (CXMLView block = rule.FirstChild(); block; block = block.NextSibling()) {
                const TemplateXml::SBuildingBlock read = TemplateXml::ReadBuildingBlock(block);
                if (assets.emplace(read.eType, read.strName).second) {
                    references.mapAssets[{read.eType, std::string(read.strName)}].users.insert(strTemplate);
                }
            }
        }
    }
    return references;
}
