#include "digital_assets/ImportObserver.h"

#include "platform/xml/CXMLCOMException.h"

void TellStoreFailure(CImportObserver* pObserver, const OS::CException& exception) {
    if (pObserver != nullptr && dynamic_cast<const CXMLException*>(&exception) == nullptr) {
        pObserver->OnStoreFailed(exception.what());
    }
}
