#include "dropin_library.h"

#include "failure.h"

#include <filesystem>

#include <dlfcn.h>

namespace tarn::tool {

std::string dropinLibrary()
{
    Dl_info info;
    if (!dladdr(reinterpret_cast<void*>(&tarnGetVersion), &info))
        throw Failure("cannot tell where libtarn_lapack lies");
    const auto library = std::filesystem::absolute(info.dli_fname).parent_path() / TARN_DROPIN_LIBRARY;
    if (!std::filesystem::exists(library))
        throw Failure(library.string() + " is not there: a build of all targets has it");
    return library.string();
}

} // namespace tarn::tool
