// The argument checks: what each of them refuses, and in which order.
#include "blas/checks.h"
#include "frame/exceptions.h"

#include <gtest/gtest.h>

#include <cctype>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace tarn;

constexpr int m = 3, n = 4, k = 5;
constexpr int accepted = 0, notServed = 1;

struct Arguments
{
    char letter[4];
    int size[3], ld[3], inc[2];
    const void* array[3];
};

enum Kind
{
    letter,
    size,
    ld, ///< `good` is the least that is accepted
    array,
    inc
};

/// One test of a check: what it looks at, a good value, and what it answers to a bad one.
struct Step
{
    Kind kind;
    int which, good, answer;
};

/// A check with its steps in order, and the letters that it takes.
struct Routine
{
    const char* name;
    std::function<void(Arguments&)> check;
    std::vector<Step> steps;
    std::vector<std::string> letters;
};

void set(Arguments& a, const Step& step, bool good)
{
    static const int something = 0;
    switch (step.kind) {
    case letter:
        a.letter[step.which] = good ? char(step.good) : 'X';
        break;
    case size:
        a.size[step.which] = good ? step.good : -1;
        break;
    case ld:
        a.ld[step.which] = good ? step.good : step.good - 1;
        break;
    case array:
        a.array[step.which] = good ? &something : nullptr;
        break;
    case inc:
        a.inc[step.which] = good ? 1 : 0;
        break;
    }
}

/// The position that a check refuses, accepted or notServed.
int answer(const Routine& routine, Arguments a)
{
    try {
        routine.check(a);
    } catch (const InfoException& failure) {
        return failure.status() == tarnArgumentError ? failure.info() : 100;
    } catch (const FeatNotImplException&) {
        return notServed;
    }
    return accepted;
}

void callGemm(Arguments& a)
{
    checkGemm(a.letter[0], a.letter[1], a.size[0], a.size[1], a.size[2], a.array[0], a.ld[0], a.array[1], a.ld[1],
              a.array[2], a.ld[2]);
}

template <auto check>
void callTriangular(Arguments& a)
{
    check(a.letter[0], a.letter[1], a.letter[2], a.letter[3], a.size[0], a.size[1], a.array[0], a.ld[0], a.array[1],
          a.ld[1]);
}

/// symm, hemm, syr2k and her2k have lists of one shape.
template <auto check>
void callThreeMatrices(Arguments& a)
{
    check(a.letter[0], a.letter[1], a.size[0], a.size[1], a.array[0], a.ld[0], a.array[1], a.ld[1], a.array[2],
          a.ld[2]);
}

template <auto check>
void callRankK(Arguments& a)
{
    check(a.letter[0], a.letter[1], a.size[0], a.size[1], a.array[0], a.ld[0], a.array[1], a.ld[1]);
}

void callGemv(Arguments& a)
{
    checkGemv(a.letter[0], a.size[0], a.size[1], a.array[0], a.ld[0], a.array[1], a.array[2]);
}

void callSymv(Arguments& a)
{
    checkSymv(a.letter[0], a.size[0], a.array[0], a.ld[0], a.array[1], a.inc[0], a.array[2], a.inc[1]);
}

std::vector<Step> gemmSteps(char transa, int lda, char transb, int ldb)
{
    return {{letter, 0, transa, -1}, {letter, 1, transb, -2}, {size, 0, m, -3},  {size, 1, n, -4},
            {size, 2, k, -5},        {ld, 0, lda, -8},        {ld, 1, ldb, -10}, {ld, 2, m, -13},
            {array, 0, 0, -7},       {array, 1, 0, -9},       {array, 2, 0, -12}};
}

std::vector<Step> triangularSteps(char side)
{
    const int order = std::toupper(side) == 'L' ? m : n;
    return {{letter, 0, side, -1}, {letter, 1, 'l', -2}, {letter, 2, 't', -3}, {letter, 3, 'u', -4},
            {size, 0, m, -5},      {size, 1, n, -6},     {ld, 0, order, -9},   {ld, 1, m, -11},
            {array, 0, 0, -8},     {array, 1, 0, -10}};
}

std::vector<Step> symmSteps(char side)
{
    const int order = side == 'L' ? m : n;
    return {{letter, 0, side, -1}, {letter, 1, 'u', -2}, {size, 0, m, -3},  {size, 1, n, -4},  {ld, 0, order, -7},
            {ld, 1, m, -9},        {ld, 2, m, -12},      {array, 0, 0, -6}, {array, 1, 0, -8}, {array, 2, 0, -11}};
}

std::vector<Step> rankKSteps(char trans)
{
    const int rows = trans == 'N' ? n : k;
    return {{letter, 0, 'u', -1}, {letter, 1, trans, -2}, {size, 0, n, -3},  {size, 1, k, -4},
            {ld, 0, rows, -7},    {ld, 1, n, -10},        {array, 0, 0, -6}, {array, 1, 0, -9}};
}

std::vector<Step> rank2KSteps(char trans)
{
    const int rows = trans == 'N' ? n : k;
    return {{letter, 0, 'l', -1}, {letter, 1, trans, -2}, {size, 0, n, -3},  {size, 1, k, -4},  {ld, 0, rows, -7},
            {ld, 1, rows, -9},    {ld, 2, n, -12},        {array, 0, 0, -6}, {array, 1, 0, -8}, {array, 2, 0, -11}};
}

const std::vector<Step> gemvSteps{{letter, 0, 't', -1}, {size, 0, m, -2},  {size, 1, n, -3},  {array, 0, 0, -5},
                                  {ld, 0, m, -6},       {array, 1, 0, -7}, {array, 2, 0, -10}};
const std::vector<Step> symvSteps{{letter, 0, 'l', -1}, {size, 0, n, -2},      {array, 0, 0, -4},
                                  {ld, 0, n, -5},       {array, 1, 0, -6},     {inc, 0, 1, notServed},
                                  {array, 2, 0, -9},    {inc, 1, 1, notServed}};

const std::vector<Routine> routines{
    {"gemm", callGemm, gemmSteps('N', m, 't', n), {"NTC", "NTC"}},
    {"gemm", callGemm, gemmSteps('c', k, 'n', k), {"NTC", "NTC"}},
    {"trsm", callTriangular<checkTrsm>, triangularSteps('l'), {"LR", "UL", "NTC", "UN"}},
    {"trsm", callTriangular<checkTrsm>, triangularSteps('R'), {"LR", "UL", "NTC", "UN"}},
    {"trmm", callTriangular<checkTrmm>, triangularSteps('L'), {"LR", "UL", "NTC", "UN"}},
    {"trmm", callTriangular<checkTrmm>, triangularSteps('r'), {"LR", "UL", "NTC", "UN"}},
    {"symm", callThreeMatrices<checkSymm>, symmSteps('L'), {"LR", "UL"}},
    {"hemm", callThreeMatrices<checkHemm>, symmSteps('R'), {"LR", "UL"}},
    {"syrk", callRankK<checkSyrk>, rankKSteps('N'), {"UL", "TN"}},
    {"herk", callRankK<checkHerk>, rankKSteps('T'), {"UL", "NTC"}},
    {"syr2k", callThreeMatrices<checkSyr2k>, rank2KSteps('T'), {"UL", "NT"}},
    {"her2k", callThreeMatrices<checkHer2k>, rank2KSteps('N'), {"UL", "NC"}},
    {"gemv", callGemv, gemvSteps, {"NTC"}},
    {"symv", callSymv, symvSteps, {"UL"}}};

Arguments goodArguments(const Routine& routine)
{
    Arguments a{};
    for (const Step& step : routine.steps)
        set(a, step, true);
    return a;
}

/// With everything wrong the first argument of the order is named; once it is mended, the next one.
TEST(Checks, NameTheFirstBadArgumentInTheirOrder)
{
    for (const Routine& routine : routines) {
        Arguments a{};
        for (const Step& step : routine.steps)
            set(a, step, false);
        for (const Step& step : routine.steps) {
            EXPECT_EQ(answer(routine, a), step.answer) << routine.name;
            set(a, step, true);
        }
        EXPECT_EQ(answer(routine, a), accepted) << routine.name;
    }
}

TEST(Checks, TakeTheirLettersInBothCasesAndNoOthers)
{
    for (const Routine& routine : routines)
        for (std::size_t which = 0; which < routine.letters.size(); ++which)
            for (int c = 0; c < 256; ++c) {
                Arguments a = goodArguments(routine);
                for (int& leading : a.ld)
                    leading = k;
                a.letter[which] = char(c);
                const bool taken = c != 0 && routine.letters[which].find(char(std::toupper(c))) != std::string::npos;
                EXPECT_EQ(answer(routine, a) == accepted, taken) << routine.name << " letter " << which << ": " << c;
            }
}

/// Level 3 asks for arrays only where there is something to do, level 2 always. Some least leading dimensions are 1.
TEST(Checks, OfEmptyProblems)
{
    for (const Routine& routine : routines) {
        const std::string name = routine.name;
        const bool level2 = name == "gemv" || name == "symv";
        const bool atLeast1 = level2 || name == "trmm" || name == "syrk" || name == "herk";
        for (const Step& empty : routine.steps) {
            if (empty.kind != size)
                continue;
            Arguments a = goodArguments(routine);
            a.size[empty.which] = 0;
            EXPECT_EQ(answer(routine, a), accepted) << name;
            for (const void*& pointer : a.array)
                pointer = nullptr;
            EXPECT_EQ(answer(routine, a) == accepted, !level2) << name;
        }
        Arguments a = goodArguments(routine);
        std::fill(std::begin(a.size), std::end(a.size), 0);
        std::fill(std::begin(a.ld), std::end(a.ld), 0);
        EXPECT_EQ(answer(routine, a) == accepted, !atLeast1) << name;
    }
}

TEST(Checks, FoldTheLetters)
{
    for (const Routine& routine : routines) {
        Arguments a = goodArguments(routine);
        routine.check(a);
        for (std::size_t which = 0; which < routine.letters.size(); ++which)
            EXPECT_TRUE(std::isupper(a.letter[which])) << routine.name;
    }
}

} // namespace
