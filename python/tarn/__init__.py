"""Dense linear algebra on an NVIDIA GPU, with SciPy's names.

Systems, factorisations, least squares and singular values for arrays of NumPy and for arrays in device memory. See
`solve`, `lu_factor`, `lu_solve`, `qr`, `lstsq`, `lstsq_constrained`, `svd`, `svdvals`, and `tarn.blas`.
"""

from . import blas
from ._arrays import DeviceArray, to_device
from ._decompositions import lstsq, lstsq_constrained, qr, svd, svdvals
from ._errors import LinAlgError, LinAlgWarning
from ._information import device_info, select_device, show_config, warn_of_slow_blas
from ._solve import SolveInfo, lu_factor, lu_solve, solve

__all__ = [
    "DeviceArray",
    "LinAlgError",
    "LinAlgWarning",
    "SolveInfo",
    "blas",
    "device_info",
    "lstsq",
    "lstsq_constrained",
    "lu_factor",
    "lu_solve",
    "qr",
    "select_device",
    "show_config",
    "solve",
    "svd",
    "svdvals",
    "to_device",
]

warn_of_slow_blas()
del warn_of_slow_blas
