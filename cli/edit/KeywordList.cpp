#include "cli/edit/KeywordList.h"

#include <utility>

#include "digital_assets/AssetFormat.h"
#include "digital_assets/KeywordText.h"
#include "platform/xml/CXMLWriter.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace {

constexpr int NEW_SCORE = 1;

void WriteKeyword(const SKeyword& keyword, CXMLWriter& writer) {
    writer.StartElement(TagUtf8::KEYWORD);
    writer.Attribute(TagUtf8::DESCRIPTION, keyword.strDescription);
    writer.Attribute(TagUtf8::SCORE, keyword.iScore);
    writer.Attribute(TagUtf8::CASE_SENSITIVE, XmlHelpers::FlagText(keyword.bCaseSensitive));
    writer.Text(keyword.strKeyword);
    writer.EndElement();
}

}  // namespace

CKeywordList::CKeywordList(const CSettingsRow& row) {
    m_document.LoadUtf8(row.GetText(KeywordColumn::TEXT));
    CXMLView node = DigitalAssets::FindDictionary(m_document).FirstChild(TagUtf8::KEYWORD);
    for (SKeyword& keyword : ReadKeywords(row)) {
        m_vecEntries.push_back({std::move(keyword), node});
        node = node.NextSibling(TagUtf8::KEYWORD);
    }
    Index();
}

void CKeywordList::Index() {
    m_index.clear();
    for (std::size_t i = 0; i < m_vecEntries.size(); ++i) {
        m_index[m_vecEntries[i].keyword.strKeyword].push_back(i);
    }
}

void CKeywordList::Apply(const SKeywordEdit& edit, SEntry& entry) {
    SKeyword changed = entry.keyword;
    changed.strDescription = edit.strDescription.value_or(changed.strDescription);
    changed.iScore = edit.iScore.value_or(changed.iScore);
    changed.bCaseSensitive = edit.bCaseSensitive.value_or(changed.bCaseSensitive);
    if (changed != entry.keyword) {
        entry = {std::move(changed), CXMLView()};
    }
}

void CKeywordList::Put(const SKeywordEdit& edit) {
    const auto [itEntries, bNew] = m_index.try_emplace(edit.strKeyword);
    if (bNew) {
        itEntries->second.push_back(m_vecEntries.size());
        m_vecEntries.push_back({{edit.strKeyword, {}, NEW_SCORE, false}, CXMLView()});
    }
    for (const std::size_t iEntry : itEntries->second) {
        Apply(edit, m_vecEntries[iEntry]);
    }
}

bool CKeywordList::Remove(const std::string& strKeyword) {
    const auto itEntries = m_index.find(strKeyword);
    if (itEntries == m_index.end()) {
        return false;
    }
    for (const std::size_t iEntry : itEntries->second) {
        m_vecEntries[iEntry].bRemoved = true;
    }
    m_index.erase(itEntries);
    return true;
}

void CKeywordList::Replace(const std::vector<SKeywordEdit>& vecEdits) {
    std::vector<SEntry> vecEntries;
    for (const SKeywordEdit& edit : vecEdits) {
        const auto itEntries = m_index.find(edit.strKeyword);
        vecEntries.push_back(itEntries != m_index.end() ? m_vecEntries[itEntries->second.front()]
                                                        : SEntry{{edit.strKeyword, {}, NEW_SCORE, false}, CXMLView()});
        Apply(edit, vecEntries.back());
    }
    m_vecEntries = std::move(vecEntries);
    Index();
}

std::vector<std::string> CKeywordList::GetTexts() const {
    std::vector<std::string> vecTexts;
    for (const SEntry& entry : m_vecEntries) {
        if (!entry.bRemoved) {
            vecTexts.push_back(entry.keyword.strKeyword);
        }
    }
    return vecTexts;
}

bool CKeywordList::IsChanged() const {
    CXMLView node = DigitalAssets::FindDictionary(m_document).FirstChild(TagUtf8::KEYWORD);
    for (const SEntry& entry : m_vecEntries) {
        if (entry.bRemoved || !entry.node || entry.node.Handle() != node.Handle()) {
            return true;
        }
        node = node.NextSibling(TagUtf8::KEYWORD);
    }
    return static_cast<bool>(node);
}

void CKeywordList::Store(CSettingsRow& row) const {
    if (IsChanged() || row.GetText(KeywordColumn::TEXT).empty()) {
        Write(row);
    }
}

void CKeywordList::Write(CSettingsRow& row) const {
    std::string strMarkup;
    CXMLWriter writer(strMarkup);
    writer.StartElement(TagUtf8::DICTIONARY);
    const DigitalAssets::SAssetFormat& format = DigitalAssets::KEYWORD_FORMAT;
    DigitalAssets::WriteAttributes(format, row, DigitalAssets::FindStoredType(format, row), writer);
    for (const SEntry& entry : m_vecEntries) {
        if (entry.bRemoved) {
            continue;
        }
        if (entry.node) {
            writer.Node(entry.node);
        } else {
            WriteKeyword(entry.keyword, writer);
        }
    }
    writer.EndElement();
    row.SetText(KeywordColumn::TEXT, std::move(strMarkup));
}
