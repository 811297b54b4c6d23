// Calls of CPU BLAS and LAPACK routines that nothing in the process can stand before.
//
// The linker binds a call of sgemm_ to the first library of the process that has that name. That may be one that was
// put before the CPU BLAS in order to answer in its place, such as the drop-in library, which would call back to here.
// TARN_DIRECT(sgemm_) is the routine of that name in the libraries that this one itself was linked to.
#pragma once

#include <dlfcn.h>
#include <link.h>

namespace tarn {

/// A handle of the library, or of the program, that holds `address`; null if the loader does not know it.
inline void* handleOfObjectAt(const void* address)
{
    Dl_info info;
    void* map = nullptr;
    if (!dladdr1(address, &info, &map, RTLD_DL_LINKMAP) || !map)
        return nullptr;
    const char* name = static_cast<const link_map*>(map)->l_name; // "" for the program
    return dlopen(*name ? name : nullptr, RTLD_LAZY | RTLD_NOLOAD);
}

namespace {

/// The routine `name` in the libraries that the object around this was linked to; `linked`, what the linker found, if
/// they cannot be asked.
template <class Routine>
Routine* directRoutine(Routine* linked, const char* name)
{
    static const char here = 0;
    static void* const self = handleOfObjectAt(&here); // kept open: none of this is ever unloaded
    void* const found = self ? dlsym(self, name) : nullptr;
    return found ? reinterpret_cast<Routine*>(found) : linked;
}

} // namespace

} // namespace tarn

/// A pointer to the routine; it is looked up once. That it exists is for the linker to see.
#define TARN_DIRECT(name)                                                                                              \
    ([] {                                                                                                              \
        static auto* const routine = tarn::directRoutine(&name, #name);                                                \
        return routine;                                                                                                \
    }())
