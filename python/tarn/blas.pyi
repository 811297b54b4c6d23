from typing import Any, Protocol

class _Gemm(Protocol):
    def __call__(
        self, alpha: complex, a: Any, b: Any, beta: complex = 0.0, c: Any = None, trans_a: int = 0, trans_b: int = 0,
        overwrite_c: int = 0,
    ) -> Any: ...

class _Triangular(Protocol):
    def __call__(
        self, alpha: complex, a: Any, b: Any, side: int = 0, lower: int = 0, trans_a: int = 0, diag: int = 0,
        overwrite_b: int = 0,
    ) -> Any: ...

class _Symm(Protocol):
    def __call__(
        self, alpha: complex, a: Any, b: Any, beta: complex = 0.0, c: Any = None, side: int = 0, lower: int = 0,
        overwrite_c: int = 0,
    ) -> Any: ...

class _Syrk(Protocol):
    def __call__(
        self, alpha: complex, a: Any, beta: complex = 0.0, c: Any = None, trans: int = 0, lower: int = 0,
        overwrite_c: int = 0,
    ) -> Any: ...

class _Syr2k(Protocol):
    def __call__(
        self, alpha: complex, a: Any, b: Any, beta: complex = 0.0, c: Any = None, trans: int = 0, lower: int = 0,
        overwrite_c: int = 0,
    ) -> Any: ...

class _Gemv(Protocol):
    def __call__(
        self, alpha: complex, a: Any, x: Any, beta: complex = 0.0, y: Any = None, offx: int = 0, incx: int = 1,
        offy: int = 0, incy: int = 1, trans: int = 0, overwrite_y: int = 0,
    ) -> Any: ...

class _Symv(Protocol):
    def __call__(
        self, alpha: complex, a: Any, x: Any, beta: complex = 0.0, y: Any = None, offx: int = 0, incx: int = 1,
        offy: int = 0, incy: int = 1, lower: int = 0, overwrite_y: int = 0,
    ) -> Any: ...

sgemm: _Gemm
dgemm: _Gemm
cgemm: _Gemm
zgemm: _Gemm
strmm: _Triangular
dtrmm: _Triangular
ctrmm: _Triangular
ztrmm: _Triangular
strsm: _Triangular
dtrsm: _Triangular
ctrsm: _Triangular
ztrsm: _Triangular
ssymm: _Symm
dsymm: _Symm
csymm: _Symm
zsymm: _Symm
chemm: _Symm
zhemm: _Symm
ssyrk: _Syrk
dsyrk: _Syrk
csyrk: _Syrk
zsyrk: _Syrk
cherk: _Syrk
zherk: _Syrk
ssyr2k: _Syr2k
dsyr2k: _Syr2k
csyr2k: _Syr2k
zsyr2k: _Syr2k
cher2k: _Syr2k
zher2k: _Syr2k
sgemv: _Gemv
dgemv: _Gemv
cgemv: _Gemv
zgemv: _Gemv
ssymv: _Symv
dsymv: _Symv
chemv: _Symv
zhemv: _Symv
