#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "api/CDLPDigitalAssetsParser.h"
#include "cli/CommandContext.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/InputFile.h"
#include "cli/InstalledFiles.h"
#include "cli/JsonText.h"
#include "cli/Kinds.h"
#include "cli/Output.h"
#include "cli/Progress.h"
#include "cli/RecordJson.h"
#include "cli/Signals.h"
#include "cli/StoreCare.h"
#include "cli/StoreSession.h"
#include "cli/Text.h"
#include "platform/common/TextConversion.h"
#include "platform/store/CSettingsStore.h"
#include "platform/system/InstallPath.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char GROUP[] = "store";
constexpr const char GROUP_SUMMARY[] = "look at the store as a whole, verify it, save it and bring it back";

constexpr SCommandHelp DUMP = {
    "dump",
    "store dump [-o FILE]",
    "write the whole store as JSON",
    "The same store gives the same bytes, one field per line, so that dumps can be compared and kept in git.\n",
    "  dlpctl store dump > store.json\n"
    "  dlpctl store dump | dlpctl --store sqlite:copy.db store load -\n",
    "dlpctl-dump/1",
};
constexpr SCommandHelp LOAD = {
    "load",
    "store load FILE",
    "replace the whole store by what a dump holds",
    "All of it or nothing. \"keywords\" and \"match_rules\" follow from other fields and are not read. What a program "
    "has "
    "stored that no document can hold, such as U+0001, is loaded too; an export refuses to write it.\n",
    "  dlpctl store load store.json\n"
    "  dlpctl store dump | dlpctl --store sqlite:copy.db store load -\n",
    "dlpctl-store-load/1",
};
constexpr SCommandHelp INFO = {
    "info",
    "store info",
    "show which store, which files and which versions are in use",
    "",
    "  dlpctl store info\n"
    "  dlpctl --store sqlite:copy.db store info\n",
    "dlpctl-store-info/1",
};

constexpr const char FORMAT[] = "format";
constexpr const char FIELD_INDENT[] = "    ";
constexpr int RECORD_INDENT = 2;
constexpr std::size_t STEPS_OF_LOADED = 2;  ///< a record is read, then stored

/** @return the record's lines, indented below its list */
std::string RecordLines(const CSettingsRow& row) {
    const std::string strRecord = ToJsonText(RecordToJson(row), RECORD_INDENT);
    std::string strLines = FIELD_INDENT;
    for (const char c : strRecord) {
        strLines += c;
        strLines += c == '\n' ? FIELD_INDENT : "";
    }
    return strLines;
}

EVerdict Dump(CCommandContext& context, const std::string& strFile) {
    const CStoreSession& store = context.GetStoreToRead();
    COutput output(context, strFile);
    // Where the dump itself goes to the terminal, a bar would stand in it.
    const bool bMixed = COutput::IsStandard(context, strFile) && context.GetDataWidth() != 0;
    const CProgress progress(context.GetError(), context.ShowsProgress() && !bMixed, DUMP.pName);
    CSettingsTransaction unit(EUnitOfWork::READ);
    Json dumped = Json::object();
    output.Write(std::string("{\n  \"") + FORMAT + "\": \"" + DUMP.pFormat + '"');
    for (const SKind& kind : KINDS) {
        output.Write(std::string(",\n  \"") + kind.pList + "\": [");
        std::size_t iRecords = 0;
        CProgress::Expect(CSettingsStore::Current().Count(kind.eKind));
        CSettingsStore::Current().ReadAll(kind.eKind, [&](CSettingsRow&& row) {
            CProgress::Step();
            Signals::ThrowIfCaught();
            output.Write((iRecords == 0 ? "\n" : ",\n") + RecordLines(row));
            ++iRecords;
        });
        output.Write(iRecords == 0 ? "]" : "\n  ]");
        dumped[kind.pList] = iRecords;
    }
    output.Write("\n}\n");
    store.ThrowIfFailed();
    unit.Commit();
    if (!context.IsJson() || COutput::IsStandard(context, strFile)) {
        output.Commit();
        return EVerdict::DONE;
    }
    Json answer = {{FORMAT, DUMP.pFormat}, {"output", strFile}};
    context.StartJson(answer);
    output.Commit();
    answer["verdict"] = GetVerdictName(EVerdict::DONE);
    answer["dumped"] = std::move(dumped);
    context.WriteJson(answer);
    return EVerdict::DONE;
}

/**
 * The parser keeps the last of two members of one name; here that would lose a field in silence. It copies what is
 * nested by recursion, and looks for a member among all before it: no dump has many levels or members.
 */
class CDumpChecker {
  public:
    bool operator()(int iDepth, Json::parse_event_t eEvent, Json& parsed) {
        if (iDepth >= MOST_LEVELS) {
            throw CToolError(EVerdict::INVALID, TOO_DEEP);
        }
        if (eEvent == Json::parse_event_t::object_start) {
            m_vecOpen.emplace_back();
        } else if (eEvent == Json::parse_event_t::object_end) {
            m_vecOpen.pop_back();
        } else if (eEvent == Json::parse_event_t::key) {
            CheckMember(parsed.get<std::string>());
        }
        return true;
    }

  private:
    void CheckMember(const std::string& strName) {
        if (!m_vecOpen.back().insert(strName).second) {
            throw CToolError(EVerdict::INVALID, "the member " + Text::Quoted(strName) + " stands twice in one object");
        }
        if (m_vecOpen.back().size() > MOST_MEMBERS) {
            throw CToolError(EVerdict::INVALID, TOO_MANY);
        }
    }

    static constexpr std::size_t MOST_MEMBERS = 256;
    static constexpr const char TOO_MANY[] = "an object has more than 256 members";
    static constexpr int MOST_LEVELS = 256;
    static constexpr const char TOO_DEEP[] = "values are nested more than 256 deep";
    std::vector<std::set<std::string>> m_vecOpen;
};

/** The parser's own words, behind its number and a place that it counts in bytes. */
std::string ExplainParseError(const Json::parse_error& error) {
    const std::string strWhat = error.what();
    const std::size_t iPlace = strWhat.find(" column ");
    const std::size_t iWords = iPlace == std::string::npos ? iPlace : strWhat.find(": ", iPlace);
    return Text::Printable(iWords == std::string::npos ? strWhat : strWhat.substr(iWords + 2));
}

Json ParseJson(const std::string& strFile, const std::string& strBytes) {
    try {
        return Json::parse(strBytes, CDumpChecker());
    } catch (const Json::parse_error& error) {
        const std::size_t iOffset = error.byte == 0 ? 0 : error.byte - 1;
        throw CInputError(strFile, "no JSON: " + ExplainParseError(error), CSourcePlaces(strBytes).Find(iOffset));
    } catch (const CToolError& error) {
        throw CInputError(strFile, error.what());
    }
}

/** @throws CToolError (INVALID) with the path of what is wrong */
std::vector<CSettingsRow> ReadRecords(const Json& document, const SKind& kind) {
    const std::string strList = std::string("/") + kind.pList;
    const auto itList = document.find(kind.pList);
    if (itList == document.end() || !itList->is_array()) {
        throw CToolError(EVerdict::INVALID, strList + ": a list of records is needed here");
    }
    std::vector<CSettingsRow> vecRows;
    std::set<std::string> lstSubjects;
    CProgress::Expect(STEPS_OF_LOADED * itList->size());
    for (const Json& record : *itList) {
        const std::string strPath = strList + '/' + std::to_string(vecRows.size());
        vecRows.push_back(RecordFromJson(kind.eKind, record, strPath));
        CProgress::Step();
        if (!lstSubjects.insert(vecRows.back().GetSubject()).second) {
            throw CToolError(EVerdict::INVALID, strPath + "/subject: another record of the list has this subject");
        }
    }
    return vecRows;
}

std::vector<std::vector<CSettingsRow>> ReadDump(CCommandContext& context, const std::string& strFile) {
    const Json document = ParseJson(strFile, ReadBytes(context, strFile));
    std::vector<std::vector<CSettingsRow>> vecTables;
    try {
        if (!document.is_object() || document.value(FORMAT, Json()) != DUMP.pFormat) {
            throw CToolError(EVerdict::INVALID, std::string("/") + FORMAT + ": \"" + DUMP.pFormat +
                                                    "\" is needed here; dlpctl store dump writes such files");
        }
        for (const SKind& kind : KINDS) {
            vecTables.push_back(ReadRecords(document, kind));
        }
    } catch (const CToolError& error) {
        throw CInputError(strFile, error.what());
    }
    return vecTables;
}

EVerdict Load(CCommandContext& context, const std::string& strFile) {
    std::optional<CProgress> progress(std::in_place, context, LOAD.pName);
    const std::vector<std::vector<CSettingsRow>> vecTables = ReadDump(context, strFile);
    const CStoreSession& store = context.GetStore();
    CSettingsTransaction unit(EUnitOfWork::WRITE);
    CSettingsStore& settings = CSettingsStore::Current();
    const Json head = {{FORMAT, LOAD.pFormat}, {"file", strFile}};
    Json replaced = Json::object();
    Json loaded = Json::object();
    CTextTable table({"", "REPLACED", "LOADED"});
    table.AlignRight(1);
    for (const SKind& kind : KINDS) {
        const std::vector<CSettingsRow>& vecRows = vecTables[static_cast<std::size_t>(kind.eKind)];
        const std::size_t iReplaced = settings.Count(kind.eKind);
        settings.ReplaceAll(kind.eKind, vecRows);
        CProgress::Step(vecRows.size());
        Signals::ThrowIfCaught();
        replaced[kind.pList] = iReplaced;
        loaded[kind.pList] = vecRows.size();
        table.Add({kind.pWords, std::to_string(iReplaced), std::to_string(vecRows.size())});
    }
    progress.reset();
    store.ThrowIfFailed();
    if (context.IsJson()) {
        Json answer = head;
        answer["verdict"] = GetVerdictName(EVerdict::DONE);
        answer["replaced"] = std::move(replaced);
        answer["loaded"] = std::move(loaded);
        context.StartAnswer(head, answer);
    } else {
        context.StartAnswer(table.ToString(), std::string());
    }
    unit.Commit();
    context.FinishAnswer();
    return EVerdict::DONE;
}

Json FileToJson(const SInstalledFile& file) {
    return {{"path", file.strPath}, {"found", file.bFound}};
}

/** What the information says, as JSON; the text shows the same members. */
Json MakeInfo(CCommandContext& context) {
    const CStoreSession& store = context.GetStoreToRead();
    CSettingsTransaction unit(EUnitOfWork::READ);
    CSettingsStore& settings = CSettingsStore::Current();
    const SStoreInfo info = settings.GetInfo();
    Json object = {{FORMAT, INFO.pFormat},
                   {"verdict", GetVerdictName(EVerdict::DONE)},
                   {"store", context.GetStoreUrl()},
                   {"engine", info.strEngine},
                   {"schema", info.iSchemaVersion}};
    for (const SKind& kind : KINDS) {
        object[kind.pList] = settings.Count(kind.eKind);
    }
    store.ThrowIfFailed();
    unit.Commit();
    object["installation_directory"] = OS::Utf8Lenient(SYS::GetInstallPath());
    object["policy_file"] = FileToJson(FindPolicyFile());
    object["map_file"] = FileToJson(FindMapFile());
    object["language"] = OS::Utf8Lenient(CDLPDigitalAssetsParser::GetLanguage());
    object["document_version"] = OS::Utf8Lenient(CDLPDigitalAssetsParser::GetVersion());
    object["tool_version"] = DLP_VERSION;
    return object;
}

std::string ToCell(const Json& value) {
    if (value.is_object()) {
        return value["path"].get<std::string>() + (value["found"].get<bool>() ? "" : " (missing)");
    }
    return value.is_string() ? value.get<std::string>() : value.dump();
}

EVerdict Info(CCommandContext& context) {
    const Json info = MakeInfo(context);
    if (context.IsJson()) {
        context.WriteJson(info);
        return EVerdict::DONE;
    }
    CTextTable table;
    for (const auto& member : info.items()) {
        if (member.key() != FORMAT && member.key() != "verdict") {
            table.Add({member.key(), ToCell(member.value())});
        }
    }
    context.Write(table.ToString());
    return EVerdict::DONE;
}

}  // namespace

void AddStoreCommands(CCommandLine& line) {
    CLI::App& group = line.AddGroup(GROUP, GROUP_SUMMARY);
    const auto pOutput = std::make_shared<std::string>();
    CLI::App& dump =
        line.AddCommand(group, DUMP, [pOutput](CCommandContext& context) { return Dump(context, *pOutput); });
    CCommandLine::AddText(dump, "-o,--output", "FILE", *pOutput,
                          "write to FILE, which is replaced whole or not at all");
    const auto pInput = std::make_shared<std::string>();
    CLI::App& load =
        line.AddCommand(group, LOAD, [pInput](CCommandContext& context) { return Load(context, *pInput); });
    CCommandLine::AddText(load, "FILE", "FILE", *pInput, "a dump")->required();
    line.AddCommand(group, INFO, Info);
    AddStoreCareCommands(line, group);
}
