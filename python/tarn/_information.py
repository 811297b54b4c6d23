"""What the package runs on."""

from __future__ import annotations

import warnings
from typing import Any

from . import _core


def _cuda_version(number: int) -> str:
    return f"{number // 1000}.{number // 10 % 100}" if number else "unknown"


def show_config() -> None:
    """Print the version, the kind of device, CUDA's versions, and the CPU BLAS that works beside the device."""
    config = _core.config()
    version = config["version"]
    rows = {
        "tarn": f"{version // 1000}.{version // 100 % 10}.{version % 100}",
        "device": {"software": "the software device, on the CPU", "cuda": "CUDA"}[config["device"]],
        "CUDA runtime": _cuda_version(config["cuda_runtime"]),
        "CUDA driver": _cuda_version(config["cuda_driver"]),
        "CPU BLAS": "{cpu_blas}, core {cpu_blas_core}, {cpu_blas_threads} threads".format(**config),
    }
    for name, value in rows.items():
        print(f"{name:<14}{value}")


def device_info() -> list[dict[str, Any]]:
    """The devices, in their order: number (``device``), ``name``, ``capability`` as a pair, ``multiprocessors``, and
    ``memory`` in bytes. Empty where there is none, or no driver."""
    return _core.devices()


def select_device(device: int) -> None:
    """Run what the calling thread calls on another device. Arrays on the device must lie on the same."""
    _core.select_device(device)


def warn_of_slow_blas() -> None:
    """RuntimeWarning where OpenBLAS took the CPU for an old one, which costs most of its speed."""
    core = _core.config()["better_core"]
    if core:
        warnings.warn(
            f"OpenBLAS took this CPU for an older one and runs at a fraction of its speed: set OPENBLAS_CORETYPE={core} "
            "before Python starts",
            RuntimeWarning,
            stacklevel=3,
        )
