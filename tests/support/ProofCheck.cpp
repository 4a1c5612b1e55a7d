#include "tests/support/ProofCheck.h"

#include <algorithm>

#include "platform/xml/CXMLParser.h"
#include "platform/xml/XMLProof.hpp"
#include "tests/support/ExpatTree.h"

namespace {

std::size_t DepthOf(const SExpatNode& node) {
    std::size_t iDeepest = 0;
    for (const SExpatNode& child : node.vecChildren) {
        iDeepest = std::max(iDeepest, DepthOf(child));
    }
    return iDeepest + (node.eKind == SExpatNode::ELEMENT ? 1 : 0);
}

std::string FindFalseWriting(std::string_view strText, const SXMLProof& proof) {
    CXMLParser document;
    document.LoadUtf8(strText);
    std::string strWritten;
    document.RootView().AppendMarkup(strWritten);
    if (strWritten != strText) {
        return "written as " + strWritten;
    }
    std::string strContent;
    for (CXMLView child = document.RootView().FirstChild(); child; child = child.NextSibling()) {
        child.AppendMarkup(strContent);
    }
    return proof.strChildName.empty() || strContent == proof.strContent ? "" : "content " + strContent;
}

}  // namespace

std::string FindFalseProof(std::string_view strText) {
    const SXMLProof proof = ProveXml(strText);
    SExpatNode root;
    if (proof.iTwice != std::string_view::npos && proof.iTwice != FindTwiceWithExpat(strText)) {
        return "another attribute twice";
    }
    if (!proof.bWellFormed) {
        return proof.bAsWritten ? "as written, but not well-formed" : "";
    }
    if (!ReadWithExpat(strText, root)) {
        return "not well-formed";
    }
    if (proof.iDepth > CXMLParser::MAX_DEPTH) {
        return "deeper than the loader takes";
    }
    if (root.strName != proof.strRoot || DepthOf(root) != proof.iDepth) {
        return "another root or depth";
    }
    const bool bChildren = std::all_of(root.vecChildren.begin(), root.vecChildren.end(), [&](const SExpatNode& child) {
        return child.eKind == SExpatNode::ELEMENT && child.strName == proof.strChildName;
    });
    if (!proof.strChildName.empty() && !bChildren) {
        return "other children";
    }
    return proof.bAsWritten ? FindFalseWriting(strText, proof) : "";
}
