#include "digital_assets/AssetFormat.h"

#include <set>

#include "api/CDLPDigitalAssetsParser.h"
#include "platform/common/TextTools.h"
#include "platform/xml/CXMLParser.h"
#include "platform/xml/CXMLWriter.h"
#include "tests/digital_assets/AssetFixture.h"

using namespace DigitalAssets;

namespace {

class AssetFormat : public CAssetFixture {
  protected:
    static constexpr const SAssetFormat* FORMATS[] = {&EXPRESSION_FORMAT, &KEYWORD_FORMAT};

    static ESettingsKind KindOf(const SAssetFormat& format) {
        return format.eKind == EItemKind::EXPRESSION ? ESettingsKind::EXPRESSION : ESettingsKind::KEYWORD;
    }
    static std::string SubjectOf(const SAssetFormat& format) {
        return OS::Utf8Lenient(format.eKind == EItemKind::EXPRESSION ? SUBJECT_EXPRESSION : SUBJECT_KEYWORD) + "n";
    }

    /** A row of that type in which every column that such a record uses has a value of its own. */
    static CSettingsRow FullRow(const SAssetFormat& format, const SType& type) {
        const ESettingsKind eKind = KindOf(format);
        const STable& table = GetSettingsTable(eKind);
        CSettingsRow row(eKind);
        for (std::size_t i = 0; i < table.iColumns; ++i) {
            if (table.pColumns[i].eType == EColumnType::TEXT) {
                row.SetText(i, std::string("value of ") + table.pColumns[i].pName);
            } else if (table.pColumns[i].eType == EColumnType::FLAG && i != AssetColumn::MODIFIED) {
                row.SetFlag(i, true);
            }
        }
        int iNumber = 100;
        for (const SNumber& number : type.aNumbers) {
            row.SetNumber(number.iColumn, ++iNumber);
        }
        row.SetText(AssetColumn::SUBJECT, SubjectOf(format));
        row.SetText(AssetColumn::NAME, "n");
        row.SetText(AssetColumn::SCOPE, "");
        row.SetText(format.iTypeColumn, type.pName);
        if (format.iMarkupColumn != AssetColumn::SUBJECT) {
            row.SetText(format.iMarkupColumn, "<dictionary><keyword score=\"1\">k</keyword></dictionary>");
        }
        return row;
    }
    static std::wstring Export(const SAssetFormat& format) {
        const std::vector<OS::x_wstring> vecSubject{OS::WideText(SubjectOf(format))};
        const bool bExpression = format.eKind == EItemKind::EXPRESSION;
        std::wstring strText;
        EXPECT_TRUE(CDLPDigitalAssetsParser().ExportDigitalAssets(
            L"", bExpression ? vecSubject : std::vector<OS::x_wstring>(),
            bExpression ? std::vector<OS::x_wstring>() : vecSubject, strText));
        return strText;
    }
};

}  // namespace

TEST_F(AssetFormat, EveryColumnComesFromXmlOrIsKnownNotTo) {
    for (const SAssetFormat* const pFormat : FORMATS) {
        std::multiset<std::size_t> lstColumns{AssetColumn::SUBJECT, AssetColumn::MODIFIED, AssetColumn::SCOPE};
        for (const SAttribute& attribute : pFormat->aAttributes) {
            if (attribute.eForm != EAttribute::NUMBERS) {
                lstColumns.insert(attribute.iColumn);
            }
        }
        std::set<std::size_t> lstNumbers;
        for (const SType& type : pFormat->aTypes) {
            for (const SNumber& number : type.aNumbers) {
                lstNumbers.insert(number.iColumn);
            }
        }
        lstColumns.insert(lstNumbers.begin(), lstNumbers.end());
        for (const SChild& child : pFormat->aChildren) {
            lstColumns.insert(child.iColumn);
        }
        if (pFormat->iMarkupColumn != AssetColumn::SUBJECT) {
            lstColumns.insert(pFormat->iMarkupColumn);
        }
        std::multiset<std::size_t> lstExpected;
        for (std::size_t i = 0; i < GetSettingsTable(KindOf(*pFormat)).iColumns; ++i) {
            lstExpected.insert(i);
        }
        EXPECT_EQ(lstColumns, lstExpected) << pFormat->pElement;
    }
}

TEST_F(AssetFormat, EveryRowOfTheTablesSurvivesExportAndImport) {
    for (const SAssetFormat* const pFormat : FORMATS) {
        for (const SType& type : pFormat->aTypes) {
            CSettingsRow row = FullRow(*pFormat, type);
            if (&type == &EXPRESSION_FORMAT.aTypes.front()) {
                row.SetText(ExpressionColumn::ALPHABET_CHARSET, "");
            }
            CSettingsStore::Open("memory:");
            CSettingsStore::Current().Save(row);
            const std::string strBefore = Dump();
            const std::wstring strText = Export(*pFormat);
            CSettingsStore::Open("memory:");
            std::vector<OS::x_wstring> vecSkipped;
            EXPECT_EQ(CDLPDigitalAssetsParser().ImportDigitalAssets(L"", strText, vecSkipped), 0);
            EXPECT_TRUE(vecSkipped.empty());
            if (pFormat->iMarkupColumn != AssetColumn::SUBJECT) {
                // The markup is kept with the attributes that the export wrote; what is exported of it is the same.
                EXPECT_EQ(Export(*pFormat), strText);
                CSettingsStore& store = CSettingsStore::Current();
                CSettingsRow stored = *store.FindOne(KindOf(*pFormat), AssetColumn::SUBJECT, row.GetSubject());
                stored.SetText(pFormat->iMarkupColumn, row.GetText(pFormat->iMarkupColumn));
                store.Save(stored);
            }
            EXPECT_EQ(Dump(), strBefore) << pFormat->pElement << ' ' << type.pName;
        }
    }
}

TEST_F(AssetFormat, EveryNumberIsReadForItsTypesOnly) {
    for (const SAssetFormat* const pFormat : FORMATS) {
        std::set<std::pair<std::string, std::size_t>> lstNumbers;
        std::string strAttributes;
        for (const SType& type : pFormat->aTypes) {
            for (const SNumber& number : type.aNumbers) {
                if (lstNumbers.emplace(number.pName, number.iColumn).second) {
                    strAttributes += std::string(" ") + number.pName + "=\"7\"";
                }
            }
        }
        for (const SType& type : pFormat->aTypes) {
            CSettingsStore::Open("memory:");
            const std::string strElement = pFormat->pElement;
            std::vector<OS::x_wstring> vecSkipped;
            EXPECT_EQ(
                CDLPDigitalAssetsParser().ImportDigitalAssets(
                    L"",
                    OS::WideText("<SAPolicy><digitalAssets><" + strElement + " name=\"n\" display_name=\"d\" type=\"" +
                                 type.pName + '"' + strAttributes + "><regularExpression/><alphabetCharset/></" +
                                 strElement + "></digitalAssets></SAPolicy>"),
                    vecSkipped),
                0);
            const auto pRow =
                CSettingsStore::Current().FindOne(KindOf(*pFormat), AssetColumn::SUBJECT, SubjectOf(*pFormat));
            ASSERT_NE(pRow, nullptr);
            for (const auto& [strName, iColumn] : lstNumbers) {
                const bool bCarried =
                    std::any_of(type.aNumbers.begin(), type.aNumbers.end(),
                                [iWanted = iColumn](const SNumber& number) { return number.iColumn == iWanted; });
                EXPECT_EQ(pRow->GetNumber(iColumn), bCarried ? 7 : 0) << type.pName << ' ' << strName;
            }
        }
    }
}

TEST_F(AssetFormat, NormalisedRowIsWhatWritingAndReadingGives) {
    for (const SAssetFormat* pFormat : FORMATS) {
        for (const SType& type : pFormat->aTypes) {
            CSettingsRow row = FullRow(*pFormat, type);
            for (const SType& other : pFormat->aTypes) {
                for (const SNumber& number : other.aNumbers) {
                    row.SetNumber(number.iColumn, 7);
                }
            }
            if (!pFormat->bTypeCaseMatters) {
                row.SetText(pFormat->iTypeColumn, OS::Utf8Lenient(OS::ToUpper(OS::WideText(type.pName))));
            }
            CSettingsRow normalised = row;
            Normalise(*pFormat, normalised);

            std::string strXml;
            CXMLWriter writer(strXml);
            writer.StartElement(pFormat->pElement);
            WriteAttributes(*pFormat, row, FindStoredType(*pFormat, row), writer);
            WriteChildren(*pFormat, row, writer);
            writer.EndElement();
            CXMLParser document;
            ASSERT_TRUE(document.LoadUtf8(strXml));
            EXPECT_EQ(nullptr, ReadElement(*pFormat, document.RootView(), row));
            row.SetText(pFormat->iMarkupColumn, normalised.GetText(pFormat->iMarkupColumn));
            EXPECT_TRUE(normalised == row) << type.pName;
        }
    }
}

TEST_F(AssetFormat, RowOfAnUnknownTypeIsNormalAlready) {
    CSettingsRow row = FullRow(KEYWORD_FORMAT, KEYWORD_FORMAT.aTypes[2]);
    row.SetText(KeywordColumn::CONDITION, "threshold");
    CSettingsRow normalised = row;
    Normalise(KEYWORD_FORMAT, normalised);
    EXPECT_TRUE(normalised == row);
}
