#include "platform/localization/StringTable.h"

#include <map>
#include <mutex>

#include "platform/common/Paths.h"
#include "platform/common/TextTools.h"
#include "platform/config/CINIReader.h"
#include "platform/system/InstallPath.h"

namespace SYS {

namespace {

using CTexts = std::map<int, OS::x_wstring>;

constexpr const wchar_t* STRINGS_FILE = L"config/strings.txt";

/** Takes "number TAB text"; other lines say nothing. */
class CStringLines : public CINIReader::CIterateEachLineCallback {
  public:
    explicit CStringLines(CTexts& mapTexts) : m_mapTexts(mapTexts) {}

    bool OnLine(int, const std::wstring& strLine) override {
        const std::size_t iTab = strLine.find(L'\t');
        if (iTab != std::wstring::npos && iTab > 0 && strLine.find_first_not_of(L"0123456789") == iTab) {
            std::wstring strText = strLine.substr(iTab + 1);
            if (!strText.empty() && strText.back() == L'\r') {
                strText.pop_back();
            }
            m_mapTexts[OS::WideToInt(strLine)] = strText;
        }
        return true;
    }

  private:
    CTexts& m_mapTexts;
};

struct SStringTable {
    std::mutex lock;
    CTexts mapSet;
    CTexts mapRead;
    OS::x_wstring strReadFrom;
};

SStringTable& StringTable() {
    static SStringTable s_table;
    return s_table;
}

void ReadAgainIfMoved(SStringTable& table) {
    const OS::x_wstring strFile = NS_StringUtils::concatPath(GetInstallPath(), STRINGS_FILE);
    if (table.strReadFrom == strFile) {
        return;
    }
    table.mapRead.clear();
    CStringLines lines(table.mapRead);
    CINIReader reader;
    reader.Parse(strFile.c_str(), L"r");
    reader.Enumerate(lines);
    table.strReadFrom = strFile;
}

const OS::x_wstring* Find(const CTexts& mapTexts, int iNumber) {
    const auto found = mapTexts.find(iNumber);
    return found == mapTexts.end() ? nullptr : &found->second;
}

}  // namespace

OS::x_wstring LoadStringW(int iNumber) {
    SStringTable& table = StringTable();
    const std::lock_guard lock(table.lock);
    if (const OS::x_wstring* pText = Find(table.mapSet, iNumber)) {
        return *pText;
    }
    ReadAgainIfMoved(table);
    const OS::x_wstring* pText = Find(table.mapRead, iNumber);
    return pText != nullptr ? *pText : OS::x_wstring();
}

void SetStringW(int iNumber, const OS::x_wstring& strText) {
    SStringTable& table = StringTable();
    const std::lock_guard lock(table.lock);
    table.mapSet[iNumber] = strText;
}

}  // namespace SYS
