#include "platform/store/StoreError.h"

#include <cerrno>
#include <system_error>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "platform/store/CSqliteStore.h"
#include "platform/store/SqliteFile.h"

namespace {

constexpr char STICKY[] =
    "; the file is another user's, and the sticky bit of its folder lets nobody else replace it: have its owner do "
    "this";

}  // namespace

void ThrowStoreError(const std::string& strUrl, const char* pDoing, const std::string& strWhy, int iCode) {
    const std::string strMessage = "settings store " + strUrl + ", " + pDoing + ": " + strWhy;
    throw OS::CException(iCode, OS::WideLenient(strMessage), 0);
}

void ThrowSystemError(const std::string& strPath, const char* pDoing, int iError) {
    std::string strWhy = std::generic_category().message(iError);
    if (iError == EPERM && IsSqliteFileAnothersToReplace(strPath)) {
        strWhy += STICKY;
    }
    ThrowStoreError(CSqliteStore::SCHEME + strPath, pDoing, strWhy, iError);
}

void ThrowBusy(const std::string& strUrl, const char* pDoing, const std::string& strWriter, int iCode) {
    ThrowStoreError(
        strUrl, pDoing,
        "another process is writing to it" + (strWriter.empty() ? "" : " (" + strWriter + ')') + "; try again", iCode);
}

std::string ToText(const SStoreDamage& damage) {
    if (damage.strTable.empty()) {
        return damage.strWhat;
    }
    const std::string strTable = "the table " + damage.strTable;
    return damage.strSubject.empty() ? strTable + ": " + damage.strWhat
                                     : "the record \"" + damage.strSubject + "\" of " + strTable + ' ' + damage.strWhat;
}
