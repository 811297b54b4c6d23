"""solve, lu_factor and lu_solve, beside SciPy."""

import pathlib
import threading
import warnings

import numpy as np
import pytest
import scipy.io
import scipy.linalg
import tarn
from matrices import DOUBLE, SINGLE, of_condition, random, solve_error

DATA = pathlib.Path(__file__).parents[2] / "data"
TYPES = SINGLE + DOUBLE


def layouts(a):
    """The same matrix in the memory orders that there are."""
    padded = np.full((a.shape[0] + 3, a.shape[1] + 2), np.nan, a.dtype, order="F")
    padded[: a.shape[0], : a.shape[1]] = a
    yield np.asfortranarray(a)
    yield np.ascontiguousarray(a)
    yield padded[: a.shape[0], : a.shape[1]]
    yield np.ascontiguousarray(padded)[: a.shape[0], : a.shape[1]]
    yield np.ascontiguousarray(a[::-1, ::-1])[::-1, ::-1]
    yield np.repeat(a, 2, axis=1)[:, ::2]


@pytest.mark.parametrize("dtype", TYPES)
@pytest.mark.parametrize("n", [7, 300])
def test_every_layout_and_shape(dtype, n):
    a, b = random((n, n), dtype), random((n, 3), dtype, 2)
    for matrix in layouts(a):
        for rhs in (b, b[:, 0], b[:, :1], np.asfortranarray(b)):
            for transposed in (False, True):
                kept = matrix.copy(), rhs.copy()
                x = tarn.solve(matrix, rhs, transposed=transposed)
                assert x.shape == rhs.shape and x.dtype == np.dtype(dtype)
                assert solve_error(a.T if transposed else a, x, rhs) < 1
                assert np.array_equal(matrix, kept[0]) and np.array_equal(rhs, kept[1])


@pytest.mark.parametrize("dtype", DOUBLE)
@pytest.mark.parametrize("condition", [10, 1e4, 1e7, 1e11, "utm300"])
def test_double_precision_is_reached(condition, dtype):
    if condition == "utm300":
        a = scipy.io.mmread(DATA / "utm300.mtx").toarray().astype(dtype)
        b = scipy.io.mmread(DATA / "utm300_b.mtx").astype(dtype)
    else:
        a, b = of_condition(500, condition, dtype), random(500, dtype)
    x, info = tarn.solve(a, b, return_info=True)
    assert solve_error(a, x, b) <= 2 * solve_error(a, scipy.linalg.solve(a, b), b)
    assert info.way == ("refined" if condition == "utm300" or condition < 1e6 else info.way)
    if condition == 1e11:
        assert (info.way, info.refinements, info.reason) == ("double", 0, "not converged")
    if info.way == "refined":
        assert info.refinements > 0 and info.reason is None
    reference = 1 / np.linalg.cond(a, 1)
    assert reference / 3 < info.rcond < 3 * reference


def test_many_right_hand_sides():
    for dtype in SINGLE:
        a, b = random((40, 40), dtype), random((40, 300), dtype, 2)
        for transposed in (False, True):
            x = tarn.solve(a, b, transposed=transposed)
            assert solve_error(a.T if transposed else a, x, b) < 1


def test_types_are_joined_as_in_scipy():
    a, b = np.array([[4, 1], [1, 3]]), np.array([1, 2])
    for left in "fdFDi":
        for right in "fdFDi":
            x, y = (solve(a.astype(left), b.astype(right)) for solve in (tarn.solve, scipy.linalg.solve))
            assert x.dtype == y.dtype, (left, right)
            np.testing.assert_allclose(x, y, rtol=1e-5)
    for kind, joined in (("e", "f"), ("g", "d"), ("G", "D")):
        assert tarn.solve(a.astype(kind), b.astype(kind)).dtype == np.dtype(joined)
    np.testing.assert_allclose(tarn.solve(a.astype(">f8"), b), scipy.linalg.solve(a, b))
    np.testing.assert_allclose(tarn.solve([[4, 1], [1, 3]], [1, 2]), scipy.linalg.solve(a, b))
    with pytest.raises(ValueError, match="object arrays"):
        tarn.solve(a.astype(object), b)
    with pytest.raises(TypeError, match="<U"):
        tarn.solve(a.astype(str), b)


@pytest.mark.parametrize("dtype", ["f", "d"])
def test_stacks_broadcast(dtype):
    a, b = random((4, 1, 5, 5), dtype), random((3, 5, 2), dtype, 2)
    for matrix, rhs in ((a, b), (a, b[0]), (a, b[0, :, 0]), (a[0, 0], b), (a[:2, 0], b[:2])):
        x, y = tarn.solve(matrix, rhs), scipy.linalg.solve(matrix, rhs)
        assert x.shape == y.shape and x.dtype == y.dtype
        np.testing.assert_allclose(x, y, rtol=1e-3 if dtype == "f" else 1e-10)
    with pytest.raises(ValueError):
        tarn.solve(a[:, 0], b)


@pytest.mark.parametrize("assumed", ["sym", "her", "pos", "upper triangular", "lower triangular", "general"])
def test_assumed_structure_names_the_entries_that_count(assumed):
    a = random((6, 6), "D") + 8 * np.eye(6)
    b = random(6, "D", 2)
    if assumed in ("her", "pos"):
        a -= 1j * np.diag(a.diagonal().imag)
    for lower in (False, True):
        if assumed == "pos":
            a = a + 20 * np.eye(6)
        x = tarn.solve(a, b, lower=lower, assume_a=assumed)
        np.testing.assert_allclose(x, scipy.linalg.solve(a, b, lower=lower, assume_a=assumed), rtol=1e-9)
    with pytest.raises(ValueError, match="banded"):
        tarn.solve(a, b, assume_a="banded")


@pytest.mark.parametrize("dtype", TYPES)
def test_failures_are_scipys(dtype):
    one = np.eye(3, dtype=dtype)
    for n in (3, 300):
        with pytest.raises(tarn.LinAlgError, match="singular"):
            tarn.solve(np.ones((n, n), dtype), np.ones(n, dtype))
    for a, b in ((one[:2], [1, 1]), (one, [1, 1]), (one, np.ones((2, 3))), (one, 1.0), (np.ones(3), 1.0)):
        with pytest.raises(ValueError):
            tarn.solve(a, np.asarray(b, dtype))
    for bad in (np.nan, np.inf, -np.inf):
        for place in ("a", "b"):
            a, b = np.eye(3, dtype=dtype), np.ones(3, dtype)
            (a if place == "a" else b)[1] = bad
            with pytest.raises(ValueError, match="infs or NaNs"):
                tarn.solve(a, b)
    assert np.isnan(tarn.solve(one, np.array([1, np.nan, 1], dtype), check_finite=False)).any()
    assert tarn.LinAlgError is scipy.linalg.LinAlgError and tarn.LinAlgWarning is scipy.linalg.LinAlgWarning
    assert tarn.solve(np.zeros((0, 0), dtype), np.zeros(0, dtype)).shape == (0,)
    assert tarn.solve(one, np.zeros((3, 0), dtype)).shape == (3, 0)


def test_warns_of_matrices_close_to_singular():
    for dtype, condition in (("f", 1e9), ("d", 1e18)):
        for n in (20, 300):
            with pytest.warns(tarn.LinAlgWarning, match="close to singular") as caught:
                tarn.solve(of_condition(n, condition).astype(dtype), np.ones(n, dtype))
            assert caught[0].filename == __file__
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        tarn.solve(of_condition(300, 1e4, "f"), np.ones(300, "f"))
        tarn.solve(of_condition(300, 1e12), np.ones(300))


def test_overwrites_only_what_it_may():
    a, b = random((5, 5), "f"), random(5, "f")
    matrix, rhs = np.array(a, order="F"), b.copy()
    x = tarn.solve(matrix, rhs, overwrite_a=True, overwrite_b=True)
    assert np.shares_memory(x, rhs) and not np.array_equal(matrix, a)
    matrix.flags.writeable = rhs.flags.writeable = False
    matrix_before = matrix.copy()
    tarn.solve(matrix, rhs, overwrite_a=True, overwrite_b=True)
    assert np.array_equal(matrix, matrix_before)


def test_other_threads_run_meanwhile():
    a, b = random((1500, 1500), "d"), random(1500, "d")
    ticks = []
    done = threading.Event()
    results = []

    def work():
        results.append(tarn.solve(a, b))
        done.set()

    thread = threading.Thread(target=work)
    thread.start()
    while not done.wait(1e-3):
        ticks.append(1)
    thread.join()
    assert len(ticks) > 5, "the interpreter was held during the call"

    systems = [(random((60, 60), "f", seed), random(60, "f", seed)) for seed in range(8)]
    threads = [threading.Thread(target=lambda s=s: results.append((s, tarn.solve(*s)))) for s in systems]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(results) == 9
    assert all(solve_error(s[0], x, s[1]) < 1 for s, x in results[1:])


@pytest.mark.parametrize("dtype", SINGLE)
def test_lu_factors_solve_again_and_again(dtype):
    for a in layouts(random((150, 150), dtype)):
        lu, pivots = tarn.lu_factor(a)
        assert pivots.dtype == np.int32
        for b in (random(150, dtype, 2), random((150, 300), dtype, 3)):
            for trans, op in enumerate((a, a.T, a.conj().T)):
                assert solve_error(op, tarn.lu_solve((lu, pivots), b, trans), b) < 1


def test_lu_of_other_shapes_and_failures():
    for shape in ((5, 3), (3, 5)):
        a = random(shape, "F")
        lu, pivots = tarn.lu_factor(a)
        k = min(shape)
        rows = np.arange(shape[0])
        for i, pivot in enumerate(pivots):
            rows[[i, pivot]] = rows[[pivot, i]]
        lower, upper = np.tril(lu[:, :k], -1) + np.eye(shape[0], k), np.triu(lu[:k])
        np.testing.assert_allclose(lower @ upper, a[rows], atol=1e-5)
    with pytest.warns(tarn.LinAlgWarning, match="exactly zero"):
        tarn.lu_factor(np.zeros((3, 3), "f"))
    with pytest.raises(TypeError, match=r"a.astype\('f'\)"):
        tarn.lu_factor(np.eye(3))
    with pytest.raises(ValueError, match="infs or NaNs"):
        tarn.lu_factor(np.full((3, 3), np.nan, "f"))
    lu = tarn.lu_factor(np.eye(3, dtype="f"))
    for b, trans in ((np.ones(2, "f"), 0), (np.ones(3, "f"), 3)):
        with pytest.raises(ValueError):
            tarn.lu_solve(lu, b, trans)
    with pytest.raises(ValueError, match="out of range"):
        tarn.lu_solve((lu[0], [0, 1, 3]), np.ones(3, "f"))
