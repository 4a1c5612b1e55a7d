#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "cli/check/ItemDiagnostics.h"
#include "cli/compare/NeedlessParts.h"
#include "cli/compare/OperatorOrder.h"
#include "cli/compare/RuleText.h"
#include "cli/compare/TruthTable.h"
#include "templates/TemplateReport.h"
#include "templates/TemplateXml.h"

namespace {

/** Every part is compared with every other. */
constexpr std::size_t MAX_BLOCKS = 256;

constexpr const char NEEDLESS[] = "without it the same is matched";

using SBlock = TemplateXml::SBuildingBlock;

/** How the parts of a whole are joined. */
enum class EJoin { ALL, ANY, MIXED };

struct SRule {
    CXMLView node;
    EOperator eOperator = EOperator::UNKNOWN;
    EJoin eJoin = EJoin::ALL;
    std::vector<SBlock> vecBlocks;
    std::vector<CXMLView> vecNodes;
};

/** A missing operation counts as AND; that of the first part is ignored. */
template <class Parts>
EJoin GetJoin(const Parts& parts) {
    bool bAnd = false;
    bool bOr = false;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        (parts[i].eOperator == EOperator::OR ? bOr : bAnd) = true;
    }
    return bAnd && bOr ? EJoin::MIXED : bOr ? EJoin::ANY : EJoin::ALL;
}

/** Whether parts are joined by AND and by OR in so many words. */
class CMix {
  public:
    void Add(EOperator eOperator) {
        m_bAnd = m_bAnd || (m_bAny && eOperator == EOperator::AND);
        m_bOr = m_bOr || (m_bAny && eOperator == EOperator::OR);
        m_bAny = true;
    }
    bool IsMixed() const { return m_bAnd && m_bOr; }

  private:
    bool m_bAny = false;
    bool m_bAnd = false;
    bool m_bOr = false;
};

template <class Parts>
bool AreMixed(const Parts& parts) {
    CMix mix;
    std::for_each(parts.begin(), parts.end(), [&](const auto& part) { mix.Add(part.eOperator); });
    return mix.IsMixed();
}

bool Implies(const SBlock& left, const SBlock& right) {
    return left.eType == right.eType && left.strName == right.strName &&
           (left.eType != EElementType::ENTITY || left.iCount >= right.iCount);
}

/** @return whether the right rule matches wherever the left one does, as far as single blocks tell */
bool Implies(const SRule& left, const SRule& right) {
    const auto fnAny = [](const std::vector<SBlock>& vecBlocks, const auto& fn) {
        return std::any_of(vecBlocks.begin(), vecBlocks.end(), fn);
    };
    const auto fnAll = [](const std::vector<SBlock>& vecBlocks, const auto& fn) {
        return std::all_of(vecBlocks.begin(), vecBlocks.end(), fn);
    };
    const auto fnRightFollows = [&](const SBlock& from) {
        const auto fnFollows = [&](const SBlock& to) { return Implies(from, to); };
        return right.eJoin == EJoin::ALL ? fnAll(right.vecBlocks, fnFollows) : fnAny(right.vecBlocks, fnFollows);
    };
    if (left.eJoin == EJoin::ANY) {
        return fnAll(left.vecBlocks, fnRightFollows);
    }
    if (right.eJoin == EJoin::ANY) {
        return fnAny(left.vecBlocks, fnRightFollows);
    }
    return fnAll(right.vecBlocks, [&](const SBlock& to) {
        return fnAny(left.vecBlocks, [&](const SBlock& from) { return Implies(from, to); });
    });
}

/** @return the part that makes the i-th one pointless; of two that say the same the earlier one stays */
template <class Parts>
std::optional<std::size_t> FindStronger(const Parts& parts, std::size_t i, EJoin eJoin) {
    for (std::size_t j = 0; j < parts.size(); ++j) {
        // Of alternatives the narrower one is pointless, of conditions the wider one.
        const bool bForth = eJoin == EJoin::ANY ? Implies(parts[i], parts[j]) : Implies(parts[j], parts[i]);
        const bool bBack = eJoin == EJoin::ANY ? Implies(parts[j], parts[i]) : Implies(parts[i], parts[j]);
        if (j != i && bForth && (!bBack || j < i)) {
            return j;
        }
    }
    return std::nullopt;
}

/** One template's rules, as they are read: whatever the elements are called. */
class CTemplateRules {
  public:
    CTemplateRules(const SCheckedDocument& document, const CXMLView& element) : m_document(document), m_node(element) {}

    void Check() {
        TellForeign(m_node, m_document.diagnostics);
        if (!m_node.FirstChild() && !m_document.HasErrors(m_node)) {
            Tell(ECode::TEMPLATE_EMPTY, m_node, "template");
        }
        for (CXMLView node = m_node.FirstChild(); node; node = node.NextSibling()) {
            CheckRule(node);
        }
        if (m_document.HasErrors(m_node)) {
            return;
        }
        if (m_bMixed) {
            TellMixed();
        }
        if (!m_bPlain || !IsSmall()) {
            return;
        }
        m_eJoin = GetJoin(m_vecRules);
        CheckPointless();
        if (m_iBlocks <= CTruthTable::MAX_CONDITIONS) {
            CheckMixed();
        }
    }

  private:
    void Weigh(const SBlock& block) {
        ++m_iBlocks;
        const bool bHits = block.eType != EElementType::ENTITY || block.iCount > 0;
        m_bPlain = m_bPlain && bHits && block.eType != EElementType::UNKNOWN && block.eOperator != EOperator::EXCEPT;
    }

    void Tell(ECode eCode, const CXMLView& node, const std::string& strWhat) const {
        m_document.diagnostics.Add(eCode, node.Offset(), {strWhat});
    }

    /** There may be millions of rules and blocks: of more than are compared with each other none is kept. */
    bool IsSmall() const { return m_iBlocks <= MAX_BLOCKS && m_iRules <= MAX_BLOCKS; }

    void CheckRule(const CXMLView& node) {
        SRule rule{node, TemplateXml::ReadOperation(node), EJoin::ALL, {}, {}};
        CheckOperation(node, m_iRules, rule.eOperator, "rule");
        m_mix.Add(rule.eOperator);
        ++m_iRules;
        const bool bDropped = m_document.diagnostics.HasErrors(m_node.Offset(), m_node.Offset() + 1);
        if (!node.FirstChild() && node.Name() == TagUtf8::MATCH_RULE && !bDropped) {
            Tell(ECode::TEMPLATE_EMPTY, node, "rule");
        }
        CMix mix;
        std::size_t iBlock = 0;
        for (CXMLView child = node.FirstChild(); child; child = child.NextSibling()) {
            const SBlock block = TemplateXml::ReadBuildingBlock(child);
            CheckOperation(child, iBlock++, block.eOperator, "building block");
            mix.Add(block.eOperator);
            Weigh(block);
            if (IsSmall()) {
                rule.vecBlocks.push_back(block);
                rule.vecNodes.push_back(child);
            }
        }
        m_bMixed = m_bMixed || mix.IsMixed() || m_mix.IsMixed();
        if (IsSmall()) {
            rule.eJoin = GetJoin(rule.vecBlocks);
            m_vecRules.push_back(std::move(rule));
        }
    }

    void CheckOperation(const CXMLView& node, std::size_t iPart, EOperator eOperator, const char* pWhat) const {
        const bool bGiven = !node.Attribute(TagUtf8::OPERATION).empty();
        const bool bForeign = node.Name() != TagUtf8::MATCH_RULE && node.Name() != TagUtf8::BUILDING_BLOCK;
        if (bForeign) {
            return;  // that it is read at all is what is told of it
        }
        if (iPart > 0 && !bGiven) {
            Tell(ECode::MISSING_OPERATION, node, pWhat);
        } else if (iPart == 0 && bGiven && eOperator != EOperator::UNKNOWN && eOperator != EOperator::EXCEPT) {
            m_document.diagnostics.Add(ECode::FIRST_OPERATION, m_document.Find(node, TagUtf8::OPERATION).iName,
                                       {pWhat});
        }
    }

    void TellMixed() const {
        const std::vector<SMatchRule> vecRules = TemplateReport::ReadRules(m_node);
        if (AreMixed(vecRules)) {
            TellOrder(m_node, CompareOrders(vecRules), "rules of the template");
        }
        CXMLView node = m_node.FirstChild();
        for (const SMatchRule& rule : vecRules) {
            if (AreMixed(rule.vecElements)) {
                TellOrder(node, CompareOrders(rule), "building blocks of the rule");
            }
            node = node.NextSibling();
        }
    }

    void TellOrder(const CXMLView& node, const SOperatorOrder& order, const char* pWhat) const {
        if (!order.bMatters) {
            return;
        }
        std::string strExample;
        for (const SCondition& condition : order.example.value_or(std::vector<SCondition>())) {
            strExample += (strExample.empty() ? ": if AND went first, content with " : ", ") +
                          Text::Printable(FormatCondition(condition));
        }
        strExample += strExample.empty() ? "" : " alone would match as well";
        m_document.diagnostics.Add(ECode::MIXED_OPERATIONS, node.Offset(), {pWhat, strExample});
    }

    void CheckPointless() const {
        for (const SRule& rule : m_vecRules) {
            for (std::size_t i = 0; i < rule.vecBlocks.size() && rule.eJoin != EJoin::MIXED; ++i) {
                if (const auto iOther = FindStronger(rule.vecBlocks, i, rule.eJoin)) {
                    TellPointless(rule.vecNodes[i], rule.vecNodes[*iOther], "building block", rule.eJoin);
                }
            }
        }
        const bool bComparable = AreComparable();
        for (std::size_t i = 0; i < m_vecRules.size() && bComparable; ++i) {
            if (const auto iOther = FindStronger(m_vecRules, i, m_eJoin)) {
                TellPointless(m_vecRules[i].node, m_vecRules[*iOther].node, "rule", m_eJoin);
            }
        }
    }

    bool AreComparable() const {
        return m_eJoin != EJoin::MIXED && std::none_of(m_vecRules.begin(), m_vecRules.end(), [](const SRule& rule) {
                   return rule.eJoin == EJoin::MIXED || rule.vecBlocks.empty();
               });
    }

    /** What cannot be compared part by part is tried without each. */
    void CheckMixed() const {
        if (AreComparable()) {
            return;
        }
        const SNeedlessParts needless = FindNeedlessParts(TemplateReport::ReadRules(m_node));
        for (const std::size_t iRule : needless.vecRules) {
            TellNeedless(m_vecRules[iRule].node, "rule");
        }
        for (std::size_t i = 0; i < m_vecRules.size(); ++i) {
            for (const std::size_t iBlock : needless.vecElements[i]) {
                if (m_vecRules[i].eJoin == EJoin::MIXED) {
                    TellNeedless(m_vecRules[i].vecNodes[iBlock], "building block");
                }
            }
        }
    }

    void TellNeedless(const CXMLView& node, const char* pWhat) const {
        m_document.diagnostics.Add(ECode::RULE_POINTLESS, node.Offset(), {pWhat, NEEDLESS});
    }

    void TellPointless(const CXMLView& node, const CXMLView& other, const char* pWhat, EJoin eJoin) const {
        const std::string strWhy =
            eJoin == EJoin::ANY ? "another one matches wherever it does" : "it matches wherever another one does";
        m_document.diagnostics.Relate(m_document.diagnostics.Add(ECode::RULE_POINTLESS, node.Offset(), {pWhat, strWhy}),
                                      other.Offset(), "the other one is here");
    }

    const SCheckedDocument& m_document;
    CXMLView m_node;
    std::vector<SRule> m_vecRules;
    EJoin m_eJoin = EJoin::ALL;
    CMix m_mix;
    bool m_bMixed = false;  ///< the rules, or the blocks of one
    std::size_t m_iRules = 0;
    std::size_t m_iBlocks = 0;
    bool m_bPlain = true;  ///< types and operations are such as are taken, and it is known what each block matches
};

}  // namespace

void CheckRules(const SCheckedDocument& document) {
    document.ForEachTemplate([&](const CXMLView& element) { CTemplateRules(document, element).Check(); });
}
