// What an import silently replaces shows when the value that it read is compared with the text that stands there.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "cli/NearestName.h"
#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "digital_assets/AssetFormat.h"
#include "platform/common/TextTools.h"
#include "templates/TemplateXml.h"

namespace {

using DigitalAssets::EAttribute;
using DigitalAssets::SAssetFormat;
using DigitalAssets::SNumber;
using DigitalAssets::SType;

struct SBounds {
    const char* pMin;
    const char* pMax;
};
constexpr SBounds BOUNDS[] = {
    {TagUtf8::MIN_LENGTH, TagUtf8::MAX_LENGTH},
    {TagUtf8::MIN_LEFT_RADIUS, TagUtf8::MAX_LEFT_RADIUS},
};

/** What the numbers of assets should at least be. */
struct SLeast {
    const char* pName;
    int iLeast;
};
constexpr SLeast LEASTS[] = {
    {TagUtf8::THRESHOLD, 1},       {TagUtf8::NUMBER, 1},           {TagUtf8::MIN_LENGTH, 0},
    {TagUtf8::MAX_LENGTH, 1},      {TagUtf8::SUFFIX_LENGTH, 0},    {TagUtf8::MIN_LEFT_RADIUS, 0},
    {TagUtf8::MAX_LEFT_RADIUS, 0}, {TagUtf8::MAX_RIGHT_RADIUS, 0},
};

/** What people write for false. */
constexpr const char* FALSE_WORDS[] = {Value::FALSE_TEXT, "no", "n", "f", "off", "0"};

bool SaysFalse(std::string_view strFlag) {
    return std::any_of(std::begin(FALSE_WORDS), std::end(FALSE_WORDS),
                       [&](const char* pWord) { return OS::EqualsNoCase(OS::Trim(strFlag), std::string_view(pWord)); });
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/** @return whether the text is the number itself, but for white space, a plus and zeros in front */
bool SaysNumber(std::string_view strText, int iNumber) {
    strText = OS::Trim(strText);
    const bool bNegative = !strText.empty() && strText.front() == '-';
    strText.remove_prefix(!strText.empty() && (bNegative || strText.front() == '+') ? 1 : 0);
    if (strText.empty() || !std::all_of(strText.begin(), strText.end(), IsDigit)) {
        return false;
    }
    strText.remove_prefix(std::min(strText.find_first_not_of('0'), strText.size() - 1));
    const std::int64_t iValue = iNumber;
    return strText == std::to_string(bNegative ? -iValue : iValue);
}

/** @return whether there are numbers with points between them */
bool IsVersion(std::string_view strText) {
    for (bool bDigit = false; !strText.empty(); strText.remove_prefix(1)) {
        if (!IsDigit(strText.front()) && (strText.front() != '.' || !bDigit || strText.size() == 1)) {
            return false;
        }
        bDigit = strText.front() != '.';
    }
    return true;
}

class CValueCheck {
  public:
    explicit CValueCheck(const SCheckedDocument& document) : m_document(document) {}

    /** What belongs to another type is not told of where it is not known which type is meant. */
    void CheckAsset(const SAssetFormat& format, const CXMLView& element) const {
        CSettingsRow row(format.eKind == EItemKind::EXPRESSION ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD);
        DigitalAssets::ReadFields(format, element, row);
        const std::string& strType = row.GetText(format.iTypeColumn);
        bool bType = true;
        for (const DigitalAssets::SAttribute& attribute : format.aAttributes) {
            if (attribute.eForm == EAttribute::FLAG) {
                // A built-in asset is kept only when the document says false in so many words.
                CheckFlag(element, attribute.pName, attribute.iColumn != AssetColumn::PRE_DEFINED);
            } else if (attribute.eForm == EAttribute::TYPE) {
                bType = CheckType(format, element, strType);
            }
        }
        for (const SType& type : format.aTypes) {
            if (bType && strType == type.pName) {
                CheckNumbers(format, type, element, row);
            }
        }
    }

    void CheckKeyword(const CXMLView& keyword) const {
        CheckFlag(keyword, TagUtf8::CASE_SENSITIVE, true);
        CheckNumber(keyword, TagUtf8::SCORE, OS::TextToInt(keyword.Attribute(TagUtf8::SCORE)));
    }

    void CheckVersion() const {
        const std::string_view strVersion = m_document.root.Attribute(TagUtf8::TEMPLATE_VERSION);
        if (!IsVersion(strVersion)) {
            m_document.diagnostics.Add(ECode::ODD_VERSION,
                                       m_document.Find(m_document.root, TagUtf8::TEMPLATE_VERSION).iName,
                                       {Text::Quoted(strVersion)});
        }
    }

    void CheckTemplate(const CXMLView& element) const {
        CheckFlag(element, TagUtf8::PRE_DEFINED, true);
        for (CXMLView rule = element.FirstChild(TagUtf8::MATCH_RULE); rule;
             rule = rule.NextSibling(TagUtf8::MATCH_RULE)) {
            for (CXMLView block = rule.FirstChild(TagUtf8::BUILDING_BLOCK); block;
                 block = block.NextSibling(TagUtf8::BUILDING_BLOCK)) {
                CheckHits(block);
            }
        }
    }

  private:
    void CheckFlag(const CXMLView& element, const char* pName, bool bFixable) const {
        const std::string_view strFlag = element.Attribute(pName);
        for (const char* pFlag : {Value::TRUE_TEXT, Value::FALSE_TEXT}) {
            if (OS::EqualsNoCase(strFlag, std::string_view(pFlag))) {
                CheckSpelling(element, pName, pFlag);
                return;
            }
        }
        if (!element.HasAttribute(pName)) {
            return;
        }
        const SAttributePlace place = m_document.Find(element, pName);
        SDiagnostic* pDiagnostic =
            m_document.diagnostics.Add(ECode::UNCLEAR_FLAG, place.iName, {pName, Text::Quoted(strFlag)});
        if (bFixable && SaysFalse(strFlag)) {
            m_document.diagnostics.Fix(pDiagnostic, place.iValue, place.iValueLength, Value::FALSE_TEXT);
        }
    }

    /** Of a value that says what is read, though perhaps in another way. */
    void CheckSpelling(const CXMLView& element, const char* pName, const std::string& strRead) const {
        const std::string_view strWritten = element.Attribute(pName);
        if (strWritten == strRead) {
            return;
        }
        const SAttributePlace place = m_document.Find(element, pName);
        m_document.diagnostics.Fix(
            m_document.diagnostics.Add(ECode::OTHER_SPELLING, place.iName, {pName, Text::Quoted(strWritten), strRead}),
            place.iValue, place.iValueLength, strRead);
    }

    /** @return whether there is such a type */
    bool CheckType(const SAssetFormat& format, const CXMLView& element, const std::string& strRead) const {
        const std::string_view strType = element.Attribute(TagUtf8::TYPE);
        if (OS::EqualsNoCase(strType, std::string_view(strRead))) {
            CheckSpelling(element, TagUtf8::TYPE, strRead);
            return true;
        }
        m_document.diagnostics.Add(ECode::UNKNOWN_TYPE, m_document.Find(element, TagUtf8::TYPE).iName,
                                   {Text::Quoted(strType), strRead}, {SuggestType(format, strType)});
        return false;
    }

    static std::string SuggestType(const SAssetFormat& format, std::string_view strType) {
        std::vector<std::string> vecTypes;
        std::string strTypes;
        for (const SType& type : format.aTypes) {
            vecTypes.emplace_back(type.pName);
            strTypes += (strTypes.empty() ? "write one of " : ", ") + vecTypes.back();
        }
        const std::string strMeant = FindNearestName(std::string(OS::Trim(strType)), vecTypes);
        return strMeant.empty() ? strTypes : "did you mean " + Text::Quoted(strMeant) + '?';
    }

    void CheckNumbers(const SAssetFormat& format, const SType& type, const CXMLView& element,
                      const CSettingsRow& row) const {
        for (const SNumber& number : type.aNumbers) {
            CheckNumber(element, number.pName, row.GetNumber(number.iColumn));
        }
        CheckForeignNumbers(format, type, element);
        CheckForeignChildren(format, type, element);
        for (const SBounds& bounds : BOUNDS) {
            CheckBounds(bounds, type, element, row);
        }
    }

    void CheckForeignNumbers(const SAssetFormat& format, const SType& type, const CXMLView& element) const {
        for (const SType& other : format.aTypes) {
            for (const SNumber& number : other.aNumbers) {
                // The lengths belong to two types; each is told once.
                const bool bFirst = &other == FindFirstType(format, number.pName);
                if (bFirst && element.HasAttribute(number.pName) && FindNumber(type, number.pName) == nullptr) {
                    m_document.diagnostics.Add(ECode::MISPLACED_ATTRIBUTE, m_document.Find(element, number.pName).iName,
                                               {Text::Quoted(number.pName), std::string("the type is ") + type.pName});
                }
            }
        }
    }

    void CheckForeignChildren(const SAssetFormat& format, const SType& type, const CXMLView& element) const {
        for (const DigitalAssets::SChild& child : format.aChildren) {
            const CXMLView node = element.FirstChild(child.pName);
            if (child.eNeed == DigitalAssets::ENeed::TYPED && &type == &format.aTypes.front() && node &&
                !node.Text().empty()) {
                m_document.diagnostics.Add(
                    ECode::MISPLACED_ELEMENT, node.Offset(),
                    {Text::Quoted(child.pName), "an expression of type " + std::string(type.pName)});
            }
        }
    }

    static const SNumber* FindNumber(const SType& type, std::string_view strName) {
        const auto itNumber = std::find_if(type.aNumbers.begin(), type.aNumbers.end(),
                                           [&](const SNumber& number) { return strName == number.pName; });
        return itNumber == type.aNumbers.end() ? nullptr : &*itNumber;
    }
    static const SType* FindFirstType(const SAssetFormat& format, std::string_view strNumber) {
        const auto itType = std::find_if(format.aTypes.begin(), format.aTypes.end(),
                                         [&](const SType& type) { return FindNumber(type, strNumber) != nullptr; });
        return itType == format.aTypes.end() ? nullptr : &*itType;
    }

    void CheckBounds(const SBounds& bounds, const SType& type, const CXMLView& element, const CSettingsRow& row) const {
        const SNumber* pMin = FindNumber(type, bounds.pMin);
        const SNumber* pMax = FindNumber(type, bounds.pMax);
        const bool bGiven = element.HasAttribute(bounds.pMin) && element.HasAttribute(bounds.pMax);
        if (pMin == nullptr || pMax == nullptr || !bGiven ||
            row.GetNumber(pMin->iColumn) <= row.GetNumber(pMax->iColumn)) {
            return;
        }
        SDiagnostic* pDiagnostic =
            m_document.diagnostics.Add(ECode::MIN_ABOVE_MAX, m_document.Find(element, bounds.pMin).iName,
                                       {bounds.pMin, std::to_string(row.GetNumber(pMin->iColumn)), bounds.pMax,
                                        std::to_string(row.GetNumber(pMax->iColumn))});
        m_document.diagnostics.Relate(pDiagnostic, m_document.Find(element, bounds.pMax).iName,
                                      std::string(bounds.pMax) + " stands here");
    }

    void CheckNumber(const CXMLView& element, const char* pName, int iRead) const {
        const auto* pLeast = std::find_if(std::begin(LEASTS), std::end(LEASTS),
                                          [&](const SLeast& least) { return std::string_view(least.pName) == pName; });
        if (!element.HasAttribute(pName)) {
            m_document.diagnostics.Add(ECode::MISSING_NUMBER, element.Offset(), {pName});
            return;
        }
        if (!SaysNumber(element.Attribute(pName), iRead)) {
            TellUnclear(element, pName, iRead);
            return;
        }
        CheckSpelling(element, pName, std::to_string(iRead));
        if (pLeast != std::end(LEASTS) && iRead < pLeast->iLeast) {
            m_document.diagnostics.Add(ECode::SENSELESS_NUMBER, m_document.Find(element, pName).iName,
                                       {pName, std::to_string(iRead), std::to_string(pLeast->iLeast)});
        }
    }

    void TellUnclear(const CXMLView& element, const char* pName, int iRead) const {
        m_document.diagnostics.Add(ECode::UNCLEAR_NUMBER, m_document.Find(element, pName).iName,
                                   {pName, Text::Quoted(element.Attribute(pName)), std::to_string(iRead)});
    }

    /** Of a type that no import takes nothing is known but that. */
    void CheckHits(const CXMLView& block) const {
        const TemplateXml::SBuildingBlock read = TemplateXml::ReadBuildingBlock(block);
        const EElementType eType = TemplateXml::ReadExactType(block);
        const bool bGiven = block.HasAttribute(TagUtf8::ENTITY_HITS);
        if (eType != EElementType::ENTITY) {
            if (bGiven && eType == EElementType::KEYWORD) {
                m_document.diagnostics.Add(ECode::MISPLACED_ATTRIBUTE,
                                           m_document.Find(block, TagUtf8::ENTITY_HITS).iName,
                                           {Text::Quoted(TagUtf8::ENTITY_HITS), "keyword lists have no hits"});
            }
        } else if (bGiven && !SaysNumber(block.Attribute(TagUtf8::ENTITY_HITS), read.iCount)) {
            TellUnclear(block, TagUtf8::ENTITY_HITS, read.iCount);
        } else {
            CheckHits(block, read.iCount, bGiven);
        }
    }

    void CheckHits(const CXMLView& block, int iHits, bool bGiven) const {
        if (bGiven) {
            CheckSpelling(block, TagUtf8::ENTITY_HITS, std::to_string(iHits));
        }
        if (iHits < 1) {
            m_document.diagnostics.Add(ECode::HITS_BELOW_ONE, m_document.Find(block, TagUtf8::ENTITY_HITS).iName,
                                       {std::to_string(iHits)});
        }
    }

    const SCheckedDocument& m_document;
};

}  // namespace

void CheckValues(const SCheckedDocument& document) {
    const CValueCheck check(document);
    check.CheckVersion();
    for (const SAssetFormat* pFormat : {&DigitalAssets::EXPRESSION_FORMAT, &DigitalAssets::KEYWORD_FORMAT}) {
        document.ForEach(TagUtf8::DIGITAL_ASSETS, pFormat->pElement,
                         [&](const CXMLView& element) { check.CheckAsset(*pFormat, element); });
    }
    document.ForEach(TagUtf8::DIGITAL_ASSETS, TagUtf8::DICTIONARY, [&](const CXMLView& list) {
        for (CXMLView keyword = list.FirstChild(TagUtf8::KEYWORD); keyword;
             keyword = keyword.NextSibling(TagUtf8::KEYWORD)) {
            check.CheckKeyword(keyword);
        }
    });
    document.ForEachTemplate([&](const CXMLView& element) { check.CheckTemplate(element); });
}
