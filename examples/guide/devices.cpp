// Every device of the machine solves a system, each in a thread of its own.
#include <tarn_lapack.h>

#include <cstdio>
#include <thread>
#include <vector>

namespace {

/// What a thread does that serves one device.
void work(int device, tarnStatus& status)
{
    status = tarnSelectDevice(device);
    if (status == tarnNoError)
        status = tarnInitialize();
    if (status != tarnNoError)
        return;

    const int n = 100;
    std::vector<float> a(n * n, 1), b(n, n + 1);
    std::vector<int> pivots(n);
    for (int i = 0; i < n; ++i)
        a[i + n * i] = 2; // x = 1 everywhere
    status = tarnSgesv(n, 1, a.data(), n, pivots.data(), b.data(), n);
    std::printf("device %d: x(1) = %.4f\n", device, b[0]);
    tarnShutdown();
}

} // namespace

int main()
{
    int devices = 0;
    tarnGetDeviceCount(&devices);

    std::vector<tarnStatus> statuses(devices, tarnUnspecifiedError);
    std::vector<std::thread> threads;
    for (int device = 0; device < devices; ++device)
        threads.emplace_back(work, device, std::ref(statuses[device]));
    for (std::thread& thread : threads)
        thread.join();

    for (const tarnStatus status : statuses)
        if (status != tarnNoError)
            return 1;
    return devices == 0;
}
