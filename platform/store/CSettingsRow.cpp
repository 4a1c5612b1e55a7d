#include "platform/store/CSettingsRow.h"

#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"

namespace {

CSettingsRow::Value EmptyValue(EColumnType eType) {
    switch (eType) {
        case EColumnType::TEXT:
            return std::string();
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            return std::int32_t{0};
        case EColumnType::TEXT_LIST:
            return std::vector<std::string>();
        case EColumnType::NULLABLE_TEXT:
            break;
    }
    return std::monostate();
}

[[noreturn]] void Refuse(const CSettingsRow& row, const SColumn& column, std::size_t iOffset, const char* pWhy) {
    const std::string strMessage = "record \"" + row.GetSubject() + "\" cannot be saved: " + column.pName + ", byte " +
                                   std::to_string(iOffset) + ": " + pWhy;
    throw OS::CException(0, OS::WideLenient(strMessage), 0);
}

void ValidateText(const CSettingsRow& row, const SColumn& column, std::string_view strText) {
    if (const std::size_t iOffset = strText.find('\0'); iOffset != std::string_view::npos) {
        Refuse(row, column, iOffset, "U+0000 cannot be stored");
    }
    if (const std::size_t iOffset = OS::FindInvalidUtf8(strText); iOffset != std::string_view::npos) {
        Refuse(row, column, iOffset, "no Unicode character");
    }
}

}  // namespace

CSettingsRow::CSettingsRow(ESettingsKind eKind) : m_eKind(eKind) {
    const STable& table = GetSettingsTable(eKind);
    m_vecValues.reserve(table.iColumns);
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        m_vecValues.push_back(EmptyValue(table.pColumns[i].eType));
    }
}

/** Value by value: a variant whose copying runs out of memory is undefined in the standard library of GCC 12. */
CSettingsRow::CSettingsRow(const CSettingsRow& other) : m_eKind(other.m_eKind), m_vecValues(other.m_vecValues.size()) {
    for (std::size_t i = 0; i < m_vecValues.size(); ++i) {
        std::visit([this, i](const auto& value) { m_vecValues[i] = value; }, other.m_vecValues[i]);
    }
}

CSettingsRow& CSettingsRow::operator=(const CSettingsRow& other) {
    return *this = CSettingsRow(other);
}

const std::string& CSettingsRow::GetText(std::size_t iColumn) const {
    static const std::string s_strEmpty;
    return IsNull(iColumn) ? s_strEmpty : std::get<std::string>(m_vecValues[iColumn]);
}

void CSettingsRow::Validate() const {
    const STable& table = GetSettingsTable(m_eKind);
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        if (const auto* pText = std::get_if<std::string>(&m_vecValues[i])) {
            ValidateText(*this, table.pColumns[i], *pText);
        } else if (const auto* pList = std::get_if<std::vector<std::string>>(&m_vecValues[i])) {
            for (const std::string& strItem : *pList) {
                ValidateText(*this, table.pColumns[i], strItem);
            }
        }
    }
}
