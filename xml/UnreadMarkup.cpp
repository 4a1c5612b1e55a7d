#include "xml/UnreadMarkup.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

#include "xml/Vocabulary.h"

namespace {

/** Elements that hold items or categories, the document itself, and all others. */
enum EHolder : unsigned char { DOCUMENT, ROOT, ASSETS, TEMPLATES, INDUSTRIES, INDUSTRY, REGIONS, REGION, OTHER };

/** What is known in a holder, and what it holds itself. */
struct SKnown {
    EHolder eIn;
    const char* pElement;  ///< null: any
    EHolder eHolder;
};
constexpr SKnown KNOWN[] = {
    {DOCUMENT, nullptr, ROOT},
    {ROOT, TagUtf8::DIGITAL_ASSETS, ASSETS},
    {ROOT, TagUtf8::COMPLIANCE_TEMPLATES, TEMPLATES},
    {ROOT, TagUtf8::INDUSTRIES, INDUSTRIES},
    {ROOT, TagUtf8::REGIONS, REGIONS},
    {ASSETS, TagUtf8::ENTITY, OTHER},
    {ASSETS, TagUtf8::DICTIONARY, OTHER},
    {TEMPLATES, TagUtf8::TEMPLATE, OTHER},
    {INDUSTRIES, TagUtf8::INDUSTRY, INDUSTRY},
    {INDUSTRY, TagUtf8::TEMPLATE_ID, OTHER},
    {REGIONS, TagUtf8::REGION, REGION},
    {REGION, TagUtf8::TEMPLATE_ID, OTHER},
};

/** What stands between two tags, or is one. */
struct SLeaf {
    std::string_view strStart;
    std::string_view strEnd;
};
constexpr SLeaf LEAVES[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};

constexpr char BLANK = ' ';

/** Below one tag or the like in so many bytes the tree is small, and the walk would cost more than it saves. */
constexpr std::size_t DENSE = 12;

bool IsDense(std::string_view strText) {
    constexpr std::size_t BLOCK =
        128;  // what a byte can count, and a length known beforehand: many are counted at once
    const std::size_t iLength = strText.size();
    std::size_t iTags = 0;
    for (; strText.size() >= BLOCK; strText.remove_prefix(BLOCK)) {
        unsigned char iInBlock = 0;
        for (std::size_t i = 0; i < BLOCK; ++i) {
            iInBlock = static_cast<unsigned char>(iInBlock + (strText[i] == '<' ? 1 : 0));
        }
        iTags += iInBlock;
    }
    iTags += static_cast<std::size_t>(std::count(strText.begin(), strText.end(), '<'));
    return iTags > 0 && iLength / iTags < DENSE;
}

class CBlanker {
  public:
    CBlanker(std::string& strText, std::size_t iKept) : m_strText(strText), m_iKept(iKept) {}

    std::vector<SBlanked> Run() {
        m_vecOpen.push_back({DOCUMENT});
        while (m_iNext < m_strText.size()) {
            if (m_strText[m_iNext] != '<') {
                Pass(std::min(m_strText.find('<', m_iNext), m_strText.size()));
            } else if (!PassLeaf()) {
                m_strText[m_iNext + 1] == '/' ? PassEnd() : PassStart();
            }
        }
        std::sort(m_vecBlanked.begin(), m_vecBlanked.end(),
                  [](const SBlanked& left, const SBlanked& right) { return left.iParent < right.iParent; });
        return std::move(m_vecBlanked);
    }

  private:
    struct SOpen {
        EHolder eHolder;
        bool bBlankTags = false;  ///< its own, its content as well
        bool bBlankContent = false;
        bool bAfterKnown = false;  ///< the last child was a known one
        SBlanked blanked{};
    };

    /** What is neither a known element nor in one goes. */
    void Pass(std::size_t iEnd) {
        if (m_vecOpen.back().eHolder != OTHER || m_vecOpen.back().bBlankContent) {
            Blank(iEnd);
        }
        m_iNext = iEnd;
    }

    void Blank(std::size_t iEnd) {
        std::fill(m_strText.begin() + static_cast<std::ptrdiff_t>(m_iNext),
                  m_strText.begin() + static_cast<std::ptrdiff_t>(iEnd), BLANK);
    }

    bool IsAt(std::string_view strStart) const { return m_strText.compare(m_iNext, strStart.size(), strStart) == 0; }

    bool PassLeaf() {
        for (const auto& [strStart, strEnd] : LEAVES) {
            if (IsAt(strStart)) {
                const std::size_t iEnd = m_strText.find(strEnd, m_iNext + strStart.size()) + strEnd.size();
                Pass(iEnd);
                return true;
            }
        }
        return false;
    }

    void PassEnd() {
        const std::size_t iEnd = m_strText.find('>', m_iNext) + 1;
        Close(m_vecOpen.back());
        if (m_vecOpen.back().bBlankTags) {
            Blank(iEnd);
        }
        m_vecOpen.pop_back();
        m_iNext = iEnd;
    }

    void Close(const SOpen& open) {
        if (open.blanked.iElements > 0) {
            m_vecBlanked.push_back(open.blanked);
        }
    }

    void PassStart() {
        const std::size_t iEnd = FindTagEnd();
        const bool bEmpty = m_strText[iEnd - 2] == '/';
        const SOpen child = Judge(m_vecOpen.back());
        if (child.bBlankTags) {
            Blank(iEnd);
        }
        if (!bEmpty) {
            m_vecOpen.push_back(child);
        }
        m_iNext = iEnd;
    }

    SOpen Judge(SOpen& parent) {
        SOpen child{OTHER};
        child.blanked.iParent = m_iNext;
        if (parent.eHolder == OTHER) {
            child.bBlankTags = child.bBlankContent = parent.bBlankContent;
        } else if (const SKnown* pKnown = FindKnown(parent.eHolder)) {
            child.eHolder = pKnown->eHolder;
            parent.bAfterKnown = true;
        } else {
            child.bBlankContent = true;
            child.bBlankTags = m_aKept[parent.eHolder] >= m_iKept && !parent.bAfterKnown;
            m_aKept[parent.eHolder] += child.bBlankTags ? 0 : 1;
            parent.blanked.iElements += child.bBlankTags ? 1 : 0;
            parent.bAfterKnown = false;
        }
        return child;
    }

    const SKnown* FindKnown(EHolder eHolder) const {
        const std::size_t iName = m_iNext + 1;
        const std::string_view strName =
            std::string_view(m_strText).substr(iName, m_strText.find_first_of(" \t\r\n/>", iName) - iName);
        const auto pKnown = std::find_if(std::begin(KNOWN), std::end(KNOWN), [&](const SKnown& known) {
            return known.eIn == eHolder && (known.pElement == nullptr || known.pElement == strName);
        });
        return pKnown == std::end(KNOWN) ? nullptr : pKnown;
    }

    /** Values may hold ">". @return the offset behind the tag */
    std::size_t FindTagEnd() const {
        std::size_t i = m_strText.find_first_of("\"'>", m_iNext);
        while (m_strText[i] != '>') {
            i = m_strText.find_first_of("\"'>", m_strText.find(m_strText[i], i + 1) + 1);
        }
        return i + 1;
    }

    std::string& m_strText;
    std::size_t m_iKept;
    std::size_t m_iNext = 0;
    std::vector<SOpen> m_vecOpen;
    std::array<std::size_t, OTHER> m_aKept{};
    std::vector<SBlanked> m_vecBlanked;
};

}  // namespace

std::vector<SBlanked> BlankUnreadMarkup(std::string& strText, std::size_t iKept) {
    return IsDense(strText) ? CBlanker(strText, iKept).Run() : std::vector<SBlanked>();
}
