#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Verdict.h"
#include "cli/check/DiagnosticCodes.h"
#include "cli/check/Diagnostics.h"
#include "platform/common/SourcePlaces.h"
#include "platform/xml/CXMLView.h"
#include "templates/PolicyFile.h"

class CCommandContext;
class CPolicyDocument;
struct SXMLLoadError;

/** Names the store of --store where a policy is meant that may be a file or a store. */
inline constexpr const char STORE_WORD[] = "store";

/** Why a file is no document. */
struct SInputFault {
    ECode eCode = ECode::NOT_XML;
    std::vector<std::string> vecWhat;  ///< what stands for each {} of the code's sentences, printable
    std::vector<std::string> vecAdvice;
    std::size_t iOffset = std::string::npos;  ///< in the file; npos: the file as a whole
    std::optional<SRelated> related{};        ///< its offset counts in the file too
};

/** A file that cannot be worked on: why, and where in it. Its message is the one line "FILE:LINE:COLUMN: reason". */
class CInputError : public CToolError {
  public:
    /** @param strReason printable @param place none when the file as a whole is meant */
    CInputError(const std::string& strFile, const std::string& strReason, SPlace place = {},
                ECode eCode = ECode::UNREADABLE);
    CInputError(const std::string& strFile, const SPolicyFile& file, const SInputFault& fault);
    const std::string& GetReason() const { return m_strReason; }
    SPlace GetPlace() const { return m_place; }
    ECode GetCode() const { return m_eCode; }
    /** @return another place that the reason speaks of */
    const std::optional<SRelated>& GetRelated() const { return m_related; }

  private:
    std::string m_strReason;
    SPlace m_place;
    ECode m_eCode;
    std::optional<SRelated> m_related;
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

/** @return why a file's bytes cannot be a document; none when they may be one */
std::optional<SInputFault> FindTextFault(const SPolicyFile& file);
/** @return why the text of a file is no XML, which an error says in the words of the engine */
SInputFault MakeXmlFault(const SPolicyFile& file, const SXMLLoadError& error);
/** @return bytes of a file, and where its text begins */
SPolicyFile TakeBytes(std::string strBytes);

/** @throws CToolError (USAGE) when standard input is named twice */
void RequireOneInput(const std::vector<std::string>& vecFiles);

/** Reads a file whole. @throws CInputError when it cannot be read, or is larger than any input may be */
std::string ReadBytes(CCommandContext& context, const std::string& strFile);

/** Reads a descriptor to its end. @throws std::system_error, also when there is more than any input may hold;
 * Signals::SInterrupted when a signal came meanwhile */
std::string ReadDescriptor(int iDescriptor);
