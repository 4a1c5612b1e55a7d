#include "cli/compare/Policy.h"

#include <memory>
#include <utility>

#include "cli/CommandContext.h"
#include "cli/InputFile.h"
#include "cli/Kinds.h"
#include "cli/Progress.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"
#include "cli/Text.h"
#include "cli/compare/PolicyFileReader.h"
#include "digital_assets/AssetFormat.h"
#include "platform/common/CException.h"
#include "platform/store/CSettingsStore.h"

namespace {

void Normalise(CSettingsRow& row) {
    if (row.GetKind() != ESettingsKind::TEMPLATE) {
        DigitalAssets::Normalise(row.GetKind() == ESettingsKind::EXPRESSION ? DigitalAssets::EXPRESSION_FORMAT
                                                                            : DigitalAssets::KEYWORD_FORMAT,
                                 row);
    }
}

void Add(CSettingsRow&& row, SPolicy::Items& items) {
    Normalise(row);
    const std::string& strName = row.GetText(NAME_COLUMN);
    const bool bFound = !strName.empty() && items.find(strName) == items.end();
    std::string strKey = bFound ? strName : row.GetSubject();
    items.emplace(std::move(strKey), std::move(row));
}

/** One state of the store throughout. */
void ReadStore(CSettingsStore& store, SPolicy& policy) {
    CSettingsTransaction unit(store, EUnitOfWork::READ);
    for (const ESettingsKind eKind : ALL_SETTINGS_KINDS) {
        CProgress::Expect(store.Count(eKind));
        store.ReadAll(eKind, [&](CSettingsRow&& row) {
            CProgress::Step();
            Signals::ThrowIfCaught();
            Add(std::move(row), policy.Of(eKind));
        });
    }
    unit.Commit();
}

void ReadOtherStore(const std::string& strUrl, SPolicy& policy) {
    try {
        ReadStore(*CSettingsStore::Make(strUrl, EUnitOfWork::READ), policy);
    } catch (const OS::CException& error) {
        Signals::ThrowIfCaught();
        throw CToolError(EVerdict::STORE, Text::Printable(error.what()));
    }
}

}  // namespace

SPolicy ReadPolicyOf(CCommandContext& context, const std::string& strPlace) {
    SPolicy policy;
    policy.strPlace = strPlace;
    const CProgress progress(context, strPlace);
    if (strPlace == STORE_WORD) {
        const CStoreSession& store = context.GetStoreToRead();
        ReadStore(CSettingsStore::Current(), policy);
        store.ThrowIfFailed();
    } else if (CSettingsStore::IsUrl(strPlace)) {
        ReadOtherStore(context.GetAbsoluteUrl(strPlace), policy);
    } else {
        CPolicyFileReader(context, policy).Read();
    }
    return policy;
}

void WarnOfLeftOut(CCommandContext& context, const SPolicy& policy) {
    for (const SReportItem& item : policy.vecLeftOut) {
        std::string strFinding = MakeFinding(policy.strPlace, item);
        strFinding.pop_back();
        context.Warn(strFinding);
    }
    for (const SReportItem& item : policy.vecRefused) {
        context.Warn(FormatPlace(policy.strPlace, item.place) + ": template " + Text::Quoted(item.strName) +
                     " is taken as it stands, but no import takes it: " + ExplainItem(item));
    }
}
