#include "platform/store/StoreError.h"

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"

void ThrowStoreError(const std::string& strUrl, const char* pDoing, const std::string& strWhy, int iCode) {
    const std::string strMessage = "settings store " + strUrl + ", " + pDoing + ": " + strWhy;
    throw OS::CException(iCode, OS::WideLenient(strMessage), 0);
}
