#pragma once

#include <array>
#include <cstdint>

#include "platform/store/CSettingsRow.h"

/** @return 64 bits over the kind and every value of the record; the same on every machine */
std::uint64_t ChecksumOf(const CSettingsRow& row);

/** What a table holds altogether: it tells when a record has vanished, came in or was exchanged, in whatever order. */
struct SStoreTotals {
    std::uint64_t iRecords = 0;
    std::uint64_t iChecksum = 0;  ///< the sum of the records' checksums, modulo 2^64

    void Add(std::uint64_t iRecordChecksum) {
        ++iRecords;
        iChecksum += iRecordChecksum;
    }
    void Remove(std::uint64_t iRecordChecksum) {
        --iRecords;
        iChecksum -= iRecordChecksum;
    }
    friend bool operator==(const SStoreTotals& left, const SStoreTotals& right) {
        return left.iRecords == right.iRecords && left.iChecksum == right.iChecksum;
    }
    friend bool operator!=(const SStoreTotals& left, const SStoreTotals& right) { return !(left == right); }
};

/** By kind. */
using AllStoreTotals = std::array<SStoreTotals, SETTINGS_KINDS>;
