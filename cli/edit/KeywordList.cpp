#include "cli/edit/KeywordList.h"

#include <limits>
#include <new>
#include <utility>

#include "cli/RecordJson.h"
#include "digital_assets/AssetFormat.h"
#include "digital_assets/KeywordText.h"
#include "platform/xml/CXMLWriter.h"
#include "xml/Vocabulary.h"
#include "xml/XmlHelpers.h"

namespace {

constexpr int NEW_SCORE = 1;

}  // namespace

CKeywordList::CKeywordList(const CSettingsRow& row) {
    m_document.LoadUtf8(row.GetText(KeywordColumn::TEXT));
    for (CXMLView node = DigitalAssets::FindDictionary(m_document).FirstChild(TagUtf8::KEYWORD); node;
         node = node.NextSibling(TagUtf8::KEYWORD)) {
        const SKeyword keyword = ReadKeyword(node);
        Add({.node = node,
             .keyword = Keep(keyword.strKeyword),
             .description = Keep(keyword.strDescription),
             .iScore = keyword.iScore,
             .bCaseSensitive = keyword.bCaseSensitive});
    }
}

CKeywordList::SText CKeywordList::Keep(std::string_view strText) {
    if (m_strTexts.size() + strText.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw std::bad_alloc();
    }
    const SText text{static_cast<std::uint32_t>(m_strTexts.size()), static_cast<std::uint32_t>(strText.size())};
    m_strTexts += strText;
    return text;
}

CKeywordList::Number& CKeywordList::Find(const std::vector<SEntry>& vecEntries, std::string_view strKeyword) {
    return m_index.Find(strKeyword, [&](Number iEntry) { return GetText(vecEntries[iEntry].keyword) == strKeyword; });
}

void CKeywordList::Add(const SEntry& entry) {
    const auto iEntry = static_cast<Number>(m_vecEntries.size());
    Number& iFirst = Find(m_vecEntries, GetText(entry.keyword));
    m_vecEntries.push_back(entry);
    if (iFirst != CTextIndex::NONE) {
        m_vecEntries.back().iNext = std::exchange(m_vecEntries[iFirst].iNext, iEntry);
        return;
    }
    iFirst = iEntry;
    m_index.NoteAdded([this](Number iAdded) { return GetText(m_vecEntries[iAdded].keyword); });
}

CKeywordList::SEntry CKeywordList::MakeNew(std::string_view strKeyword) {
    return {.keyword = Keep(strKeyword), .iScore = NEW_SCORE};
}

void CKeywordList::Apply(const SKeywordEdit& edit, SEntry& entry) {
    if (edit.strDescription && *edit.strDescription != GetText(entry.description)) {
        entry.description = Keep(*edit.strDescription);
        entry.node = CXMLView();
    }
    const int iScore = edit.iScore.value_or(entry.iScore);
    const bool bCaseSensitive = edit.bCaseSensitive.value_or(entry.bCaseSensitive);
    if (iScore != entry.iScore || bCaseSensitive != entry.bCaseSensitive) {
        entry.iScore = iScore;
        entry.bCaseSensitive = bCaseSensitive;
        entry.node = CXMLView();
    }
}

void CKeywordList::Put(const SKeywordEdit& edit) {
    Number iEntry = Find(m_vecEntries, edit.strKeyword);
    if (iEntry == CTextIndex::NONE) {
        iEntry = static_cast<Number>(m_vecEntries.size());
        Add(MakeNew(edit.strKeyword));
    }
    for (; iEntry != CTextIndex::NONE; iEntry = m_vecEntries[iEntry].iNext) {
        Apply(edit, m_vecEntries[iEntry]);
    }
}

bool CKeywordList::Remove(std::string_view strKeyword) {
    Number iEntry = Find(m_vecEntries, strKeyword);
    if (iEntry == CTextIndex::NONE || m_vecEntries[iEntry].bRemoved) {
        return false;
    }
    for (; iEntry != CTextIndex::NONE; iEntry = m_vecEntries[iEntry].iNext) {
        m_vecEntries[iEntry].bRemoved = true;
    }
    return true;
}

void CKeywordList::Clear() {
    m_vecFormer = std::exchange(m_vecEntries, {});
}

void CKeywordList::Place(const SKeywordEdit& edit) {
    const Number iFormer = Find(m_vecFormer, edit.strKeyword);
    m_vecEntries.push_back(iFormer == CTextIndex::NONE ? MakeNew(edit.strKeyword) : m_vecFormer[iFormer]);
    Apply(edit, m_vecEntries.back());
}

std::vector<std::string> CKeywordList::GetTexts() const {
    std::vector<std::string> vecTexts;
    for (const SEntry& entry : m_vecEntries) {
        if (!entry.bRemoved) {
            vecTexts.emplace_back(GetText(entry.keyword));
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

void CKeywordList::Write(const SEntry& entry, CXMLWriter& writer) const {
    if (entry.node) {
        writer.Node(entry.node);
        return;
    }
    writer.StartElement(TagUtf8::KEYWORD);
    writer.Attribute(TagUtf8::DESCRIPTION, GetText(entry.description));
    writer.Attribute(TagUtf8::SCORE, entry.iScore);
    writer.Attribute(TagUtf8::CASE_SENSITIVE, XmlHelpers::FlagText(entry.bCaseSensitive));
    writer.Text(GetText(entry.keyword));
    writer.EndElement();
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
        if (!entry.bRemoved) {
            Write(entry, writer);
        }
    }
    writer.EndElement();
    row.SetText(KeywordColumn::TEXT, std::move(strMarkup));
}
