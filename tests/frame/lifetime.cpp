// The library at the end of a process, and after its last dlclose. Loads it at run time, as the order in which things
// end depends on when they began.
// Usage: lifetime path/to/libtarn_lapack.so handler|late-handler|thread
#include "tarn_lapack.h"

#include <cstdio>
#include <cstdlib>
#include <future>
#include <string_view>
#include <thread>

#include <dlfcn.h>

namespace {

struct Library
{
    void* handle;
    decltype(&tarnInitialize) initialize;
    decltype(&tarnShutdown) shutdown;
    decltype(&tarnSgemm) sgemm;
};

template <class Function>
void find(void* handle, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(handle, name));
    if (!function) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(2);
    }
}

Library load(const char* path)
{
    Library library{dlopen(path, RTLD_NOW | RTLD_LOCAL), nullptr, nullptr, nullptr};
    find(library.handle, "tarnInitialize", library.initialize);
    find(library.handle, "tarnShutdown", library.shutdown);
    find(library.handle, "tarnSgemm", library.sgemm);
    return library;
}

Library library;

bool multiply()
{
    float a = 3, b = 4, c = 0;
    return library.sgemm('N', 'N', 1, 1, 1, 1, &a, 1, &b, 1, 0, &c, 1) == tarnNoError && c == 12;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const std::string_view order = argv[2];
    const auto shutDown = [] { library.shutdown(); };
    if (order == "late-handler") // runs when the library's own exit handlers have run
        std::atexit(shutDown);
    library = load(argv[1]);
    if (order == "handler")
        std::atexit(shutDown);
    if (library.initialize() != tarnNoError || !multiply())
        return 1;
    if (order == "thread") {
        std::promise<void> called, closed;
        std::thread user([&] {
            multiply();
            called.set_value();
            closed.get_future().wait();
        });
        called.get_future().wait();
        library.shutdown();
        dlclose(library.handle);
        closed.set_value();
        user.join(); // its thread state goes with it
    }
    return 0;
}
