#pragma once

/** Lack of memory, chosen by a test. Every allocation of the tests in this folder goes through here. */
namespace AllocationFaults {

/** Makes the n-th allocation of this thread from now on throw std::bad_alloc, once. */
void FailAt(int iAllocation);
/** Lets every allocation succeed again. @return whether the one that was to fail has come */
bool Disarm();

}  // namespace AllocationFaults
