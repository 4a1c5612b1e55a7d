#include "xml/CPolicyDocument.h"

#include <algorithm>
#include <utility>

#include "platform/common/TextConversion.h"

CPolicyDocument::CPolicyDocument(const OS::x_wstring& strText) : m_pWide(&strText) {}

CPolicyDocument::CPolicyDocument(std::string_view strUtf8) : m_strUtf8(strUtf8) {}

CPolicyDocument::CPolicyDocument(CXMLParser&& document)
    : m_document(std::move(document)), m_bLoaded(true), m_bDerived(true) {}

const CXMLParser& CPolicyDocument::Load() {
    if (!m_bLoaded) {
        // What is no character becomes what is no UTF-8, so that it is refused with its place like anything else.
        m_document.Load(m_pWide != nullptr ? OS::Utf8Loose(*m_pWide) : std::string(m_strUtf8),
                        [this](std::string& strText) { m_vecBlanked = BlankUnreadMarkup(strText); });
        m_bLoaded = true;
    }
    return m_document;
}

CXMLParser CPolicyDocument::Take() {
    Load();
    m_bLoaded = false;
    return std::exchange(m_document, CXMLParser());
}

std::size_t CPolicyDocument::CountBlanked(const CXMLView& parent) const {
    const auto itBlanked =
        std::lower_bound(m_vecBlanked.begin(), m_vecBlanked.end(), parent.Offset(),
                         [](const SBlanked& blanked, std::size_t iOffset) { return blanked.iParent < iOffset; });
    const bool bBlanked = itBlanked != m_vecBlanked.end() && itBlanked->iParent == parent.Offset();
    return bBlanked ? itBlanked->iElements : 0;
}

std::size_t CPolicyDocument::GetLength() const {
    if (m_pWide != nullptr) {
        return m_pWide->size();
    }
    if (m_bDerived) {
        std::string strText;
        m_document.SaveUtf8(strText);
        return OS::CountCodePoints(strText);
    }
    return OS::CountCodePoints(m_strUtf8);
}

OS::x_wstring CPolicyDocument::GetText() const {
    if (m_pWide != nullptr) {
        return *m_pWide;
    }
    if (m_bDerived) {
        OS::x_wstring strText;
        m_document.SaveXML(strText);
        return strText;
    }
    return OS::WideLenient(m_strUtf8);
}
