// The host memory of calls.
#pragma once

#include "problem.h"

namespace tarn::bench {

/// The arrays of calls on host pointers, one call after the other.
template <class T>
class HostArrays
{
public:
    explicit HostArrays(const Problem<T>& problem) : problem_(problem)
    {
        outcome_.operand.resize(problem.operands.size());
        outcome_.pivots.resize(problem.pivots);
    }

    Arrays<T> fresh()
    {
        Arrays<T> arrays;
        // Operands that no call changes are used in place; the C interface takes them without const.
        for (const Matrix<T>& a : problem_.operands)
            arrays.operand.push_back(const_cast<T*>(a.values.data()));
        for (const std::size_t i : problem_.overwritten) {
            outcome_.operand[i] = problem_.operands[i];
            arrays.operand[i] = outcome_.operand[i].values.data();
        }
        arrays.pivots = outcome_.pivots.data();
        return arrays;
    }

    const Outcome<T>& outcome() { return outcome_; }

private:
    const Problem<T>& problem_;
    Outcome<T> outcome_;
};

} // namespace tarn::bench
