#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/common/Paths.h"
#include "platform/xml/CXMLParser.h"
#include "xml/Vocabulary.h"

/** The files of config/ and examples/, and short walks through them. */
namespace Content {

inline const std::string POLICY = "config/PredefinedDLPPolicy.xml";
inline const std::string STARTER = "examples/starter-policy.xml";
inline const std::string OLDER = "examples/older-layout.xml";
inline const std::string ASSETS = "examples/digital-assets.xml";
inline const std::string NAME_MAP = "config/cfg_dlp_da_map.txt";
inline const std::string STRINGS = "config/strings.txt";

inline std::string Path(const std::string& strFile) {
    return DLP_SOURCE_DIR "/" + strFile;
}
inline std::string Read(const std::string& strFile) {
    return OS::ReadWholeFile(Path(strFile));
}

inline std::vector<std::string> ReadLines(const std::string& strFile) {
    std::vector<std::string> vecLines;
    std::istringstream file(Read(strFile));
    for (std::string strLine; std::getline(file, strLine);) {
        vecLines.push_back(strLine);
    }
    return vecLines;
}

inline CXMLParser Load(const std::string& strFile) {
    CXMLParser document;
    if (!document.LoadUtf8(Read(strFile))) {
        throw std::runtime_error(strFile + ": " + document.GetLoadError().strMessage);
    }
    return document;
}

/** The child elements, of any name or of the one given. */
inline std::vector<CXMLView> Children(const CXMLView& node, const char* pName = nullptr) {
    std::vector<CXMLView> vecChildren;
    for (CXMLView child = node.FirstChild(pName); child; child = child.NextSibling(pName)) {
        vecChildren.push_back(child);
    }
    return vecChildren;
}

/** One attribute of each element. */
inline std::vector<std::string> Values(const std::vector<CXMLView>& vecNodes, const char* pAttribute) {
    std::vector<std::string> vecValues;
    for (const CXMLView& node : vecNodes) {
        vecValues.emplace_back(node.Attribute(pAttribute));
    }
    return vecValues;
}

inline std::vector<std::string> Names(const std::vector<CXMLView>& vecNodes) {
    return Values(vecNodes, TagUtf8::NAME);
}

/** The names of the element's attributes, joined by blanks, in their order. */
inline std::string AttributeNames(const CXMLView& node) {
    std::string strNames;
    for (const auto& [strName, strValue] : node.Attributes()) {
        strNames.append(strNames.empty() ? "" : " ").append(strName);
    }
    return strNames;
}

/** The texts of an expression's examples. */
inline std::vector<std::string> Examples(const CXMLView& entity) {
    static constexpr std::string_view strDivider = " | ";
    const std::string strText = entity.FirstChild(TagUtf8::EXAMPLES).Text();
    std::vector<std::string> vecExamples;
    for (std::size_t iStart = 0, iEnd = 0; iEnd != std::string::npos; iStart = iEnd + strDivider.size()) {
        iEnd = strText.find(strDivider, iStart);
        vecExamples.push_back(strText.substr(iStart, iEnd == std::string::npos ? iEnd : iEnd - iStart));
    }
    return vecExamples;
}

}  // namespace Content
