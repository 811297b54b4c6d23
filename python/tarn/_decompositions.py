"""Orthogonal factorisations, least squares and singular values, in single precision."""

from __future__ import annotations

from typing import Any

import numpy as np

from . import _core
from ._arrays import single_type, space_of
from ._errors import LinAlgError, warn_if_singular
from ._solve import _check


def _matrix(name: str, a: Any, check_finite: bool) -> tuple[Any, Any, np.dtype]:
    space = space_of(a)
    matrix = space.view(a)
    if matrix.ndim != 2:
        raise ValueError("expected a 2-D array")
    dtype = single_type(name, matrix)
    _check(space, matrix, check_finite)
    return space, matrix, dtype


def _real(dtype: np.dtype) -> np.dtype:
    return np.dtype("f")


def qr(
    a: Any,
    overwrite_a: bool = False,
    lwork: int | None = None,
    mode: str = "full",
    pivoting: bool = False,
    check_finite: bool = True,
) -> Any:
    """QR factorisation ``a = Q @ R`` by Householder reflections, float32 or complex64.

    Parameters
    ----------
    a : (M, N) array_like
        The matrix.
    overwrite_a, check_finite : bool
        As for `solve`; arrays on the device are not checked.
    lwork : int, optional
        Without effect: workspace is the library's own business.
    mode : {'full', 'r', 'economic', 'raw'}
        What is given back, see below.
    pivoting : bool
        Not served: ``NotImplementedError`` where it is set.

    Returns
    -------
    Q : ndarray
        (M, M), or (M, K) for ``'economic'``, K = min(M, N); left out for ``'r'``; for ``'raw'`` the pair ``(qr, tau)``
        of LAPACK's geqrf.
    R : ndarray
        (M, N), or (K, N) for ``'economic'`` and ``'raw'``; alone in a tuple for ``'r'``.
    """
    if mode not in ("full", "r", "economic", "raw"):
        raise ValueError("Mode argument should be one of ['full', 'r', 'economic', 'raw']")
    if pivoting:
        raise NotImplementedError("tarn.qr does not pivot; scipy.linalg.qr does")
    space, matrix, dtype = _matrix("qr", a, check_finite)
    m, n = matrix.shape
    k = min(m, n)
    factors, tau = space.fortran(matrix, dtype, overwrite_a), space.empty((k,), dtype)
    if k > 0:
        _core.geqrf(factors, tau)
    host = space.host(factors)
    r = np.triu(host[:k] if mode in ("economic", "raw") else host)
    r = space.result(r, a)
    if mode == "r":
        return (r,)
    if mode == "raw":
        return (space.result(factors, a), space.result(tau, a)), r
    q = space.empty((m, k if mode == "economic" else m), dtype)
    _core.form_q(factors, tau, q)
    return space.result(q, a), r


def svd(
    a: Any,
    full_matrices: bool = True,
    compute_uv: bool = True,
    overwrite_a: bool = False,
    check_finite: bool = True,
    lapack_driver: str = "gesdd",
) -> Any:
    """Singular value decomposition ``a = U @ diag(s) @ Vh``, float32 or complex64.

    Parameters
    ----------
    a : (M, N) array_like
        The matrix.
    full_matrices : bool
        Whether U is (M, M) and Vh (N, N), or (M, K) and (K, N), K = min(M, N).
    compute_uv : bool
        Whether to give back U and Vh.
    overwrite_a, check_finite : bool
        As for `solve`; arrays on the device are not checked, nor scaled: entries of theirs far from 1 may lose digits.
    lapack_driver : {'gesdd', 'gesvd'}
        For SciPy's sake; the method is gesvd's, implicit QR, for both.

    Returns
    -------
    U : ndarray
    s : (K,) ndarray
        Singular values, descending.
    Vh : ndarray
        Only ``s`` is given back without `compute_uv`.

    Raises
    ------
    LinAlgError
        The iteration did not converge.
    """
    if lapack_driver not in ("gesdd", "gesvd"):
        raise ValueError(f'lapack_driver must be "gesdd" or "gesvd", not "{lapack_driver}"')
    space, matrix, dtype = _matrix("svd", a, check_finite)
    # What lies row by row is decomposed as its transpose, Vh.T @ diag(s) @ U.T.
    copy, by_rows = space.either(matrix, dtype, overwrite_a)
    m, n = copy.shape
    k = min(m, n)
    scale = _scale(copy)
    if scale != 1:
        copy = np.asfortranarray(copy / scale, dtype)
    s = space.empty((k,), _real(dtype))
    job = ("A" if full_matrices else "S") if compute_uv else "N"
    u, vt = {
        "A": ((m, m), (n, n)),
        "S": ((m, k), (k, n)),
        "N": ((1, 1), (1, 1)),
    }[job]
    u, vt = space.empty(u, dtype), space.empty(vt, dtype)
    info = _core.gesvd(job, copy, s, u, vt) if k > 0 else 0
    if info:
        raise LinAlgError("the singular value decomposition did not converge")
    if k == 0:
        u, vt = (space.of_host(np.eye(*x.shape, dtype=dtype)) for x in (u, vt))
    if scale != 1:
        s *= scale
    s = space.result(s, a)
    if not compute_uv:
        return s
    u, vt = (vt.T, u.T) if by_rows else (u, vt)
    return space.result(u, a), s, space.result(vt, a)


def _scale(a: Any) -> Any:
    """1, or for a host array whose entries are all tiny or some huge the size of the largest."""
    if not isinstance(a, np.ndarray) or a.size == 0:
        return 1
    parts = a.view(_real(a.dtype)) if a.flags.c_contiguous else a.T.view(_real(a.dtype))
    largest = max(abs(parts.max()), abs(parts.min()))
    return largest if 0 < largest < 1e-10 or 1e10 < largest < np.inf else 1


def svdvals(a: Any, overwrite_a: bool = False, check_finite: bool = True) -> Any:
    """Singular values of a matrix, descending; `svd` without vectors."""
    return svd(a, compute_uv=False, overwrite_a=overwrite_a, check_finite=check_finite)


def lstsq(
    a: Any,
    b: Any,
    cond: float | None = None,
    overwrite_a: bool = False,
    overwrite_b: bool = False,
    check_finite: bool = True,
    lapack_driver: str | None = None,
) -> tuple[Any, Any, int, Any]:
    """Least-squares solution of ``a @ x = b``: of least ``norm2(b - a @ x)``, and where that leaves a choice of least
    ``norm2(x)``. float32 or complex64.

    Parameters
    ----------
    a : (M, N) array_like
    b : (M,) or (M, K) array_like
    cond : float, optional
        Singular values below ``cond`` times the largest count as zero, for ``'gelss'``; below this the estimate of the
        reciprocal condition brings a warning, for ``'gels'``. Epsilon by default.
    overwrite_a, overwrite_b, check_finite : bool
        As for `solve`; arrays on the device are not checked.
    lapack_driver : {'gels', 'gelss'}, optional
        ``'gels'``, by default: QR or LQ factorisation, which takes `a` to be of full rank. ``'gelss'``: singular
        values, for every `a` on the host, at several times the cost.

    Returns
    -------
    x : (N,) or (N, K) ndarray
    residues : () or (K,) ndarray
        Squares of the 2-norms of ``b - a @ x`` where M > N and the rank is N, else of shape (0,).
    rank : int
        The effective rank; min(M, N) for ``'gels'``.
    s : (K,) ndarray or None
        Singular values, for ``'gelss'``.

    Raises
    ------
    LinAlgError
        ``'gels'``: `a` has not full rank, exactly.

    Warns
    -----
    LinAlgWarning
        ``'gels'``: `a` has not full rank, to working precision.
    """
    if lapack_driver not in (None, "gels", "gelss"):
        raise ValueError(f'LAPACK driver "{lapack_driver}" is not found: "gels" or "gelss"')
    space = space_of(a, b)
    matrix, rhs = space.view(a), space.view(b)
    if matrix.ndim != 2:
        raise ValueError("Input array a should be 2D")
    if rhs.ndim not in (1, 2) or matrix.shape[0] != rhs.shape[0]:
        raise ValueError(
            f"Shape mismatch: a and b should have the same number of rows ({matrix.shape[0]} != {rhs.shape[:1]})."
        )
    dtype = single_type("lstsq", matrix, rhs)
    _check(space, matrix, check_finite)
    _check(space, rhs, check_finite)
    if lapack_driver == "gelss":
        if not isinstance(matrix, np.ndarray):
            raise ValueError('lapack_driver="gelss" serves arrays on the host')
        return _by_singular_values(matrix, rhs, cond, dtype)
    x, residues = _gels(space, matrix, rhs, dtype, cond, overwrite_a)
    return space.result(x, b), residues, min(matrix.shape), None


def _gels(space: Any, matrix: Any, rhs: Any, dtype: np.dtype, cond: float | None, overwrite: bool) -> tuple[Any, Any]:
    m, n = matrix.shape
    columns = rhs.shape[1] if rhs.ndim == 2 else 1
    complex_rows = dtype.kind == "c"  # gels offers no transpose without conjugation: conjugate B and X instead
    if complex_rows and not isinstance(matrix, np.ndarray):
        factors, by_rows = space.fortran(matrix, dtype, overwrite), False
    else:
        factors, by_rows = space.either(matrix, dtype, overwrite)
    conjugate = by_rows and complex_rows
    padded = np.zeros((max(m, n), columns), dtype, order="F")
    host_rhs = space.host(rhs).reshape(m, columns)
    padded[:m] = host_rhs.conj() if conjugate else host_rhs
    work = space.of_host(padded)
    info = _core.gels("C" if by_rows else "N", factors, work)
    if info:
        raise LinAlgError(f"the matrix has not full rank: diagonal number {info} of its triangular factor is zero")
    rcond = _core.triangle_condition(factors) if min(m, n) > 0 else 1.0
    warn_if_singular(rcond, dtype, "the matrix, of deficient rank,", stacklevel=4, limit=cond)
    solved = space.host(work)
    x = solved[:n].conj() if conjugate else solved[:n]
    residues = np.sum(np.abs(solved[n:m]) ** 2, axis=0) if m > n else np.empty(0, _real(dtype))
    if rhs.ndim == 1:
        x = x[:, 0]
        residues = residues[0] if m > n else residues
    return np.asfortranarray(x), residues


def _by_singular_values(a: np.ndarray, b: np.ndarray, cond: float | None, dtype: np.dtype) -> tuple[Any, Any, int, Any]:
    m, n = a.shape
    u, s, vh = svd(a.astype(dtype, copy=False), full_matrices=False, check_finite=False)
    limit = np.finfo(dtype).eps if cond is None else cond
    rank = int(np.count_nonzero(s > limit * s[0])) if s.size else 0
    coordinates = (u[:, :rank].conj().T @ b).T / s[:rank]
    x = vh[:rank].conj().T @ coordinates.T
    residues = np.empty(0, _real(dtype))
    if m > n and rank == n:
        residues = np.sum(np.abs(b - a @ x) ** 2, axis=0)
    return x, residues, rank, s


def lstsq_constrained(a: Any, b: Any, c: Any, d: Any, check_finite: bool = True) -> tuple[Any, Any]:
    """Least squares with linear constraints: the `x` of least ``norm2(b - a @ x)`` among those with ``c @ x = d``.

    Parameters
    ----------
    a : (M, N) array_like
    b : (M,) array_like
    c : (P, N) array_like
        P <= N <= M + P; of full row rank, and with `a` of full column rank.
    d : (P,) array_like
        All four float32 or complex64.
    check_finite : bool
        As for `solve`; arrays on the device are not checked.

    Returns
    -------
    x : (N,) ndarray
    residue : float
        The square of ``norm2(b - a @ x)``.

    Raises
    ------
    LinAlgError
        `c` has not full row rank, or the equations and the constraints do not determine `x`.
    """
    space = space_of(a, b, c, d)
    equations, rhs, constraints, bounds = (space.view(x) for x in (a, b, c, d))
    if equations.ndim != 2 or constraints.ndim != 2 or rhs.ndim != 1 or bounds.ndim != 1:
        raise ValueError("a and c are matrices, b and d vectors")
    (m, n), p = equations.shape, constraints.shape[0]
    if constraints.shape[1] != n or rhs.shape[0] != m or bounds.shape[0] != p:
        raise ValueError(
            f"incompatible shapes: a {equations.shape}, b {rhs.shape}, c {constraints.shape}, d {bounds.shape}"
        )
    if not p <= n <= m + p:
        raise ValueError(f"{m} equations and {p} constraints do not determine {n} unknowns: P <= N <= M + P")
    dtype = single_type("lstsq_constrained", equations, rhs, constraints, bounds)
    for array in (equations, rhs, constraints, bounds):
        _check(space, array, check_finite)
    equations, constraints, rhs, bounds = (space.fortran(x, dtype) for x in (equations, constraints, rhs, bounds))
    x = space.empty((n,), dtype)
    info = _core.gglse(equations, constraints, rhs, bounds, x) if n > 0 else 0
    if info:
        raise LinAlgError(
            "the constraints are linearly dependent" if info == 1 else "equations and constraints do not determine x"
        )
    rest = space.host(rhs)[n - p :]
    return space.result(x, b), float(np.sum(np.abs(rest) ** 2))
