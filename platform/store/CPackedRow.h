#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/store/CSettingsRow.h"

/** One record's values in as few bytes as they need, to be kept in great number. Nothing in it changes. */
class CPackedRow {
  public:
    explicit CPackedRow(const CSettingsRow& row);

    CSettingsRow Unpack() const;
    /** @return the text of a column of texts; none where it is null. Needs no memory. */
    std::optional<std::string_view> GetText(std::size_t iColumn) const noexcept;

  private:
    ESettingsKind m_eKind;
    std::string m_strBytes;  ///< each value: a number, or a length or null, with what is so long
};
