#include "cpu_library.h"

#include "device.h"

#include <direct_call.h>

#include <cstdio>
#include <cstdlib>

namespace tarn::dropin {

namespace {

/// Whether the routine is the drop-in's own.
bool isOwn(const void* routine)
{
    static const char here = 0;
    Dl_info own, other;
    return dladdr(&here, &own) && dladdr(routine, &other) && own.dli_fbase == other.dli_fbase;
}

} // namespace

void* cpuRoutine(const char* name, const void* caller)
{
    void* routine = dlsym(RTLD_NEXT, name);
    if (!routine)
        if (void* const object = handleOfObjectAt(caller)) {
            routine = dlsym(object, name);
            dlclose(object);
        }
    if (!routine || isOwn(routine))
        routine = libraryCpuRoutine(name);
    if (!routine || isOwn(routine)) {
        std::fprintf(stderr, "tarn_blas: no CPU library of this process has %s\n", name);
        std::_Exit(127);
    }
    return routine;
}

} // namespace tarn::dropin
