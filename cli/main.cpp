#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "cli/Memory.h"
#include "cli/Signals.h"
#include "cli/StoreSession.h"
#include "cli/Tool.h"
#include "cli/Verdict.h"

namespace {

constexpr std::string_view OUT_OF_MEMORY = "dlpctl: memory ran out\n";
constexpr std::string_view OUT_OF_MEMORY_TOO_LATE = "dlpctl: memory ran out after the store was changed\n";

/** Nothing here may need memory. What was not committed is undone, also when this ends the program in the middle. */
int TellOutOfMemory() noexcept {
    const std::string_view strText = CStoreSession::IsChanged() ? OUT_OF_MEMORY_TOO_LATE : OUT_OF_MEMORY;
    [[maybe_unused]] const ssize_t iWritten = ::write(STDERR_FILENO, strText.data(), strText.size());
    return GetExitCode(EVerdict::MEMORY);
}

/** The destructors of JSON values need memory, and cannot pass on that there is none. */
[[noreturn]] void Terminate() {
    try {
        if (std::current_exception() != nullptr) {
            throw;
        }
    } catch (const std::bad_alloc&) {
        ::_exit(TellOutOfMemory());
    } catch (...) {
        // A fault of the program, which a dump of its memory explains.
    }
    std::abort();
}

/** The next file that is opened would become the standard stream that is closed. What stands for it takes and gives
 * nothing, so that its use fails as it would have. */
void KeepStreamsTaken() {
    for (const int iStream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(iStream, F_GETFD) == -1) {
            [[maybe_unused]] const int iTaken = ::open("/dev/null", iStream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace

int main(int iArguments, char** apArguments) {
    KeepStreamsTaken();
    std::set_terminate(Terminate);
    PrepareMemory();
    Signals::Watch();
    try {
        std::ios::sync_with_stdio(false);
        const std::vector<std::string> vecArguments(apArguments + (iArguments > 0 ? 1 : 0), apArguments + iArguments);
        return RunTool(vecArguments, std::cin, std::cout, std::cerr);
    } catch (const std::bad_alloc&) {
        return TellOutOfMemory();  // before the command began, or while its failure was told
    }
}
