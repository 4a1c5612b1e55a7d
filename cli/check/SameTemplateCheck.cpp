#include <algorithm>
#include <string>
#include <vector>

#include "cli/Kinds.h"
#include "cli/RecordJson.h"
#include "cli/Signals.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "cli/compare/RuleMeanings.h"
#include "platform/common/TextHash.h"
#include "platform/store/CSettingsStore.h"
#include "templates/TemplateReport.h"
#include "templates/TemplateXml.h"

namespace {

/** Whether the part of a rule is taken, and looks for something. */
template <class Part>
bool LooksFor(const Part& part) {
    const bool bHits = part.eType != EElementType::ENTITY || part.iCount > 0;
    return bHits && part.eType != EElementType::UNKNOWN && part.eOperator != EOperator::EXCEPT;
}

/** Only of rules that are taken, and that look for something, it is said what they match. */
bool HasMeaning(const std::vector<SMatchRule>& vecRules) {
    bool bAny = false;
    for (const SMatchRule& rule : vecRules) {
        if (rule.eOperator == EOperator::EXCEPT ||
            !std::all_of(rule.vecElements.begin(), rule.vecElements.end(), LooksFor<SRuleElement>)) {
            return false;
        }
        bAny = bAny || !rule.vecElements.empty();
    }
    return bAny;
}

/** The same of rules that nobody has read yet. */
bool HasMeaning(const CXMLView& element) {
    bool bAny = false;
    for (CXMLView rule = element.FirstChild(); rule; rule = rule.NextSibling()) {
        for (CXMLView block = rule.FirstChild(); block; block = block.NextSibling()) {
            if (!LooksFor(TemplateXml::ReadBuildingBlock(block))) {
                return false;
            }
            bAny = true;
        }
        if (TemplateXml::ReadOperation(rule) == EOperator::EXCEPT) {
            return false;
        }
    }
    return bAny;
}

class CSameTemplateCheck {
  public:
    explicit CSameTemplateCheck(const SCheckedDocument& document) : m_document(document) {}

    void Run() {
        m_document.ForEachTemplate([this](const CXMLView& element) {
            Signals::ThrowIfCaught();
            m_setNames.emplace(element.Attribute(TagUtf8::NAME));
            Check(element);
        });
        CSettingsStore::Current().ReadAll(ESettingsKind::TEMPLATE, [this](CSettingsRow&& row) {
            Signals::ThrowIfCaught();
            if (!m_mapMeanings.empty() && m_setNames.count(row.GetText(NAME_COLUMN)) == 0) {
                CheckStored(row);
            }
        });
    }

  private:
    void Check(const CXMLView& element) {
        if (!HasMeaning(element) || m_document.HasErrors(element)) {
            return;
        }
        const auto [itFirst, bNew] =
            m_mapMeanings.try_emplace(m_meanings.Get(TemplateReport::ReadRules(element)), element);
        if (!bNew) {
            const CXMLView& first = itFirst->second;
            m_document.diagnostics.Relate(Tell(element, "the template " + Text::Quoted(first.Attribute(TagUtf8::NAME))),
                                          first.Offset(), "the other one is here");
        }
    }

    /** Not one that the document replaces. */
    void CheckStored(const CSettingsRow& row) {
        const std::vector<SMatchRule> vecRules = ReadRules(row);
        const auto itSame = HasMeaning(vecRules) ? m_mapMeanings.find(m_meanings.Get(vecRules)) : m_mapMeanings.end();
        if (itSame != m_mapMeanings.end()) {
            Tell(itSame->second, "the stored template " + Text::Quoted(row.GetText(NAME_COLUMN)));
            m_mapMeanings.erase(itSame);  // one of them is enough
        }
    }

    SDiagnostic* Tell(const CXMLView& element, const std::string& strOther) const {
        return m_document.diagnostics.Add(ECode::SAME_TEMPLATE, element.Offset(),
                                          {Text::Quoted(element.Attribute(TagUtf8::NAME)), strOther});
    }

    const SCheckedDocument& m_document;
    CRuleMeanings m_meanings;
    OS::TextMap<std::string, CXMLView> m_mapMeanings;  ///< the first template of each
    OS::TextSet<std::string> m_setNames;
};

}  // namespace

void CheckSameTemplates(const SCheckedDocument& document) {
    if (!document.bAssetsOnly) {
        CSameTemplateCheck(document).Run();
    }
}
