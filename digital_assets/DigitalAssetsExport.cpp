#include <algorithm>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "digital_assets/AssetFormat.h"
#include "digital_assets/AssetLog.h"
#include "digital_assets/DigitalAssets.h"
#include "digital_assets/ExportObserver.h"
#include "digital_assets/KeywordText.h"
#include "platform/common/TextConversion.h"
#include "platform/logging/DebugLog.h"
#include "platform/store/CSettingsStore.h"
#include "platform/xml/CXMLWriter.h"
#include "settings/CCfgSettingDLPFilterExpression.h"
#include "settings/CCfgSettingDLPFilterKeyword.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace DigitalAssets {

namespace {

using Record = boost::shared_ptr<CCfgSettingDLPDigitalAsset>;

/** What the export of one kind needs beside its format. */
struct SExport {
    const SAssetFormat& format;
    Record (*fnMake)(const OS::x_wstring& strSubject);
    const wchar_t* pUnknownType;
    const wchar_t* pException;
    const wchar_t* pFailed;
};

template <class T>
Record Make(const OS::x_wstring& strSubject) {
    return boost::make_shared<T>(strSubject);
}

constexpr SExport EXPRESSIONS = {
    .format = EXPRESSION_FORMAT,
    .fnMake = Make<CCfgSettingDLPFilterExpression>,
    .pUnknownType = L"Unknow expression type",
    .pException = L"Fail to generate entity xml, Error: %s",
    .pFailed = L"Fail to generate entity node.",
};
constexpr SExport KEYWORDS = {
    .format = KEYWORD_FORMAT,
    .fnMake = Make<CCfgSettingDLPFilterKeyword>,
    .pUnknownType = L"Unknow dictionary type",
    .pException = L"Fail to generate dictionary xml, Error: %s",
    .pFailed = L"Fail to generate dictionary node.",
};

constexpr wchar_t NO_DICTIONARY[] = L"the stored keywords are no dictionary document";
constexpr wchar_t TOO_DEEP[] = L"the stored keywords nest too deep to be read again";
constexpr wchar_t ASSETS_GENERATED[] = L"CDLPDigitalAssetsParser::GenerateDigitalAssetsXML()";
constexpr wchar_t PART_FAILED[] = L"Fail to generate xml file digital assets part.";

/** What is appended to a text, taken back unless kept. */
class CAppended {
  public:
    explicit CAppended(std::string& strText) : m_strText(strText), m_iStart(strText.size()) {}
    CAppended(const CAppended&) = delete;
    CAppended& operator=(const CAppended&) = delete;
    ~CAppended() {
        if (!m_bKept) {
            m_strText.resize(std::min(m_iStart, m_strText.size()));
        }
    }
    void Keep() { m_bKept = true; }

  private:
    std::string& m_strText;
    std::size_t m_iStart;
    bool m_bKept = false;
};

void TellFailed(CExportObserver* pObserver, const OS::x_wstring& strSubject, const std::wstring& strMessage) {
    if (pObserver != nullptr) {
        pObserver->OnRecordFailed(OS::Utf8Lenient(strSubject), OS::Utf8Lenient(strMessage));
    }
}

/** Both log why a step failed and answer false. */
bool Failed(const wchar_t* pMessage) {
    DLP_LOG(DBG::LEVEL_FAILURE, pMessage);
    return false;
}
bool NotFound(const wchar_t* pFormat, const char* pElement) {
    DLP_LOG(DBG::LEVEL_FAILURE, pFormat, OS::WideText(pElement));
    return false;
}

/** @return false, logged, when the text is no dictionary document */
bool WriteKeywords(const std::string& strText, CXMLWriter& writer) {
    if (writer.Content(strText, TagUtf8::DICTIONARY, TagUtf8::KEYWORD)) {
        return true;
    }
    CXMLParser document;
    document.LoadUtf8(strText);
    const CXMLView dictionary = FindDictionary(document);
    if (!dictionary) {
        DLP_LOG(DBG::LEVEL_FAILURE,
                L"CDLPDigitalAssetsParser::GenerateDictionaryXml() Unable to find node %s.                    The xml "
                L"file format is incompatible.",
                XmlHelpers::RootPath({Tag::DICTIONARY, Tag::KEYWORD}));
        return false;
    }
    for (CXMLView node = dictionary.FirstChild(TagUtf8::KEYWORD); node; node = node.NextSibling(TagUtf8::KEYWORD)) {
        writer.Node(node);
    }
    return true;
}

/** Writes one record's element. @return false, logged, when it cannot be written */
bool WriteElement(const SExport& kind, const CSettingsRow& row, const OS::x_wstring& strSubject, CXMLWriter& writer,
                  CExportObserver* pObserver) {
    try {
        writer.StartElement(kind.format.pElement);
        if (!writer.IsIn(kind.format.pElement)) {
            return NotFound(NODE_NOT_FOUND, kind.format.pElement);
        }
        const SType* pType = FindStoredType(kind.format, row);
        if (pType == nullptr) {
            DLP_LOG(DBG::LEVEL_CONTENT, kind.pUnknownType);
        }
        WriteAttributes(kind.format, row, pType, writer);
        WriteChildren(kind.format, row, writer);
        if (kind.format.iMarkupColumn != AssetColumn::SUBJECT &&
            !WriteKeywords(row.GetText(kind.format.iMarkupColumn), writer)) {
            TellFailed(pObserver, strSubject, NO_DICTIONARY);
            return false;
        }
        writer.EndElement();
        return true;
    } catch (const OS::CException& error) {
        DLP_LOG(DBG::LEVEL_ERROR, kind.pException, strSubject + L": " + error.GetErrorMessage());
        TellFailed(pObserver, strSubject, error.GetErrorMessage());
        return false;
    }
}

Record Load(const SExport& kind, const OS::x_wstring& strSubject, CExportObserver* pObserver) {
    try {
        Record pRecord = kind.fnMake(strSubject);
        pRecord->GetThis();
        return pRecord;
    } catch (const OS::CException& error) {
        TellFailed(pObserver, strSubject, error.GetErrorMessage());
        throw;
    }
}

bool WriteRecords(const SExport& kind, const std::vector<OS::x_wstring>& vecSubjects, CXMLWriter& writer,
                  CExportObserver* pObserver) {
    bool bTooDeep = false;
    for (const OS::x_wstring& strSubject : vecSubjects) {
        if (pObserver != nullptr) {
            pObserver->OnRecord();
        }
        const Record pRecord = Load(kind, strSubject, pObserver);
        if (!WriteElement(kind, pRecord->Row(), strSubject, writer, pObserver)) {
            return Failed(kind.pFailed);
        }
        if (!writer.HasEnded(kind.format.pElement)) {
            return NotFound(NODE_NOT_FOUND, kind.format.pElement);
        }
        if (!bTooDeep && writer.DepthWritten() >= CXMLParser::MAX_DEPTH) {
            bTooDeep = true;
            TellFailed(pObserver, strSubject, TOO_DEEP);
        }
    }
    return true;
}

bool WriteRoot(CXMLWriter& writer, bool bWhole) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CDLPDigitalAssetsParser::GenerateRootXML()");
    try {
        writer.Declaration();
        writer.StartElement(TagUtf8::SA_POLICY);
        if (!writer.IsIn(TagUtf8::SA_POLICY)) {
            return NotFound(NODE_NOT_FOUND, TagUtf8::SA_POLICY);
        }
        writer.Attribute(TagUtf8::TEMPLATE_VERSION, OS::WCharToChar(CDLPDigitalAssetsParser::GetVersion()));
        writer.Attribute(TagUtf8::LOCALIZATION_LANGUAGE, OS::WCharToChar(CDLPDigitalAssetsParser::GetLanguage()));
        if (bWhole) {
            writer.EndElement();
        }
        return true;
    } catch (const OS::CException& error) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"Fail to generate xml file root part, Error: %s", error.GetErrorMessage());
        return false;
    }
}

}  // namespace

bool StartRoot(CXMLWriter& writer) {
    return WriteRoot(writer, false);
}

bool WriteEmptyRoot(CXMLWriter& writer) {
    return WriteRoot(writer, true);
}

bool Generate(const std::vector<OS::x_wstring>& vecExpressions, const std::vector<OS::x_wstring>& vecKeywords,
              CXMLWriter& writer, CExportObserver* pObserver) {
    DLP_LOG(DBG::LEVEL_ENTER, ASSETS_GENERATED);
    try {
        CSettingsTransaction unit(EUnitOfWork::READ);
        writer.StartElement(TagUtf8::DIGITAL_ASSETS);
        if (!writer.IsIn(TagUtf8::DIGITAL_ASSETS)) {
            return NotFound(NODE_NOT_FOUND, TagUtf8::DIGITAL_ASSETS);
        }
        writer.Attribute(TagUtf8::COMMAND, Value::OVERWRITE);
        if (!WriteRecords(EXPRESSIONS, vecExpressions, writer, pObserver) ||
            !WriteRecords(KEYWORDS, vecKeywords, writer, pObserver)) {
            return false;
        }
        writer.EndElement();
        unit.Commit();
    } catch (const OS::CException& error) {
        DLP_LOG(DBG::LEVEL_ERROR, L"Fail to generate digital access xml, Error: %s", error.GetErrorMessage());
        return false;
    }
    DLP_LOG(DBG::LEVEL_LEAVE, ASSETS_GENERATED);
    return true;
}

std::function<void(std::string&)> MakeTaker(CExportObserver* pObserver) {
    if (pObserver == nullptr) {
        return {};
    }
    return [pObserver](std::string& strText) { pObserver->OnText(strText); };
}

bool Export(const std::vector<OS::x_wstring>& vecExpressions, const std::vector<OS::x_wstring>& vecKeywords,
            std::string& strOut, CExportObserver* pObserver) {
    DLP_LOG(DBG::LEVEL_ENTER, L"CDLPDigitalAssetsParser::ExportDigitalAssets()");
    CAppended appended(strOut);
    try {
        CXMLWriter writer(strOut, MakeTaker(pObserver));
        if (!StartRoot(writer)) {
            return Failed(PART_FAILED);
        }
        if (!writer.IsIn(TagUtf8::SA_POLICY)) {
            return NotFound(NOT_FOUND, TagUtf8::SA_POLICY);
        }
        if (!Generate(vecExpressions, vecKeywords, writer, pObserver)) {
            return Failed(PART_FAILED);
        }
        if (!writer.HasEnded(TagUtf8::DIGITAL_ASSETS)) {
            return NotFound(NOT_FOUND, TagUtf8::DIGITAL_ASSETS);
        }
        writer.EndElement();
    } catch (const OS::CException& error) {
        DLP_LOG(DBG::LEVEL_FAILURE, L"Fail to export digital assets xml file, Error: %s", error.GetErrorMessage());
        return false;
    }
    appended.Keep();
    return true;
}

}  // namespace DigitalAssets
