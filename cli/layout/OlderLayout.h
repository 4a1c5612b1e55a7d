#pragma once

#include <string>

#include "templates/DLPXmlNormalizer.h"

class CCommandContext;

/**
 * Rewrites a document of the older layout as an import does, and takes its tree as CDLPXmlNormalizer::Normalize does; a
 * missing map of asset names is warned of.
 * @param strFile how the document was given
 * @param pObserver hears of what is not carried over; may be null
 * @throws CInputError when the library cannot make the result
 */
CXMLParser ConvertOlder(CCommandContext& context, const std::string& strFile, CPolicyDocument& document,
                        CImportObserver* pObserver);
