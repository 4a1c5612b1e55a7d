#include "platform/xml/CXMLNodeList.h"

#include <utility>

CXMLNodeList::CXMLNodeList(std::shared_ptr<CXMLTree> pTree, std::vector<void*> vecNodes)
    : m_pTree(std::move(pTree)), m_vecNodes(std::move(vecNodes)) {}

CXMLNodeList::~CXMLNodeList() = default;

int CXMLNodeList::GetLength() const {
    return static_cast<int>(m_vecNodes.size());
}

OS::CAutoObjPtr<CXMLNode> CXMLNodeList::GetItem(int iIndex) const {
    const CXMLView view = ViewAt(iIndex);
    return view ? OS::CAutoObjPtr<CXMLNode>(new CXMLNode(m_pTree, view.Handle())) : nullptr;
}

CXMLView CXMLNodeList::ViewAt(int iIndex) const {
    return iIndex >= 0 && iIndex < GetLength() ? CXMLView(m_pTree.get(), m_vecNodes[static_cast<std::size_t>(iIndex)])
                                               : CXMLView();
}
