#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "api/CDLPDigitalAssetsParser.h"
#include "api/CDLPTemplateParse.h"
#include "fuzz/Targets.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "platform/store/SettingsSchema.h"
#include "tests/support/ExpatTree.h"
#include "tests/support/ProofCheck.h"
#include "xml/CPolicyDocument.h"

namespace Fuzz {

namespace {

constexpr const char STORE[] = "memory:";
constexpr const wchar_t VERSION[] = L"3.0.1000";

/** A fresh store, and the process's settings as at its start. */
void StartAnew() {
    CDLPDigitalAssetsParser::SetVersion(VERSION);
    CDLPDigitalAssetsParser::SetLanguage(L"");
    CSettingsStore::Open(STORE);
}

std::vector<OS::x_wstring> ReadColumn(ESettingsKind eKind, std::size_t iColumn) {
    std::vector<std::string> vecValues;
    CSettingsStore::Current().ReadColumn(eKind, iColumn, vecValues);
    std::vector<OS::x_wstring> vecWide;
    for (const std::string& strValue : vecValues) {
        vecWide.push_back(OS::WideText(strValue));
    }
    return vecWide;
}

std::string Shape(std::string_view strText) {
    SExpatNode root;
    Require(ReadWithExpat(strText, root), "a document that is taken is well-formed");
    DropBlanksBetweenElements(root);
    return Dump(root);
}

void CheckLoading(std::string_view strData) {
    CXMLParser parser;
    const bool bTaken = parser.Load(std::string(strData));
    Require(bTaken == (parser.GetRootElement() != nullptr), "a document has a root or an error");
    if (bTaken) {
        OS::x_wstring strSaved;
        parser.SaveXML(strSaved);
        Require(Shape(strData) == Shape(OS::Utf8Lenient(strSaved)), "a document that is written reads as it was");
    }
    CPolicyDocument document(strData);
    Require(bTaken == (document.Load().GetRootElement() != nullptr), "what nobody reads refuses no document");
}

/** What an import of a document tells and leaves. */
struct SImported {
    std::vector<OS::x_wstring> vecImported;
    std::vector<OS::x_wstring> vecSkipped;
    std::vector<OS::x_wstring> vecSkippedAssets;
    OS::x_wstring strExported;

    bool operator==(const SImported&) const = default;
};

SImported Import(const OS::x_wstring& strDocument) {
    StartAnew();
    SImported result;
    CDLPTemplateParse parse(L"");
    parse.DoTemplateImport(L"", strDocument, result.vecImported, result.vecSkipped, result.vecSkippedAssets);
    parse.DoTemplateExport(L"", ReadColumn(ESettingsKind::TEMPLATE, TemplateColumn::ELEMENT_NAME), result.strExported);
    return result;
}

/** With so much behind each tag nothing is kept out of the tree. */
OS::x_wstring MakeSparse(const OS::x_wstring& strDocument) {
    const auto iTags = static_cast<std::size_t>(std::count(strDocument.begin(), strDocument.end(), L'<'));
    return strDocument + L"<!--" + OS::x_wstring(16 * (iTags + 1), L' ') + L"-->";
}

void RequireTaken(const OS::x_wstring& strText) {
    CXMLParser document;
    Require(strText.empty() || document.LoadXML(strText), "what is exported is taken");
}

}  // namespace

void ImportDocument(std::string_view strData) {
    CheckLoading(strData);
    if (OS::FindInvalidUtf8(strData) != std::string_view::npos) {
        return;
    }
    const OS::x_wstring strDocument = OS::WideText(strData);
    const SImported imported = Import(strDocument);
    RequireTaken(imported.strExported);
    // What ends in the midst of a tag would end elsewhere.
    if (CPolicyDocument(strData).Load().GetRootElement() != nullptr) {
        Require(Import(MakeSparse(strDocument)) == imported, "what nobody reads makes no difference to an import");
    }
}

void ImportAssets(std::string_view strData) {
    if (OS::FindInvalidUtf8(strData) != std::string_view::npos) {
        return;
    }
    StartAnew();
    std::vector<OS::x_wstring> vecSkipped;
    CDLPDigitalAssetsParser parser;
    const int iResult = parser.ImportDigitalAssets(L"", OS::WideText(strData), vecSkipped);
    Require(iResult == 0 || iResult == 2 || iResult == 3, "an import of assets ends with a known result");
    std::wstring strExported;
    parser.ExportDigitalAssets(L"", ReadColumn(ESettingsKind::EXPRESSION, AssetColumn::SUBJECT),
                               ReadColumn(ESettingsKind::KEYWORD, AssetColumn::SUBJECT), strExported);
    RequireTaken(strExported);
}

void ProveDocument(std::string_view strData) {
    Require(FindFalseProof(strData).empty(), "what is proven of a document holds");
}

}  // namespace Fuzz
