#include "tests/faults/AllocationFaults.h"

#include <cstdlib>
#include <new>

namespace AllocationFaults {

namespace {
/** How many allocations it is to the one that fails; 0: none fails. */
thread_local int s_iLeft = 0;
}  // namespace

void FailAt(int iAllocation) {
    s_iLeft = iAllocation;
}

bool Disarm() {
    const bool bReached = s_iLeft == 0;
    s_iLeft = 0;
    return bReached;
}

/** @return whether this allocation is the one that fails */
static bool Fails() {
    return s_iLeft > 0 && --s_iLeft == 0;
}

}  // namespace AllocationFaults

// Not inlined: compilers warn where they see one half of such a pair without the other.
[[gnu::noinline]] void* operator new(std::size_t iSize) {
    void* const pMemory = AllocationFaults::Fails() ? nullptr : std::malloc(iSize == 0 ? 1 : iSize);
    if (pMemory == nullptr) {
        throw std::bad_alloc();
    }
    return pMemory;
}
[[gnu::noinline]] void operator delete(void* pMemory) noexcept {
    std::free(pMemory);
}
[[gnu::noinline]] void operator delete(void* pMemory, std::size_t) noexcept {
    std::free(pMemory);
}
