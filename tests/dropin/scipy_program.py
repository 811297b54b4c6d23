"""What NumPy and SciPy make of linear algebra problems in float32 and complex64, as an archive of arrays.

Usage: scipy_program.py OUTPUT.npz
"""
import sys

import numpy as np
import scipy.linalg as la


def product_of_factors(factors, pivots):
    """A of A = P L U: two right factorisations may differ where pivots are nearly equal."""
    product = (np.tril(factors, -1) + np.eye(len(pivots))) @ np.triu(factors)
    for row, pivot in reversed(list(enumerate(pivots))):
        product[[row, pivot]] = product[[pivot, row]]
    return product


results = {}
rng = np.random.default_rng(1)
for dtype in (np.float32, np.complex64):
    def drawn(*shape):
        parts = rng.standard_normal(shape), rng.standard_normal(shape)
        return (parts[0] + (1j * parts[1] if dtype is np.complex64 else 0)).astype(dtype)

    def keep(name, *arrays):
        for number, array in enumerate(arrays):
            results[f"{name} {dtype.__name__} {number}"] = array

    n = 250
    a, b, tall, right = drawn(n, n), drawn(n, 7), drawn(400, 120), drawn(400, 3)
    q, r = la.qr(a)
    a = a + np.asarray(60 * q, dtype=dtype)  # well conditioned, so that two right answers are near to each other
    lapack = {name: la.get_lapack_funcs(name, (a,)) for name in ("gesv", "gels", "gglse")}
    q, r = la.qr(a)
    u, s, vh = la.svd(tall, full_matrices=False, lapack_driver="gesvd")
    keep("solve", la.solve(a, b))
    keep("gesv", lapack["gesv"](a, b)[2])
    keep("lstsq", la.lstsq(tall, right)[0])
    keep("gels", lapack["gels"](tall, right)[1][:120])
    keep("gglse", lapack["gglse"](tall, drawn(20, 120), right[:, 0], drawn(20))[3])
    keep("svd", s, (u * s) @ vh)
    keep("qr", q @ r, r)
    keep("lu_factor", product_of_factors(*la.lu_factor(a)))
    keep("product", a @ b, a.T @ b, b.conj().T @ a)
np.savez(sys.argv[1], **results)
