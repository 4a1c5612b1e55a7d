#include "cli/edit/RecordFields.h"

#include <algorithm>

CRecordFields::CRecordFields(std::span<const SRecordField> aFields)
    : m_aFields(aFields), m_vecOptions(aFields.size()) {}

void CRecordFields::AddTo(CLI::App& command) {
    for (std::size_t i = 0; i < m_aFields.size(); ++i) {
        const SRecordField& field = m_aFields[i];
        AddGivenOption(command, field.pOption, field.pValue, m_vecOptions[i], field.pSummary);
    }
}

bool CRecordFields::IsAnyGiven() const {
    return std::any_of(m_vecOptions.begin(), m_vecOptions.end(),
                       [](const SGivenOption& option) { return option.IsGiven(); });
}

bool CRecordFields::IsGiven(std::size_t iColumn) const {
    for (std::size_t i = 0; i < m_aFields.size(); ++i) {
        if (m_aFields[i].iColumn == iColumn) {
            return m_vecOptions[i].IsGiven();
        }
    }
    return false;
}

void CRecordFields::Apply(CSettingsRow& row) const {
    for (std::size_t i = 0; i < m_aFields.size(); ++i) {
        if (m_vecOptions[i].IsGiven()) {
            Apply(i, row);
        }
    }
}

void CRecordFields::Apply(std::size_t iField, CSettingsRow& row) const {
    const std::size_t iColumn = m_aFields[iField].iColumn;
    const SGivenOption& option = m_vecOptions[iField];
    switch (GetSettingsTable(row.GetKind()).pColumns[iColumn].eType) {
        case EColumnType::NUMBER:
            row.SetNumber(iColumn, option.ToNumber());
            break;
        case EColumnType::FLAG:
            row.SetFlag(iColumn, option.ToFlag());
            break;
        case EColumnType::TEXT:
        case EColumnType::NULLABLE_TEXT:
        case EColumnType::TEXT_LIST:
            row.SetText(iColumn, option.strText);
            break;
    }
}

const SRecordField* CRecordFields::FindLost(const CSettingsRow& row, std::size_t iPassedOver) const {
    for (std::size_t i = 0; i < m_aFields.size(); ++i) {
        if (m_vecOptions[i].IsGiven() && m_aFields[i].iColumn != iPassedOver) {
            CSettingsRow applied = row;
            Apply(i, applied);
            if (applied != row) {
                return &m_aFields[i];
            }
        }
    }
    return nullptr;
}
