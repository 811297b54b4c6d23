// The exported BLAS by element type, in both forms, and operands that stand where a form wants them.
#pragma once

#include "support/api.h"
#include "support/device.h"
#include "support/matrix.h"

#include <memory>
#include <ostream>

namespace test {

enum Form
{
    onHost,
    onDevice
};

inline std::ostream& operator<<(std::ostream& out, Form form) { return out << (form == onHost ? "host" : "device"); }

constexpr Form bothForms[] = {onHost, onDevice};

/// The two forms of each routine, by Form.
template <class T>
struct Routines;

#define TARN_FORMS(X, routine)                                                                                         \
    static constexpr decltype(&tarn##X##routine) routine[2] = {tarn##X##routine, tarnDevice##X##routine};
#define TARN_COMMON_ROUTINES(X)                                                                                        \
    TARN_FORMS(X, gemm)                                                                                                \
    TARN_FORMS(X, trsm)                                                                                                \
    TARN_FORMS(X, trmm)                                                                                                \
    TARN_FORMS(X, symm)                                                                                                \
    TARN_FORMS(X, syrk)                                                                                                \
    TARN_FORMS(X, syr2k)                                                                                               \
    TARN_FORMS(X, gemv)
#define TARN_COMPLEX_ROUTINES(X)                                                                                       \
    TARN_COMMON_ROUTINES(X)                                                                                            \
    TARN_FORMS(X, hemm)                                                                                                \
    TARN_FORMS(X, herk)                                                                                                \
    TARN_FORMS(X, her2k)                                                                                               \
    TARN_FORMS(X, hemv)

template <>
struct Routines<float>
{
    TARN_COMMON_ROUTINES(S)
    TARN_FORMS(S, symv)
};

template <>
struct Routines<double>
{
    TARN_COMMON_ROUTINES(D)
    TARN_FORMS(D, symv)
};

template <>
struct Routines<tarn::Complex<float>>
{
    TARN_COMPLEX_ROUTINES(C)
};

template <>
struct Routines<tarn::Complex<double>>
{
    TARN_COMPLEX_ROUTINES(Z)
};

/// An operand where the form wants it, for the length of one call; its content is back in the matrix after that.
template <class T>
class Placed
{
public:
    Placed(Form form, Matrix<T>& matrix) : matrix_(matrix)
    {
        if (form == onDevice)
            array_ = std::make_unique<DeviceArray<T>>(matrix.elements());
    }
    ~Placed()
    {
        if (array_)
            matrix_.elements() = array_->download();
    }
    Placed(const Placed&) = delete;
    Placed& operator=(const Placed&) = delete;

    /// Never null, even for an empty operand.
    auto address()
    {
        static T nowhere(0);
        T* const p = array_ ? array_->data() : matrix_.data();
        return native(p ? p : &nowhere);
    }

private:
    Matrix<T>& matrix_;
    std::unique_ptr<DeviceArray<T>> array_;
};

} // namespace test
