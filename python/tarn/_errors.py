"""SciPy's errors and warnings, without SciPy where that is not installed."""

from __future__ import annotations

import warnings

import numpy as np

LinAlgError = np.linalg.LinAlgError

try:
    from scipy.linalg import LinAlgWarning
except ImportError:

    class LinAlgWarning(RuntimeWarning):  # type: ignore[no-redef]
        """The solution of a problem may have no correct digit."""


def warn_if_singular(
    rcond: float, dtype: np.dtype, what: str = "the matrix", stacklevel: int = 3, limit: float | None = None
) -> None:
    """LinAlgWarning if `rcond` is below `limit`, the epsilon of `dtype` by default."""
    if rcond < (np.finfo(dtype).eps if limit is None else limit):
        warnings.warn(
            f"{what} is close to singular, rcond = {rcond:.3g}: the result may have no correct digit",
            LinAlgWarning,
            stacklevel=stacklevel,
        )
