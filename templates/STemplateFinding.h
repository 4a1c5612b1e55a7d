#pragma once

#include <cstddef>
#include <string>

#include "digital_assets/ImportObserver.h"
#include "platform/xml/CXMLView.h"

/** A template of a document that cannot be imported, and the building block or match rule that is to blame. */
struct STemplateFinding {
    std::string strTemplate;  ///< internal name, UTF-8
    std::size_t iTemplate;    ///< which template of the document
    ETemplateFault eFault;
    CXMLView node;  ///< in the document
};
