#include "load.h"

#include "../failure.h"
#include "host_arrays.h"
#include "reference.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace tarn::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto span = std::chrono::seconds(1);

/// Calls per second of threads that call(arrays) -> success, after one call each to warm up.
template <class T, class Call>
double callsPerSecond(const Problem<T>& problem, int threads, const Call& call)
{
    std::atomic<int> waiting{threads};
    std::atomic<bool> failed{false}, stop{false};
    std::atomic<long> calls{0};
    const auto work = [&] {
        HostArrays<T> arrays(problem);
        failed = !call(arrays.fresh()) || failed;
        for (--waiting; waiting > 0;)
            std::this_thread::yield();
        while (!stop && !failed) {
            failed = !call(arrays.fresh()) || failed;
            ++calls;
        }
    };
    std::vector<std::thread> callers;
    for (int i = 0; i < threads; ++i)
        callers.emplace_back(work);
    while (waiting > 0)
        std::this_thread::yield();
    const auto begin = Clock::now();
    std::this_thread::sleep_for(span);
    stop = true;
    for (std::thread& caller : callers)
        caller.join();
    if (failed)
        throw tool::Failure("a call failed under load");
    return double(calls) / std::chrono::duration<double>(Clock::now() - begin).count();
}

} // namespace

template <class T>
Load load(const Problem<T>& problem, int threads)
{
    Load result;
    result.ours =
        callsPerSecond(problem, threads, [&](const Arrays<T>& arrays) { return problem.host(arrays) == tarnNoError; });
    if (!reference::onDevice)
        result.reference = callsPerSecond(problem, threads, [&](const Arrays<T>& arrays) {
            problem.reference(arrays);
            return true;
        });
    return result;
}

template Load load(const Problem<float>&, int);
template Load load(const Problem<double>&, int);
template Load load(const Problem<std::complex<float>>&, int);
template Load load(const Problem<std::complex<double>>&, int);

} // namespace tarn::bench
