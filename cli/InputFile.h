#pragma once

#include <string>
#include <string_view>

#include "cli/Verdict.h"
#include "cli/check/DiagnosticCodes.h"
#include "platform/common/SourcePlaces.h"
#include "platform/xml/CXMLView.h"
#include "templates/PolicyFile.h"

class CCommandContext;
class CPolicyDocument;

/** Names the store of --store where a policy is meant that may be a file or a store. */
inline constexpr const char STORE_WORD[] = "store";

/** A file that cannot be worked on: why, and where in it. Its message is the one line "FILE:LINE:COLUMN: reason". */
class CInputError : public CToolError {
  public:
    /** @param strReason printable @param place none when the file as a whole is meant */
    CInputError(const std::string& strFile, const std::string& strReason, SPlace place = {},
                ECode eCode = ECode::UNREADABLE);
    const std::string& GetReason() const { return m_strReason; }
    SPlace GetPlace() const { return m_place; }
    ECode GetCode() const { return m_eCode; }

  private:
    std::string m_strReason;
    SPlace m_place;
    ECode m_eCode;
};

/** @return "FILE:LINE:COLUMN", or "FILE" alone without a place; printable */
std::string FormatPlace(const std::string& strFile, SPlace place);

/**
 * Reads a policy file as every file import does; what is no regular file is read to its end.
 * @param strFile as it was given; "-" is standard input
 * @throws CInputError when it cannot be read, is empty, holds no "<" or is not UTF-8
 */
SPolicyFile ReadPolicy(CCommandContext& context, const std::string& strFile);

/**
 * Parses a policy file's text.
 * @param document made of the text of the file
 * @return the document's root @throws CInputError with the place when the text is no well-formed XML
 */
CXMLView ParsePolicy(const std::string& strFile, const SPolicyFile& file, CPolicyDocument& document);

inline constexpr const char STORE_FILE[] =
    "a store, no document; where a store can stand it is written as sqlite:PATH, else by --store";
/** @return whether a file's bytes are those of a store */
bool IsStoreFile(std::string_view strBytes);

/** @return whether markup, which begins at the first "<", is in UTF-16 of either byte order */
bool IsUtf16(std::string_view strBytes);

/** Reads a file whole. @throws CInputError when it cannot be read */
std::string ReadBytes(CCommandContext& context, const std::string& strFile);

/** Reads a descriptor to its end. @throws std::system_error; Signals::SInterrupted when a signal came meanwhile */
std::string ReadDescriptor(int iDescriptor);
