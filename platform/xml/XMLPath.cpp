#include "platform/xml/XMLPath.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "platform/common/TextConversion.h"
#include "platform/xml/XMLText.hpp"

// Nearly every path is a chain of child names; those are walked directly. The rest goes to the engine.

namespace XmlPath {

namespace {

/** A chain of child names, absolute or from the context. */
struct SChildPath {
    bool bAbsolute = false;
    std::vector<std::string> vecNames;
};

/** A name without a prefix; such a path needs no further look at its grammar. */
bool IsPlainName(std::string_view strName) {
    const auto isLetter = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
    };
    const auto isNameByte = [isLetter](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
    };
    return !strName.empty() && isLetter(strName.front()) && std::all_of(strName.begin(), strName.end(), isNameByte);
}

/** @return whether the XPath is "/a/b", "./a/b" or "a/b" */
bool ParseChildPath(std::string_view strXPath, SChildPath& path) {
    path.bAbsolute = strXPath.substr(0, 1) == "/";
    strXPath.remove_prefix(path.bAbsolute ? 1 : strXPath.substr(0, 2) == "./" ? 2 : 0);
    for (;;) {
        const std::size_t iEnd = strXPath.find('/');
        const std::string_view strName = strXPath.substr(0, iEnd);
        if (!IsPlainName(strName)) {
            return false;
        }
        path.vecNames.emplace_back(strName);
        if (iEnd == std::string_view::npos) {
            return true;
        }
        strXPath.remove_prefix(iEnd + 1);
    }
}

/**
 * Depth first, so in document order.
 * @param node the first element that matches the name at iLevel; its later siblings are looked at too
 */
CHandles Walk(pugi::xml_node node, const std::vector<std::string>& vecNames, std::size_t iLevel, bool bFirstOnly) {
    CHandles vecMatches;
    const std::size_t iTopLevel = iLevel;
    while (node) {
        const bool bMatch = iLevel + 1 == vecNames.size();
        if (bMatch) {
            vecMatches.push_back(XmlTree::Handle(node));
            if (bFirstOnly) {
                break;
            }
        } else if (const pugi::xml_node child = XmlTree::FirstElement(node, vecNames[iLevel + 1].c_str())) {
            node = child;
            ++iLevel;
            continue;
        }
        pugi::xml_node next = XmlTree::NextElement(node, vecNames[iLevel].c_str());
        while (!next && iLevel > iTopLevel) {
            node = node.parent();
            next = XmlTree::NextElement(node, vecNames[--iLevel].c_str());
        }
        node = next;
    }
    return vecMatches;
}

CHandles SelectChildren(pugi::xml_node context, const SChildPath& path, bool bFirstOnly) {
    if (!path.bAbsolute) {
        return Walk(XmlTree::FirstElement(context, path.vecNames[0].c_str()), path.vecNames, 0, bFirstOnly);
    }
    const pugi::xml_node top = XmlTree::Top(context);
    const pugi::xml_node root = top.type() == pugi::node_document ? XmlTree::FirstElement(top) : top;
    if (path.vecNames[0] != root.name()) {
        return {};
    }
    if (path.vecNames.size() == 1) {
        return {XmlTree::Handle(root)};
    }
    return Walk(XmlTree::FirstElement(root, path.vecNames[1].c_str()), path.vecNames, 1, bFirstOnly);
}

/**
 * The engine sorts siblings that were not loaded by counting from one to the other, which many of them must not cost.
 * @return the matches in document order, found by one walk over what holds them all
 */
CHandles OrderByWalk(const CHandles& vecMatches) {
    pugi::xml_node top = XmlTree::Node(vecMatches[0]);
    for (void* const pMatch : vecMatches) {
        while (!XmlTree::IsSelfOrAncestor(top, XmlTree::Node(pMatch))) {
            top = top.parent();
        }
    }
    const std::unordered_set<void*> lstMatches(vecMatches.begin(), vecMatches.end());
    CHandles vecOrdered;
    for (pugi::xml_node node = top; node; node = XmlTree::Next(node, top)) {
        if (lstMatches.count(XmlTree::Handle(node)) > 0) {
            vecOrdered.push_back(XmlTree::Handle(node));
        }
    }
    return vecOrdered;
}

CHandles Query(pugi::xml_node context, const std::string& strXPath) {
    constexpr std::size_t FEW = 64;
    const std::string strSubject = "XPath \"" + strXPath + "\"";
    CHandles vecMatches;
    bool bOrdered = true;
    try {
        pugi::xpath_node_set setMatches = pugi::xpath_query(strXPath.c_str()).evaluate_node_set(context);
        bOrdered = setMatches.type() != pugi::xpath_node_set::type_unsorted || setMatches.size() <= FEW;
        if (bOrdered) {
            setMatches.sort();
        }
        for (const pugi::xpath_node& match : setMatches) {
            if (match.attribute()) {
                XmlText::Throw(strSubject, "selects attributes; select their element and read them there");
            }
            if (match.node().type() != pugi::node_document) {
                vecMatches.push_back(XmlTree::Handle(match.node()));
            }
        }
    } catch (const pugi::xpath_exception& error) {
        XmlText::Throw(strSubject, error.what());
    }
    return bOrdered ? vecMatches : OrderByWalk(vecMatches);
}

/**
 * Nodes that are not attached share the engine's document with those that are. Where there are any, the XPath looks at
 * a copy of the context's own tree, and what it finds is found again by walking both in step.
 */
CHandles QueryApart(const CXMLTree& tree, pugi::xml_node context, const std::string& strXPath) {
    const pugi::xml_node top = XmlTree::Top(context);
    const std::shared_ptr<CXMLTree> pCopy = tree.Clone(top);
    const pugi::xml_node copyTop = pCopy->Document();
    std::unordered_map<void*, void*> mapOriginals;
    pugi::xml_node copyContext = copyTop;
    pugi::xml_node original = top.type() == pugi::node_document ? top.first_child() : top;
    for (pugi::xml_node copy = copyTop.first_child(); copy; copy = XmlTree::Next(copy, copyTop)) {
        mapOriginals.emplace(XmlTree::Handle(copy), XmlTree::Handle(original));
        copyContext = original == context ? copy : copyContext;
        original = XmlTree::Next(original, tree.Document());
    }
    CHandles vecMatches = Query(copyContext, strXPath);
    for (void*& pMatch : vecMatches) {
        pMatch = mapOriginals.at(pMatch);
    }
    return vecMatches;
}

}  // namespace

CHandles Select(CXMLTree& tree, pugi::xml_node context, const wchar_t* pXPath, bool bFirstOnly) {
    const std::string strXPath = OS::Utf8Lenient(pXPath == nullptr ? L"" : pXPath);
    SChildPath path;
    if (ParseChildPath(strXPath, path)) {
        return SelectChildren(context, path, bFirstOnly);
    }
    CHandles vecMatches = tree.HasDetached() ? QueryApart(tree, context, strXPath) : Query(context, strXPath);
    if (bFirstOnly && !vecMatches.empty()) {
        vecMatches.erase(vecMatches.begin() + 1, vecMatches.end());
    }
    return vecMatches;
}

}  // namespace XmlPath
