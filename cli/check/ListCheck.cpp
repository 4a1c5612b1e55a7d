#include <map>
#include <string>
#include <utility>
#include <vector>

#include "api/DLPMetaDataLoaderImpl.h"
#include "cli/NearestName.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextHash.h"
#include "platform/common/TextTools.h"

namespace {

constexpr const char LIST_NAMES[] = "dlpctl metadata lists them";

/** Looking for the nearest name takes long, and nobody reads hundreds of them. */
constexpr std::size_t MAX_SUGGESTIONS = 20;
/** What so many names have in common says nothing. */
constexpr std::size_t MAX_MEANT = 5;

/** One of the predefined lists, by its names. Empty when there is no file: then nothing is known to be wrong. */
class CPredefinedList {
  public:
    using Read = bool (DLPMetaDataLoaderImpl::*)(std::vector<OS::x_wstring>&, std::vector<OS::x_wstring>&);

    CPredefinedList(DLPMetaDataLoaderImpl& metadata, Read fnRead) {
        std::vector<OS::x_wstring> vecNames;
        std::vector<OS::x_wstring> vecDisplayNames;
        (metadata.*fnRead)(vecNames, vecDisplayNames);
        TakeTexts(vecNames, m_vecNames);
        TakeTexts(vecDisplayNames, m_vecDisplayNames);
        m_setNames.insert(m_vecNames.begin(), m_vecNames.end());
    }

    bool Lacks(const std::string& strName) const { return !m_vecNames.empty() && m_setNames.count(strName) == 0; }

    std::string Suggest(const std::string& strName) {
        std::string strMeant;
        for (const std::string& strEach :
             m_iSuggestions++ < MAX_SUGGESTIONS ? FindMeant(strName) : std::vector<std::string>()) {
            strMeant += (strMeant.empty() ? "did you mean " : " or ") + Text::Quoted(strEach);
        }
        return strMeant.empty() ? LIST_NAMES : strMeant + '?';
    }

  private:
    static void TakeTexts(const std::vector<OS::x_wstring>& vecTexts, std::vector<std::string>& vecTaken) {
        for (const OS::x_wstring& strText : vecTexts) {
            vecTaken.push_back(Text::Unescaped(OS::Utf8Lenient(strText)));
        }
    }

    /** The nearest name, else those that the word is a part of, as they are written or as people read them. */
    std::vector<std::string> FindMeant(const std::string& strName) const {
        std::string strNearest = FindNearestName(strName, m_vecNames);
        if (!strNearest.empty()) {
            return {std::move(strNearest)};
        }
        const std::wstring strPart = OS::ToUpper(OS::WideLenient(strName));
        std::vector<std::string> vecMeant;
        for (std::size_t i = 0; i < m_vecNames.size(); ++i) {
            const std::string strBoth = m_vecNames[i] + '\n' + m_vecDisplayNames[i];
            if (OS::ToUpper(OS::WideLenient(strBoth)).find(strPart) != std::wstring::npos) {
                vecMeant.push_back(m_vecNames[i]);
            }
        }
        return vecMeant.size() > MAX_MEANT ? std::vector<std::string>() : vecMeant;
    }

    std::vector<std::string> m_vecNames;
    std::vector<std::string> m_vecDisplayNames;  ///< of each name
    OS::TextSet<std::string> m_setNames;
    std::size_t m_iSuggestions = 0;
};

struct SCategoryList {
    const char* pSection;
    const char* pElement;
    CPredefinedList::Read fnRead;
};
constexpr SCategoryList CATEGORIES[] = {
    {TagUtf8::INDUSTRIES, TagUtf8::INDUSTRY, &DLPMetaDataLoaderImpl::GetIndustries},
    {TagUtf8::REGIONS, TagUtf8::REGION, &DLPMetaDataLoaderImpl::GetRegions},
};

/** A template should be named once by a category, in however many elements that stands. */
void CheckEntries(const SCheckedDocument& document, const SCategoryList& list) {
    std::map<std::pair<std::string, std::string>, std::size_t> mapFirst;
    document.ForEach(list.pSection, list.pElement, [&](const CXMLView& element) {
        const std::string strName(element.Attribute(TagUtf8::NAME));
        for (CXMLView entry = element.FirstChild(TagUtf8::TEMPLATE_ID); entry;
             entry = entry.NextSibling(TagUtf8::TEMPLATE_ID)) {
            const std::string strTemplate = entry.Text();
            const auto [itFirst, bNew] = mapFirst.try_emplace({strName, strTemplate}, entry.Offset());
            if (!bNew) {
                document.diagnostics.Relate(
                    document.diagnostics.Add(ECode::CATEGORY_TWICE, entry.Offset(),
                                             {list.pElement, Text::Quoted(strName), Text::Quoted(strTemplate)}),
                    itFirst->second, "the first one is here");
            }
        }
    });
}

}  // namespace

void CheckLists(const SCheckedDocument& document) {
    DLPMetaDataLoaderImpl metadata;
    CPredefinedList validators(metadata, &DLPMetaDataLoaderImpl::GetValidators);
    document.ForEach(TagUtf8::DIGITAL_ASSETS, TagUtf8::ENTITY, [&](const CXMLView& element) {
        const std::string strValidator(element.Attribute(TagUtf8::VALIDATOR));
        if (!strValidator.empty() && validators.Lacks(strValidator)) {
            document.diagnostics.Add(ECode::UNKNOWN_VALIDATOR, document.Find(element, TagUtf8::VALIDATOR).iName,
                                     {Text::Quoted(strValidator)}, {validators.Suggest(strValidator)});
        }
    });
    for (const SCategoryList& list : CATEGORIES) {
        CPredefinedList categories(metadata, list.fnRead);
        document.ForEach(list.pSection, list.pElement, [&](const CXMLView& element) {
            const std::string strName(element.Attribute(TagUtf8::NAME));
            if (strName.empty()) {
                document.diagnostics.Add(ECode::NO_NAME, element.Offset(), {list.pElement});
            } else if (categories.Lacks(strName)) {
                document.diagnostics.Add(ECode::UNKNOWN_CATEGORY, document.Find(element, TagUtf8::NAME).iName,
                                         {list.pElement, Text::Quoted(strName)}, {categories.Suggest(strName)});
            }
        });
        CheckEntries(document, list);
    }
}
