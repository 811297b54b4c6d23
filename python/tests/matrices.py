"""Matrices to test with, and backward errors in units of epsilon."""

import numpy as np

SINGLE, DOUBLE = ("f", "F"), ("d", "D")


def random(shape, dtype, seed=1):
    rng = np.random.default_rng(seed)
    a = rng.standard_normal(shape)
    if np.dtype(dtype).kind == "c":
        a = a + 1j * rng.standard_normal(shape)
    return a.astype(dtype)


def of_condition(n, condition, dtype="d"):
    """A random matrix of this condition in the 2-norm."""
    (u, _), (v, _) = (np.linalg.qr(random((n, n), "d", seed)) for seed in (2, 3))
    return ((u * np.logspace(0, -np.log10(condition), n)) @ v.T).astype(dtype)


def norm1(a):
    return np.abs(a).sum(axis=0).max(initial=0)


def solve_error(a, x, b):
    """norm1(b - a x) / (n norm1(a) norm1(x) eps), with the residual in extended precision."""
    wide = np.longdouble if x.dtype.kind == "f" else np.clongdouble
    x, b = (y.reshape(len(y), -1) for y in (x, b))
    residual = b.astype(wide) - a.astype(wide) @ x.astype(wide)
    return float(norm1(residual) / (len(a) * norm1(a) * norm1(x) * np.finfo(x.dtype).eps))


def product_error(a, *factors):
    """norm1(a - product) / (max(m, n) norm1(a) eps)."""
    product = factors[0].astype("D")
    for factor in factors[1:]:
        product = product @ factor
    return norm1(a - product) / (max(a.shape) * norm1(a) * np.finfo(a.dtype).eps)


def orthogonality(q):
    """norm1(I - q^H q) / (m eps)."""
    wide = q.astype("D")
    return norm1(np.eye(q.shape[1]) - wide.conj().T @ wide) / (q.shape[0] * np.finfo(q.dtype).eps)
