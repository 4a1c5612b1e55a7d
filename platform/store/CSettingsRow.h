#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/common/PlatformExport.h"
#include "platform/store/SettingsSchema.h"

/**
 * One record's values, in the order of its table's columns. A plain value. Texts are UTF-8 in a store; in a record that
 * is being filled they are in the loose form of OS::Utf8Loose, and saving refuses what is not strict UTF-8.
 */
class DLP_PLATFORM_API CSettingsRow {
  public:
    using Value = std::variant<std::monostate, std::string, std::int32_t, std::vector<std::string>>;

    /** A row with every column at its empty value: "", 0, no list, nothing. */
    explicit CSettingsRow(ESettingsKind eKind = ESettingsKind::EXPRESSION);
    CSettingsRow(const CSettingsRow& other);
    CSettingsRow& operator=(const CSettingsRow& other);
    CSettingsRow(CSettingsRow&& other) noexcept = default;
    CSettingsRow& operator=(CSettingsRow&& other) noexcept = default;
    ~CSettingsRow() = default;

    ESettingsKind GetKind() const { return m_eKind; }
    const std::string& GetSubject() const { return GetText(0); }

    /** @return the text of a TEXT column, or of a NULLABLE_TEXT column that is not null (else "") */
    const std::string& GetText(std::size_t iColumn) const;
    void SetText(std::size_t iColumn, std::string strText) { m_vecValues[iColumn] = std::move(strText); }
    bool IsNull(std::size_t iColumn) const { return m_vecValues[iColumn].index() == 0; }
    void SetNull(std::size_t iColumn) { m_vecValues[iColumn] = std::monostate(); }
    std::int32_t GetNumber(std::size_t iColumn) const { return std::get<std::int32_t>(m_vecValues[iColumn]); }
    void SetNumber(std::size_t iColumn, std::int32_t iNumber) { m_vecValues[iColumn] = iNumber; }
    bool GetFlag(std::size_t iColumn) const { return GetNumber(iColumn) != 0; }
    void SetFlag(std::size_t iColumn, bool bFlag) { SetNumber(iColumn, bFlag ? 1 : 0); }
    const std::vector<std::string>& GetList(std::size_t iColumn) const {
        return std::get<std::vector<std::string>>(m_vecValues[iColumn]);
    }
    void SetList(std::size_t iColumn, std::vector<std::string> vecTexts) { m_vecValues[iColumn] = std::move(vecTexts); }

    /**
     * @throws OS::CException naming the record and the column when a text holds U+0000 or is not strict UTF-8: no store
     *         keeps such a text
     */
    void Validate() const;

    friend bool operator==(const CSettingsRow& left, const CSettingsRow& right) {
        return left.m_eKind == right.m_eKind && left.m_vecValues == right.m_vecValues;
    }
    friend bool operator!=(const CSettingsRow& left, const CSettingsRow& right) { return !(left == right); }

  private:
    ESettingsKind m_eKind;
    std::vector<Value> m_vecValues;
};
