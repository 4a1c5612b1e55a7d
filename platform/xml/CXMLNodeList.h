#pragma once

#include <memory>
#include <vector>

#include "platform/common/CAutoObjPtr.h"
#include "platform/xml/CXMLNode.h"

/** What an XPath selected, in document order: a snapshot that later changes of the document leave as it is. */
class DLP_PLATFORM_API CXMLNodeList {
  public:
    /** Made by the XML layer only. */
    CXMLNodeList(std::shared_ptr<CXMLTree> pTree, std::vector<void*> vecNodes);
    CXMLNodeList(const CXMLNodeList&) = delete;
    CXMLNodeList& operator=(const CXMLNodeList&) = delete;
    virtual ~CXMLNodeList();

    virtual int GetLength() const;
    /** @param iIndex from 0 @return a new wrapper of the node; null outside the list */
    virtual OS::CAutoObjPtr<CXMLNode> GetItem(int iIndex) const;

    /** The same in UTF-8, without a wrapper; valid while the list lives. */
    CXMLView ViewAt(int iIndex) const;

  private:
    std::shared_ptr<CXMLTree> m_pTree;
    std::vector<void*> m_vecNodes;
};
