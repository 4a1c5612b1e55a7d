#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml/CXMLView.h"
#include "templates/MatchRule.h"

class CCfgSettingDLPFilterTemplate;
class CXMLWriter;

/** Template elements read and written in UTF-8, one piece at a time. Writing throws as CXMLWriter does. */
namespace TemplateXml {

/** One building block as its element says it. */
struct SBuildingBlock {
    EElementType eType = EElementType::UNKNOWN;
    std::int32_t iCount = 0;
    std::string_view strName;  ///< valid as long as what it was read from
    EOperator eOperator = EOperator::UNKNOWN;
};

/** @return the operation of a match rule or a building block */
EOperator ReadOperation(const CXMLView& node);
SBuildingBlock ReadBuildingBlock(const CXMLView& node);

/** @return the type of a building block that an import takes, which must be spelled exactly; UNKNOWN for any other */
EElementType ReadExactType(const CXMLView& block);
/** No operation, AND and OR can be imported; EXCEPT cannot, though an export may write it. */
bool IsOperationAccepted(const CXMLView& node);

/** Fills a record as an import stores it, but for the scope. */
void ReadTemplate(const CXMLView& element, std::vector<std::string> vecIndustries, std::vector<std::string> vecRegions,
                  CCfgSettingDLPFilterTemplate& record);
/** @return whether a template is built in: only the text "true" says so, in any case of letters */
bool IsPreDefined(const CXMLView& element);

/** Starts a template element; the caller writes its rules and ends it. */
void StartTemplate(CXMLWriter& writer, std::string_view strName, std::string_view strDisplayName,
                   std::string_view strDescription, bool bPreDefined);
/** Starts a match rule; the caller writes its blocks and ends it. An UNKNOWN operator is not written. */
void StartMatchRule(CXMLWriter& writer, EOperator eOperator);
void WriteBuildingBlock(CXMLWriter& writer, const SBuildingBlock& block);

}  // namespace TemplateXml
