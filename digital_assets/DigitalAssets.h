#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/common/x_wstring.h"

class CExportObserver;
class CImportObserver;
class CPolicyDocument;
class CXMLView;
class CXMLWriter;

/**
 * The asset operations as the template room and the tool call them: on a document that is read already, into text that
 * is UTF-8. The exported class is a door to these; results and log lines are the same through each.
 */
namespace DigitalAssets {

/** Version of the format that this library writes by itself. */
inline constexpr wchar_t STANDARD_VERSION[] = L"3.0.1000";

/** What of a document's assets an import takes. */
enum class EImport { ALL, EXPRESSIONS, KEYWORDS };

/** What an import answers. */
enum EResult : int { RESULT_DONE = 0, RESULT_WRONG_LANGUAGE = 2, RESULT_FAILED = 3 };

/**
 * Checks the language, then reads expressions and keyword lists into the store, in one unit of work.
 * @param pObserver may be null
 * @return an EResult, as CDLPDigitalAssetsParser::ImportDigitalAssets
 */
int Import(EImport eImport, const OS::x_wstring& strScope, CPolicyDocument& document,
           std::vector<OS::x_wstring>& vecSkipped, CImportObserver* pObserver);

/** Tells of what stands among sections or assets and is none. @param pObserver may be null */
void TellUnknownElements(CPolicyDocument& document, CImportObserver* pObserver);

/**
 * Writes the declaration and the start tag of the root with version and language; the caller ends the element.
 * @return false, logged, when they cannot be written
 */
bool StartRoot(CXMLWriter& writer);
/** As StartRoot, but the whole element, empty. */
bool WriteEmptyRoot(CXMLWriter& writer);

/**
 * Writes the digitalAssets element with the chosen assets, all as they are at one moment; on failure a part of it. When
 * a keyword list nests so deep that the element cannot be read again, the result is true, the observer is told of the
 * list, and the writer has not ended the element in the sense of HasEnded.
 * @param vecExpressions, vecKeywords subject identifiers
 * @param pObserver told of the record over which it fails; may be null
 * @return false, logged, when any one record cannot be read or written
 */
bool Generate(const std::vector<OS::x_wstring>& vecExpressions, const std::vector<OS::x_wstring>& vecKeywords,
              CXMLWriter& writer, CExportObserver* pObserver);

/** @return what offers a writer's text to the observer, unless that is null */
std::function<void(std::string&)> MakeTaker(CExportObserver* pObserver);

/**
 * Appends a whole document with the chosen assets to strOut, but for what the observer takes; as Generate. On failure
 * strOut stays as it was, or empty if some of it was taken.
 */
bool Export(const std::vector<OS::x_wstring>& vecExpressions, const std::vector<OS::x_wstring>& vecKeywords,
            std::string& strOut, CExportObserver* pObserver);

}  // namespace DigitalAssets
