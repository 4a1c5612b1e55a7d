#include "cli/compare/References.h"

#include "cli/RecordJson.h"
#include "cli/Signals.h"
#include "platform/common/TextConversion.h"

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
        for (const SMatchRule& rule : ReadRules(row)) {
            for (const SRuleElement& element : rule.vecElements) {
                const SReferences::Asset asset{element.eType, OS::Utf8Lenient(element.strName)};
                references.mapAssets[asset].users.insert(strTemplate);
                assets.insert(asset);
            }
        }
    }
    return references;
}
