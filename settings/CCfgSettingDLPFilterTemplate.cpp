#include "settings/CCfgSettingDLPFilterTemplate.h"

#include <utility>

#include "platform/xml/CXMLParser.h"
#include "settings/StoredRecords.h"
#include "xml/Vocabulary.h"

namespace {

void WidenAll(const std::vector<std::string>& vecTexts, std::vector<OS::x_wstring>& vecOut) {
    vecOut.clear();
    vecOut.reserve(vecTexts.size());
    for (const std::string& strText : vecTexts) {
        vecOut.push_back(OS::WideLoose(strText));
    }
}

std::vector<std::string> NarrowAll(const std::vector<OS::x_wstring>& vecTexts) {
    std::vector<std::string> vecOut;
    vecOut.reserve(vecTexts.size());
    for (const OS::x_wstring& strText : vecTexts) {
        vecOut.push_back(OS::Utf8Loose(strText));
    }
    return vecOut;
}

}  // namespace

bool CCfgSettingDLPFilterTemplate::CCfgSettingDLPFilterTemplateComp::operator()(
    const boost::shared_ptr<CCfgSettingDLPFilterTemplate>& pLeft,
    const boost::shared_ptr<CCfgSettingDLPFilterTemplate>& pRight) const {
    return StoredRecords::ComesBefore(pLeft ? &pLeft->m_row : nullptr, pRight ? &pRight->m_row : nullptr);
}

CCfgSettingDLPFilterTemplate::CCfgSettingDLPFilterTemplate(const OS::x_wstring& strInstanceName)
    : m_row(ESettingsKind::TEMPLATE) {
    m_row.SetText(TemplateColumn::SUBJECT, OS::Utf8Loose(strInstanceName));
}

CCfgSettingDLPFilterTemplate::CCfgSettingDLPFilterTemplate(CSettingsRow&& row) : m_row(std::move(row)) {}

CCfgSettingDLPFilterTemplate::~CCfgSettingDLPFilterTemplate() = default;

void CCfgSettingDLPFilterTemplate::GetNameW(OS::x_wstring& strOut) const {
    strOut = OS::WideLoose(m_row.GetText(TemplateColumn::DISPLAY_NAME));
}

void CCfgSettingDLPFilterTemplate::GetDescription(OS::x_wstring& strOut) const {
    strOut = OS::WideLoose(m_row.GetText(TemplateColumn::DESCRIPTION));
}

void CCfgSettingDLPFilterTemplate::SetDescription(const OS::x_wstring& strDescription) {
    m_row.SetText(TemplateColumn::DESCRIPTION, OS::Utf8Loose(strDescription));
}

void CCfgSettingDLPFilterTemplate::GetIndustry(std::vector<OS::x_wstring>& vecOut) const {
    WidenAll(m_row.GetList(TemplateColumn::INDUSTRIES), vecOut);
}

void CCfgSettingDLPFilterTemplate::SetIndustry(const std::vector<OS::x_wstring>& vecNames) {
    m_row.SetList(TemplateColumn::INDUSTRIES, NarrowAll(vecNames));
}

void CCfgSettingDLPFilterTemplate::GetRegion(std::vector<OS::x_wstring>& vecOut) const {
    WidenAll(m_row.GetList(TemplateColumn::REGIONS), vecOut);
}

void CCfgSettingDLPFilterTemplate::SetRegion(const std::vector<OS::x_wstring>& vecNames) {
    m_row.SetList(TemplateColumn::REGIONS, NarrowAll(vecNames));
}

bool CCfgSettingDLPFilterTemplate::IsBuiltIn() const {
    return m_row.GetFlag(TemplateColumn::PRE_DEFINED);
}

void CCfgSettingDLPFilterTemplate::SetIsBuildIn(bool bBuiltIn) {
    m_row.SetFlag(TemplateColumn::PRE_DEFINED, bBuiltIn);
}

void CCfgSettingDLPFilterTemplate::GetElement(OS::x_wstring& strOut) const {
    strOut = OS::WideLoose(m_row.GetText(TemplateColumn::ELEMENT));
}

void CCfgSettingDLPFilterTemplate::SetElement(const OS::x_wstring& strXml) {
    m_row.SetText(TemplateColumn::ELEMENT, OS::Utf8Loose(strXml));
    m_bElementNameKnown = false;
}

void CCfgSettingDLPFilterTemplate::SetElementMarkup(std::string strXml, std::string strElementName) {
    m_row.SetText(TemplateColumn::ELEMENT, std::move(strXml));
    m_row.SetText(TemplateColumn::ELEMENT_NAME, std::move(strElementName));
    m_bElementNameKnown = true;
}

void CCfgSettingDLPFilterTemplate::SetUniqueName(const OS::x_wstring& strScope, const OS::x_wstring& strDisplayName) {
    m_row.SetText(TemplateColumn::SCOPE, OS::Utf8Loose(strScope));
    m_row.SetText(TemplateColumn::DISPLAY_NAME, OS::Utf8Loose(strDisplayName));
}

CSubjectID CCfgSettingDLPFilterTemplate::GetSubjectID() const {
    return CSubjectID(OS::WideLoose(m_row.GetSubject()));
}

const CSettingsRow& CCfgSettingDLPFilterTemplate::Row() const {
    if (!m_bElementNameKnown) {
        CXMLParser document;
        document.LoadUtf8(m_row.GetText(TemplateColumn::ELEMENT));
        const CXMLView root = document.RootView();
        if (root.Name() == TagUtf8::TEMPLATE) {
            m_row.SetText(TemplateColumn::ELEMENT_NAME, std::string(root.Attribute(TagUtf8::NAME)));
        } else {
            m_row.SetNull(TemplateColumn::ELEMENT_NAME);
        }
        m_bElementNameKnown = true;
    }
    return m_row;
}

void CCfgSettingDLPFilterTemplate::SaveThis() {
    CSettingsStore::Current().Save(Row());
}

OS::x_wstring CCfgSettingDLPFilterTemplate::GetCategroyName() {
    return L"CFG_DLP_TEMPLATE";
}

CCfgSettingDLPFilterTemplateMgr* CCfgSettingDLPFilterTemplateMgr::Instance() {
    static CCfgSettingDLPFilterTemplateMgr s_manager;
    return &s_manager;
}

bool CCfgSettingDLPFilterTemplateMgr::GetTemplateList(List& lstOut) {
    return StoredRecords::ReadList(ESettingsKind::TEMPLATE, lstOut);
}

bool CCfgSettingDLPFilterTemplateMgr::SetTemplateList(List& lstTemplates) {
    try {
        std::vector<CSettingsRow> vecRows;
        for (const auto& pTemplate : lstTemplates) {
            if (pTemplate != nullptr) {
                vecRows.push_back(pTemplate->Row());
            }
        }
        CSettingsStore::Current().ReplaceAll(ESettingsKind::TEMPLATE, vecRows);
        return true;
    } catch (const OS::CException&) {
        return false;
    }
}

void CCfgSettingDLPFilterTemplateMgr::FindBy(std::size_t iColumn, const std::vector<std::string>& vecValues,
                                             std::vector<boost::shared_ptr<CCfgSettingDLPFilterTemplate>>& vecRecords) {
    std::vector<std::unique_ptr<CSettingsRow>> vecRows;
    CSettingsStore::Current().Find(ESettingsKind::TEMPLATE, iColumn, vecValues, vecRows);
    vecRecords.clear();
    for (const auto& pRow : vecRows) {
        vecRecords.push_back(pRow != nullptr ? boost::make_shared<CCfgSettingDLPFilterTemplate>(std::move(*pRow))
                                             : nullptr);
    }
}

std::size_t CCfgSettingDLPFilterTemplateMgr::Count() {
    return CSettingsStore::Current().Count(ESettingsKind::TEMPLATE);
}
