#pragma once

#include <cstddef>
#include <string>

#include "platform/xml/CXMLView.h"

/** What keeps a template from being imported. */
enum class ETemplateFault { UNKNOWN_EXPRESSION, UNKNOWN_KEYWORD, SOURCE_TYPE, BLOCK_OPERATION, RULE_OPERATION };

/** A template of a document that cannot be imported, and the building block or match rule that is to blame. */
struct STemplateFinding {
    std::string strTemplate;  ///< internal name, UTF-8
    std::size_t iTemplate;    ///< which template of the document
    ETemplateFault eFault;
    CXMLView node;  ///< in the document
};
