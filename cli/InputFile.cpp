#include "cli/InputFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "cli/CommandContext.h"
#include "cli/FileIdentity.h"
#include "cli/Signals.h"
#include "cli/Text.h"
#include "cli/XmlFault.h"
#include "platform/common/CException.h"
#include "platform/common/Paths.h"
#include "platform/common/TextConversion.h"
#include "platform/common/TextTools.h"
#include "xml/CPolicyDocument.h"

namespace {

namespace fs = std::filesystem;

constexpr const char STANDARD_STREAM[] = "-";
constexpr const char READ_ONCE[] = "standard input can be read once only; name a file";
constexpr const char TOO_LARGE[] = "it is larger than 512 MiB, and more is not read";
constexpr std::size_t MOST_BYTES = std::size_t{512} << 20U;  ///< as TOO_LARGE says
constexpr const char EMPTY[] = "it is empty";
constexpr const char NO_MARKUP[] = "there is no \"<\" in it";
constexpr const char WHICH_FILE[] = "check that this is the file you meant";
constexpr const char STORE_BYTES[] = "it is a store";
constexpr const char BESIDE_STORE[] = "it is a file of the store";
constexpr const char WHICH_STORE[] = "where a store can stand write it as sqlite:PATH, else name it by --store";
constexpr const char UTF16[] = "UTF-16";
constexpr const char UTF8[] = "UTF-8";
constexpr const char FROM_HERE[] = " from here on";
constexpr std::string_view ZERO("\0", 1);
constexpr std::string_view DECLARATION = "<?xml";
constexpr std::string_view DECLARATION_END = "?>";
constexpr std::string_view ENCODING = "encoding";
constexpr std::string_view BEFORE_ENCODING = " \t\r\n=\"'";
constexpr std::string_view OF_ENCODING = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
constexpr std::string_view STORE_START("SQLite format 3\0", 16);
constexpr std::string_view STORE_URL = "sqlite:";
constexpr const char NAME_STORE[] = "; the store is named by --store";

/** A pipe has no size to read by. */
bool IsStream(const std::string& strPath) {
    std::error_code error;
    const fs::file_type eType = fs::status(strPath, error).type();
    return eType == fs::file_type::fifo || eType == fs::file_type::character || eType == fs::file_type::socket;
}

std::string ReadStream(const std::string& strPath) {
    const int iFile = ::open(strPath.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (iFile < 0) {
        Signals::ThrowIfCaught();
        throw std::system_error(errno, std::generic_category());
    }
    try {
        std::string strBytes = ReadDescriptor(iFile);
        ::close(iFile);
        return strBytes;
    } catch (...) {
        ::close(iFile);
        throw;
    }
}

bool IsTooLarge(const std::string& strPath) {
    std::error_code error;
    return fs::is_regular_file(strPath, error) && fs::file_size(strPath, error) > MOST_BYTES && !error;
}

/** @return in the system's words why a file cannot be read */
std::string ExplainUnreadable(const std::string& strFile, const std::string& strPath) {
    std::error_code error;
    if (fs::is_directory(strPath, error)) {
        return std::generic_category().message(EISDIR);
    }
    const int iFile = ::open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    const int iError = iFile < 0 ? errno : EIO;
    if (iFile >= 0) {
        ::close(iFile);
    }
    return std::generic_category().message(iError) +
           (strFile.rfind(STORE_URL, 0) == 0 || strFile == STORE_WORD ? NAME_STORE : "");
}

/** @return the sentences of a code, filled in, as one line */
std::string MakeReason(const SInputFault& fault) {
    const SCodeRow& row = GetCodeRow(fault.eCode);
    return FillSentence(row.pWhat, fault.vecWhat) + "; " + FillSentence(row.pAdvice, fault.vecAdvice);
}

/** @return empty where no store can be named: then none is open either */
std::string FindStorePath(const CCommandContext& context) {
    try {
        return context.GetStorePath();
    } catch (const CToolError&) {
        return {};
    }
}

/**
 * Closing a file gives up every lock that the process has on it (fcntl(2)), those of the store among them, so that
 * another process may take what it writes for left over. A file of the store is not even opened.
 */
void CheckIsNoStore(const CCommandContext& context, const std::string& strFile, const std::string& strPath) {
    const std::string strStore = FindStorePath(context);
    if (strFile != STANDARD_STREAM && IsOfStore(strPath, strStore)) {
        const SInputFault fault{.vecWhat = {IsSameFile(strPath, strStore) ? STORE_BYTES : BESIDE_STORE},
                                .vecAdvice = {WHICH_STORE}};
        throw CInputError(strFile, MakeReason(fault), {1, 1}, fault.eCode);
    }
}

/** Reads bytes by fnStream or fnFile, whichever fits, and puts the file's name to what goes wrong. */
template <class Stream, class File>
auto Read(CCommandContext& context, const std::string& strFile, Stream&& fnStream, File&& fnFile) {
    const std::string strPath = context.GetAbsolute(strFile);
    context.CheckIsNoLog(strFile);
    CheckIsNoStore(context, strFile, strPath);
    if (strFile != STANDARD_STREAM && IsTooLarge(strPath)) {
        throw CInputError(strFile, TOO_LARGE);
    }
    try {
        if (strFile == STANDARD_STREAM) {
            return fnStream(context.ReadStandardInput());
        }
        return IsStream(strPath) ? fnStream(ReadStream(strPath)) : fnFile(strPath);
    } catch (const std::system_error& error) {
        throw CInputError(strFile, error.code() == std::errc::file_too_large ? TOO_LARGE : error.code().message());
    } catch (const std::runtime_error&) {
        throw CInputError(strFile, ExplainUnreadable(strFile, strPath));
    } catch (const OS::CException&) {
        throw CInputError(strFile, ExplainUnreadable(strFile, strPath));
    }
}

bool IsStoreFile(std::string_view strBytes) {
    return strBytes.substr(0, STORE_START.size()) == STORE_START;
}

/** Markup in that encoding has a zero beside its first "<"; no other text may have one. */
bool IsUtf16(std::string_view strBytes) {
    const std::size_t iMarkup = strBytes.find('<');
    return strBytes.substr(iMarkup + 1, 1) == ZERO || (iMarkup % 2 == 1 && strBytes[iMarkup - 1] == ZERO[0]);
}

/** @return the encoding that the text declares; "" when it declares none, or the one that it should be in */
std::string FindEncoding(std::string_view strText) {
    const std::string_view strDeclaration = strText.substr(0, strText.find(DECLARATION_END));
    const std::size_t iName = strDeclaration.find(ENCODING);
    if (strDeclaration.substr(0, DECLARATION.size()) != DECLARATION || iName == std::string_view::npos) {
        return {};
    }
    std::string_view strEncoding = strDeclaration.substr(iName + ENCODING.size());
    strEncoding.remove_prefix(std::min(strEncoding.find_first_not_of(BEFORE_ENCODING), strEncoding.size()));
    strEncoding = strEncoding.substr(0, strEncoding.find_first_not_of(OF_ENCODING));
    return OS::EqualsNoCase(strEncoding, std::string_view(UTF8)) ? std::string() : std::string(strEncoding);
}

std::string AdviseEncoding(const std::string& strEncoding) {
    return ", as iconv -f " + strEncoding + " -t UTF-8 does";
}

}  // namespace

CInputError::CInputError(const std::string& strFile, const std::string& strReason, SPlace place, ECode eCode)
    : CToolError(EVerdict::INVALID, FormatPlace(strFile, place) + ": " + strReason),
      m_strReason(strReason),
      m_place(place),
      m_eCode(eCode) {}

CInputError::CInputError(const std::string& strFile, const SPolicyFile& file, const SInputFault& fault)
    : CInputError(strFile, MakeReason(fault), CSourcePlaces(file.strBytes).Find(fault.iOffset), fault.eCode) {
    m_related = fault.related;
}

std::optional<SInputFault> FindTextFault(const SPolicyFile& file) {
    const std::string_view strText = file.Text();
    if (IsStoreFile(file.strBytes)) {
        return SInputFault{.vecWhat = {STORE_BYTES}, .vecAdvice = {WHICH_STORE}};
    }
    if (strText.empty()) {
        return SInputFault{.vecWhat = {file.strBytes.empty() ? EMPTY : NO_MARKUP}, .vecAdvice = {WHICH_FILE}};
    }
    if (IsUtf16(file.strBytes)) {
        return SInputFault{ECode::NOT_UTF8, {std::string(", but ") + UTF16}, {AdviseEncoding(UTF16)}};
    }
    const std::size_t iInvalid = OS::FindInvalidUtf8(strText);
    if (iInvalid == std::string::npos) {
        return {};
    }
    const std::string strEncoding = FindEncoding(strText);
    return SInputFault{ECode::NOT_UTF8,
                       {FROM_HERE + (strEncoding.empty() ? "" : ", and declared to be " + strEncoding)},
                       {strEncoding.empty() ? "" : AdviseEncoding(strEncoding) + ", and declare it so"},
                       file.iStart + iInvalid};
}

SInputFault MakeXmlFault(const SPolicyFile& file, const SXMLLoadError& error) {
    const CSourcePlaces places(file.strBytes);
    const SXmlFault fault = ExplainXmlFault(file.Text(), error, places, file.iStart);
    SInputFault made{ECode::NOT_XML, {fault.strWhat}, {fault.strAdvice}, file.iStart + fault.iOffset};
    if (fault.iRelated != std::string::npos) {
        made.related = {file.iStart + fault.iRelated, fault.strRelated, places.Find(file.iStart + fault.iRelated)};
    }
    return made;
}

SPolicyFile TakeBytes(std::string strBytes) {
    const std::size_t iStart = std::min(strBytes.find('<'), strBytes.size());
    return {std::move(strBytes), iStart};
}

std::string FormatPlace(const std::string& strFile, SPlace place) {
    std::string strPlace = Text::Printable(strFile);
    if (place.iLine != 0) {
        strPlace.append(":").append(std::to_string(place.iLine)).append(":").append(std::to_string(place.iColumn));
    }
    return strPlace;
}

SPolicyFile ReadPolicy(CCommandContext& context, const std::string& strFile) {
    context.Detail("reading " + Text::Printable(strFile));
    SPolicyFile file = Read(context, strFile, TakeBytes, [&](const std::string& strPath) {
        try {
            return ReadPolicyFile(strPath);
        } catch (const OS::CException&) {
            // Its text is not UTF-8; the place is found below.
            return TakeBytes(OS::ReadWholeFile(strPath));
        }
    });
    if (const std::optional<SInputFault> fault = FindTextFault(file)) {
        throw CInputError(strFile, file, *fault);
    }
    return file;
}

CXMLView ParsePolicy(const std::string& strFile, const SPolicyFile& file, CPolicyDocument& document) {
    const CXMLParser& parser = document.Load();
    const SXMLLoadError& error = parser.GetLoadError();
    if (!error.strMessage.empty()) {
        throw CInputError(strFile, file, MakeXmlFault(file, error));
    }
    return parser.RootView();
}

void RequireOneInput(const std::vector<std::string>& vecFiles) {
    if (std::count(vecFiles.begin(), vecFiles.end(), STANDARD_STREAM) > 1) {
        throw CToolError(EVerdict::USAGE, READ_ONCE);
    }
}

std::string ReadBytes(CCommandContext& context, const std::string& strFile) {
    context.Detail("reading " + Text::Printable(strFile));
    return Read(
        context, strFile, [](std::string strBytes) { return strBytes; }, OS::ReadWholeFile);
}

std::string ReadDescriptor(int iDescriptor) {
    std::string strBytes;
    std::array<char, 65536> aBuffer;
    for (;;) {
        const ssize_t iRead = ::read(iDescriptor, aBuffer.data(), aBuffer.size());
        if (iRead == 0) {
            return strBytes;
        }
        if (iRead > 0 && strBytes.size() + static_cast<std::size_t>(iRead) > MOST_BYTES) {
            throw std::system_error(EFBIG, std::generic_category());
        }
        if (iRead > 0) {
            strBytes.append(aBuffer.data(), static_cast<std::size_t>(iRead));
            continue;
        }
        Signals::ThrowIfCaught();
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category());
        }
    }
}
