#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "cli/edit/GivenOption.h"
#include "platform/store/CSettingsRow.h"

/** An option that sets a column of a record. */
struct SRecordField {
    const char* pOption;
    const char* pValue;  ///< how the help calls its value
    std::size_t iColumn;
    const char* pSummary;
};

/** The columns of one record as options of a command. */
class CRecordFields {
  public:
    /** @param aFields must outlive the object */
    explicit CRecordFields(std::span<const SRecordField> aFields);
    CRecordFields(const CRecordFields&) = delete;
    CRecordFields& operator=(const CRecordFields&) = delete;

    void AddTo(CLI::App& command);

    bool IsAnyGiven() const;
    bool IsGiven(std::size_t iColumn) const;
    /** Sets what is given. @throws CToolError (USAGE) for a value that the column cannot have */
    void Apply(CSettingsRow& row) const;
    /**
     * @param iPassedOver a column that is not looked at
     * @return the first option whose column is not what it was set to any more; null when there is none
     */
    const SRecordField* FindLost(const CSettingsRow& row, std::size_t iPassedOver) const;

  private:
    void Apply(std::size_t iField, CSettingsRow& row) const;

    std::span<const SRecordField> m_aFields;
    std::vector<SGivenOption> m_vecOptions;  ///< one for each field
};
