// main of all test programs. On the software device, --device=MAJOR.MINOR chooses the machine's one device, without
// overlap of copies and kernels below capability 2.0. It works eagerly, so that what host and device do at a time
// overlaps on any machine, and draws the order of work on different streams.
#include "support/device.h"

#include "cpu_blas.h"

#include <cstdio>
#include <cstring>

namespace {

bool setDevice(const char* text)
{
    int major = 0, minor = 0;
    return std::sscanf(text, "%d.%d", &major, &minor) == 2 && softdevSetDevices({test::deviceOf(major, minor)});
}

} // namespace

int main(int argc, char** argv)
{
    tarn::tool::preferFastCpuBlas(argv);
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        constexpr const char* option = "--device=";
        const bool known = std::strncmp(argv[i], option, std::strlen(option)) == 0;
        if (!known || (test::hasControls && !setDevice(argv[i] + std::strlen(option)))) {
            std::fprintf(stderr, "cannot serve %s\n", argv[i]);
            return 2;
        }
    }
    softdevSetEager(true);
    softdevSetOrder(1);
    return RUN_ALL_TESTS();
}
