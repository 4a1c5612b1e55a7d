#include <algorithm>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/Text.h"
#include "cli/check/CheckedDocument.h"
#include "templates/TemplateXml.h"

namespace {

/** Every part is compared with every other. */
constexpr std::size_t MAX_BLOCKS = 256;

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

std::string Describe(const SBlock& block) {
    return std::string(ElementTypeText(block.eType)) + ' ' +
           (block.eType == EElementType::ENTITY ? std::to_string(block.iCount) + ' ' : std::string()) +
           std::string(block.strName);
}

/** @return parts in a text of their own each, without regard to their order where that does not matter */
std::string Join(std::vector<std::string> vecParts, EJoin eJoin) {
    if (eJoin != EJoin::MIXED) {
        std::sort(vecParts.begin(), vecParts.end());
    }
    std::string strJoined(1, eJoin == EJoin::ANY ? '|' : '&');
    for (const std::string& strPart : vecParts) {
        strJoined += std::to_string(strPart.size()) + ':' + strPart;
    }
    return strJoined;
}

class CTemplateRules {
  public:
    CTemplateRules(const SCheckedDocument& document, const CXMLView& element) : m_document(document), m_node(element) {
        for (CXMLView node = element.FirstChild(TagUtf8::MATCH_RULE); node;
             node = node.NextSibling(TagUtf8::MATCH_RULE)) {
            SRule rule{node, TemplateXml::ReadOperation(node), EJoin::ALL, {}, {}};
            for (CXMLView block = node.FirstChild(TagUtf8::BUILDING_BLOCK); block;
                 block = block.NextSibling(TagUtf8::BUILDING_BLOCK)) {
                rule.vecBlocks.push_back(TemplateXml::ReadBuildingBlock(block));
                rule.vecNodes.push_back(block);
                Weigh(rule.vecBlocks.back());
            }
            rule.eJoin = GetJoin(rule.vecBlocks);
            m_vecRules.push_back(std::move(rule));
        }
        m_eJoin = GetJoin(m_vecRules);
    }

    void Check() const {
        if (m_vecRules.empty()) {
            Tell(ECode::TEMPLATE_EMPTY, m_node, "template");
        }
        for (std::size_t i = 0; i < m_vecRules.size(); ++i) {
            CheckRule(i);
        }
        if (m_bPlain && m_iBlocks <= MAX_BLOCKS && m_vecRules.size() <= MAX_BLOCKS) {
            CheckPointless();
        }
    }

    /** @return what the template looks for, equal for equal templates; empty when that cannot be said */
    std::string GetMeaning() const {
        if (!m_bPlain || m_iBlocks == 0) {
            return {};
        }
        std::vector<std::string> vecRules;
        for (const SRule& rule : m_vecRules) {
            std::vector<std::string> vecBlocks;
            for (const SBlock& block : rule.vecBlocks) {
                vecBlocks.push_back(Operation(rule.eJoin, block.eOperator) + Describe(block));
            }
            vecRules.push_back(Operation(m_eJoin, rule.eOperator) + Join(std::move(vecBlocks), rule.eJoin));
        }
        return Join(std::move(vecRules), m_eJoin);
    }

  private:
    void Weigh(const SBlock& block) {
        ++m_iBlocks;
        m_bPlain = m_bPlain && block.eType != EElementType::UNKNOWN && block.eOperator != EOperator::EXCEPT;
    }

    static std::string Operation(EJoin eJoin, EOperator eOperator) {
        return eJoin == EJoin::MIXED ? OperatorText(eOperator) : std::string();
    }

    void Tell(ECode eCode, const CXMLView& node, const std::string& strWhat) const {
        m_document.diagnostics.Add(eCode, node.Offset(), {strWhat});
    }

    void CheckRule(std::size_t iRule) const {
        const SRule& rule = m_vecRules[iRule];
        CheckOperation(rule.node, iRule, rule.eOperator, "rule");
        if (rule.vecBlocks.empty()) {
            Tell(ECode::TEMPLATE_EMPTY, rule.node, "rule");
        }
        for (std::size_t i = 0; i < rule.vecBlocks.size(); ++i) {
            CheckOperation(rule.vecNodes[i], i, rule.vecBlocks[i].eOperator, "building block");
        }
    }

    void CheckOperation(const CXMLView& node, std::size_t iPart, EOperator eOperator, const char* pWhat) const {
        const bool bGiven = !node.Attribute(TagUtf8::OPERATION).empty();
        if (iPart > 0 && !bGiven) {
            Tell(ECode::MISSING_OPERATION, node, pWhat);
        } else if (iPart == 0 && bGiven && eOperator != EOperator::UNKNOWN && eOperator != EOperator::EXCEPT) {
            m_document.diagnostics.Add(ECode::FIRST_OPERATION, m_document.Find(node, TagUtf8::OPERATION).iName,
                                       {pWhat});
        }
    }

    void CheckPointless() const {
        for (const SRule& rule : m_vecRules) {
            for (std::size_t i = 0; i < rule.vecBlocks.size() && rule.eJoin != EJoin::MIXED; ++i) {
                if (const auto iOther = FindStronger(rule.vecBlocks, i, rule.eJoin)) {
                    TellPointless(rule.vecNodes[i], rule.vecNodes[*iOther], "building block", rule.eJoin);
                }
            }
        }
        const bool bComparable =
            m_eJoin != EJoin::MIXED && std::none_of(m_vecRules.begin(), m_vecRules.end(), [](const SRule& rule) {
                return rule.eJoin == EJoin::MIXED || rule.vecBlocks.empty();
            });
        for (std::size_t i = 0; i < m_vecRules.size() && bComparable; ++i) {
            if (const auto iOther = FindStronger(m_vecRules, i, m_eJoin)) {
                TellPointless(m_vecRules[i].node, m_vecRules[*iOther].node, "rule", m_eJoin);
            }
        }
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
    std::size_t m_iBlocks = 0;
    bool m_bPlain = true;  ///< types and operations are such as are taken
};

}  // namespace

void CheckRules(const SCheckedDocument& document) {
    std::unordered_map<std::string, CXMLView> mapMeanings;
    document.ForEachTemplate([&](const CXMLView& element) {
        const CTemplateRules rules(document, element);
        rules.Check();
        const std::string strMeaning = rules.GetMeaning();
        if (strMeaning.empty()) {
            return;
        }
        const auto [itFirst, bNew] = mapMeanings.try_emplace(strMeaning, element);
        if (!bNew) {
            document.diagnostics.Relate(
                document.diagnostics.Add(ECode::SAME_TEMPLATE, element.Offset(),
                                         {Text::Quoted(element.Attribute(TagUtf8::NAME)),
                                          Text::Quoted(itFirst->second.Attribute(TagUtf8::NAME))}),
                itFirst->second.Offset(), "the other one is here");
        }
    });
}
