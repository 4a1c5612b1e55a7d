#include "templates/TemplateReport.h"

#include "xml/Vocabulary.h"

namespace TemplateReport {

std::size_t CountForeignChildren(const CXMLView& element) {
    std::size_t iForeign = 0;
    for (CXMLView child = element.FirstChild(); child; child = child.NextSibling()) {
        iForeign += child.Name() == TagUtf8::MATCH_RULE ? 0 : 1;
    }
    return iForeign;
}

void Describe(const STemplateFinding& finding, SImportItem& item) {
    item.strDetail = finding.node.Name();
    for (const char* pName : {TagUtf8::SOURCE_TYPE, TagUtf8::SOURCE_NAME, TagUtf8::OPERATION}) {
        if (finding.node.HasAttribute(pName)) {
            item.strDetail.append(" ").append(pName).append("=\"").append(finding.node.Attribute(pName)).append("\"");
        }
    }
    const bool bExpression = finding.eFault == ETemplateFault::UNKNOWN_EXPRESSION;
    if (bExpression || finding.eFault == ETemplateFault::UNKNOWN_KEYWORD) {
        item.bUnknownReference = true;
        item.eReferenceKind = bExpression ? EItemKind::EXPRESSION : EItemKind::KEYWORD;
        item.strReference = finding.node.Attribute(TagUtf8::SOURCE_NAME);
    }
}

}  // namespace TemplateReport
