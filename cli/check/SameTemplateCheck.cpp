#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cli/Kinds.h"
#include "cli/RecordJson.h"
#include "cli/Signals.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "cli/compare/RuleMeanings.h"
#include "platform/store/CSettingsStore.h"
#include "templates/TemplateReport.h"

namespace {

/** Only of rules that are taken, and that look for something, it is said what they match. */
bool HasMeaning(const std::vector<SMatchRule>& vecRules) {
    bool bAny = false;
    for (const SMatchRule& rule : vecRules) {
        for (const SRuleElement& element : rule.vecElements) {
            const bool bHits = element.eType != EElementType::ENTITY || element.iCount > 0;
            if (!bHits || element.eType == EElementType::UNKNOWN || element.eOperator == EOperator::EXCEPT) {
                return false;
            }
            bAny = true;
        }
        if (rule.eOperator == EOperator::EXCEPT) {
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
        const std::vector<SMatchRule> vecRules = TemplateReport::ReadRules(element);
        if (!HasMeaning(vecRules) || m_document.HasErrors(element)) {
            return;
        }
        const auto [itFirst, bNew] = m_mapMeanings.try_emplace(m_meanings.Get(vecRules), element);
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
    std::unordered_map<std::string, CXMLView> m_mapMeanings;  ///< the first template of each
    std::unordered_set<std::string> m_setNames;
};

}  // namespace

void CheckSameTemplates(const SCheckedDocument& document) {
    if (!document.bAssetsOnly) {
        CSameTemplateCheck(document).Run();
    }
}
