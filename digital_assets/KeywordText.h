#pragma once

#include "platform/xml/CXMLParser.h"
#include "xml/Vocabulary.h"

namespace DigitalAssets {

/** @return the root of a keyword list's text; null when the document is none */
inline CXMLView FindDictionary(const CXMLParser& document) {
    const CXMLView root = document.RootView();
    return root.Name() == TagUtf8::DICTIONARY ? root : CXMLView();
}

}  // namespace DigitalAssets
