#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/AssetSuggestions.h"
#include "cli/ImportReport.h"
#include "cli/Kinds.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "platform/xml/CXMLParser.h"
#include "templates/CAssetNames.h"
#include "templates/DLPXmlNormalizer.h"
#include "templates/TemplateReport.h"
#include "templates/TemplateXml.h"

namespace {

constexpr const char IMPORT_FIRST[] = "import or add it, or correct the name";
constexpr const char NOT_TAKEN[] = "import it first: the one of the document is not taken";
constexpr const char STANDS_HERE[] = "it stands here";

struct SAssetKind {
    EElementType eType;
    ESettingsKind eKind;
    const char* pElement;
};
constexpr SAssetKind ASSET_KINDS[] = {
    {EElementType::ENTITY, ESettingsKind::EXPRESSION, TagUtf8::ENTITY},
    {EElementType::KEYWORD, ESettingsKind::KEYWORD, TagUtf8::DICTIONARY},
};

const SAssetKind& GetAssetKind(EElementType eType) {
    return ASSET_KINDS[eType == EElementType::ENTITY ? 0 : 1];
}

/** A reference to an asset, by what names it after the document was rewritten. */
using Reference = std::pair<EElementType, std::string>;

template <class F>
void ForEachBlock(const CXMLView& element, const F& fnBlock) {
    for (CXMLView rule = element.FirstChild(TagUtf8::MATCH_RULE); rule; rule = rule.NextSibling(TagUtf8::MATCH_RULE)) {
        for (CXMLView block = rule.FirstChild(TagUtf8::BUILDING_BLOCK); block;
             block = block.NextSibling(TagUtf8::BUILDING_BLOCK)) {
            fnBlock(block);
        }
    }
}

/** Calls fnReference for what the foreign children of a template are read to refer to; those names are never mapped. */
template <class F>
void ForEachForeign(const CXMLView& element, const F& fnReference) {
    TemplateReport::ForEachForeignChild(element, [&](const CXMLView& child, bool bRule) {
        TemplateReport::ForEachReference(child, bRule,
                                         [&](const CXMLView& block, const TemplateXml::SBuildingBlock& read) {
                                             fnReference(read.eType, std::string(read.strName), block.Offset());
                                         });
    });
}

class CReferenceCheck {
  public:
    explicit CReferenceCheck(const SCheckedDocument& document) : m_document(document), m_suggestions(document.bOlder) {}

    void Run() {
        CAssetNames names;
        for (const SAssetKind& kind : ASSET_KINDS) {
            m_document.ForEachWritten(TagUtf8::DIGITAL_ASSETS, kind.pElement, [&](const CXMLView& element) {
                m_mapDefined.try_emplace({kind.eType, element.Attribute(TagUtf8::NAME)}, element.Offset());
            });
        }
        const auto fnUse = [&](EElementType eType, const std::string& strName, std::size_t) {
            names.Add(eType, strName);
            m_setUsed.emplace(eType, strName);
        };
        m_document.ForEachTemplate([&](const CXMLView& element) {
            ForEachBlock(element, [&](const CXMLView& block) {
                const EElementType eType = TemplateXml::ReadExactType(block);
                if (eType != EElementType::UNKNOWN) {
                    fnUse(eType, GetName(block), block.Offset());
                    return;
                }
                for (const SAssetKind& kind : ASSET_KINDS) {  // whichever is meant is not unused
                    m_setUsed.emplace(kind.eType, GetName(block));
                }
            });
            ForEachForeign(element, fnUse);
        });
        names.Ask();
        m_document.ForEachTemplate([&](const CXMLView& element) {
            ForEachBlock(element, [&](const CXMLView& block) { CheckBlock(block, names); });
            ForEachForeign(element, [&](EElementType eType, const std::string& strName, std::size_t iOffset) {
                CheckName({eType, strName}, strName, FindAttribute(m_document.strText, iOffset, TagUtf8::SOURCE_NAME),
                          names);
            });
            for (CXMLView rule = element.FirstChild(TagUtf8::MATCH_RULE); rule;
                 rule = rule.NextSibling(TagUtf8::MATCH_RULE)) {
                CheckOperation(rule);
            }
        });
        CheckUnused();
    }

  private:
    /** @return the name of today */
    std::string GetName(const CXMLView& block) const {
        const std::string_view strName = block.Attribute(TagUtf8::SOURCE_NAME);
        return m_document.bOlder
                   ? OS::Utf8Lenient(CDLPXmlNormalizer().MapDigitalAssetsSourceName(OS::WideText(strName)))
                   : std::string(strName);
    }

    void CheckBlock(const CXMLView& block, const CAssetNames& names) {
        const EElementType eType = TemplateXml::ReadExactType(block);
        if (eType == EElementType::UNKNOWN) {
            m_document.diagnostics.Add(ECode::SOURCE_TYPE, m_document.Find(block, TagUtf8::SOURCE_TYPE).iName,
                                       {Text::Quoted(block.Attribute(TagUtf8::SOURCE_TYPE))});
        } else {
            CheckName({eType, GetName(block)}, block.Attribute(TagUtf8::SOURCE_NAME),
                      m_document.Find(block, TagUtf8::SOURCE_NAME), names);
        }
        CheckOperation(block);
    }

    /** @param strWritten the name as it stands in the document */
    void CheckName(const Reference& reference, std::string_view strWritten, SAttributePlace place,
                   const CAssetNames& names) {
        const auto& [eType, strName] = reference;
        const auto itDefined = strWritten.empty() ? m_mapDefined.end() : m_mapDefined.find({eType, strWritten});
        const bool bDefined = itDefined != m_mapDefined.end();
        if (names.IsStored(eType, strName) || (bDefined && !m_document.bOlder)) {
            return;
        }
        const ESettingsKind eKind = GetAssetKind(eType).eKind;
        SDiagnostic* pDiagnostic = m_document.diagnostics.Add(
            ECode::UNKNOWN_ASSET, place.iName, {GetKind(eKind).pWord, QuoteReference(strName, strWritten)},
            {bDefined ? NOT_TAKEN : Suggest(eKind, strName)});
        if (bDefined) {
            m_document.diagnostics.Relate(pDiagnostic, itDefined->second, STANDS_HERE);
        }
    }

    void CheckOperation(const CXMLView& node) const {
        if (!TemplateXml::IsOperationAccepted(node)) {
            m_document.diagnostics.Add(ECode::OPERATION, m_document.Find(node, TagUtf8::OPERATION).iName,
                                       {Text::Quoted(node.Attribute(TagUtf8::OPERATION))});
        }
    }

    std::string Suggest(ESettingsKind eKind, const std::string& strName) {
        const std::string strNearest = m_suggestions.Find(eKind, strName);
        return strNearest.empty() ? IMPORT_FIRST : "did you mean " + Text::Quoted(strNearest) + '?';
    }

    void CheckUnused() {
        const std::vector<std::pair<EElementType, CXMLView>> vecUnused = FindUnused();
        if (vecUnused.empty()) {
            return;
        }
        // Only now it matters what the templates of the store refer to.
        CSettingsStore::Current().ReadAll(ESettingsKind::TEMPLATE, [&](CSettingsRow&& row) {
            const std::string& strElement = row.GetText(TemplateColumn::ELEMENT);
            if (strElement.find(TagUtf8::SOURCE_NAME) == std::string::npos) {
                return;  // it need not be read, however much it holds
            }
            CXMLParser stored;
            stored.LoadUtf8(strElement);
            ForEachBlock(stored.RootView(), [&](const CXMLView& block) {
                const TemplateXml::SBuildingBlock read = TemplateXml::ReadBuildingBlock(block);
                m_setUsed.emplace(read.eType, read.strName);
            });
        });
        for (const auto& [eType, element] : vecUnused) {
            if (!IsUsed(eType, element) && m_document.diagnostics.Count(ECode::UNUSED_ASSET, element.Offset())) {
                m_document.diagnostics.Tell(
                    ECode::UNUSED_ASSET, element.Offset(),
                    {GetKind(GetAssetKind(eType).eKind).pWord, Text::Quoted(element.Attribute(TagUtf8::NAME))}, {});
            }
        }
    }

    std::vector<std::pair<EElementType, CXMLView>> FindUnused() const {
        std::vector<std::pair<EElementType, CXMLView>> vecUnused;
        for (const SAssetKind& kind : ASSET_KINDS) {
            m_document.ForEach(TagUtf8::DIGITAL_ASSETS, kind.pElement, [&](const CXMLView& element) {
                if (!element.Attribute(TagUtf8::NAME).empty() && !IsUsed(kind.eType, element)) {
                    vecUnused.emplace_back(kind.eType, element);
                }
            });
        }
        return vecUnused;
    }

    bool IsUsed(EElementType eType, const CXMLView& element) const {
        return m_setUsed.count({eType, std::string(element.Attribute(TagUtf8::NAME))}) != 0;
    }

    const SCheckedDocument& m_document;
    std::set<Reference> m_setUsed;
    /** What the document itself has, and where: if it is not taken, that is told of the asset, or of its section. */
    std::map<std::pair<EElementType, std::string_view>, std::size_t> m_mapDefined;
    CAssetSuggestions m_suggestions;
};

}  // namespace

void CheckReferences(const SCheckedDocument& document) {
    if (!document.bAssetsOnly) {
        CReferenceCheck(document).Run();
    }
}
