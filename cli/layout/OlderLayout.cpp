#include "cli/layout/OlderLayout.h"

#include "cli/InputFile.h"
#include "cli/InstalledFiles.h"
#include "cli/Text.h"
#include "platform/common/DataFileFailure.h"

namespace {

constexpr const char NOT_CONVERTED[] = "the older layout cannot be converted; --log - --log-level all shows why";

}  // namespace

CXMLParser ConvertOlder(CCommandContext& context, const std::string& strFile, CPolicyDocument& document,
                        CImportObserver* pObserver) {
    WarnOfMissing(context, FindMapFile(), NO_MAP_FILE);
    CDLPXmlNormalizer normalizer;
    normalizer.InitDigitalAssetsMappingTable();
    // The library does without names that it cannot read.
    if (const std::string strFailure = OS::TakeDataFileFailure(); !strFailure.empty()) {
        throw CToolError(EVerdict::INVALID, Text::Printable(strFailure));
    }
    CXMLParser normalized;
    if (!normalizer.Normalize(document, normalized, pObserver)) {
        throw CInputError(strFile, NOT_CONVERTED);
    }
    return normalized;
}
