#include "frame/tuning.h"

#include "frame/device_table.h"

#include <tarndev/Complex>

namespace tarn {

namespace {

bool isFirstGeneration(int cap) { return cap >= 10 && cap <= 13; }

struct PerGeneration
{
    int first, later;

    int on(int cap) const { return isFirstGeneration(cap) ? first : later; }
};

template <class T>
constexpr PerGeneration base{};
template <>
constexpr PerGeneration base<float>{32, 96};
template <>
constexpr PerGeneration base<double>{48, 64};
template <>
constexpr PerGeneration base<Complex<float>>{32, 64};
template <>
constexpr PerGeneration base<Complex<double>>{48, 32};
template <>
constexpr PerGeneration base<int>{32, 32};

/// Makes the level 3 block 192 on later devices for every element type.
template <class T>
constexpr int level3Later = 192 / base<T>.later;

template <class T>
PerGeneration multiplier(Blocked routine)
{
    switch (routine) {
    case Blocked::getrf:
        return {2, 2};
    case Blocked::trsm:
        return {2, 1};
    case Blocked::level3:
        return {4, level3Later<T>};
    default:
        return {1, 1};
    }
}

} // namespace

template <class T>
int baseBlockSize(int cap)
{
    return base<T>.on(cap);
}

template <class T>
int blockSize(Blocked routine)
{
    if (routine == Blocked::gebrd)
        return 32;
    const int cap = currentCapability();
    return base<T>.on(cap) * multiplier<T>(routine).on(cap);
}

template int baseBlockSize<float>(int);
template int baseBlockSize<double>(int);
template int baseBlockSize<Complex<float>>(int);
template int baseBlockSize<Complex<double>>(int);
template int baseBlockSize<int>(int);

template int blockSize<float>(Blocked);
template int blockSize<double>(Blocked);
template int blockSize<Complex<float>>(Blocked);
template int blockSize<Complex<double>>(Blocked);

} // namespace tarn
