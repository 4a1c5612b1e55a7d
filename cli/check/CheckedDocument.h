#pragma once

#include <cstddef>
#include <string_view>

#include "cli/Progress.h"
#include "cli/check/Diagnostics.h"
#include "cli/check/SourceMarkup.h"
#include "platform/xml/CXMLView.h"
#include "templates/DLPXmlNormalizer.h"
#include "xml/Vocabulary.h"

/** What the checks of one document work on. Offsets count from the start of its text. */
struct SCheckedDocument {
    std::string_view strText;
    CXMLView root;
    bool bOlder;       ///< of the older layout
    bool bAssetsOnly;  ///< its assets alone are meant to be imported
    CDiagnostics& diagnostics;

    /** @return where the attribute stands; the element when it has none of that name */
    SAttributePlace Find(const CXMLView& element, std::string_view strAttribute) const {
        return FindAttribute(strText, element.Offset(), strAttribute);
    }

    /** @return whether an error was found in the element */
    bool HasErrors(const CXMLView& element) const {
        CXMLView next;
        for (CXMLView node = element; node && !next; node = node.Parent()) {
            next = node.NextSibling();
        }
        return diagnostics.HasErrors(element.Offset(), next.Offset());
    }

    /** Calls fnElement for each element of that name in each section of that name, unless nothing of it is taken. */
    template <class F>
    void ForEach(const char* pSection, const char* pElement, const F& fnElement) const {
        if (bOlder && pSection != std::string_view(TagUtf8::COMPLIANCE_TEMPLATES)) {
            return;
        }
        ForEachWritten(pSection, pElement, [&](const CXMLView& element) {
            if (!bOlder || !CDLPXmlNormalizer::IsBuiltIn(element)) {
                fnElement(element);
            }
        });
    }
    /** The same for each, whatever is taken. */
    template <class F>
    void ForEachWritten(const char* pSection, const char* pElement, const F& fnElement) const {
        for (CXMLView section = root.FirstChild(pSection); section; section = section.NextSibling(pSection)) {
            for (CXMLView element = section.FirstChild(pElement); element; element = element.NextSibling(pElement)) {
                CProgress::Step();
                fnElement(element);
            }
        }
    }
    template <class F>
    void ForEachTemplate(const F& fnTemplate) const {
        ForEach(TagUtf8::COMPLIANCE_TEMPLATES, TagUtf8::TEMPLATE, fnTemplate);
    }
};

/** Elements, attributes and text that nothing reads, or reads as something else. */
void CheckShape(const SCheckedDocument& document);
/** Types, flags and numbers that are read as something else, and those that contradict each other. */
void CheckValues(const SCheckedDocument& document);
/** Categories and validators that the predefined lists do not have, and categories without a name or named twice. */
void CheckLists(const SCheckedDocument& document);
/** Names that stand several times, have blanks around them or do not survive the text form of rules. */
void CheckNames(const SCheckedDocument& document);
/** Patterns of expressions, tried with a regular-expression engine. */
void CheckPatterns(const SCheckedDocument& document);
/** Keywords of keyword lists. */
void CheckKeywords(const SCheckedDocument& document);
/** Rules that are empty, badly joined, go by another name or, in a template without errors, say nothing new. */
void CheckRules(const SCheckedDocument& document);
/**
 * Templates without errors that match the same as another one of the document, or as a stored one of another name.
 * @throws as below
 */
void CheckSameTemplates(const SCheckedDocument& document);
/**
 * Building blocks that an import refuses, and assets that nobody uses. Asks the store, which must hold what an import
 * of the document has put there.
 * @throws OS::CException when the store fails
 */
void CheckReferences(const SCheckedDocument& document);
