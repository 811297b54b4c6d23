"""tarn.blas beside scipy.linalg.blas: the same call, the same result."""

import functools
import itertools

import numpy as np
import pytest
import scipy.linalg.blas
import tarn
from matrices import random

M, N, K = 5, 7, 4
TYPES = {"s": "f", "d": "d", "c": "F", "z": "D"}
FAMILIES = {name[1:] for name in tarn.blas.__all__}


def matrix(shape, seed, dtype, order):
    return np.array(random(shape, dtype, seed), order=order)


def cases(name):
    """Pairs of positional and keyword arguments that together take every path of a function."""
    family, dtype = name[1:], TYPES[name[0]]
    hermitian = family in ("hemm", "herk", "her2k")
    turns = [0, 1, 2] if np.dtype(dtype).kind == "c" else [0, 1]
    alpha = 1.5 if hermitian and family != "her2k" or np.dtype(dtype).kind == "f" else 1.5 - 0.5j
    for order in "CF":
        make = functools.partial(matrix, dtype=dtype, order=order)
        if family == "gemm":
            for ta, tb in itertools.product(turns, turns):
                a, b = make((K, M) if ta else (M, K), 1), make((N, K) if tb else (K, N), 2)
                yield (alpha, a, b), {"trans_a": ta, "trans_b": tb}
                yield (alpha, a, b, 0.5, make((M, N), 3)), {"trans_a": ta, "trans_b": tb}
        elif family in ("trmm", "trsm"):
            for side, lower, turn, diag in itertools.product((0, 1), (0, 1), turns, (0, 1)):
                a = make((N, N) if side else (M, M), 1) + 4 * np.eye(N if side else M, dtype=dtype)
                yield (alpha, a, make((M, N), 2)), {"side": side, "lower": lower, "trans_a": turn, "diag": diag}
        elif family in ("symm", "hemm"):
            for side, lower in itertools.product((0, 1), (0, 1)):
                a = make((N, N) if side else (M, M), 1)
                yield (alpha, a, make((M, N), 2), 0.5, make((M, N), 3)), {"side": side, "lower": lower}
        elif family in ("syrk", "herk", "syr2k", "her2k"):
            for trans, lower in itertools.product((0, 2 if hermitian else 1), (0, 1)):
                shape = (K, N) if trans else (N, K)
                operands = (make(shape, 1),) if family[-2] == "r" else (make(shape, 1), make(shape, 2))
                c = make((N, N), 3)
                c = c + c.conj().T if hermitian else c
                yield (alpha, *operands, 0.5, c), {"trans": trans, "lower": lower}
                yield (alpha, *operands), {"trans": trans, "lower": lower}
        elif family == "gemv":
            for turn in turns:
                a, x, y = make((M, N), 1), make(2 * N + 3, 2), make(2 * N + 3, 3)
                yield (alpha, a, x, 0.5, y), {"trans": turn, "offx": 2, "incx": 2, "offy": 1, "incy": -1}
                yield (alpha, a, x[: M if turn else N]), {"trans": turn}
        else:
            for lower in (0, 1):
                a, x, y = make((N, N), 1), make(2 * N + 3, 2), make(2 * N + 3, 3)
                yield (alpha, a, x, 0.5, y), {"lower": lower, "offx": 2, "incx": 2, "offy": 1, "incy": 1}
                yield (alpha, a, x[:N]), {"lower": lower}


@pytest.mark.parametrize("name", tarn.blas.__all__)
def test_like_scipy(name):
    ours, theirs = getattr(tarn.blas, name), getattr(scipy.linalg.blas, name)
    tolerance = 1e-5 if TYPES[name[0]] in "fF" else 1e-13
    count = 0
    for positional, keywords in cases(name):
        kept = [x.copy() if isinstance(x, np.ndarray) else x for x in positional]
        result, expected = ours(*positional, **keywords), theirs(*positional, **keywords)
        assert result.dtype == expected.dtype and result.shape == expected.shape
        np.testing.assert_allclose(result, expected, rtol=tolerance, atol=20 * tolerance, err_msg=str(keywords))
        assert all(np.array_equal(x, y) for x, y in zip(positional, kept))
        count += 1
    assert count > 0


def test_every_family_is_there():
    assert FAMILIES == set("gemm symm hemm syrk herk syr2k her2k trmm trsm gemv symv hemv".split())
    assert len(tarn.blas.__all__) == 7 * 4 + 5 * 2


def test_overwrites_only_what_it_may():
    a = np.ones((3, 3), order="F")
    c = np.zeros((3, 3), order="F")
    assert np.shares_memory(tarn.blas.dgemm(1.0, a, a, c=c, overwrite_c=1), c)
    assert (c == 3).all()
    row_major = np.zeros((3, 3))
    assert not np.shares_memory(tarn.blas.dgemm(1.0, a, a, c=row_major, overwrite_c=1), row_major)
    b = np.ones((3, 3), order="F")
    tarn.blas.dtrmm(2.0, np.eye(3), b)
    assert (b == 1).all()
    tarn.blas.dtrmm(2.0, np.eye(3), b, overwrite_b=1)
    assert (b == 2).all()


def test_refusals():
    blas, a = tarn.blas, np.ones((3, 4), "f")
    for call in (
        lambda: blas.sgemm(1.0, a, a),
        lambda: blas.sgemm(1.0, a, a.T, c=np.ones((3, 4), "f")),
        lambda: blas.sgemm(1.0, a[0], a),
        lambda: blas.strsm(1.0, np.eye(4, dtype="f"), a),
        lambda: blas.ssymm(1.0, np.eye(4, dtype="f"), a),
        lambda: blas.ssyr2k(1.0, a, a.T),
        lambda: blas.sgemv(1.0, a, np.ones(3, "f")),
        lambda: blas.sgemv(1.0, a, np.ones(4, "f"), incx=2),
        lambda: blas.sgemv(1.0, a, np.ones(4, "f"), incx=0),
        lambda: blas.sgemv(1.0, a, np.ones(4, "f"), offx=-1),
        lambda: blas.sgemv(1.0, a, np.ones(4, "f"), y=np.ones(2, "f")),
        lambda: blas.ssymv(1.0, a, np.ones(4, "f")),
    ):
        with pytest.raises(ValueError):
            call()
