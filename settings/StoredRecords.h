#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"

/** What the three managers share: reading records from the process's store. */
namespace StoredRecords {

/** Orders records by key, byte by byte as in the store; null first and equal to null. */
inline bool ComesBefore(const CSettingsRow* pLeft, const CSettingsRow* pRight) {
    if (pLeft == nullptr || pRight == nullptr) {
        return pLeft == nullptr && pRight != nullptr;
    }
    return pLeft->GetSubject() < pRight->GetSubject();
}

/** Inserts a fresh copy of every record. @return false, the list unchanged, when the store cannot be read */
template <class List>
bool ReadList(ESettingsKind eKind, List& lstOut) {
    using Record = typename List::value_type::element_type;
    try {
        List lstRead;
        CSettingsStore::Current().ReadAll(eKind, [&](CSettingsRow&& row) {
            lstRead.insert(lstRead.end(), boost::make_shared<Record>(std::move(row)));
        });
        lstOut.merge(lstRead);
        return true;
    } catch (const OS::CException&) {
        return false;
    }
}

/** One text column of every record, in the order of keys. @throws OS::CException */
inline void ReadTexts(ESettingsKind eKind, std::size_t iColumn, std::vector<OS::x_wstring>& vecOut) {
    std::vector<std::string> vecTexts;
    CSettingsStore::Current().ReadColumn(eKind, iColumn, vecTexts);
    vecOut.clear();
    for (const std::string& strText : vecTexts) {
        vecOut.push_back(OS::WideLoose(strText));
    }
}

/** @return the first record, in the order of keys, whose column equals the value; null when there is none */
template <class Record>
boost::shared_ptr<Record> FindFirst(ESettingsKind eKind, std::size_t iColumn, std::string_view strValue) {
    auto pRow = CSettingsStore::Current().FindOne(eKind, iColumn, std::string(strValue));
    return pRow != nullptr ? boost::make_shared<Record>(std::move(*pRow)) : nullptr;
}

}  // namespace StoredRecords
