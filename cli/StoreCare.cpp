#include "cli/StoreCare.h"

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/FileIdentity.h"
#include "cli/InputFile.h"
#include "cli/Kinds.h"
#include "cli/OutputFile.h"
#include "cli/RecordJson.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"
#include "cli/Text.h"
#include "platform/common/CException.h"
#include "platform/common/TextConversion.h"
#include "platform/store/StoreBackup.h"
#include "platform/store/StoreError.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr SCommandHelp CHECK = {
    "check",
    "store check",
    "verify that the store holds what was written, all of it",
    "Looks at the file's structure, at the checksum of every record and page, at the number of records, and whether "
    "what\n"
    "templates refer to is there. Writes nothing. Exit code 1: something is damaged or missing; 4: the store cannot "
    "be\n"
    "opened at all.\n",
    "  dlpctl store check\n"
    "  dlpctl --store sqlite:backup.db store check\n",
    "dlpctl-store-check/1",
};
constexpr SCommandHelp BACKUP = {
    "backup",
    "store backup FILE",
    "save the whole store as a store of its own in FILE",
    "While others go on using the store. FILE is made or replaced whole and verified, or left as it was; what is "
    "replaced\n"
    "is an empty file or a settings store that nobody uses. A link is followed. A backup can be looked at as any "
    "store:\n"
    "--store sqlite:FILE.\n",
    "  dlpctl store backup backup.db\n"
    "  dlpctl --store sqlite:yesterday.db store backup copy.db\n",
    "dlpctl-store-backup/1",
};
constexpr SCommandHelp RESTORE = {
    "restore",
    "store restore FILE",
    "bring back what a backup holds",
    "The backup is verified first, and stays as it is. The former content stays beside the store: as\n"
    "STORE.before-restore, a backup too, or, when it was damaged, as STORE.damaged, the file as it was.\n",
    "  dlpctl store restore --dry-run backup.db\n"
    "  dlpctl store restore backup.db\n",
    "dlpctl-store-restore/1",
};

constexpr const char NO_FILE[] = "this store is no file; name one with --store sqlite:PATH";
constexpr const char STANDARD_STREAM[] = "-";

/** What a template needs that the store does not hold. */
struct SMissing {
    std::string strTemplate;
    const SKind* pKind;
    std::string strName;
};

const SKind& KindOf(EElementType eType) {
    return GetKind(eType == EElementType::KEYWORD ? ESettingsKind::KEYWORD : ESettingsKind::EXPRESSION);
}

/** Runs what uses a store on its own. @return what it returns @throws CToolError (STORE) for what the store throws */
template <class Work>
auto OnStore(Work&& fnWork) {
    try {
        return fnWork();
    } catch (const OS::CException& error) {
        Signals::ThrowIfCaught();  // it may be what ended a wait
        throw CToolError(EVerdict::STORE, Text::Printable(error.what()));
    }
}

/** @throws CToolError (USAGE) when the store has no file */
std::string GetPath(const CCommandContext& context) {
    const std::string strPath = context.GetStorePath();
    if (strPath.empty()) {
        throw CToolError(EVerdict::USAGE, NO_FILE);
    }
    return strPath;
}

/** @return the absolute path of a backup @throws CToolError (USAGE) when it is none, the store or a file beside one */
std::string GetBackupPath(const CCommandContext& context, const std::string& strFile) {
    const std::string strPath = context.GetAbsolute(strFile);
    if (strFile == STANDARD_STREAM || IsBesideDatabase(strPath) || IsOfStore(strPath, GetPath(context))) {
        throw CToolError(EVerdict::USAGE, Text::Quoted(strFile) + " cannot be a backup of this store; name a file");
    }
    context.CheckIsNoLog(strFile);
    return strPath;
}

std::vector<SMissing> FindMissing(CSettingsStore& store) {
    std::set<std::pair<const SKind*, std::string>> held;
    for (const ESettingsKind eKind : {ESettingsKind::EXPRESSION, ESettingsKind::KEYWORD}) {
        std::vector<std::string> vecNames;
        store.ReadColumn(eKind, NAME_COLUMN, vecNames);
        for (std::string& strName : vecNames) {
            held.emplace(&GetKind(eKind), std::move(strName));
        }
    }
    std::vector<SMissing> vecMissing;
    store.ReadAll(ESettingsKind::TEMPLATE, [&](CSettingsRow&& row) {
        Signals::ThrowIfCaught();
        std::set<std::pair<const SKind*, std::string>> told;
        for (const SMatchRule& rule : ReadRules(row)) {
            for (const SRuleElement& element : rule.vecElements) {
                const std::pair<const SKind*, std::string> asset{&KindOf(element.eType),
                                                                 OS::Utf8Lenient(element.strName)};
                if (held.count(asset) == 0 && told.insert(asset).second) {
                    vecMissing.push_back({row.GetText(NAME_COLUMN), asset.first, asset.second});
                }
            }
        }
    });
    return vecMissing;
}

Json TextOrNull(const std::string& strText) {
    return strText.empty() ? Json() : Json(strText);
}

Json CheckToJson(const SStoreInfo& info, const std::vector<SStoreDamage>& vecDamages,
                 const std::vector<SMissing>& vecMissing, EVerdict eVerdict) {
    Json object = {{"format", CHECK.pFormat},  {"verdict", GetVerdictName(eVerdict)},
                   {"store", info.strUrl},     {"schema", info.iSchemaVersion},
                   {"damages", Json::array()}, {"missing", Json::array()}};
    for (const SStoreDamage& damage : vecDamages) {
        object["damages"].push_back({{"table", TextOrNull(damage.strTable)},
                                     {"subject", TextOrNull(damage.strSubject)},
                                     {"what", damage.strWhat}});
    }
    for (const SMissing& missing : vecMissing) {
        object["missing"].push_back(
            {{"template", missing.strTemplate}, {"kind", missing.pKind->pSingular}, {"name", missing.strName}});
    }
    return object;
}

std::string CheckToText(const SStoreInfo& info, const std::vector<SStoreDamage>& vecDamages,
                        const std::vector<SMissing>& vecMissing) {
    std::string strText;
    for (const SStoreDamage& damage : vecDamages) {
        strText += "damaged: " + Text::Printable(ToText(damage)) + '\n';
    }
    for (const SMissing& missing : vecMissing) {
        strText += "missing: the template " + Text::Quoted(missing.strTemplate) + " refers to the " +
                   missing.pKind->pWord + ' ' + Text::Quoted(missing.strName) + '\n';
    }
    return strText.empty() ? Text::Printable(info.strUrl) + " is sound.\n" : strText;
}

EVerdict Check(CCommandContext& context) {
    const std::string strPath = GetPath(context);
    std::vector<SStoreDamage> vecDamages;
    std::vector<SMissing> vecMissing;
    const SStoreInfo info = OnStore([&] {
        const auto pStore = CSettingsStore::Make("sqlite:" + strPath, EUnitOfWork::READ);
        context.WarnOfStore();
        pStore->Check([&](const SStoreDamage& damage) {
            Signals::ThrowIfCaught();
            vecDamages.push_back(damage);
        });
        if (vecDamages.empty()) {
            CSettingsTransaction unit(*pStore, EUnitOfWork::READ);
            vecMissing = FindMissing(*pStore);
            unit.Commit();
        }
        return pStore->GetInfo();
    });
    const EVerdict eVerdict = vecDamages.empty() && vecMissing.empty() ? EVerdict::DONE : EVerdict::FINDINGS;
    if (context.IsJson()) {
        context.WriteJson(CheckToJson(info, vecDamages, vecMissing, eVerdict));
    } else {
        context.Write(CheckToText(info, vecDamages, vecMissing));
    }
    return eVerdict;
}

Json CountsToJson(const StoreBackup::Counts& aCounts) {
    Json object = Json::object();
    for (const SKind& kind : KINDS) {
        object[kind.pList] = aCounts[static_cast<std::size_t>(kind.eKind)];
    }
    return object;
}

std::string CountsToText(const StoreBackup::Counts& aCounts) {
    std::string strText;
    for (const SKind& kind : KINDS) {
        strText += strText.empty() ? "" : ", ";
        strText += Text::Counted(aCounts[static_cast<std::size_t>(kind.eKind)], kind.pWord, kind.pWords);
    }
    return strText;
}

EVerdict Backup(CCommandContext& context, const std::string& strFile) {
    const std::string strStore = GetPath(context);
    const std::string strBackup = COutputFile::FindTarget(GetBackupPath(context, strFile), Text::Printable(strFile));
    const StoreBackup::Counts aCounts = OnStore([&] {
        const auto pStore = CSettingsStore::Make("sqlite:" + strStore, EUnitOfWork::READ);
        context.WarnOfStore();
        return StoreBackup::Save(*pStore, strBackup, Signals::ThrowIfCaught);
    });
    if (context.IsJson()) {
        context.WriteJson({{"format", BACKUP.pFormat},
                           {"verdict", GetVerdictName(EVerdict::DONE)},
                           {"file", strFile},
                           {"saved", CountsToJson(aCounts)}});
    } else {
        context.Write("Saved " + CountsToText(aCounts) + ".\n");
    }
    return EVerdict::DONE;
}

std::unique_ptr<CSettingsStore> OpenBackup(const std::string& strFile, const std::string& strPath) {
    try {
        return StoreBackup::Open(strPath);
    } catch (const OS::CException& error) {
        throw CInputError(strFile, Text::Printable(error.what()));
    }
}

std::string RestoredToText(const StoreBackup::SRestored& restored, bool bTry) {
    std::string strText = (bTry ? "Would restore " : "Restored ") + CountsToText(restored.aRestored);
    if (!restored.bDamaged) {
        strText += " in place of " + CountsToText(restored.aReplaced);
    }
    strText += ".\n";
    if (!restored.strFormer.empty()) {
        strText += std::string(restored.bDamaged ? "The damaged store " : "What was there ") +
                   (bTry ? "would be kept as " : "is kept as ") + Text::Printable(restored.strFormer) + ".\n";
    }
    return strText;
}

EVerdict Restore(CCommandContext& context, const std::string& strFile, bool bTry) {
    const std::string strStore = GetPath(context);
    const auto pBackup = OpenBackup(strFile, GetBackupPath(context, strFile));
    context.WarnOfStore();
    const StoreBackup::SRestored restored =
        OnStore([&] { return StoreBackup::Restore(*pBackup, strStore, bTry, Signals::ThrowIfCaught); });
    CStoreSession::SetChanged(!bTry);
    if (context.IsJson()) {
        context.WriteJson({{"format", RESTORE.pFormat},
                           {"verdict", GetVerdictName(EVerdict::DONE)},
                           {"file", strFile},
                           {"dry_run", bTry},
                           {"damaged", restored.bDamaged},
                           {"replaced", restored.bDamaged ? Json() : CountsToJson(restored.aReplaced)},
                           {"restored", CountsToJson(restored.aRestored)},
                           {"former", TextOrNull(restored.strFormer)}});
    } else {
        context.Write(RestoredToText(restored, bTry));
    }
    return EVerdict::DONE;
}

}  // namespace

void AddStoreCareCommands(CCommandLine& line, CLI::App& group) {
    line.AddCommand(group, CHECK, Check);
    const auto pBackup = std::make_shared<std::string>();
    CLI::App& backup =
        line.AddCommand(group, BACKUP, [pBackup](CCommandContext& context) { return Backup(context, *pBackup); });
    CCommandLine::AddText(backup, "FILE", "FILE", *pBackup, "where to")->required();
    const auto pRestore = std::make_shared<std::pair<std::string, bool>>();
    CLI::App& restore = line.AddCommand(group, RESTORE, [pRestore](CCommandContext& context) {
        return Restore(context, pRestore->first, pRestore->second);
    });
    CCommandLine::AddText(restore, "FILE", "FILE", pRestore->first, "a backup")->required();
    CCommandLine::AddFlag(restore, "--dry-run", pRestore->second, "only say what would be done");
}
