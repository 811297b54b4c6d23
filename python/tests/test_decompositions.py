"""qr, svd, lstsq and lstsq_constrained, beside SciPy."""

import numpy as np
import pytest
import scipy.linalg
import tarn
from matrices import SINGLE, of_condition, orthogonality, product_error, random

SHAPES = [(1, 1), (5, 3), (3, 5), (150, 110), (110, 150), (140, 140)]


@pytest.mark.parametrize("dtype", SINGLE)
@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("order", "CF")
def test_qr(shape, dtype, order):
    a = np.array(random(shape, dtype), order=order)
    kept = a.copy()
    for mode in ("full", "economic"):
        q, r = tarn.qr(a, mode=mode)
        expected = scipy.linalg.qr(a, mode=mode)
        assert (q.shape, r.shape) == (expected[0].shape, expected[1].shape)
        assert product_error(a, q, r) < 30 and orthogonality(q) < 30
        assert np.array_equal(r, np.triu(r))
    (r_only,) = tarn.qr(a, mode="r")
    assert np.array_equal(r_only[: r.shape[0]], r) and r_only.shape == shape
    (factors, tau), r_raw = tarn.qr(a, mode="raw")
    assert np.array_equal(np.triu(factors)[: len(r)], r_raw) and tau.shape == (min(shape),)
    assert np.array_equal(a, kept)


@pytest.mark.parametrize("dtype", SINGLE)
@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("order", "CF")
def test_svd(shape, dtype, order):
    a = np.array(random(shape, dtype), order=order)
    kept = a.copy()
    for full in (True, False):
        u, s, vh = tarn.svd(a, full_matrices=full)
        k = min(shape)
        assert [x.shape for x in (u, s, vh)] == [x.shape for x in scipy.linalg.svd(a, full_matrices=full)]
        assert product_error(a, u[:, :k] * s, vh[:k]) < 30
        assert orthogonality(u) < 30 and orthogonality(vh.conj().T) < 30
    values = tarn.svdvals(a)
    np.testing.assert_allclose(values, scipy.linalg.svdvals(a), atol=1e-5 * values[0])
    assert values.dtype == np.float32 and np.array_equal(a, kept)
    for scale in (1e-36, 1e30):
        u, s, vh = tarn.svd(a * np.float32(scale), full_matrices=False)
        np.testing.assert_allclose(s / np.float32(scale), values, atol=1e-5 * values[0])
        assert orthogonality(u) < 30


@pytest.mark.parametrize("dtype", SINGLE)
@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("order", "CF")
def test_lstsq(shape, dtype, order):
    a, b = np.array(random(shape, dtype), order=order), random((shape[0], 3), dtype, 2)
    kept = a.copy()
    for rhs in (b, b[:, 0]):
        expected = scipy.linalg.lstsq(a.astype("D"), rhs)
        for driver in ("gels", "gelss"):
            x, residues, rank, s = tarn.lstsq(a, rhs, lapack_driver=driver)
            assert x.dtype == np.dtype(dtype) and x.shape == expected[0].shape
            assert np.shape(residues) == np.shape(expected[1]) and rank == expected[2]
            tolerance = 2e-6 * np.linalg.cond(a) * np.linalg.norm(expected[0])
            np.testing.assert_allclose(x, expected[0], atol=tolerance)
            np.testing.assert_allclose(residues, np.real(expected[1]), rtol=1e-3)
            assert (s is None) == (driver == "gels")
    assert np.array_equal(a, kept)


def test_deficient_rank():
    columns = np.array([[1, 2, 3], [4, 5, 9], [7, 8, 15], [1, 0, 1.1 - 0.1]], "f")  # the third is the others' sum
    for a in (columns, columns.T):
        with pytest.warns(tarn.LinAlgWarning, match="deficient rank"):
            tarn.lstsq(a, np.ones(len(a), "f"))
        x, residues, rank, _ = tarn.lstsq(a, np.ones(len(a), "f"), lapack_driver="gelss")
        expected = scipy.linalg.lstsq(a, np.ones(len(a), "f"))
        np.testing.assert_allclose(x, expected[0], atol=1e-5)
        assert rank == expected[2] == 2 and residues.shape == (0,)
    with pytest.raises(tarn.LinAlgError, match="diagonal number 1"):
        tarn.lstsq(np.zeros((3, 2), "f"), np.ones(3, "f"))
    with pytest.warns(tarn.LinAlgWarning, match=r"rcond = 0\.000\d") as caught:
        tarn.lstsq(of_condition(20, 1e3, "f"), np.ones(20, "f"), cond=1e-2)
    assert caught[0].filename == __file__


@pytest.mark.parametrize("dtype", SINGLE)
def test_lstsq_constrained(dtype):
    a, b, c, d = (random(s, dtype, i) for i, s in enumerate(((30, 12), 30, (5, 12), 5)))
    x, residue = tarn.lstsq_constrained(a, b, c, d)
    np.testing.assert_allclose(c @ x, d, atol=1e-4)
    # What no step that keeps the constraints can better: the gradient is orthogonal to their null space.
    free = scipy.linalg.null_space(c.astype("D"))
    gradient = free.conj().T @ (a.conj().T @ (b - a @ x))
    assert np.abs(gradient).max() < 1e-4 * np.linalg.norm(a.conj().T @ b)
    np.testing.assert_allclose(residue, np.linalg.norm(b - a @ x) ** 2, rtol=1e-4)
    with pytest.raises(tarn.LinAlgError, match="dependent"):
        tarn.lstsq_constrained(a, b, 0 * c, d)
    with pytest.raises(ValueError, match="do not determine"):
        tarn.lstsq_constrained(a[:2], b[:2], c, d)
    with pytest.raises(ValueError, match="incompatible"):
        tarn.lstsq_constrained(a, b[1:], c, d)


@pytest.mark.parametrize("function", [tarn.qr, tarn.svd, tarn.svdvals, lambda a: tarn.lstsq(a, a)])
def test_refusals(function):
    for dtype in "diD":
        with pytest.raises(TypeError, match="single precision"):
            function(np.eye(3, dtype=dtype))
    with pytest.raises(ValueError):
        function(np.ones(3, "f"))
    with pytest.raises(ValueError, match="infs or NaNs"):
        function(np.full((3, 3), np.inf, "f"))


def test_other_refusals_and_empty_arrays():
    a = np.ones((3, 2), "f")
    with pytest.raises(ValueError, match="Mode"):
        tarn.qr(a, mode="reduced")
    with pytest.raises(NotImplementedError):
        tarn.qr(a, pivoting=True)
    with pytest.raises(ValueError, match="lapack_driver"):
        tarn.svd(a, lapack_driver="gesvdx")
    with pytest.raises(ValueError, match="gelsy"):
        tarn.lstsq(a, a, lapack_driver="gelsy")
    with pytest.raises(ValueError, match="Shape mismatch"):
        tarn.lstsq(a, np.ones(2, "f"))
    u, s, vh = tarn.svd(np.zeros((0, 3), "f"))
    assert (u.shape, s.shape, vh.shape) == ((0, 0), (0,), (3, 3)) and np.array_equal(vh, np.eye(3))
    q, r = tarn.qr(np.zeros((3, 0), "f"))
    assert np.array_equal(q, np.eye(3)) and r.shape == (3, 0)
