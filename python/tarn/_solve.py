"""Square systems."""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np

from . import _core
from ._arrays import common_type, is_double, on_device, single_type, space_of
from ._errors import LinAlgError, warn_if_singular


class SolveInfo(NamedTuple):
    """How `solve` came to its solution."""

    way: str
    """``"single"``: factors in single precision on the device; ``"refined"``: those, and refinement in double
    precision; ``"double"``: the CPU's double-precision solver."""
    refinements: int
    """Refinements made; 0 unless ``way`` is ``"refined"``."""
    rcond: float
    """Estimate of ``1 / (norm1(a) * norm1(inv(a)))``; NaN where it was left out."""
    reason: str | None
    """Why the CPU solved: ``"small"``, ``"range"``, ``"singular"`` or ``"not converged"``."""


_REASONS = {-1: "small", -2: "range", -3: "singular", -31: "not converged"}
_ASSUMED = {
    "gen": None, "general": None,
    "sym": "symmetric", "symmetric": "symmetric",
    "her": "hermitian", "hermitian": "hermitian",
    "pos": "hermitian", "positive definite": "hermitian",
    "upper triangular": "upper", "lower triangular": "lower",
}  # fmt: skip
_types: dict[tuple[np.dtype, np.dtype], tuple[np.dtype, bool]] = {}


def solve(
    a: Any,
    b: Any,
    lower: bool = False,
    overwrite_a: bool = False,
    overwrite_b: bool = False,
    check_finite: bool = True,
    assume_a: str | None = None,
    transposed: bool = False,
    *,
    return_info: bool = False,
) -> Any:
    """Solve ``a @ x = b`` for a square matrix `a`, by LU factorisation with partial pivoting.

    Parameters
    ----------
    a : (..., N, N) array_like
        The matrix, or a stack of them.
    b : (N,) or (..., N, K) array_like
        Right-hand sides; stacks of `a` and `b` broadcast against each other.
    lower : bool
        Which triangle counts where `assume_a` says that the other follows from it.
    overwrite_a, overwrite_b : bool
        Whether their memory may be used; it is, where type and order allow.
    check_finite : bool
        Whether to look for infinities and NaNs. For arrays on the device this copies `a` and its factors to the host,
        as the estimate of the condition does; without the check both are left out.
    assume_a : str, optional
        ``"gen"``, ``"sym"``, ``"her"``, ``"pos"``, ``"upper triangular"`` or ``"lower triangular"`` and SciPy's longer
        names: which entries of `a` count. The method is the same for all.
    transposed : bool
        Solve ``a.T @ x = b``.
    return_info : bool
        Give back ``(x, info)`` with a `SolveInfo`, or a list of them for a stack.

    Returns
    -------
    x : ndarray
        The solution, of the shape of `b`. float32 and complex64 are solved in single precision on the device; others
        to the accuracy of double precision, by factors in single precision and iterative refinement, or by the CPU in
        double precision where `a` is too small or too ill-conditioned for that.

    Raises
    ------
    LinAlgError
        `a` is singular: a pivot is exactly zero.
    ValueError
        Shapes do not match, or an entry is infinite or NaN.

    Warns
    -----
    LinAlgWarning
        The condition, by estimate, is beyond the precision: ``rcond`` is below epsilon.
    """
    if type(a) is not np.ndarray or type(b) is not np.ndarray:
        if on_device(a, b):
            return _solve_on_device(
                a, b, lower, overwrite_a, overwrite_b, check_finite, assume_a, transposed, return_info
            )
        a, b = np.asarray(a), np.asarray(b)
    if assume_a is not None:
        a = _assumed(a, assume_a, lower)
    if a.ndim != 2 or b.ndim > 2:
        return _solve_stack(a, b, check_finite, transposed, return_info)
    shape = a.shape
    if shape[0] != shape[1]:
        raise ValueError(f"expected a square matrix, got a.shape={shape}")
    if b.ndim == 0 or b.shape[0] != shape[0]:
        raise ValueError(f"incompatible shapes: a.shape={shape} and b.shape={b.shape}")
    try:
        dtype, double = _types[a.dtype, b.dtype]
    except KeyError:
        dtype = common_type(a, b)
        double = is_double(dtype)
        _types[a.dtype, b.dtype] = dtype, double
    if b.size == 0:
        x = np.empty(b.shape, dtype)
        return (x, SolveInfo("single", 0, 1.0, None)) if return_info else x
    if double:
        return _solve_double(a, b, dtype, check_finite, transposed, return_info)

    flags = a.flags
    by_rows = flags.c_contiguous and not flags.f_contiguous
    if by_rows:
        a = a.T
    if overwrite_a and flags.writeable:
        a = np.asfortranarray(a, dtype)
    else:
        a = np.array(a, dtype, order="F")
    x = np.asfortranarray(b, dtype) if overwrite_b and b.flags.writeable else np.array(b, dtype, order="F")
    info, rcond = _core.solve_single("T" if by_rows != transposed else "N", a, x, check_finite)
    _judge(info, rcond, dtype)
    return (x, SolveInfo("single", 0, rcond, None)) if return_info else x


def _solve_double(a: Any, b: Any, dtype: np.dtype, check_finite: bool, transposed: bool, return_info: bool) -> Any:
    if a.dtype is not dtype or not a.flags.forc:
        a = _steps_of_columns(np.asarray(a, dtype))
    if b.dtype is not dtype or not b.flags.f_contiguous:
        b = np.asfortranarray(b, dtype)
    x = np.empty(b.shape, dtype, "F")
    info, rcond, iterations = _core.solve_double(transposed, a, b, x, check_finite)
    _judge(info, rcond, dtype)
    if not return_info:
        return x
    if iterations >= 0:
        return x, SolveInfo("refined", iterations, rcond, None)
    return x, SolveInfo("double", 0, rcond, _REASONS[iterations])


def _steps_of_columns(a: np.ndarray) -> np.ndarray:
    """`a` itself if its columns or its rows are contiguous, in memory one behind the other; else a copy."""
    down, across = (s / a.itemsize for s in a.strides)
    if (down == 1 and across >= a.shape[0]) or (across == 1 and down >= a.shape[1]):
        return a
    return np.asfortranarray(a)


def _judge(info: int, rcond: float, dtype: np.dtype) -> None:
    if info:
        raise LinAlgError(f"the matrix is singular: U({info}, {info}) of its LU factorisation is zero")
    if rcond < 1.2e-7:  # beyond single precision: to be looked at
        warn_if_singular(rcond, dtype, stacklevel=5 if is_double(dtype) else 4)


def _assumed(a: np.ndarray, assume_a: str, lower: bool) -> np.ndarray:
    """The matrix whose entries follow from those of `a` that count."""
    if assume_a not in _ASSUMED:
        raise ValueError(f"assume_a={assume_a!r} is not served: one of {', '.join(map(repr, _ASSUMED))}, or None")
    kind = _ASSUMED[assume_a]
    if kind is None or a.ndim < 2:
        return a
    if kind in ("upper", "lower"):
        return np.triu(a) if kind == "upper" else np.tril(a)
    triangle = np.tril(a) if lower else np.triu(a)
    strict = np.tril(a, -1) if lower else np.triu(a, 1)
    mirrored = np.swapaxes(strict, -1, -2)
    return triangle + (mirrored.conj() if kind == "hermitian" else mirrored)


def _solve_stack(a: np.ndarray, b: np.ndarray, check_finite: bool, transposed: bool, return_info: bool) -> Any:
    if a.ndim < 2 or a.shape[-1] != a.shape[-2]:
        raise ValueError(f"expected a square matrix, got a.shape={a.shape}")
    vectors = b.ndim == 1
    core = b.shape if vectors else b.shape[-2:]
    if b.ndim == 0 or core[0] != a.shape[-1]:
        raise ValueError(f"incompatible shapes: a.shape={a.shape} and b.shape={b.shape}")
    stack = np.broadcast_shapes(a.shape[:-2], b.shape[: b.ndim - len(core)])
    a, b = np.broadcast_to(a, stack + a.shape[-2:]), np.broadcast_to(b, stack + core)
    x = np.empty(stack + core, common_type(a, b))
    infos = []
    for index in np.ndindex(*stack):
        x[index], info = solve(a[index], b[index], check_finite=check_finite, transposed=transposed, return_info=True)
        infos.append(info)
    return (x, infos) if return_info else x


def _solve_on_device(
    a: Any, b: Any, lower: bool, overwrite_a: bool, overwrite_b: bool, check_finite: bool, assume_a: str | None,
    transposed: bool, return_info: bool,
) -> Any:  # fmt: skip
    space = space_of(a)
    matrix, rhs = space.view(a), space.view(b)
    dtype = common_type(matrix, rhs)
    if assume_a is not None or is_double(dtype) or matrix.ndim != 2:
        # What the device cannot do by itself goes through the host.
        x, info = solve(
            matrix.get(), rhs.get(), lower, True, True, check_finite, assume_a, transposed, return_info=True
        )
    else:
        n = matrix.shape[0]
        if matrix.shape != (n, n):
            raise ValueError(f"expected a square matrix, got a.shape={matrix.shape}")
        if rhs.ndim not in (1, 2) or rhs.shape[0] != n:
            raise ValueError(f"incompatible shapes: a.shape={matrix.shape} and b.shape={rhs.shape}")
        factors, by_rows = space.either(matrix, dtype, overwrite_a)
        x = space.fortran(rhs, dtype, overwrite_b)
        singular, rcond = _core.solve_single("T" if by_rows != transposed else "N", factors, x, check_finite)
        _judge(singular, rcond, dtype)
        info = SolveInfo("single", 0, rcond, None)
    x = space.result(x, b)
    return (x, info) if return_info else x


def lu_factor(a: Any, overwrite_a: bool = False, check_finite: bool = True) -> tuple[Any, np.ndarray]:
    """LU factorisation ``a = P @ L @ U`` with partial pivoting, float32 or complex64.

    Parameters
    ----------
    a : (M, N) array_like
        The matrix.
    overwrite_a, check_finite : bool
        As for `solve`; arrays on the device are not checked.

    Returns
    -------
    lu : (M, N) ndarray
        U on and above the diagonal, L below it, without its unit diagonal.
    piv : (K,) ndarray of int32
        Row i was interchanged with row ``piv[i]``, in this order, counted from 0; K = min(M, N). On the host always.

    Warns
    -----
    LinAlgWarning
        A pivot is exactly zero.
    """
    space = space_of(a)
    matrix = space.view(a)
    if matrix.ndim != 2:
        raise ValueError("expected a matrix")
    dtype = single_type("lu_factor", matrix)
    _check(space, matrix, check_finite)
    lu = space.fortran(matrix, dtype, overwrite_a)
    pivots = np.empty(min(matrix.shape), np.intc)
    info = _core.getrf(lu, pivots)
    if info:
        warn_if_singular(0.0, dtype, f"diagonal number {info} of U is exactly zero: the matrix")
    return space.result(lu, a), pivots


def lu_solve(
    lu_and_piv: tuple[Any, Any], b: Any, trans: int = 0, overwrite_b: bool = False, check_finite: bool = True
) -> Any:
    """Solve ``a @ x = b`` by the factors that `lu_factor` made of `a`.

    Parameters
    ----------
    lu_and_piv : tuple
        What `lu_factor` gave.
    b : (N,) or (N, K) array_like
        Right-hand sides, of the type of the factors.
    trans : {0, 1, 2}
        Solve ``a @ x = b``, ``a.T @ x = b`` or ``a.conj().T @ x = b``.
    overwrite_b, check_finite : bool
        As for `solve`.
    """
    lu, pivots = lu_and_piv
    space = space_of(lu, b)
    factors, rhs = space.view(lu), space.view(b)
    if trans not in (0, 1, 2):
        raise ValueError(f"trans is 0, 1 or 2, not {trans!r}")
    if factors.ndim != 2 or factors.shape[0] != factors.shape[1]:
        raise ValueError("the factors are not those of a square matrix")
    if rhs.ndim not in (1, 2) or rhs.shape[0] != factors.shape[0]:
        raise ValueError(f"Shapes of lu {factors.shape} and b {rhs.shape} are incompatible")
    if len(pivots) != factors.shape[0]:
        raise ValueError("there is one pivot for each row")
    dtype = single_type("lu_solve", factors, rhs)
    _check(space, rhs, check_finite)
    x = space.fortran(rhs, dtype, overwrite_b)
    _core.getrs("NTC"[trans], space.readable(factors, dtype), np.ascontiguousarray(pivots, np.intc), x)
    return space.result(x, b)


def _check(space: Any, a: Any, check_finite: bool) -> None:
    """ValueError for infinities and NaNs in an array on the host."""
    if check_finite and isinstance(a, np.ndarray) and not np.isfinite(a).all():
        raise ValueError("array must not contain infs or NaNs")
