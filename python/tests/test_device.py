"""Arrays in device memory: in every function, from other libraries and to them."""

import numpy as np
import pytest
import scipy.linalg
import tarn
from matrices import SINGLE, orthogonality, product_error, random, solve_error


class ByInterface:
    """Another library's array, as __cuda_array_interface__ shows it."""

    def __init__(self, a, **changes):
        self._array = tarn.to_device(a)
        self.__cuda_array_interface__ = {**self._array.__cuda_array_interface__, **changes}


class ByDlpack:
    """Another library's array, as __dlpack__ hands it over."""

    def __init__(self, a):
        self._array = tarn.to_device(a)
        self.__dlpack_device__ = self._array.__dlpack_device__

    def __dlpack__(self, **keywords):
        return self._array.__dlpack__(**keywords)


FORMS = [tarn.to_device, ByInterface, ByDlpack]


@pytest.mark.parametrize("form", FORMS)
@pytest.mark.parametrize("order", "CF")
@pytest.mark.parametrize("dtype", SINGLE)
def test_every_function(form, order, dtype):
    square, tall = random((150, 150), dtype), random((200, 140), dtype, 2)
    b, many = random(150, dtype, 3), np.array(random((150, 4), dtype, 4), order=order)

    def there(a):
        return form(np.array(a, order=order))

    for rhs in (b, many):
        for transposed in (False, True):
            for check in (True, False):
                x = tarn.solve(there(square), there(rhs), transposed=transposed, check_finite=check)
                assert isinstance(x, tarn.DeviceArray)
                assert solve_error(square.T if transposed else square, x.get(), rhs) < 1
    lu, pivots = tarn.lu_factor(there(square))
    for trans, op in enumerate((square, square.T, square.conj().T)):
        assert solve_error(op, tarn.lu_solve((lu, pivots), there(many), trans).get(), many) < 1

    for a in (tall, tall.T):
        q, r = tarn.qr(there(a), mode="economic")
        assert product_error(a, q.get(), r.get()) < 30 and orthogonality(q.get()) < 30
        u, s, vh = (x.get() for x in tarn.svd(there(a), full_matrices=False))
        assert product_error(a, u * s, vh) < 30 and orthogonality(u) < 30 and orthogonality(vh.conj().T) < 30
        np.testing.assert_allclose(tarn.svdvals(there(a)).get(), s, atol=1e-5 * s[0])
        rhs = random((len(a), 2), dtype, 5)
        x, residues, _, _ = tarn.lstsq(there(a), there(rhs))
        expected = scipy.linalg.lstsq(a, rhs)
        np.testing.assert_allclose(x.get(), expected[0], atol=1e-4)
        np.testing.assert_allclose(residues, np.real(expected[1]), rtol=1e-3)
    c, d = random((3, 140), dtype, 6), random(3, dtype, 7)
    x, _ = tarn.lstsq_constrained(there(tall), there(tall[:, 0]), there(c), there(d))
    np.testing.assert_allclose(c @ x.get(), d, atol=1e-4)

    name = "sgemm" if dtype == "f" else "cgemm"
    product = getattr(tarn.blas, name)(2.0, there(tall), there(square[:140]))
    np.testing.assert_allclose(product.get(), 2 * tall @ square[:140], atol=1e-3)


@pytest.mark.parametrize("form", FORMS)
def test_double_precision_goes_through_the_host(form):
    a, b = random((300, 300), "d"), random(300, "d")
    x, info = tarn.solve(form(a), form(b), return_info=True)
    assert isinstance(x, tarn.DeviceArray) and info.way == "refined"
    assert solve_error(a, x.get(), b) <= 2 * solve_error(a, scipy.linalg.solve(a, b), b)
    np.testing.assert_allclose(tarn.blas.dgemv(1.0, form(a), form(b)).get(), a @ b, rtol=1e-10)
    with pytest.raises(TypeError, match="single precision"):
        tarn.qr(form(a))


def test_what_a_device_array_tells():
    for a in (random((3, 5), "F"), np.asfortranarray(random((3, 5), "d")), random(4, "f"), np.arange(3, dtype="i")):
        there = tarn.to_device(a)
        assert (there.shape, there.dtype, there.ndim, there.size) == (a.shape, a.dtype, a.ndim, a.size)
        interface = there.__cuda_array_interface__
        assert interface["strides"] == a.strides and interface["typestr"] == a.dtype.str
        assert np.array_equal(there.get(), a) and np.array_equal(there.T.get(), a.T)
        assert repr(there) == f"DeviceArray(shape={a.shape}, dtype={a.dtype})"
    part = ByInterface(random((6, 5), "f"), shape=(4, 3))  # with the strides of the whole
    assert np.array_equal(tarn.DeviceArray(tarn._arrays.device_view(part)).get(), random((6, 5), "f")[:4, :3])
    row_major = ByInterface(random((3, 3), "f"), strides=None)
    x = tarn.solve(row_major, ByInterface(np.ones(3, "f")))
    assert solve_error(random((3, 3), "f"), x.get(), np.ones(3, "f")) < 1


def test_results_go_to_the_library_of_the_arguments():
    class Foreign(ByDlpack):
        def __array_namespace__(self):
            return Library

    class Library:
        @staticmethod
        def from_dlpack(array):
            return "taken", array

    taken, x = tarn.solve(Foreign(np.eye(3, dtype="f")), Foreign(np.ones(3, "f")))
    assert taken == "taken" and (x.get() == 1).all()


def test_refusals():
    a, b = random((3, 3), "f"), random(3, "f")
    there = tarn.to_device
    with pytest.raises(ValueError, match="some arrays are on the device"):
        tarn.solve(there(a), b)
    with pytest.raises(tarn.LinAlgError):
        tarn.solve(there(0 * a), there(b))
    with pytest.warns(tarn.LinAlgWarning):
        tarn.solve(there(np.diag([1, 1, 1e-9]).astype("f")), there(b))
    with pytest.raises(ValueError, match="infs or NaNs"):
        tarn.solve(there(a * np.float32(np.nan)), there(b))
    with pytest.raises(ValueError, match="square"):
        tarn.solve(there(a[:2]), there(b))
    with pytest.raises(ValueError, match="incompatible"):
        tarn.solve(there(a), there(b[:2]))
    with pytest.raises(TypeError, match="one type"):
        tarn.blas.sgemm(1.0, there(a), there(a.astype("F")))
    with pytest.raises(ValueError, match="strided"):
        tarn.solve(there(a), ByInterface(random(6, "f"), shape=(3,), strides=(8,)))
    with pytest.raises(MemoryError):
        tarn._core.allocate((1 << 40,), "f")
