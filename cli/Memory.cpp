#include "cli/Memory.h"

#include <cstdint>
#include <cstdlib>

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/store/CSqliteConnection.h"

// A large document costs more time in the system, which hands out memory page by page, than in checking it.

namespace {

constexpr int HEAP = 256 << 20;            // addresses; memory is taken as it is used
constexpr int STEP = 1 << 20;              // by which it grows beyond that
constexpr int LARGEST_ON_HEAP = 32 << 20;  // the highest that the allocator takes
constexpr std::uintptr_t LARGE_PAGE = 2U << 20U;

std::uintptr_t HeapEnd() {
    return reinterpret_cast<std::uintptr_t>(::sbrk(0));
}

}  // namespace

void PrepareMemory() {
    CSqliteConnection::LeaveMemoryUncounted();
    // What is given back is wanted again at once.
    ::mallopt(M_MMAP_THRESHOLD, LARGEST_ON_HEAP);
    ::mallopt(M_TRIM_THRESHOLD, HEAP);
    ::mallopt(M_TOP_PAD, HEAP);
    const std::uintptr_t iStart = HeapEnd();
    void* volatile pGrown = std::malloc(LARGE_PAGE);  // makes the heap grow, by HEAP
    std::free(pGrown);
    ::mallopt(M_TOP_PAD, STEP);  // where there are no addresses left, what asks for many gets none
    const std::uintptr_t iAligned = (iStart + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    const std::uintptr_t iEnd = HeapEnd();
    if (iEnd > iAligned) {
        ::madvise(reinterpret_cast<void*>(iAligned), iEnd - iAligned, MADV_HUGEPAGE);
    }
}
