#include "cli/check/CheckFormats.h"

#include <algorithm>
#include <iterator>

#include "cli/Text.h"

namespace {

constexpr SCheckFormat FORMATS[] = {
    {CHECK_TEXT, WriteCheckText}, {CHECK_JSON, WriteCheckJson}, {"sarif", WriteCheckSarif},
    {"junit", WriteCheckJunit},   {"github", WriteCheckGithub},
};

}  // namespace

const SCheckFormat& FindCheckFormat(const char* pOption, const std::string& strName) {
    const auto* pFormat = std::find_if(std::begin(FORMATS), std::end(FORMATS),
                                       [&](const SCheckFormat& format) { return strName == format.pName; });
    if (pFormat == std::end(FORMATS)) {
        throw CToolError(EVerdict::USAGE, std::string(pOption) + ": there is no format " + Text::Quoted(strName) +
                                              "; write text, json, sarif, junit or github");
    }
    return *pFormat;
}
