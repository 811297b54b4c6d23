// What the library needs of a provider beyond the calls of the CUDA runtime and cuBLAS. Here: the software device.
#pragma once

#include <cuda_runtime.h>
#include <softdev_launch.h>

#include <array>
#include <string_view>
#include <tuple>
#include <type_traits>

namespace tarn::platform {

/// True if the device can copy between host and device while a kernel runs.
inline bool overlapsCopies(const cudaDeviceProp& properties) { return properties.asyncEngineCount != 0; }

/// Whether the device computes on the cores that the host computes on.
inline constexpr bool sharesCores = true;

/// The turn of one calling thread to compute with all threads of the CPU BLAS.
class CpuTurn
{
public:
    CpuTurn() { softdevTakeCpuTurn(); }
    ~CpuTurn() { softdevLeaveCpuTurn(); }
    CpuTurn(const CpuTurn&) = delete;
    CpuTurn& operator=(const CpuTurn&) = delete;
};

/// The place of one calling thread among those that work at a time. Many at a time would take the cores from each
/// other, and from the device. Who waited long works without.
class Seat
{
public:
    Seat() : taken_(softdevTakeSeat()) {}
    ~Seat()
    {
        if (taken_)
            softdevLeaveSeat();
    }
    Seat(const Seat&) = delete;
    Seat& operator=(const Seat&) = delete;

private:
    const bool taken_;
};

/// The kernel's name as the call log shows it: what the compiler calls the template argument of this function, without
/// its namespaces and parameters. Ends with a zero.
template <auto Kernel>
constexpr auto kernelName()
{
    constexpr std::string_view signature = __PRETTY_FUNCTION__, argument = "Kernel = ";
    constexpr auto first = signature.find(argument) + argument.size();
    constexpr auto qualified = signature.substr(first, signature.find_first_of("<(;]", first) - first);
    constexpr auto plain = qualified.substr(qualified.rfind(':') + 1); // all of it if there is no namespace
    std::array<char, plain.size() + 1> name{};
    for (std::size_t k = 0; k < plain.size(); ++k)
        name[k] = plain[k];
    return name;
}

/// A launch argument as the device side sees it: device addresses in the writable view, all else as it is.
template <class T>
T onDevice(T argument, cudaError_t& result)
{
    if constexpr (std::is_pointer_v<T>) {
        void* view = nullptr;
        if (const cudaError_t code = softdevDeviceView(argument, &view); code != cudaSuccess)
            result = code;
        return static_cast<T>(view);
    } else {
        return argument;
    }
}

/// Kernel with its arguments, to be called once per block.
template <auto Kernel, class... Args>
class BlockRun
{
public:
    explicit BlockRun(const std::tuple<Args...>& arguments) : arguments_(arguments) {}

    void operator()() const
    {
#ifdef TARN_WIDE_KERNELS
        static const bool wide = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                                 __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
        if (wide)
            return runWide();
#endif
        run();
    }

private:
    void run() const { std::apply(Kernel, arguments_); }

#ifdef TARN_WIDE_KERNELS
    /// The same, with all that it calls compiled into it for vectors of 64 bytes. Results are the same bit by bit: what
    /// runs in vectors are threads.
    __attribute__((flatten, target("avx512f,avx512bw,avx512dq,avx512vl,prefer-vector-width=512"))) void runWide() const
    {
        run();
    }
#endif

    std::tuple<Args...> arguments_;
};

/// Queues Kernel, written for blocks of the shape Shape (a tarn::Block), on the default stream. A refused launch leaves
/// its code in the CUDA error state of the thread.
template <auto Kernel, class Shape, class... Args>
void launch(dim3 grid, dim3 block, Args... args)
{
    cudaError_t result = cudaSuccess;
    const std::tuple<Args...> views{onDevice(args, result)...};
    if (result != cudaSuccess) {
        softdevFail(result);
        return;
    }
    static constexpr auto name = kernelName<Kernel>();
    softdevLaunch(name.data(), grid, block, dim3(Shape::x, Shape::y), BlockRun<Kernel, Args...>(views));
}

} // namespace tarn::platform
