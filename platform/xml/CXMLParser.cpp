#include "platform/xml/CXMLParser.h"

#include <cwchar>
#include <utility>

#include "platform/common/Paths.h"
#include "platform/common/TextConversion.h"
#include "platform/xml/CXMLTree.hpp"
#include "platform/xml/FaultPoint.h"
#include "platform/xml/XMLGate.hpp"
#include "platform/xml/XMLMarkup.hpp"
#include "platform/xml/XMLPath.hpp"
#include "platform/xml/XMLText.hpp"

namespace {

constexpr char NOT_UTF16[] = "declared as UTF-16, which the file is not";

/** Stands for a byte too many, which is as wrong. */
constexpr wchar_t HALF_A_PAIR = 0xD800;

/**
 * UTF-16 of a file, byte order mark included; in UTF-8 it stays the mark, so that one alone is passed over.
 * @return UTF-8, in which a lone surrogate is what no UTF-8 has
 */
std::string FromUtf16(std::string_view strBytes) {
    const std::size_t iHigh = strBytes[0] == '\xFE' ? 0 : 1;
    const auto fnUnit = [strBytes, iHigh](std::size_t i) {
        return static_cast<wchar_t>((static_cast<unsigned char>(strBytes[i + iHigh]) << 8U) |
                                    static_cast<unsigned char>(strBytes[i + 1 - iHigh]));
    };
    std::wstring strText;
    for (std::size_t i = 0; i + 1 < strBytes.size(); i += 2) {
        const wchar_t c = fnUnit(i);
        const bool bPair = c >= 0xD800 && c <= 0xDBFF && i + 3 < strBytes.size();
        const wchar_t cNext = bPair ? fnUnit(i + 2) : 0;
        if (cNext >= 0xDC00 && cNext <= 0xDFFF) {
            strText += static_cast<wchar_t>(0x10000 + ((c - 0xD800) << 10) + (cNext - 0xDC00));
            i += 2;
        } else {
            strText += c;
        }
    }
    if (strBytes.size() % 2 != 0) {
        strText += HALF_A_PAIR;
    }
    return OS::Utf8Loose(strText);
}

bool IsUtf16(std::string_view strBytes) {
    return strBytes.substr(0, 2) == "\xFE\xFF" || strBytes.substr(0, 2) == "\xFF\xFE";
}

std::string ReadFile(const wchar_t* pPath) {
    try {
        return OS::ReadWholeFile(OS::WCharToChar(pPath == nullptr ? L"" : pPath));
    } catch (const OS::CException& error) {
        throw CXMLException(error.GetErrorCode(), error.GetErrorMessage(), error.GetErrorLine());
    }
}

[[noreturn]] void ThrowLoadError(const wchar_t* pPath, const SXMLLoadError& error) {
    const OS::x_wstring strPlace = std::to_wstring(error.iLine) + L":" + std::to_wstring(error.iColumn);
    throw CXMLException(0, std::wstring(pPath) + L":" + strPlace + L": " + OS::WideLenient(error.strMessage),
                        static_cast<int>(error.iLine));
}

}  // namespace

CXMLParser::CXMLParser() = default;

CXMLParser::CXMLParser(const wchar_t* pPath) {
    XML_STEP("CXMLParser");
    std::string strText = ReadFile(pPath);
    const bool bUtf16 = IsUtf16(strText);
    if (bUtf16) {
        strText = FromUtf16(strText);
    }
    const SXMLGateResult result = CheckXml(strText);
    if (result.bDeclaredUtf16 && !bUtf16) {
        ThrowLoadError(pPath, {NOT_UTF16, 0, 1, 1});
    }
    if (result.bWellFormed) {
        m_pTree = CXMLTree::Parse(std::move(strText));
    } else if (!result.bNoElement) {
        ThrowLoadError(pPath, result.error);
    }
}

CXMLParser::CXMLParser(const CXMLParser& other)
    : m_pTree(other.m_pTree == nullptr ? nullptr : other.m_pTree->Clone(other.m_pTree->Document())),
      m_error(other.m_error) {}

CXMLParser& CXMLParser::operator=(const CXMLParser& other) {
    return *this = CXMLParser(other);
}

CXMLParser::CXMLParser(CXMLParser&& other) noexcept = default;

CXMLParser& CXMLParser::operator=(CXMLParser&& other) noexcept = default;

CXMLParser::~CXMLParser() = default;

bool CXMLParser::LoadXML(const wchar_t* pText) {
    return LoadXML(pText, pText == nullptr ? 0 : std::wcslen(pText));
}

bool CXMLParser::LoadXML(const wchar_t* pText, std::size_t iLength) {
    // What is no character becomes what is no UTF-8, so that it is refused with its place like anything else.
    return Load(OS::Utf8Loose(std::wstring_view(pText, iLength)));
}

bool CXMLParser::LoadUtf8(std::string_view strText) {
    return Load(std::string(strText));
}

bool CXMLParser::Load(std::string strText, const std::function<void(std::string&)>& fnEdit) {
    XML_STEP("LoadXML");
    m_pTree.reset();
    SXMLGateResult result = CheckXml(strText);
    m_error = std::move(result.error);
    if (result.bWellFormed) {
        if (fnEdit) {
            fnEdit(strText);
        }
        m_pTree = CXMLTree::Parse(std::move(strText));
    }
    return result.bWellFormed;
}

void CXMLParser::AppendRoot(CXMLParser&& other) {
    XML_STEP("AppendChild");
    other.m_pTree->WrapRoot(*m_pTree);
    m_pTree = std::move(other.m_pTree);
}

void CXMLParser::SetRoot(const OS::CAutoObjPtr<CXMLNode>& pNode) {
    m_pTree->SetRoot(XmlTree::Node(pNode->View().Handle()));
}

bool CXMLParser::SaveXML(OS::x_wstring& strOut) const {
    std::string strText;
    SaveUtf8(strText);
    strOut = OS::WideText(strText);
    return static_cast<bool>(Root());
}

void CXMLParser::SaveUtf8(std::string& strOut) const {
    XML_STEP("SaveXML");
    if (!Root()) {
        return;
    }
    strOut += m_pTree->Declaration();
    for (const pugi::xml_node& node : m_pTree->Document()) {
        if (!m_pTree->IsHolder(node)) {
            XmlMarkup::Append(strOut, *m_pTree, node);
        }
    }
}

OS::CAutoObjPtr<CXMLElement> CXMLParser::GetRootElement() const {
    const CXMLView root = RootView();
    return root ? OS::CAutoObjPtr<CXMLElement>(new CXMLElement(m_pTree, root.Handle())) : nullptr;
}

OS::CAutoObjPtr<CXMLNode> CXMLParser::CreateNode(XMLPARSER_NODETYPE eType, const wchar_t* pName) {
    XML_STEP("CreateNode");
    const std::string strName = OS::Utf8Lenient(pName == nullptr ? L"" : pName);
    const std::string strSubject = "making node \"" + strName + "\"";
    if (eType != XMLPARSER_NODE_ELEMENT) {
        XmlText::Throw(strSubject, "only elements can be made");
    }
    if (!XmlText::IsName(strName)) {
        XmlText::Throw(strSubject, "this is no name");
    }
    if (m_pTree == nullptr) {
        m_pTree = std::make_shared<CXMLTree>();
    }
    const pugi::xml_node element = m_pTree->Create(strName.c_str());
    return OS::CAutoObjPtr<CXMLNode>(new CXMLNode(m_pTree, XmlTree::Handle(element)));
}

OS::CAutoObjPtr<CXMLNode> CXMLParser::XPathSelectSingleNode(const wchar_t* pXPath) const {
    XML_STEP("XPathSelectSingleNode");
    if (XML_FINDS_NOTHING() || !Root()) {
        return nullptr;
    }
    const XmlPath::CHandles vecMatches = XmlPath::Select(*m_pTree, m_pTree->Document(), pXPath, true);
    return vecMatches.empty() ? nullptr : OS::CAutoObjPtr<CXMLNode>(new CXMLNode(m_pTree, vecMatches[0]));
}

OS::CAutoObjPtr<CXMLNodeList> CXMLParser::XPathSelectNodes(const wchar_t* pXPath) const {
    XML_STEP("XPathSelectNodes");
    if (XML_FINDS_NOTHING() || !Root()) {
        return nullptr;
    }
    return OS::CAutoObjPtr<CXMLNodeList>(
        new CXMLNodeList(m_pTree, XmlPath::Select(*m_pTree, m_pTree->Document(), pXPath, false)));
}

CXMLView CXMLParser::RootView() const {
    return XML_FINDS_NOTHING() ? CXMLView() : Root();
}

CXMLView CXMLParser::Root() const {
    return m_pTree == nullptr ? CXMLView() : CXMLView(m_pTree.get(), XmlTree::Handle(m_pTree->Root()));
}
