"""Where arrays are, and how they come into the form that the routines take: column by column, of one type."""

from __future__ import annotations

import sys
from typing import Any

import numpy as np

from . import _core

_SINGLE = (np.dtype("f"), np.dtype("F"))
_DOUBLE = (np.dtype("d"), np.dtype("D"))
_CUDA, _CUDA_MANAGED = 2, 13  # device types of DLPack


class DeviceArray:
    """An array in the memory of the device.

    It carries no arithmetic: it is what functions give back that get arrays of the device, where the library of their
    arguments does not take it over, and what `to_device` makes. Other libraries read it without a copy, by ``__dlpack__``
    or ``__cuda_array_interface__``; `get` brings it to NumPy.
    """

    __slots__ = ("__weakref__", "_pointer", "_strides", "_tensor", "dtype", "shape")

    def __init__(self, tensor: Any) -> None:
        """Of what exports an array of the device by ``__dlpack__``."""
        self._tensor = tensor
        self._pointer, shape, strides, letter, on_the_device = _core.describe(tensor)
        if not on_the_device:
            raise ValueError("the array is not on the device")
        if letter == "?":
            raise TypeError("elements must be float32, float64, complex64, complex128 or int32")
        self.dtype = np.dtype(letter)
        self.shape = tuple(shape)
        self._strides = tuple(strides)

    @property
    def ndim(self) -> int:
        return len(self.shape)

    @property
    def size(self) -> int:
        return int(np.prod(self.shape))

    @property
    def T(self) -> DeviceArray:
        """The transpose, in the same memory."""
        return DeviceArray(
            _core.borrow(self._pointer, self.shape[::-1], self._strides[::-1], self.dtype.char, self._tensor, 0)
        )

    def get(self) -> np.ndarray:
        """A copy in host memory."""
        if not self._is_column_major():
            if self.ndim == 1:
                raise ValueError("the vector is strided: make it contiguous first")
            return self.T.get().T
        host = np.empty(self.shape, self.dtype, order="F")
        _core.copy(host, self)
        return host

    @property
    def __cuda_array_interface__(self) -> dict[str, Any]:
        return {
            "shape": self.shape,
            "strides": tuple(s * self.dtype.itemsize for s in self._strides),
            "typestr": self.dtype.str,
            "data": (self._pointer, False),
            "version": 3,
            "stream": 1,
        }

    def __dlpack__(self, **kwargs: Any) -> Any:
        kwargs.pop("stream", None)  # routines end before they return: any stream may read
        return self._tensor.__dlpack__(**kwargs)

    def __dlpack_device__(self) -> tuple[int, int]:
        return self._tensor.__dlpack_device__()

    def __repr__(self) -> str:
        return f"DeviceArray(shape={self.shape}, dtype={self.dtype})"

    def _is_column_major(self) -> bool:
        if self.ndim == 1:
            return self._strides[0] == 1 or self.shape[0] <= 1
        (m, n), (down, across) = self.shape, self._strides
        return (down == 1 or m <= 1) and (across >= max(1, m) or n <= 1)


def to_device(a: Any) -> DeviceArray:
    """A copy of an array of one or two dimensions in the memory of the device, in the order of `a`."""
    a = np.asarray(a)
    if a.ndim == 2 and a.flags.c_contiguous and not a.flags.f_contiguous:
        return to_device(a.T).T
    a = np.asfortranarray(a)
    result = _Device.empty(a.shape, a.dtype)
    _core.copy(result, a)
    return result


def on_device(*arrays: Any) -> bool:
    """Whether the arrays are in device memory. ValueError where some are and some are not."""
    there = [_is_on_device(a) for a in arrays]
    if any(there) and not all(there):
        raise ValueError("some arrays are on the device and some are not")
    return any(there)


def _is_on_device(a: Any) -> bool:
    if isinstance(a, (np.ndarray, np.generic, list, tuple, int, float, complex)):
        return False
    if isinstance(a, DeviceArray) or hasattr(a, "__cuda_array_interface__"):
        return True
    device = getattr(a, "__dlpack_device__", None)
    return device is not None and device()[0] in (_CUDA, _CUDA_MANAGED)


def device_view(a: Any) -> DeviceArray:
    """An array of another library on the device, in its own memory."""
    if isinstance(a, DeviceArray):
        return a
    interface = getattr(a, "__cuda_array_interface__", None)
    if interface is None:
        return DeviceArray(a)
    dtype, shape = np.dtype(interface["typestr"]), tuple(interface["shape"])
    strides = interface.get("strides")
    if strides is None:
        strides = tuple(dtype.itemsize * int(np.prod(shape[i + 1 :])) for i in range(len(shape)))
    stream = interface.get("stream") or 0
    elements = [s // dtype.itemsize for s in strides]
    return DeviceArray(_core.borrow(interface["data"][0], shape, elements, dtype.char, a, stream))


class _Host:
    """Arrays of NumPy."""

    @staticmethod
    def view(a: Any) -> np.ndarray:
        return np.asarray(a)

    @staticmethod
    def empty(shape: tuple[int, ...], dtype: np.dtype) -> np.ndarray:
        return np.empty(shape, dtype, order="F")

    @staticmethod
    def fortran(a: np.ndarray, dtype: np.dtype, overwrite: Any = False) -> np.ndarray:
        """Column by column, to be overwritten: `a` itself where it may be and has that form."""
        if overwrite and a.flags.writeable:
            return np.asfortranarray(a, dtype)
        return np.array(a, dtype, order="F", copy=True)

    @staticmethod
    def either(a: np.ndarray, dtype: np.dtype, overwrite: Any = False) -> tuple[np.ndarray, bool]:
        """As `fortran`, but an array that lies row by row as its transpose, and then True."""
        if a.flags.c_contiguous and not a.flags.f_contiguous:
            return _Host.fortran(a.T, dtype, overwrite), True
        return _Host.fortran(a, dtype, overwrite), False

    @staticmethod
    def readable(a: np.ndarray, dtype: np.dtype) -> np.ndarray:
        """Column by column, only to be read."""
        return np.asfortranarray(a, dtype)

    @staticmethod
    def host(a: np.ndarray) -> np.ndarray:
        return a

    @staticmethod
    def of_host(a: np.ndarray) -> np.ndarray:
        return a

    @staticmethod
    def result(a: np.ndarray, like: Any) -> np.ndarray:
        return a


class _Device:
    """Arrays in device memory."""

    view = staticmethod(device_view)

    @staticmethod
    def empty(shape: tuple[int, ...], dtype: np.dtype) -> DeviceArray:
        return DeviceArray(_core.allocate(shape, np.dtype(dtype).char))

    @staticmethod
    def fortran(a: DeviceArray, dtype: np.dtype, overwrite: Any = False) -> DeviceArray:
        if a.dtype != dtype:
            raise TypeError(f"arrays on the device must be of one type, not {a.dtype} and {dtype}")
        if not a._is_column_major():
            return to_device(np.asfortranarray(a.get()))  # transposed on the way through the host
        if overwrite and (a.ndim == 1 or a._strides[1] == max(1, a.shape[0])):
            return a
        copy: Any = _Device.empty(a.shape, dtype)
        _core.copy(copy, a)
        return copy

    @staticmethod
    def either(a: DeviceArray, dtype: np.dtype, overwrite: Any = False) -> tuple[DeviceArray, bool]:
        if a._is_column_major():
            return _Device.fortran(a, dtype, overwrite), False
        return _Device.fortran(a.T, dtype, overwrite), True

    @staticmethod
    def readable(a: DeviceArray, dtype: np.dtype) -> DeviceArray:
        return _Device.fortran(a, dtype, overwrite=True)

    @staticmethod
    def host(a: DeviceArray) -> np.ndarray:
        return a.get()

    @staticmethod
    def of_host(a: np.ndarray) -> DeviceArray:
        return to_device(np.asfortranarray(a))

    @staticmethod
    def result(a: Any, like: Any) -> Any:
        """The result as an array of the library that `like` is of, where that imports by from_dlpack."""
        if isinstance(a, np.ndarray):
            a = to_device(a)
        if isinstance(like, DeviceArray):
            return a
        namespace = getattr(like, "__array_namespace__", None)
        library = namespace() if namespace else sys.modules.get(type(like).__module__.partition(".")[0])
        importer = getattr(library, "from_dlpack", None)
        return importer(a) if importer else a


def space_of(*arrays: Any) -> Any:
    """How arrays are handled that are where these are: _Host or _Device."""
    return _Device if on_device(*arrays) else _Host


def common_type(*arrays: Any) -> np.dtype:
    """The least of float32, float64, complex64 and complex128 that holds what these types hold."""
    kind = np.result_type(*(a.dtype for a in arrays))
    if kind.kind == "O":
        raise ValueError("object arrays are not supported")
    if kind.kind not in "biufc":
        raise TypeError(f"arrays of type {kind} are not served")
    wide = kind.itemsize > (8 if kind.kind == "c" else 4) or kind.kind in "biu"
    return np.dtype(("D" if wide else "F") if kind.kind == "c" else ("d" if wide else "f"))


def single_type(name: str, *arrays: Any) -> np.dtype:
    """As `common_type`, where only single precision is served."""
    kind = common_type(*arrays)
    if kind in _DOUBLE:
        raise TypeError(
            f"tarn.{name} works in single precision and does not round by itself: it takes float32 or complex64, such "
            f"as a.astype('{'F' if kind.kind == 'c' else 'f'}'), not {kind}"
        )
    return kind


def is_double(dtype: np.dtype) -> bool:
    return dtype in _DOUBLE
