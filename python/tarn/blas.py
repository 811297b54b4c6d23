"""BLAS 2 and 3 on the device, with the names and arguments of `scipy.linalg.blas`.

gemm, trmm, trsm, symm, syrk, syr2k and gemv begin with s, d, c or z for float32, float64, complex64 and complex128;
hemm, herk, her2k and hemv with c or z, symv with s or d. As there, inputs of another type or order are copied, and a
result stands in place of `c`, `b` or `y` only where `overwrite_c` and its like allow it and type and order match.
Arrays on the device must have the type and are copied, through the host, only where they lie row by row.
"""

from __future__ import annotations

from typing import Any, Callable

import numpy as np

from . import _core
from ._arrays import space_of

__all__: list[str] = []
_TYPES = {"s": np.dtype("f"), "d": np.dtype("d"), "c": np.dtype("F"), "z": np.dtype("D")}


class _Call:
    """The arrays of a call: where they are, and of which type they have to be."""

    def __init__(self, dtype: np.dtype, *arrays: Any) -> None:
        given = [a for a in arrays if a is not None]
        self.dtype, self.like, self.space = dtype, given[0], space_of(*given)
        self.scalar = complex if dtype.kind == "c" else float

    def matrix(self, a: Any) -> Any:
        """To be read."""
        return self._shaped(self.space.readable(self.space.view(a), self.dtype), 2)

    def vector(self, x: Any) -> Any:
        return self._shaped(self.space.readable(self.space.view(x), self.dtype), 1)

    def operand(self, a: Any, trans: int) -> tuple[Any, int]:
        """A matrix and its transposition: what lies row by row is taken as the transpose, without a copy."""
        view = self.space.view(a)
        on_host = isinstance(view, np.ndarray) and view.ndim == 2
        if on_host and trans != 2 and view.flags.c_contiguous and not view.flags.f_contiguous:
            return self.matrix(view.T), 1 - trans
        return self.matrix(view), trans

    def output(self, c: Any, shape: tuple[int, ...], overwrite: Any) -> Any:
        """`c` of this shape, to be overwritten; zeros where there is none."""
        if c is None:
            return self.space.of_host(np.zeros(shape, self.dtype, order="F"))
        view = self.space.view(c)
        if tuple(view.shape) != shape:
            raise ValueError(f"the result has shape {shape}, but was given as {tuple(view.shape)}")
        return self.space.fortran(view, self.dtype, overwrite)

    def result(self, c: Any) -> Any:
        return self.space.result(c, self.like)

    @staticmethod
    def _shaped(a: Any, ndim: int) -> Any:
        if a.ndim != ndim:
            raise ValueError(f"expected an array of {ndim} dimension{'s' if ndim > 1 else ''}, not {a.ndim}")
        return a


def _require(condition: bool, what: str) -> None:
    if not condition:
        raise ValueError(what)


def _turned(a: Any, trans: int) -> tuple[int, ...]:
    return tuple(a.shape[::-1] if trans else a.shape)


def _gemm(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    def gemm(alpha, a, b, beta=0.0, c=None, trans_a=0, trans_b=0, overwrite_c=0):
        """``alpha * op(a) @ op(b) + beta * c``; op is nothing, ``.T`` or ``.conj().T`` for 0, 1 or 2."""
        call = _Call(dtype, a, b, c)
        (a, trans_a), (b, trans_b) = call.operand(a, trans_a), call.operand(b, trans_b)
        (m, k), (inner, n) = _turned(a, trans_a), _turned(b, trans_b)
        _require(k == inner, f"op(a) has {k} columns, but op(b) has {inner} rows")
        c = call.output(c, (m, n), overwrite_c)
        routine("NTC"[trans_a], "NTC"[trans_b], k, call.scalar(alpha), a, b, call.scalar(beta), c)
        return call.result(c)

    return gemm


def _triangular(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    def triangular(alpha, a, b, side=0, lower=0, trans_a=0, diag=0, overwrite_b=0):
        call = _Call(dtype, a, b)
        a, turned = call.operand(a, trans_a)
        lower, trans_a = (not lower, turned) if turned != trans_a else (lower, trans_a)
        _require(call.space.view(b).ndim == 2, "b is a matrix")
        b = call.space.fortran(call.space.view(b), dtype, overwrite_b)
        order = b.shape[1 if side else 0]
        _require(tuple(a.shape) == (order, order), f"a has shape {tuple(a.shape)}, not {(order, order)}")
        routine("LR"[bool(side)], "UL"[bool(lower)], "NTC"[trans_a], "NU"[bool(diag)], call.scalar(alpha), a, b)
        return call.result(b)

    return triangular


def _trmm(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    trmm = _triangular(dtype, routine)
    trmm.__doc__ = "``alpha * op(a) @ b``, or ``alpha * b @ op(a)`` for side 1, with a triangular `a`."
    return trmm


def _trsm(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    trsm = _triangular(dtype, routine)
    trsm.__doc__ = "The solution of ``op(a) @ x = alpha * b``, or ``x @ op(a) = alpha * b`` for side 1; triangular `a`."
    return trsm


def _symm(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    def symm(alpha, a, b, beta=0.0, c=None, side=0, lower=0, overwrite_c=0):
        """``alpha * a @ b + beta * c``, or ``alpha * b @ a + beta * c`` for side 1; one triangle of `a` is read."""
        call = _Call(dtype, a, b, c)
        a, b = call.matrix(a), call.matrix(b)
        order = b.shape[1 if side else 0]
        _require(tuple(a.shape) == (order, order), f"a has shape {tuple(a.shape)}, not {(order, order)}")
        c = call.output(c, tuple(b.shape), overwrite_c)
        routine("LR"[bool(side)], "UL"[bool(lower)], call.scalar(alpha), a, b, call.scalar(beta), c)
        return call.result(c)

    return symm


def _letter(hermitian: bool, trans: int) -> str:
    return ("C" if hermitian else "T") if trans else "N"


def _real(x: Any) -> float:
    return float(np.real(x))


def _syrk(dtype: np.dtype, routine: Any, hermitian: bool = False) -> Callable[..., Any]:
    def syrk(alpha, a, beta=0.0, c=None, trans=0, lower=0, overwrite_c=0):
        """``alpha * a @ a* + beta * c``, or ``alpha * a* @ a + beta * c`` for trans; ``a*`` is ``a.T``, or
        ``a.conj().T`` of a Hermitian product. One triangle of the result is set."""
        call = _Call(dtype, a, c)
        a = call.matrix(a)
        order = a.shape[1 if trans else 0]
        c = call.output(c, (order, order), overwrite_c)
        scalar = _real if hermitian else call.scalar
        routine("UL"[bool(lower)], _letter(hermitian, trans), scalar(alpha), a, scalar(beta), c)
        return call.result(c)

    return syrk


def _syr2k(dtype: np.dtype, routine: Any, hermitian: bool = False) -> Callable[..., Any]:
    def syr2k(alpha, a, b, beta=0.0, c=None, trans=0, lower=0, overwrite_c=0):
        """``alpha * a @ b* + alpha* * b @ a* + beta * c``, or ``alpha * a* @ b + alpha* * b* @ a + beta * c`` for trans,
        the star as for syrk. One triangle of the result is set."""
        call = _Call(dtype, a, b, c)
        a, b = call.matrix(a), call.matrix(b)
        _require(tuple(a.shape) == tuple(b.shape), f"a and b have shapes {tuple(a.shape)} and {tuple(b.shape)}")
        order = a.shape[1 if trans else 0]
        c = call.output(c, (order, order), overwrite_c)
        scalar = _real if hermitian else call.scalar
        routine("UL"[bool(lower)], _letter(hermitian, trans), call.scalar(alpha), a, b, scalar(beta), c)
        return call.result(c)

    return syr2k


def _span(name: str, x: Any, offset: int, step: int, count: int) -> None:
    """ValueError unless `count` elements, `step` apart from `offset` on, lie in a vector."""
    _require(step != 0, f"inc{name} must not be 0")
    _require(0 <= offset, f"off{name} must not be negative")
    _require(offset + (count - 1) * abs(step) < x.shape[0] or count == 0, f"{name} is too short")


def _vectors(
    call: _Call, m: int, n: int, x: Any, offx: int, incx: int, y: Any, offy: int, incy: int, overwrite: Any
) -> Any:
    """x of n and y of m elements."""
    x = call.vector(x)
    length = offy + (1 + (m - 1) * abs(incy) if m > 0 else 0)
    y = call.output(y, (length,) if y is None else tuple(call.space.view(y).shape), overwrite)
    _require(y.ndim == 1, "y is a vector")
    _span("x", x, offx, incx, n)
    _span("y", y, offy, incy, m)
    return x, y


def _gemv(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    def gemv(alpha, a, x, beta=0.0, y=None, offx=0, incx=1, offy=0, incy=1, trans=0, overwrite_y=0):
        """``alpha * op(a) @ x + beta * y``; op as for gemm."""
        call = _Call(dtype, a, x, y)
        a, trans = call.operand(a, trans)
        m, n = _turned(a, trans)
        x, y = _vectors(call, m, n, x, offx, incx, y, offy, incy, overwrite_y)
        routine("NTC"[trans], call.scalar(alpha), a, x, offx, incx, call.scalar(beta), y, offy, incy)
        return call.result(y)

    return gemv


def _symv(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    def symv(alpha, a, x, beta=0.0, y=None, offx=0, incx=1, offy=0, incy=1, lower=0, overwrite_y=0):
        """``alpha * a @ x + beta * y``; one triangle of `a` is read. Increments are positive."""
        call = _Call(dtype, a, x, y)
        a = call.matrix(a)
        _require(a.shape[0] == a.shape[1], f"a has shape {tuple(a.shape)}, which is not square")
        _require(incx > 0 and incy > 0, "increments are positive")
        x, y = _vectors(call, a.shape[0], a.shape[0], x, offx, incx, y, offy, incy, overwrite_y)
        routine("UL"[bool(lower)], call.scalar(alpha), a, x, offx, incx, call.scalar(beta), y, offy, incy)
        return call.result(y)

    return symv


def _herk(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    return _syrk(dtype, routine, hermitian=True)


def _her2k(dtype: np.dtype, routine: Any) -> Callable[..., Any]:
    return _syr2k(dtype, routine, hermitian=True)


_FAMILIES = {
    "gemm": (_gemm, "sdcz"), "trmm": (_trmm, "sdcz"), "trsm": (_trsm, "sdcz"), "symm": (_symm, "sdcz"),
    "syrk": (_syrk, "sdcz"), "syr2k": (_syr2k, "sdcz"), "gemv": (_gemv, "sdcz"), "symv": (_symv, "sd"),
    "hemm": (_symm, "cz"), "herk": (_herk, "cz"), "her2k": (_her2k, "cz"), "hemv": (_symv, "cz"),
}  # fmt: skip


def _fill() -> None:
    for family, (make, letters) in _FAMILIES.items():
        for letter in letters:
            name = letter + family
            function = make(_TYPES[letter], getattr(_core, family))
            function.__name__ = function.__qualname__ = name
            globals()[name] = function
            __all__.append(name)


_fill()
