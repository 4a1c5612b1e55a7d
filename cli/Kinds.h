#pragma once

#include <string>

#include "platform/store/SettingsSchema.h"

/** The kinds of records as the command line, JSON and people call them. */
struct SKind {
    ESettingsKind eKind;
    const char* pSingular;    ///< the word on the command line and in JSON
    const char* pPlural;      ///< the same for several
    const char* pList;        ///< the list's key in a dump
    const char* pWord;        ///< for people
    const char* pWords;       ///< for people, several
    const wchar_t* pSubject;  ///< what subject identifiers begin with
};

/** In the order of ESettingsKind. */
extern const SKind KINDS[SETTINGS_KINDS];

/** The internal name stands in the same column of every table. */
inline constexpr std::size_t NAME_COLUMN = AssetColumn::NAME;
static_assert(NAME_COLUMN == TemplateColumn::ELEMENT_NAME);
inline constexpr std::size_t DISPLAY_NAME_COLUMN = AssetColumn::DISPLAY_NAME;
static_assert(DISPLAY_NAME_COLUMN == TemplateColumn::DISPLAY_NAME);

inline const SKind& GetKind(ESettingsKind eKind) {
    return KINDS[static_cast<std::size_t>(eKind)];
}

/** @param strWord singular or plural @throws CToolError (USAGE) naming the words there are */
const SKind& FindKind(const std::string& strWord);
