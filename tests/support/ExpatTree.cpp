#include "tests/support/ExpatTree.h"

#include <expat.h>

#include <algorithm>
#include <regex>

namespace {

struct SReader {
    std::vector<SExpatNode> vecOpen{1};  ///< the first stands for the document
    bool bInCdata = false;
    XML_Parser parser = nullptr;
};

SReader& Reader(void* pReader) {
    return *static_cast<SReader*>(pReader);
}

void OnStart(void* pReader, const XML_Char* pName, const XML_Char** apAttributes) {
    SExpatNode node;
    node.strName = pName;
    for (; *apAttributes != nullptr; apAttributes += 2) {
        node.vecAttributes.emplace_back(apAttributes[0], apAttributes[1]);
    }
    Reader(pReader).vecOpen.push_back(std::move(node));
}

void OnEnd(void* pReader, const XML_Char*) {
    std::vector<SExpatNode>& vecOpen = Reader(pReader).vecOpen;
    SExpatNode node = std::move(vecOpen.back());
    vecOpen.pop_back();
    vecOpen.back().vecChildren.push_back(std::move(node));
}

void Add(void* pReader, SExpatNode::EKind eKind, std::string strName, std::string strValue) {
    Reader(pReader).vecOpen.back().vecChildren.push_back({eKind, std::move(strName), std::move(strValue), {}, {}});
}

void OnText(void* pReader, const XML_Char* pText, int iLength) {
    const auto eKind = Reader(pReader).bInCdata ? SExpatNode::CDATA : SExpatNode::TEXT;
    std::vector<SExpatNode>& vecSiblings = Reader(pReader).vecOpen.back().vecChildren;
    if (vecSiblings.empty() || vecSiblings.back().eKind != eKind) {
        Add(pReader, eKind, "", "");
    }
    vecSiblings.back().strValue.append(pText, static_cast<std::size_t>(iLength));
}

void OnCdataStart(void* pReader) {
    Reader(pReader).bInCdata = true;
    Add(pReader, SExpatNode::CDATA, "", "");
}

void OnCdataEnd(void* pReader) {
    Reader(pReader).bInCdata = false;
}

void OnComment(void* pReader, const XML_Char* pText) {
    Add(pReader, SExpatNode::COMMENT, "", pText);
}

/** The engine takes every version. */
void OnDeclaration(void* pReader, const XML_Char* pVersion, const XML_Char*, int) {
    static const std::regex s_version("1\\.[0-9]+");
    if (!std::regex_match(pVersion, s_version)) {
        XML_StopParser(static_cast<SReader*>(pReader)->parser, XML_FALSE);
    }
}

void OnInstruction(void* pReader, const XML_Char* pTarget, const XML_Char* pText) {
    Add(pReader, SExpatNode::INSTRUCTION, pTarget, pText);
}

bool IsBlank(const std::string& strText) {
    return strText.find_first_not_of(" \t\r\n") == std::string::npos;
}

}  // namespace

bool ReadWithExpat(std::string_view strText, SExpatNode& root) {
    SReader reader;
    const XML_Parser parser = reader.parser = XML_ParserCreate("UTF-8");
    XML_SetUserData(parser, &reader);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    XML_SetCdataSectionHandler(parser, OnCdataStart, OnCdataEnd);
    XML_SetCommentHandler(parser, OnComment);
    XML_SetProcessingInstructionHandler(parser, OnInstruction);
    XML_SetXmlDeclHandler(parser, OnDeclaration);
    const bool bRead = XML_Parse(parser, strText.data(), static_cast<int>(strText.size()), 1) == XML_STATUS_OK;
    XML_ParserFree(parser);
    for (const SExpatNode& node : reader.vecOpen.front().vecChildren) {
        if (node.eKind == SExpatNode::ELEMENT) {
            root = node;
        }
    }
    return bRead;
}

std::size_t FindTwiceWithExpat(std::string_view strText) {
    const XML_Parser parser = XML_ParserCreate("UTF-8");
    XML_Parse(parser, strText.data(), static_cast<int>(strText.size()), 1);
    const bool bTwice = XML_GetErrorCode(parser) == XML_ERROR_DUPLICATE_ATTRIBUTE;
    const auto iOffset = static_cast<std::size_t>(XML_GetCurrentByteIndex(parser));
    XML_ParserFree(parser);
    return bTwice ? iOffset : std::string::npos;
}

void DropBlanksBetweenElements(SExpatNode& node) {
    using E = SExpatNode;
    std::vector<E>& vecChildren = node.vecChildren;
    const auto isElement = [](const E& child) { return child.eKind == E::ELEMENT; };
    const auto isText = [](const E& child) {
        return (child.eKind == E::TEXT || child.eKind == E::CDATA) && !IsBlank(child.strValue);
    };
    const auto isBlankText = [](const E& child) { return child.eKind == E::TEXT && IsBlank(child.strValue); };
    if (std::any_of(vecChildren.begin(), vecChildren.end(), isElement) &&
        std::none_of(vecChildren.begin(), vecChildren.end(), isText)) {
        vecChildren.erase(std::remove_if(vecChildren.begin(), vecChildren.end(), isBlankText), vecChildren.end());
    }
    for (E& child : vecChildren) {
        DropBlanksBetweenElements(child);
    }
}

std::string Dump(const SExpatNode& node, int iDepth) {
    static const char* const KINDS[] = {"element", "text", "cdata", "comment", "instruction"};
    std::string strDump(static_cast<std::size_t>(iDepth), ' ');
    strDump += std::string(KINDS[node.eKind]) + " " + node.strName + " [" + node.strValue + "]";
    for (const auto& [strName, strValue] : node.vecAttributes) {
        strDump += " " + strName + "=[" + strValue + "]";
    }
    strDump += "\n";
    for (const SExpatNode& child : node.vecChildren) {
        strDump += Dump(child, iDepth + 1);
    }
    return strDump;
}
