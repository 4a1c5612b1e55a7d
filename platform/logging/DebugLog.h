#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "platform/common/PlatformExport.h"
#include "platform/common/x_wstring.h"

/** Trace and error lines of the library, handed to whoever listens. Without a listener a line costs one test. */
namespace DBG {

/** Levels as the lines carry them. */
enum ELevel : int {
    LEVEL_INFO = 0x102,     ///< a decision, a value found, a success
    LEVEL_ENTER = 0x110,    ///< entering an operation
    LEVEL_LEAVE = 0x111,    ///< leaving an operation
    LEVEL_CONTENT = 0x1001, ///< invalid or unsupported content
    LEVEL_ERROR = 0x1003,   ///< a caught exception, a failed call, a skipped item
    LEVEL_FAILURE = 0x1004, ///< a step that failed
};

/** One line. The message is the text as it is: whoever writes it to a file or terminal escapes it (EscapeControls). */
struct CLogRecord {
    int iLevel = 0;
    std::string strSource;  ///< the source unit, such as ".\DLPTemplateMgr.cpp"
    int iLine = 0;          ///< line in the source
    std::wstring strMessage;
};

/**
 * Sets who receives the lines; an empty function: nobody. The sink is called on the thread that logs; what it throws is
 * dropped. Set it while no operation runs.
 */
DLP_PLATFORM_API void SetLogSink(std::function<void(const CLogRecord&)> fnSink);

/** Sets which levels are listened to; an empty function: all. */
DLP_PLATFORM_API void SetLogFilter(std::function<bool(int)> fnFilter);

/** @return whether a sink is set and takes lines of this level */
DLP_PLATFORM_API bool IsListened(int iLevel) noexcept;

/**
 * @return whether a character orders or misleads where it is shown: a C0 or C1 control, DEL, U+2028, U+2029, a
 * bidirectional control, or one that nobody sees, such as a soft hyphen, a joiner, a variation selector or a tag
 */
DLP_PLATFORM_API bool IsControl(wchar_t c);
/** @return the text in which such characters are \uXXXX, and \ is \\ */
DLP_PLATFORM_API std::wstring EscapeControls(const std::wstring& strText);

/** The library's own module handle; opaque. */
using CModule = const void*;
inline constexpr CModule MODULE = nullptr;

/** One packed argument of a format. */
using CLogArgument = std::variant<int, const wchar_t*, std::wstring_view, const void*>;

namespace Detail {
/** Format and deliver; a bad format or lack of memory never reaches the caller. */
DLP_PLATFORM_API void Write(int iLevel, const char* pSource, int iLine, const wchar_t* pFormat,
                            const CLogArgument* pArguments, int iCount) noexcept;
/** The narrow entry: %s reads its argument's memory as bytes up to the first zero byte. */
DLP_PLATFORM_API void Write(int iLevel, const char* pSource, int iLine, const char* pFormat,
                            const CLogArgument* pArguments, int iCount) noexcept;

template <class T>
CLogArgument Pack(const T& value) {
    if constexpr (std::is_convertible_v<const T&, const wchar_t*>) {
        return static_cast<const wchar_t*>(value);
    } else if constexpr (std::is_base_of_v<std::wstring, T>) {
        return std::wstring_view(value);
    } else if constexpr (std::is_pointer_v<T>) {
        return static_cast<const void*>(value);
    } else {
        static_assert(std::is_same_v<T, int> || std::is_same_v<T, bool>, "cast numbers to int: %d reads an int");
        return static_cast<int>(value);
    }
}
}  // namespace Detail

/**
 * Writes one line with a wide printf format: %s a wide string (null shows as "(null)"), %d an int, %p a pointer.
 * @param pFormat a constant, never data
 */
template <class... Args>
void DebugLogEx(CModule, int iLevel, const char* pSource, int iLine, const wchar_t* pFormat, const Args&... args) {
    const CLogArgument aArguments[] = {Detail::Pack(args)..., CLogArgument()};
    Detail::Write(iLevel, pSource, iLine, pFormat, aArguments, static_cast<int>(sizeof...(args)));
}

/** The narrow entry: the message is the narrow format, and %s reads the memory it is given as bytes. */
template <class... Args>
void DebugLogEx(CModule, int iLevel, const char* pSource, int iLine, const char* pFormat, const Args&... args) {
    const CLogArgument aArguments[] = {Detail::Pack(args)..., CLogArgument()};
    Detail::Write(iLevel, pSource, iLine, pFormat, aArguments, static_cast<int>(sizeof...(args)));
}

}  // namespace DBG

/** Writes a line of the source unit named by LOG_SOURCE; no argument is evaluated unless somebody listens. */
#define DLP_LOG(iLevel, ...)                                                               \
    do {                                                                                   \
        if (DBG::IsListened(iLevel)) {                                                     \
            DBG::DebugLogEx(DBG::MODULE, iLevel, LOG_SOURCE, __LINE__, __VA_ARGS__);       \
        }                                                                                  \
    } while (false)
