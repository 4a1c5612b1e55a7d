#include "cli/layout/Conversion.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "cli/Signals.h"
#include "cli/check/SourceMarkup.h"
#include "cli/layout/MarkupReader.h"
#include "platform/common/TextHash.h"
#include "templates/DLPXmlNormalizer.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"

namespace {

constexpr std::size_t NONE = static_cast<std::size_t>(-1);
constexpr auto& OLDER_NAME = CDLPXmlNormalizer::OLDER_DISPLAY_NAME;

/** What a piece that is no tag is called. */
EChanged Leaf(EPiece ePiece) {
    return ePiece == EPiece::COMMENT       ? EChanged::COMMENT
           : ePiece == EPiece::INSTRUCTION ? EChanged::INSTRUCTION
                                           : EChanged::TEXT;
}

/** @return the next element of a tree in document order below top; null after the last */
CXMLView NextElement(CXMLView element, const CXMLView& top) {
    if (const CXMLView child = element.FirstChild()) {
        return child;
    }
    while (element.Handle() != top.Handle()) {
        if (const CXMLView sibling = element.NextSibling()) {
            return sibling;
        }
        element = element.Parent();
    }
    return CXMLView();
}

class CLayoutComparison {
  public:
    CLayoutComparison(std::string_view strText, CPolicyDocument& document, const CXMLParser& converted)
        : m_strText(strText), m_document(document), m_converted(converted) {}

    SLayoutChanges Run() {
        const CXMLView root = m_document.Load().RootView();
        const CXMLView result = m_converted.RootView();
        CompareAttributes(root, result);
        CompareSections(root, result.FirstChild(TagUtf8::COMPLIANCE_TEMPLATES));
        FindLeaves();
        const auto fnBefore = [](const SLayoutChange& left, const SLayoutChange& right) {
            return left.iOffset < right.iOffset;
        };
        auto& vecKept = m_changes.vecKept;
        if (!std::is_sorted(vecKept.begin(), vecKept.end(), fnBefore)) {  // sorting takes as much memory again
            std::stable_sort(vecKept.begin(), vecKept.end(), fnBefore);
        }
        return std::move(m_changes);
    }

  private:
    using Attributes = std::vector<std::pair<std::string_view, std::string_view>>;

    /** @return the change for the rest to be filled in, which counts even when it is not kept */
    SLayoutChange& Add(EChange eChange, EChanged eChanged, std::string_view strElement, std::size_t iOffset) {
        ++m_changes.aCounts[static_cast<std::size_t>(eChange)];
        m_changes.bLoss = m_changes.bLoss || (eChange == EChange::DROPPED &&
                                              (eChanged == EChanged::ELEMENT || eChanged == EChanged::TEXT));
        const bool bKept = m_changes.vecKept.size() < SLayoutChanges::MAX_KEPT;
        SLayoutChange& change = bKept ? m_changes.vecKept.emplace_back() : m_omitted;
        change.eChange = eChange;
        change.eChanged = eChanged;
        change.strElement = strElement;
        change.strTemplate = m_strTemplate;
        change.iOffset = iOffset;
        return change;
    }

    void CompareSections(const CXMLView& root, const CXMLView& result) {
        CXMLView converted = result.FirstChild();
        for (CXMLView section = root.FirstChild(); section; section = section.NextSibling()) {
            if (section.Name() != TagUtf8::COMPLIANCE_TEMPLATES) {
                DropElement(root, section);
                continue;
            }
            CompareAttributes(section, result);
            for (CXMLView child = section.FirstChild(); child; child = child.NextSibling()) {
                Signals::ThrowIfCaught();
                // The result holds what it has carried over in the order of the document.
                if (converted && converted.Offset() == child.Offset()) {
                    CompareTemplates(child, converted);
                    converted = converted.NextSibling();
                } else {
                    DropElement(section, child);
                }
            }
            CountBlanked(section);
        }
        CountBlanked(root);
    }

    /** Unknown elements that are told of by their number alone. */
    void CountBlanked(const CXMLView& parent) {
        static_assert(MAX_UNKNOWN_KEPT >= SLayoutChanges::MAX_KEPT, "what is kept is in the tree");
        m_changes.aCounts[static_cast<std::size_t>(EChange::DROPPED)] += m_document.CountBlanked(parent);
    }

    void DropElement(const CXMLView& parent, const CXMLView& element) {
        SLayoutChange& change = Add(EChange::DROPPED, EChanged::ELEMENT, parent.Name(), element.Offset());
        change.strName = element.Name();
        if (element.HasAttribute(TagUtf8::NAME)) {
            change.from = element.Attribute(TagUtf8::NAME);
        }
    }

    /** The elements of both are the same, only their attributes may differ. */
    void CompareTemplates(const CXMLView& before, const CXMLView& after) {
        m_strTemplate = after.Attribute(TagUtf8::NAME);
        CXMLView left = before;
        for (CXMLView right = after; left && right; right = NextElement(right, after)) {
            CompareAttributes(left, right);
            left = NextElement(left, before);
        }
        m_strTemplate.clear();
    }

    void CompareAttributes(const CXMLView& before, const CXMLView& after) {
        const Attributes vecBefore = before.Attributes();
        const Attributes vecAfter = after.Attributes();
        if (vecBefore == vecAfter) {
            return;
        }
        const std::vector<std::size_t> vecPartners = Pair(vecBefore, vecAfter);
        std::vector<bool> vecNew(vecAfter.size(), true);
        const std::size_t iRenamed = FindRenamed(before, vecAfter);
        const bool bRenamed = iRenamed != NONE;
        CTagScanner tag(m_strText, before.Offset());
        for (std::size_t i = 0; i < vecBefore.size(); ++i) {
            const auto& [strName, strValue] = vecBefore[i];
            tag.Next();
            if (bRenamed && strName == OLDER_NAME) {
                vecNew[iRenamed] = false;
                AddValues(EChange::RENAMED, before, tag.GetNameOffset(), strName, strName, TagUtf8::DISPLAY_NAME);
            } else if (vecPartners[i] == NONE || vecPartners[i] == iRenamed) {
                AddValues(EChange::DROPPED, before, tag.GetNameOffset(), strName, strValue, std::nullopt);
            } else {
                vecNew[vecPartners[i]] = false;
                if (vecAfter[vecPartners[i]].second != strValue) {
                    Replace(before, tag.GetNameOffset(), strName, strValue, vecAfter[vecPartners[i]].second);
                }
            }
        }
        for (std::size_t i = 0; i < vecAfter.size(); ++i) {
            if (vecNew[i]) {
                AddValues(EChange::SET, before, before.Offset(), vecAfter[i].first, std::nullopt, vecAfter[i].second);
            }
        }
    }

    /** @return which attribute the older display name became; NONE when it has none, or kept it */
    static std::size_t FindRenamed(const CXMLView& before, const Attributes& vecAfter) {
        std::size_t iRenamed = NONE;
        for (std::size_t i = 0; i < vecAfter.size() && before.HasAttribute(OLDER_NAME); ++i) {
            if (vecAfter[i].first == OLDER_NAME) {
                return NONE;
            }
            iRenamed = vecAfter[i].first == TagUtf8::DISPLAY_NAME ? i : iRenamed;
        }
        return iRenamed;
    }

    /**
     * Most attributes stand in the same order; a table of the names of a million takes much time and memory.
     * @return for each attribute the one of its name on the other side, or NONE
     */
    static std::vector<std::size_t> Pair(const Attributes& vecBefore, const Attributes& vecAfter) {
        std::vector<std::size_t> vecPartners(vecBefore.size(), NONE);
        OS::TextMap<std::string_view, std::size_t> mapRest;
        std::size_t iAfter = 0;
        for (std::size_t i = 0; i < vecBefore.size(); ++i) {
            const auto fnIsNext = [&](std::size_t iNext) {
                return iNext < vecAfter.size() && vecAfter[iNext].first == vecBefore[i].first;
            };
            if (!fnIsNext(iAfter) && fnIsNext(iAfter + 1)) {
                mapRest.emplace(vecAfter[iAfter].first, iAfter);
                ++iAfter;
            }
            if (fnIsNext(iAfter)) {
                vecPartners[i] = iAfter++;
            }
        }
        for (; iAfter < vecAfter.size(); ++iAfter) {
            mapRest.emplace(vecAfter[iAfter].first, iAfter);
        }
        for (std::size_t i = 0; i < vecBefore.size() && !mapRest.empty(); ++i) {
            const auto itRest = vecPartners[i] == NONE ? mapRest.find(vecBefore[i].first) : mapRest.end();
            vecPartners[i] = itRest == mapRest.end() ? vecPartners[i] : itRest->second;
        }
        return vecPartners;
    }

    SLayoutChange& AddValues(EChange eChange, const CXMLView& element, std::size_t iOffset, std::string_view strName,
                             std::optional<std::string_view> from, std::optional<std::string_view> to) {
        SLayoutChange& change = Add(eChange, EChanged::ATTRIBUTE, element.Name(), iOffset);
        change.strName = strName;
        change.from = from;
        change.to = to;
        return change;
    }

    void Replace(const CXMLView& element, std::size_t iOffset, std::string_view strName, std::string_view strBefore,
                 std::string_view strAfter) {
        const bool bReference = strName == TagUtf8::SOURCE_NAME;
        AddValues(bReference ? EChange::RENAMED : EChange::SET, element, iOffset, strName, strBefore, strAfter)
            .eChanged = bReference ? EChanged::REFERENCE : EChanged::ATTRIBUTE;
    }

    /** Comments, instructions and text outside what is carried over or dropped as a whole. */
    void FindLeaves() {
        constexpr std::size_t SECTION_DEPTH = 2;
        std::vector<std::string_view> vecOpen;
        CMarkupReader reader(m_strText);
        for (SPiece piece; reader.Next(piece);) {
            if (piece.ePiece == EPiece::START) {
                vecOpen.push_back(piece.GetElement());
            } else if (piece.ePiece == EPiece::END) {
                vecOpen.pop_back();
            } else if (piece.ePiece != EPiece::EMPTY && !piece.IsBlank() && !piece.IsDeclaration() &&
                       (vecOpen.size() < SECTION_DEPTH ||
                        (vecOpen.size() == SECTION_DEPTH && vecOpen.back() == TagUtf8::COMPLIANCE_TEMPLATES))) {
                const std::string_view strParent = vecOpen.empty() ? std::string_view() : vecOpen.back();
                const std::size_t iOffset = piece.ePiece == EPiece::TEXT ? piece.GetWordOffset() : piece.iOffset;
                Add(EChange::DROPPED, Leaf(piece.ePiece), strParent, iOffset).from = piece.strText;
            }
        }
    }

    std::string_view m_strText;
    CPolicyDocument& m_document;
    const CXMLParser& m_converted;
    SLayoutChanges m_changes;
    SLayoutChange m_omitted;
    std::string m_strTemplate;
};

}  // namespace

std::size_t SLayoutChanges::CountOmitted() const {
    return std::accumulate(aCounts.begin(), aCounts.end(), std::size_t{0}) - vecKept.size();
}

SLayoutChanges FindLayoutChanges(std::string_view strText, CPolicyDocument& document, const CXMLParser& converted) {
    return CLayoutComparison(strText, document, converted).Run();
}
