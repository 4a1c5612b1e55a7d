#include "tests/support/JsonSchema.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <string_view>

namespace {

using Json = nlohmann::json;

class CSchema {
  public:
    explicit CSchema(const Json& root) : m_root(root) {}

    std::string Check(const Json& schema, const Json& value, const std::string& strPlace) const {
        if (schema.is_boolean()) {
            return schema.get<bool>() ? "" : strPlace + ": nothing may stand here";
        }
        for (const auto& [strKeyword, argument] : schema.items()) {
            const auto itKeyword = KEYWORDS.find(strKeyword);
            if (itKeyword == KEYWORDS.end()) {
                return strPlace + ": the schema says \"" + strKeyword + "\", which is not known here";
            }
            if (itKeyword->second != nullptr) {
                const std::string strWrong = (this->*itKeyword->second)(schema, argument, value, strPlace);
                if (!strWrong.empty()) {
                    return strWrong;
                }
            }
        }
        return "";
    }

  private:
    using Checking = std::string (CSchema::*)(const Json& schema, const Json& argument, const Json& value,
                                              const std::string& strPlace) const;
    static const std::map<std::string, Checking> KEYWORDS;

    static bool IsOfType(const std::string& strType, const Json& value) {
        return strType == "integer" ? value.is_number_integer() : strType == value.type_name();
    }

    std::string Type(const Json&, const Json& argument, const Json& value, const std::string& strPlace) const {
        const Json types = argument.is_array() ? argument : Json::array({argument});
        const bool bFits = std::any_of(types.begin(), types.end(),
                                       [&](const Json& type) { return IsOfType(type.get<std::string>(), value); });
        return bFits ? "" : strPlace + ": " + value.dump() + " is not of type " + argument.dump();
    }

    std::string Const(const Json&, const Json& argument, const Json& value, const std::string& strPlace) const {
        return value == argument ? "" : strPlace + ": " + value.dump() + " is not " + argument.dump();
    }

    std::string Enum(const Json&, const Json& argument, const Json& value, const std::string& strPlace) const {
        const bool bFound = std::find(argument.begin(), argument.end(), value) != argument.end();
        return bFound ? "" : strPlace + ": " + value.dump() + " is none of " + argument.dump();
    }

    std::string Required(const Json&, const Json& argument, const Json& value, const std::string& strPlace) const {
        for (const Json& name : argument) {
            if (value.is_object() && !value.contains(name.get<std::string>())) {
                return strPlace + ": " + name.dump() + " is missing";
            }
        }
        return "";
    }

    std::string Properties(const Json&, const Json& argument, const Json& value, const std::string& strPlace) const {
        for (const auto& [strName, schema] : argument.items()) {
            const std::string strWrong = value.is_object() && value.contains(strName)
                                             ? Check(schema, value[strName], strPlace + '/' + strName)
                                             : "";
            if (!strWrong.empty()) {
                return strWrong;
            }
        }
        return "";
    }

    std::string Additional(const Json& schema, const Json& argument, const Json& value,
                           const std::string& strPlace) const {
        if (!value.is_object()) {
            return "";
        }
        for (const auto& [strName, member] : value.items()) {
            const bool bNamed = schema.contains("properties") && schema["properties"].contains(strName);
            const std::string strWrong = bNamed ? "" : Check(argument, member, strPlace + '/' + strName);
            if (!strWrong.empty()) {
                return strWrong;
            }
        }
        return "";
    }

    std::string Items(const Json&, const Json& argument, const Json& value, const std::string& strPlace) const {
        for (std::size_t i = 0; value.is_array() && i < value.size(); ++i) {
            const std::string strWrong = Check(argument, value[i], strPlace + '/' + std::to_string(i));
            if (!strWrong.empty()) {
                return strWrong;
            }
        }
        return "";
    }

    std::string AnyOf(const Json&, const Json& argument, const Json& value, const std::string& strPlace) const {
        std::string strWrong;
        for (const Json& schema : argument) {
            strWrong = Check(schema, value, strPlace);
            if (strWrong.empty()) {
                return "";
            }
        }
        return strWrong;
    }

    std::string Ref(const Json&, const Json& argument, const Json& value, const std::string& strPlace) const {
        const Json::json_pointer pointer(argument.get<std::string>().substr(1));
        return m_root.contains(pointer) ? Check(m_root[pointer], value, strPlace)
                                        : strPlace + ": the schema refers to " + argument.dump() + ", which it lacks";
    }

    const Json& m_root;
};

/** Null: says nothing of the value. */
const std::map<std::string, CSchema::Checking> CSchema::KEYWORDS = {
    {"$schema", nullptr},
    {"$id", nullptr},
    {"$defs", nullptr},
    {"title", nullptr},
    {"description", nullptr},
    {"type", &CSchema::Type},
    {"const", &CSchema::Const},
    {"enum", &CSchema::Enum},
    {"required", &CSchema::Required},
    {"properties", &CSchema::Properties},
    {"additionalProperties", &CSchema::Additional},
    {"items", &CSchema::Items},
    {"anyOf", &CSchema::AnyOf},
    {"$ref", &CSchema::Ref},
};

}  // namespace

std::string FindSchemaViolation(const Json& schema, const Json& value) {
    return CSchema(schema).Check(schema, value, "");
}

namespace {

/** @return "dump" for "dlpctl-dump/1", "dlpctl" for "dlpctl/1" */
std::string GetSchemaName(const std::string& strFormat) {
    constexpr std::string_view PREFIX = "dlpctl-";
    const std::string strName = strFormat.substr(0, strFormat.find('/'));
    return strName.compare(0, PREFIX.size(), PREFIX) == 0 ? strName.substr(PREFIX.size()) : strName;
}

std::string CheckObject(const Json& object) {
    if (!object.contains("format")) {
        return object.contains("$schema") ? "" : "no format is named: " + object.dump();
    }
    const std::string strFormat = object["format"].get<std::string>();
    const std::string strWrong = CheckAnswer(GetSchemaName(strFormat), object.dump());
    return strWrong.empty() ? "" : strFormat + ": " + strWrong;
}

}  // namespace

std::string CheckAnswer(const std::string& strName, const std::string& strJson) {
    std::ifstream file(DLP_SOURCE_DIR "/docs/schemas/" + strName + ".schema.json");
    const Json schema = Json::parse(file, nullptr, false);
    const Json value = Json::parse(strJson, nullptr, false);
    if (schema.is_discarded() || value.is_discarded()) {
        return schema.is_discarded() ? strName + " has no schema" : "no JSON: " + strJson;
    }
    return FindSchemaViolation(schema, value);
}

std::string CheckAnswers(const std::string& strOutput) {
    if (strOutput.empty() || strOutput.front() != '{') {
        return "";
    }
    const Json whole = Json::parse(strOutput, nullptr, false);
    if (whole.is_object()) {
        return CheckObject(whole);
    }
    std::istringstream output(strOutput);
    for (std::string strLine; std::getline(output, strLine);) {
        const Json object = Json::parse(strLine, nullptr, false);
        const std::string strWrong = object.is_object() ? CheckObject(object) : "no JSON: " + strLine;
        if (!strWrong.empty()) {
            return strWrong;
        }
    }
    return "";
}
