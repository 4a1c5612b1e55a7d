#include "platform/store/RecordChecksum.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace {

/** One value after another: the checksum so far is the seed of the next, whose length counts too. */
class CChecksum {
  public:
    void Add(const std::string& strText) {
        m_iChecksum = XXH3_64bits_withSeed(strText.data(), strText.size(), m_iChecksum);
    }
    void Add(std::int64_t iNumber) {
        auto iBits = static_cast<std::uint64_t>(iNumber);
        unsigned char aBytes[sizeof iBits];  // in little-endian order
        for (unsigned char& byte : aBytes) {
            byte = static_cast<unsigned char>(iBits);
            iBits >>= 8;
        }
        m_iChecksum = XXH3_64bits_withSeed(aBytes, sizeof aBytes, m_iChecksum);
    }
    std::uint64_t Get() const { return m_iChecksum; }

  private:
    std::uint64_t m_iChecksum = 0;
};

void AddColumn(const CSettingsRow& row, std::size_t iColumn, EColumnType eType, CChecksum& checksum) {
    switch (eType) {
        case EColumnType::NULLABLE_TEXT:
            checksum.Add(row.IsNull(iColumn) ? std::int64_t{0} : std::int64_t{1});
            [[fallthrough]];
        case EColumnType::TEXT:
            checksum.Add(row.GetText(iColumn));
            break;
        case EColumnType::NUMBER:
        case EColumnType::FLAG:
            checksum.Add(std::int64_t{row.GetNumber(iColumn)});
            break;
        case EColumnType::TEXT_LIST:
            checksum.Add(static_cast<std::int64_t>(row.GetList(iColumn).size()));
            for (const std::string& strItem : row.GetList(iColumn)) {
                checksum.Add(strItem);
            }
            break;
    }
}

}  // namespace

std::uint64_t ChecksumOf(const CSettingsRow& row) {
    const STable& table = GetSettingsTable(row.GetKind());
    CChecksum checksum;
    checksum.Add(static_cast<std::int64_t>(row.GetKind()));
    for (std::size_t i = 0; i < table.iColumns; ++i) {
        AddColumn(row, i, table.pColumns[i].eType, checksum);
    }
    return checksum.Get();
}
