#include "templates/TemplateReport.h"

#include "xml/Vocabulary.h"

namespace {

/** In the order of ETemplateFault. */
constexpr const char* FAULTY_ATTRIBUTES[] = {TagUtf8::SOURCE_NAME, TagUtf8::SOURCE_NAME, TagUtf8::SOURCE_TYPE,
                                             TagUtf8::OPERATION, TagUtf8::OPERATION};

}  // namespace

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
    item.fault = finding.eFault;
    item.strFaulty = finding.node.Attribute(FAULTY_ATTRIBUTES[static_cast<std::size_t>(finding.eFault)]);
}

}  // namespace TemplateReport
