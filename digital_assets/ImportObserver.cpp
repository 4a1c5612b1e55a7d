#include "digital_assets/ImportObserver.h"

#include <algorithm>

#include "platform/xml/CXMLCOMException.h"
#include "xml/CPolicyDocument.h"
#include "xml/Vocabulary.h"

void TellUnknownElements(const CPolicyDocument& document, const CXMLView& parent,
                         std::initializer_list<const char*> lstKnown, CImportObserver* pObserver, EItemKind eParent) {
    if (pObserver == nullptr) {
        return;
    }
    const std::string_view strParent = parent.Attribute(TagUtf8::NAME);
    const auto fnPassesOver = [&](std::string_view strName) {
        return pObserver->PassesOver(eParent, eParent == EItemKind::ELEMENT ? strName : strParent);
    };
    for (CXMLView child = parent.FirstChild(); child; child = child.NextSibling()) {
        const std::string_view strName = child.Name();
        const bool bKnown = std::find(lstKnown.begin(), lstKnown.end(), strName) != lstKnown.end();
        if (bKnown || fnPassesOver(strName)) {
            continue;
        }
        if (!pObserver->TakesUnknownElement()) {
            pObserver->OnUntoldElement();
            continue;
        }
        SImportItem item;
        item.eKind = EItemKind::ELEMENT;
        item.strName = strName;
        item.strDisplayName = child.Attribute(TagUtf8::DISPLAY_NAME);
        item.eDisposition = EDisposition::SKIPPED;
        item.eReason = EReason::UNKNOWN_ELEMENT;
        item.strDetail = parent.Name();
        item.iOffset = child.Offset();
        pObserver->OnItem(item);
    }
    static_assert(MAX_UNKNOWN_KEPT >= CImportObserver::MAX_UNKNOWN_ELEMENTS, "what is an item is in the tree");
    for (std::size_t i = document.CountBlanked(parent); i > 0; --i) {
        if (!fnPassesOver({})) {
            pObserver->OnUntoldElement();
        }
    }
}

void TellStoreFailure(CImportObserver* pObserver, const OS::CException& exception) {
    if (pObserver != nullptr && dynamic_cast<const CXMLException*>(&exception) == nullptr) {
        pObserver->OnStoreFailed(exception.what());
    }
}
