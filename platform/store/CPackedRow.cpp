#include "platform/store/CPackedRow.h"

#include <cstring>
#include <utility>
#include <vector>

namespace {

using Length = std::uint32_t;  // the same size as a number

constexpr Length NOTHING = static_cast<Length>(-1);

template <class Number>
void Append(std::string& strBytes, Number iNumber) {
    static_assert(sizeof iNumber == sizeof(Length));
    char aBytes[sizeof iNumber];
    std::memcpy(aBytes, &iNumber, sizeof iNumber);
    strBytes.append(aBytes, sizeof iNumber);
}

void Append(std::string& strBytes, const std::string& strText) {
    Append(strBytes, static_cast<Length>(strText.size()));
    strBytes += strText;
}

/** Takes one value after the other from the bytes. */
class CUnpacker {
  public:
    explicit CUnpacker(std::string_view strBytes) : m_strBytes(strBytes) {}

    template <class Number>
    Number TakeNumber() noexcept {
        Number iNumber;
        std::memcpy(&iNumber, m_strBytes.data(), sizeof iNumber);
        m_strBytes.remove_prefix(sizeof iNumber);
        return iNumber;
    }

    std::optional<std::string_view> TakeText() noexcept {
        const auto iLength = TakeNumber<Length>();
        if (iLength == NOTHING) {
            return std::nullopt;
        }
        const std::string_view strText = m_strBytes.substr(0, iLength);
        m_strBytes.remove_prefix(iLength);
        return strText;
    }

    void Pass(EColumnType eType) noexcept {
        if (eType == EColumnType::NUMBER || eType == EColumnType::FLAG) {
            TakeNumber<std::int32_t>();
            return;
        }
        for (Length i = eType == EColumnType::TEXT_LIST ? TakeNumber<Length>() : 1; i > 0; --i) {
            TakeText();
        }
    }

  private:
    std::string_view m_strBytes;
};

void PackColumn(const CSettingsRow& row, std::size_t iColumn, EColumnType eType, std::string& strBytes) {
    switch (eType) {
        case EColumnType::NULLABLE_TEXT:
            if (row.IsNull(iColumn)) {
                Append(strBytes, NOTHING);
                break;
            }
            [[fallthrough]];
        case EColumnType::TEXT:
            Append(strBytes, row.GetText(iColumn));
            break;
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            Append(strBytes, row.GetNumber(iColumn));
            break;
        case EColumnType::TEXT_LIST:
            Append(strBytes, static_cast<Length>(row.GetList(iColumn).size()));
            for (const std::string& strItem : row.GetList(iColumn)) {
                Append(strBytes, strItem);
            }
            break;
    }
}

void UnpackColumn(CUnpacker& unpacker, std::size_t iColumn, EColumnType eType, CSettingsRow& row) {
    switch (eType) {
        case EColumnType::TEXT:
        case EColumnType::NULLABLE_TEXT:
            if (const std::optional<std::string_view> text = unpacker.TakeText()) {
                row.SetText(iColumn, std::string(*text));
            } else {
                row.SetNull(iColumn);
            }
            break;
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            row.SetNumber(iColumn, unpacker.TakeNumber<std::int32_t>());
            break;
        case EColumnType::TEXT_LIST: {
            std::vector<std::string> vecTexts(unpacker.TakeNumber<Length>());
            for (std::string& strText : vecTexts) {
                strText = *unpacker.TakeText();
            }
            row.SetList(iColumn, std::move(vecTexts));
            break;
        }
    }
}

}  // namespace

CPackedRow::CPackedRow(const CSettingsRow& row) : m_eKind(row.GetKind()) {
    const STable& table = GetSettingsTable(m_eKind);
    std::string strBytes;
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        PackColumn(row, i, table.pColumns[i].eType, strBytes);
    }
    m_strBytes = std::string_view(strBytes);  // without the room that it grew by
}

CSettingsRow CPackedRow::Unpack() const {
    const STable& table = GetSettingsTable(m_eKind);
    CSettingsRow row(m_eKind);
    CUnpacker unpacker(m_strBytes);
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        UnpackColumn(unpacker, i, table.pColumns[i].eType, row);
    }
    return row;
}

std::optional<std::string_view> CPackedRow::GetText(std::size_t iColumn) const noexcept {
    const STable& table = GetSettingsTable(m_eKind);
    CUnpacker unpacker(m_strBytes);
    for (std::size_t i = 0; i < iColumn; ++i) {
        unpacker.Pass(table.pColumns[i].eType);
    }
    return unpacker.TakeText();
}
