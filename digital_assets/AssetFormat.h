#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "digital_assets/ImportObserver.h"
#include "platform/store/CSettingsRow.h"
#include "platform/xml/CXMLView.h"

class CXMLWriter;

/**
 * How the two kinds of assets stand in XML, each described once by tables that reading and writing walk alike: which
 * attribute or child element belongs to which column, in the order of writing.
 */
namespace DigitalAssets {

/** How an attribute's text and its column's value go together. */
enum class EAttribute {
    TEXT,
    FLAG,     ///< "true" or "false"; anything but "true", in any case, is read as false
    TYPE,     ///< the name of one of the format's types
    NUMBERS,  ///< no attribute of its own: those of the type stand here
};

struct SAttribute {
    EAttribute eForm;
    const char* pName;
    std::size_t iColumn;
};

/** An attribute that some types carry; the column of any other record is 0. */
struct SNumber {
    const char* pName;
    std::size_t iColumn;
};

struct SType {
    const char* pName;
    std::span<const SNumber> aNumbers;
};

/** Which elements must have a child to be read. */
enum class ENeed {
    EVERY_TYPE,
    TYPED,  ///< every type but the first, for which the child is not even read
    NO_TYPE,
};

struct SChild {
    const char* pName;
    std::size_t iColumn;
    ENeed eNeed;
};

struct SAssetFormat {
    EItemKind eKind;
    const char* pElement;
    std::span<const SAttribute> aAttributes;
    std::size_t iTypeColumn;
    std::span<const SType> aTypes;  ///< the first is what an unknown type is read as
    bool bTypeCaseMatters;          ///< when writing; reading never minds
    std::span<const SChild> aChildren;
    /** Keeps the element's whole markup, whose keyword children are what is written; SUBJECT: no column does. */
    std::size_t iMarkupColumn;
};

extern const SAssetFormat EXPRESSION_FORMAT;
extern const SAssetFormat KEYWORD_FORMAT;

/**
 * Fills every column that the format names.
 * @return the child element that the element must have and has not, the row then filled in part; null when all is well
 */
const SChild* ReadElement(const SAssetFormat& format, const CXMLView& element, CSettingsRow& row);
/** The same but for the whole markup, which may be long. */
const SChild* ReadFields(const SAssetFormat& format, const CXMLView& element, CSettingsRow& row);

/** @return what keeps an element of any kind from being an item: NO_NAME, NO_DISPLAY_NAME, or NONE */
EReason CheckNames(const CXMLView& element);
/** @return whether a record is kept as it is: it is built in, and the element says that its own item is not */
bool IsBuiltInKept(const CSettingsRow& stored, const CXMLView& element);

/** @return the type that a record is written as; null when it is none of the format's */
const SType* FindStoredType(const SAssetFormat& format, const CSettingsRow& row);
/** Writes the attributes into the start tag. @param pType null: no numbers */
void WriteAttributes(const SAssetFormat& format, const CSettingsRow& row, const SType* pType, CXMLWriter& writer);
void WriteChildren(const SAssetFormat& format, const CSettingsRow& row, CXMLWriter& writer);
/**
 * Gives every column that the format names the value that it has after the record was written and read again; keeps the
 * markup, and the whole record if its type is none of the format's.
 */
void Normalise(const SAssetFormat& format, CSettingsRow& row);

}  // namespace DigitalAssets
