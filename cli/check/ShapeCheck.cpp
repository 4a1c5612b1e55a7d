// Walks the text itself and not the tree: attributes and texts have no place there, and a tag of a million attributes
// must be walked once.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "cli/check/DocumentShape.h"
#include "cli/check/MeantName.h"
#include "cli/layout/MarkupReader.h"

namespace {

constexpr std::string_view NAMESPACES = "xml";
constexpr const char REMOVE[] = "remove it";
constexpr const char CORRECT[] = "correct its name, or remove it";

/** What stands between two tags, or is one. */
struct SSkipped {
    std::string_view strStart;
    std::string_view strEnd;
    bool bText;
};
constexpr SSkipped SKIPPED[] = {{"<!--", "-->", false}, {"<![CDATA[", "]]>", true}, {"<?", "?>", false}};

/** What holds items of a template import, and of either import. */
constexpr const char* OF_TEMPLATES[] = {TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::INDUSTRIES, TagUtf8::INDUSTRY,
                                        TagUtf8::REGIONS, TagUtf8::REGION};
constexpr const char* OF_ASSETS[] = {TagUtf8::SA_POLICY, TagUtf8::DIGITAL_ASSETS, TagUtf8::ENTITY, TagUtf8::DICTIONARY};

class CShapeCheck {
  public:
    explicit CShapeCheck(const SCheckedDocument& document) : m_document(document), m_shape(document.bOlder) {}

    void Run() {
        const std::string_view strText = m_document.strText;
        std::size_t i = 0;
        while (i < strText.size()) {
            if (strText[i] != '<') {
                const std::size_t iEnd = std::min(strText.find('<', i), strText.size());
                Text(i, iEnd);
                i = iEnd;
            } else if (strText.compare(i, 2, "</") == 0) {
                m_vecOpen.pop_back();
                i = Behind(">", i);
            } else if (!Skip(i)) {
                i = Start(i);
            }
        }
    }

  private:
    struct SOpen {
        const SShape* pShape;  ///< null: nothing in it is looked at
        bool bTextTold = false;
        std::uint32_t iSeen = 0;  ///< which of its children
    };

    std::size_t Behind(std::string_view strEnd, std::size_t i) const {
        const std::size_t iEnd = m_document.strText.find(strEnd, i);
        return iEnd == std::string_view::npos ? m_document.strText.size() : iEnd + strEnd.size();
    }

    bool Skip(std::size_t& i) {
        for (const SSkipped& skipped : SKIPPED) {
            if (m_document.strText.compare(i, skipped.strStart.size(), skipped.strStart) == 0) {
                const std::size_t iContent = i + skipped.strStart.size();
                i = Behind(skipped.strEnd, iContent);
                if (skipped.bText) {
                    Text(iContent, i - skipped.strEnd.size());
                }
                return true;
            }
        }
        return false;
    }

    void Text(std::size_t iStart, std::size_t iEnd) {
        const SPiece piece{EPiece::TEXT, m_document.strText.substr(iStart, iEnd - iStart), iStart};
        const std::size_t iFirst = piece.GetWordOffset();
        if (iFirst >= iEnd || m_vecOpen.empty()) {
            return;
        }
        SOpen& open = m_vecOpen.back();
        if (open.pShape != nullptr && !open.pShape->bText && !open.bTextTold) {
            open.bTextTold = true;
            m_document.diagnostics.Add(ECode::STRAY_TEXT, iFirst, {Text::Quoted(open.pShape->strName)});
        }
    }

    /** @return the offset behind the start tag */
    std::size_t Start(std::size_t iTag) {
        CTagScanner tag(m_document.strText, iTag);
        const std::string_view strName =
            m_document.strText.substr(iTag + 1, m_document.strText.find_first_of(" \t\r\n/>", iTag) - iTag - 1);
        const SShape* pShape = FindHere(strName, iTag);
        if (pShape != nullptr && m_document.bOlder && strName == TagUtf8::TEMPLATE && IsBuiltIn(iTag)) {
            pShape = nullptr;  // it is not taken, whatever it holds
        }
        while (tag.Next()) {
            if (pShape != nullptr) {
                CheckAttribute(*pShape, tag.GetName(), tag.GetNameOffset());
            }
        }
        if (!tag.IsEmptyElement()) {
            m_vecOpen.push_back({pShape});
        }
        return tag.GetEnd();
    }

    bool IsBuiltIn(std::size_t iTag) const {
        const SAttributePlace place = FindAttribute(m_document.strText, iTag, CDLPXmlNormalizer::OLDER_BUILT_IN);
        return place.bFound &&
               m_document.strText.substr(place.iValue, place.iValueLength) == CDLPXmlNormalizer::BUILT_IN_VALUE;
    }

    /** @return null for an element that does not belong here, which is told */
    const SShape* FindHere(std::string_view strName, std::size_t iTag) {
        if (m_vecOpen.empty()) {
            return m_shape.Find(strName);
        }
        SOpen& parent = m_vecOpen.back();
        if (parent.pShape == nullptr) {
            return nullptr;
        }
        const std::size_t iChild = CDocumentShape::IndexOf(parent.pShape->vecChildren, strName);
        if (iChild == parent.pShape->vecChildren.size()) {
            TellMisplaced(*parent.pShape, strName, iTag);
            return nullptr;
        }
        if (m_document.bOlder && parent.pShape->strName == TagUtf8::SA_POLICY &&
            strName != TagUtf8::COMPLIANCE_TEMPLATES) {
            return nullptr;  // a section that is not taken, whatever it holds
        }
        const std::uint32_t iBit = std::uint32_t{1} << iChild;
        if (parent.pShape->bChildrenOnce && (parent.iSeen & iBit) != 0) {
            m_document.diagnostics.Add(ECode::CHILD_TWICE, iTag,
                                       {Text::Quoted(strName), Text::Quoted(parent.pShape->strName)});
        }
        parent.iSeen |= iBit;
        return m_shape.Find(strName);
    }

    template <std::size_t SIZE>
    static bool IsOneOf(const SShape& shape, const char* const (&aNames)[SIZE]) {
        return std::find(std::begin(aNames), std::end(aNames), shape.strName) != std::end(aNames);
    }

    void TellMisplaced(const SShape& parent, std::string_view strName, std::size_t iTag) {
        if (parent.strName == TagUtf8::TEMPLATE || parent.strName == TagUtf8::MATCH_RULE) {
            return;  // read all the same, and told of with the rules
        }
        const bool bOfTemplates = IsOneOf(parent, OF_TEMPLATES);
        // An import tells of what else stands there that it was passed over.
        const bool bLost = IsOneOf(parent, OF_ASSETS) || (bOfTemplates && !m_document.bAssetsOnly);
        const ECode eCode = bLost                              ? ECode::LOST_ELEMENT
                            : m_shape.Find(strName) != nullptr ? ECode::MISPLACED_ELEMENT
                                                               : ECode::UNKNOWN_ELEMENT;
        if (!m_document.diagnostics.Count(eCode, iTag)) {
            return;
        }
        const bool bAlike = m_pToldIn == &parent && m_strTold == strName;
        if (!bAlike || !m_document.diagnostics.TellAgain(m_iTold, iTag)) {
            TellElement(eCode, parent, strName, iTag);
        }
        m_pToldIn = &parent;
        m_strTold = strName;
        m_iTold = m_document.diagnostics.CountTold();
    }

    void TellElement(ECode eCode, const SShape& parent, std::string_view strName, std::size_t iTag) {
        std::vector<std::string> vecWhat = {Text::Quoted(strName)};
        std::vector<std::string> vecAdvice;
        if (eCode != ECode::UNKNOWN_ELEMENT) {
            vecWhat.push_back(Text::Quoted(parent.strName));
        }
        if (eCode != ECode::MISPLACED_ELEMENT) {
            const bool bSuggested = eCode == ECode::UNKNOWN_ELEMENT && !IsOneOf(parent, OF_TEMPLATES);
            vecAdvice.push_back(bSuggested ? Suggest(parent, strName, parent.vecChildren) : Advise(parent, strName));
        }
        m_document.diagnostics.Tell(eCode, iTag, vecWhat, vecAdvice);
    }

    std::string Advise(const SShape& parent, std::string_view strName) {
        return AdviseElement(parent.strName, strName, m_meant.Find(parent.strName, strName, parent.vecChildren));
    }

    void CheckAttribute(const SShape& shape, std::string_view strName, std::size_t iOffset) {
        if (CDocumentShape::IndexOf(shape.vecAttributes, strName) != shape.vecAttributes.size()) {
            if (m_document.bOlder && shape.strName == TagUtf8::TEMPLATE && strName == TagUtf8::DISPLAY_NAME) {
                m_document.diagnostics.Add(ECode::OLDER_NAME_LOST, iOffset);
            }
        } else if (const SShape* pOwner = m_shape.FindOwner(strName);
                   pOwner && FindSlip(shape.strName, strName).empty()) {
            m_document.diagnostics.Add(ECode::MISPLACED_ATTRIBUTE, iOffset,
                                       {Text::Quoted(strName), "it belongs to " + Text::Quoted(pOwner->strName)});
        } else if (strName.compare(0, NAMESPACES.size(), NAMESPACES) != 0 &&
                   m_document.diagnostics.Count(ECode::UNKNOWN_ATTRIBUTE, iOffset)) {
            m_document.diagnostics.Tell(ECode::UNKNOWN_ATTRIBUTE, iOffset,
                                        {Text::Quoted(strName), Text::Quoted(shape.strName)},
                                        {Suggest(shape, strName, shape.vecAttributes)});
        }
    }

    std::string Suggest(const SShape& place, std::string_view strName, const std::vector<std::string>& vecNames) {
        const std::string strMeant = m_meant.Find(place.strName, strName, vecNames);
        const char* const pElse = m_meant.IsFull() ? CORRECT : REMOVE;
        return strMeant.empty() ? pElse : "did you mean " + Text::Quoted(strMeant) + '?';
    }

    const SCheckedDocument& m_document;
    CDocumentShape m_shape;
    std::vector<SOpen> m_vecOpen;
    CMeantNames m_meant;
    const SShape* m_pToldIn = nullptr;  ///< where the element stands that was told last
    std::string_view m_strTold;         ///< its name
    std::size_t m_iTold = 0;            ///< how many were told with it
};

}  // namespace

void CheckShape(const SCheckedDocument& document) {
    CShapeCheck(document).Run();
}
