#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/common/PlatformExport.h"

/** What the settings store keeps: three tables, each described once by its columns. Every backend reads from here. */
enum class ESettingsKind : std::int32_t { EXPRESSION = 0, KEYWORD = 1, TEMPLATE = 2 };
inline constexpr std::size_t SETTINGS_KINDS = 3;
inline constexpr ESettingsKind ALL_SETTINGS_KINDS[] = {ESettingsKind::EXPRESSION, ESettingsKind::KEYWORD,
                                                       ESettingsKind::TEMPLATE};

enum class EColumnType {
    TEXT,           ///< UTF-8
    NULLABLE_TEXT,  ///< UTF-8 or nothing
    NUMBER,         ///< signed 32 bits
    FLAG,           ///< 0 or 1
    TEXT_LIST,      ///< texts in order, duplicates kept
};

struct SColumn {
    const char* pName;
    EColumnType eType;
    bool bIndexed;
};

struct STable {
    ESettingsKind eKind;
    const char* pName;
    const SColumn* pColumns;  ///< the first is the key, named "subject"
    std::size_t iColumns;
};

/** What the versions of a store's schema added. */
namespace SchemaVersion {
inline constexpr int TABLES = 1;       ///< the tables below
inline constexpr int RECORD_SUMS = 2;  ///< a checksum in every record, and totals
inline constexpr int PAGE_SUMS = 3;    ///< a checksum in every page too
}  // namespace SchemaVersion

/** The version of new stores; a newer one is refused, and one of this version takes the place of an older one. */
inline constexpr int SETTINGS_SCHEMA_VERSION = SchemaVersion::PAGE_SUMS;

DLP_PLATFORM_API const STable& GetSettingsTable(ESettingsKind eKind) noexcept;

/** Columns by position; those of AssetColumn stand alike in the two asset tables. */
namespace AssetColumn {
enum : std::size_t { SUBJECT, NAME, DISPLAY_NAME, DESCRIPTION, PRE_DEFINED, MODIFIED, SCOPE, COUNT };
}
namespace ExpressionColumn {
enum : std::size_t {
    TYPE = AssetColumn::COUNT,
    VALIDATOR,
    CASE_SENSITIVE,
    MIN_LENGTH,
    MAX_LENGTH,
    SUFFIX_LENGTH,
    MIN_LEFT_RADIUS,
    MAX_LEFT_RADIUS,
    MAX_RIGHT_RADIUS,
    PATTERN,
    ALPHABET_CHARSET,
    DISPLAY_FORMAT,
    EXAMPLE,
    COUNT
};
}
namespace KeywordColumn {
enum : std::size_t { CONDITION = AssetColumn::COUNT, THRESHOLD, NUMBER, TEXT, COUNT };
}
namespace TemplateColumn {
/** ELEMENT_NAME is the name attribute of the element's template node; nothing when the element has no such node. */
enum : std::size_t {
    SUBJECT,
    ELEMENT_NAME,
    DISPLAY_NAME,
    DESCRIPTION,
    PRE_DEFINED,
    SCOPE,
    INDUSTRIES,
    REGIONS,
    ELEMENT,
    COUNT
};
}  // namespace TemplateColumn
