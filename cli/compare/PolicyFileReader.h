#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/compare/Policy.h"
#include "digital_assets/ImportObserver.h"
#include "platform/common/TextHash.h"
#include "templates/PolicyFile.h"

class CCommandContext;
class CPolicyDocument;
class CXMLView;

namespace DigitalAssets {
struct SAssetFormat;
}

/**
 * Reads a policy file as import would into an empty store, but for two things: any language will do, and what a
 * template refers to need not be there.
 */
class CPolicyFileReader : private CImportObserver {
  public:
    /** @param policy names the file in its strPlace and receives what is in it */
    CPolicyFileReader(CCommandContext& context, SPolicy& policy);

    /** @throws CInputError when it is no policy */
    void Read();

  private:
    struct SCategories;

    void OnItem(const SImportItem& item) override;

    void ReadOlder(CPolicyDocument& document);
    void ReadItems(CPolicyDocument& document);
    void ReadAssets(const DigitalAssets::SAssetFormat& format, ESettingsKind eKind, const CXMLView& root);
    void ReadAsset(const DigitalAssets::SAssetFormat& format, ESettingsKind eKind, const CXMLView& element);
    void ReadTemplates(CPolicyDocument& document);
    void ReadTemplate(const CXMLView& element, const SCategories& categories);
    void Arrange(ReportItems& vecItems) const;

    CCommandContext& m_context;
    SPolicy& m_policy;
    SPolicyFile m_file;
    std::optional<EOlderLook> m_older;        ///< of a document that is read as one of the older layout
    OS::TextSet<std::string> m_setTemplates;  ///< names of the document's, taken or not
};
