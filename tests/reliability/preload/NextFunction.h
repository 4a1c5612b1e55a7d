#pragma once

#include <dlfcn.h>

/** What stands behind this library under that name. */
template <class Function>
Function* Next(Function*, const char* pName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, pName));
}

#define NEXT(name)                        \
    static constexpr char NAME[] = #name; \
    static auto* const fnNext = Next(&name, NAME)
