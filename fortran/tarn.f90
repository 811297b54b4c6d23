! tarn_lapack from Fortran. Made by fortran/generate from tarn_lapack.h: change that, not this.
!
!   use tarn
!   status = tarnInitialize()
!   status = tarn_gesv(n, nrhs, a, lda, ipiv, b, ldb)   ! or tarnSgesv, tarnCgesv
!   if (status /= tarnNoError) print *, tarn_status_text(status), tarnGetErrorInfo()
!   call tarnShutdown()
!
! Every C function stands here under its own name, and each family of routines under one generic name, which takes the
! element types that the family has. Matrices are of rank 2, vectors of rank 1: one right-hand side is b(n, 1). Device
! addresses are of type(c_ptr), so that device forms have a generic name only where alpha tells the element type.
! What a routine computes, and the infos of its statuses, stand in tarn_lapack.h.
!
! Any compiler of Fortran 2018 takes this file; compile it with the program.
module tarn
  use, intrinsic :: iso_c_binding
  implicit none

  !> Results of all routines.
  integer(c_int), parameter :: tarnNoError = 0
  integer(c_int), parameter :: tarnNotInitialized = 1
  integer(c_int), parameter :: tarnNoHardware = 2
  integer(c_int), parameter :: tarnInsufficientRuntime = 3
  integer(c_int), parameter :: tarnInsufficientComputeCapability = 4
  integer(c_int), parameter :: tarnInsufficientMemory = 5
  integer(c_int), parameter :: tarnFeatureNotImplemented = 6
  integer(c_int), parameter :: tarnArgumentError = 7
  integer(c_int), parameter :: tarnDataError = 8
  integer(c_int), parameter :: tarnBlasError = 9
  integer(c_int), parameter :: tarnRuntimeError = 10
  integer(c_int), parameter :: tarnBadStorageFormat = 11
  integer(c_int), parameter :: tarnUnspecifiedError = 12

  interface
    !> Status of the last tarn call on the calling thread.
    integer(c_int) function tarnGetLastStatus() &
        bind(c, name="tarnGetLastStatus")
      import
      implicit none
    end function

    !> Error info of the last tarn call on the calling thread.
    integer(c_int32_t) function tarnGetErrorInfo() &
        bind(c, name="tarnGetErrorInfo")
      import
      implicit none
    end function

    !> Records the status of the call that is ending, for tarnGetLastStatus() on this thread. For tarn libraries.
    subroutine tarnSetLastStatus(status) &
        bind(c, name="tarnSetLastStatus")
      import
      implicit none
      integer(c_int), value :: status
    end subroutine

    !> Records the detail of the call that is running, for tarnGetErrorInfo() on this thread. For tarn libraries.
    subroutine tarnSetErrorInfo(info) &
        bind(c, name="tarnSetErrorInfo")
      import
      implicit none
      integer(c_int32_t), value :: info
    end subroutine

    !> Brings the library up for the calling thread: checks the CUDA runtime, driver and cuBLAS versions and that a
    !  device is there, and starts cuBLAS. Further calls, from this or other threads, only register the thread.
    integer(c_int) function tarnInitialize() &
        bind(c, name="tarnInitialize")
      import
      implicit none
    end function

    !> Takes the calling thread out; the last registered thread takes the library down and frees its device workspace.
    !  No routine may be running in another thread then. Does nothing before tarnInitialize().
    subroutine tarnShutdown() &
        bind(c, name="tarnShutdown")
      import
      implicit none
    end subroutine

    !> Gives idle device workspace, which the library keeps between calls, back to CUDA.
    subroutine tarnFreeBuffers() &
        bind(c, name="tarnFreeBuffers")
      import
      implicit none
    end subroutine

    !> Version of this library.
    integer(c_int32_t) function tarnGetVersion() &
        bind(c, name="tarnGetVersion")
      import
      implicit none
    end function

    !> Oldest CUDA that is served.
    integer(c_int32_t) function tarnGetCudaMinimumVersion() &
        bind(c, name="tarnGetCudaMinimumVersion")
      import
      implicit none
    end function

    !> CUDA runtime in use.
    integer(c_int32_t) function tarnGetCudaRuntimeVersion() &
        bind(c, name="tarnGetCudaRuntimeVersion")
      import
      implicit none
    end function

    !> CUDA driver in use.
    integer(c_int32_t) function tarnGetCudaDriverVersion() &
        bind(c, name="tarnGetCudaDriverVersion")
      import
      implicit none
    end function

    !> Oldest cuBLAS that is served.
    integer(c_int32_t) function tarnGetCublasMinimumVersion() &
        bind(c, name="tarnGetCublasMinimumVersion")
      import
      implicit none
    end function

    !> cuBLAS in use.
    integer(c_int32_t) function tarnGetCublasRuntimeVersion() &
        bind(c, name="tarnGetCublasRuntimeVersion")
      import
      implicit none
    end function

    !> Text of a status. Records nothing.
    type(c_ptr) function tarnGetStatusString(e) &
        bind(c, name="tarnGetStatusString")
      import
      implicit none
      integer(c_int), value :: e
    end function

    !> Writes a message for a status and its info.
    integer(c_int) function tarnGetErrorInfoString(e, i, buf, bufsize) &
        bind(c, name="tarnGetErrorInfoString")
      import
      implicit none
      integer(c_int), value :: e, bufsize
      integer(c_int32_t), value :: i
      character(kind=c_char), intent(out) :: buf(*)
    end function

    !> Number of CUDA devices.
    integer(c_int) function tarnGetDeviceCount(dev) &
        bind(c, name="tarnGetDeviceCount")
      import
      implicit none
      integer(c_int), intent(out) :: dev
    end function

    !> Makes a device current on the calling thread, for CUDA and so for this library.
    integer(c_int) function tarnSelectDevice(dev) &
        bind(c, name="tarnSelectDevice")
      import
      implicit none
      integer(c_int), value :: dev
    end function

    !> The device on which routines of the calling thread run.
    integer(c_int) function tarnGetExecutingDevice(dev) &
        bind(c, name="tarnGetExecutingDevice")
      import
      implicit none
      integer(c_int), intent(out) :: dev
    end function

    !> Writes the name of a device and its memory, such as "tarn software device (8 GB)". Memory is rounded to a whole
    !  number of the largest unit that it reaches, by powers of 1024.
    integer(c_int) function tarnGetDeviceInfo(dev, buf, bufsize) &
        bind(c, name="tarnGetDeviceInfo")
      import
      implicit none
      integer(c_int), value :: dev, bufsize
      character(kind=c_char), intent(out) :: buf(*)
    end function

    !> LU factorisation A = P L U with partial pivoting, by blocked right-looking elimination with look-ahead.
    integer(c_int) function tarnSgetrf(m, n, a, lda, ipiv) &
        bind(c, name="tarnSgetrf")
      import
      implicit none
      integer(c_int), value :: m, n, lda
      real(c_float), intent(inout) :: a(lda, *)
      integer(c_int), intent(inout) :: ipiv(*)
    end function

    integer(c_int) function tarnCgetrf(m, n, a, lda, ipiv) &
        bind(c, name="tarnCgetrf")
      import
      implicit none
      integer(c_int), value :: m, n, lda
      complex(c_float_complex), intent(inout) :: a(lda, *)
      integer(c_int), intent(inout) :: ipiv(*)
    end function

    integer(c_int) function tarnDeviceSgetrf(m, n, a, lda, ipiv) &
        bind(c, name="tarnDeviceSgetrf")
      import
      implicit none
      integer(c_int), value :: m, n, lda
      type(c_ptr), value :: a, ipiv
    end function

    integer(c_int) function tarnDeviceCgetrf(m, n, a, lda, ipiv) &
        bind(c, name="tarnDeviceCgetrf")
      import
      implicit none
      integer(c_int), value :: m, n, lda
      type(c_ptr), value :: a, ipiv
    end function

    !> Solves A X = B by LU factorisation with partial pivoting.
    integer(c_int) function tarnSgesv(n, nrhs, a, lda, ipiv, b, ldb) &
        bind(c, name="tarnSgesv")
      import
      implicit none
      integer(c_int), value :: n, nrhs, lda, ldb
      real(c_float), intent(inout) :: a(lda, *), b(ldb, *)
      integer(c_int), intent(inout) :: ipiv(*)
    end function

    integer(c_int) function tarnCgesv(n, nrhs, a, lda, ipiv, b, ldb) &
        bind(c, name="tarnCgesv")
      import
      implicit none
      integer(c_int), value :: n, nrhs, lda, ldb
      complex(c_float_complex), intent(inout) :: a(lda, *), b(ldb, *)
      integer(c_int), intent(inout) :: ipiv(*)
    end function

    integer(c_int) function tarnDeviceSgesv(n, nrhs, a, lda, ipiv, b, ldb) &
        bind(c, name="tarnDeviceSgesv")
      import
      implicit none
      integer(c_int), value :: n, nrhs, lda, ldb
      type(c_ptr), value :: a, ipiv, b
    end function

    integer(c_int) function tarnDeviceCgesv(n, nrhs, a, lda, ipiv, b, ldb) &
        bind(c, name="tarnDeviceCgesv")
      import
      implicit none
      integer(c_int), value :: n, nrhs, lda, ldb
      type(c_ptr), value :: a, ipiv, b
    end function

    !> QR factorisation A = Q R by Householder reflections, blocked with look-ahead.
    integer(c_int) function tarnSgeqrf(m, n, a, lda, tau) &
        bind(c, name="tarnSgeqrf")
      import
      implicit none
      integer(c_int), value :: m, n, lda
      real(c_float), intent(inout) :: a(lda, *), tau(*)
    end function

    integer(c_int) function tarnCgeqrf(m, n, a, lda, tau) &
        bind(c, name="tarnCgeqrf")
      import
      implicit none
      integer(c_int), value :: m, n, lda
      complex(c_float_complex), intent(inout) :: a(lda, *), tau(*)
    end function

    integer(c_int) function tarnDeviceSgeqrf(m, n, a, lda, tau) &
        bind(c, name="tarnDeviceSgeqrf")
      import
      implicit none
      integer(c_int), value :: m, n, lda
      type(c_ptr), value :: a, tau
    end function

    integer(c_int) function tarnDeviceCgeqrf(m, n, a, lda, tau) &
        bind(c, name="tarnDeviceCgeqrf")
      import
      implicit none
      integer(c_int), value :: m, n, lda
      type(c_ptr), value :: a, tau
    end function

    !> Solves op(A) X = B for an A of full rank by its QR or LQ factorisation, in the sense of least squares or of least
    !  norm.
    integer(c_int) function tarnSgels(trans, m, n, nrhs, a, lda, b, ldb) &
        bind(c, name="tarnSgels")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, nrhs, lda, ldb
      real(c_float), intent(inout) :: a(lda, *), b(ldb, *)
    end function

    integer(c_int) function tarnCgels(trans, m, n, nrhs, a, lda, b, ldb) &
        bind(c, name="tarnCgels")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, nrhs, lda, ldb
      complex(c_float_complex), intent(inout) :: a(lda, *), b(ldb, *)
    end function

    integer(c_int) function tarnDeviceSgels(trans, m, n, nrhs, a, lda, b, ldb) &
        bind(c, name="tarnDeviceSgels")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, nrhs, lda, ldb
      type(c_ptr), value :: a, b
    end function

    integer(c_int) function tarnDeviceCgels(trans, m, n, nrhs, a, lda, b, ldb) &
        bind(c, name="tarnDeviceCgels")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, nrhs, lda, ldb
      type(c_ptr), value :: a, b
    end function

    !> Minimises norm2(c - A x) subject to B x = d, by the generalised RQ factorisation of B and A.
    integer(c_int) function tarnSgglse(m, n, p, a, lda, b, ldb, c, d, x) &
        bind(c, name="tarnSgglse")
      import
      implicit none
      integer(c_int), value :: m, n, p, lda, ldb
      real(c_float), intent(inout) :: a(lda, *), b(ldb, *), c(*), d(*), x(*)
    end function

    integer(c_int) function tarnCgglse(m, n, p, a, lda, b, ldb, c, d, x) &
        bind(c, name="tarnCgglse")
      import
      implicit none
      integer(c_int), value :: m, n, p, lda, ldb
      complex(c_float_complex), intent(inout) :: a(lda, *), b(ldb, *), c(*), d(*), x(*)
    end function

    integer(c_int) function tarnDeviceSgglse(m, n, p, a, lda, b, ldb, c, d, x) &
        bind(c, name="tarnDeviceSgglse")
      import
      implicit none
      integer(c_int), value :: m, n, p, lda, ldb
      type(c_ptr), value :: a, b, c, d, x
    end function

    integer(c_int) function tarnDeviceCgglse(m, n, p, a, lda, b, ldb, c, d, x) &
        bind(c, name="tarnDeviceCgglse")
      import
      implicit none
      integer(c_int), value :: m, n, p, lda, ldb
      type(c_ptr), value :: a, b, c, d, x
    end function

    !> Singular value decomposition A = U S V^H, by reduction to bidiagonal form and implicit zero-shift QR; k = min(m,
    !  n).
    integer(c_int) function tarnSgesvd(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt) &
        bind(c, name="tarnSgesvd")
      import
      implicit none
      character(kind=c_char), value :: jobu, jobvt
      integer(c_int), value :: m, n, lda, ldu, ldvt
      real(c_float), intent(inout) :: a(lda, *), s(*)
      real(c_float), intent(inout), optional :: u(ldu, *), vt(ldvt, *)
    end function

    integer(c_int) function tarnCgesvd(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt) &
        bind(c, name="tarnCgesvd")
      import
      implicit none
      character(kind=c_char), value :: jobu, jobvt
      integer(c_int), value :: m, n, lda, ldu, ldvt
      complex(c_float_complex), intent(inout) :: a(lda, *)
      real(c_float), intent(inout) :: s(*)
      complex(c_float_complex), intent(inout), optional :: u(ldu, *), vt(ldvt, *)
    end function

    integer(c_int) function tarnDeviceSgesvd(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt) &
        bind(c, name="tarnDeviceSgesvd")
      import
      implicit none
      character(kind=c_char), value :: jobu, jobvt
      integer(c_int), value :: m, n, lda, ldu, ldvt
      type(c_ptr), value :: a, s, u, vt
    end function

    integer(c_int) function tarnDeviceCgesvd(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt) &
        bind(c, name="tarnDeviceCgesvd")
      import
      implicit none
      character(kind=c_char), value :: jobu, jobvt
      integer(c_int), value :: m, n, lda, ldu, ldvt
      type(c_ptr), value :: a, s, u, vt
    end function

    !> Matrix product C := alpha op(A) op(B) + beta C, with op(X) = X ("N"), X^T ("T") or X^H ("C").
    integer(c_int) function tarnSgemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnSgemm")
      import
      implicit none
      character(kind=c_char), value :: transa, transb
      integer(c_int), value :: m, n, k, lda, ldb, ldc
      real(c_float), value :: alpha, beta
      real(c_float), intent(in) :: a(lda, *), b(ldb, *)
      real(c_float), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnDgemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDgemm")
      import
      implicit none
      character(kind=c_char), value :: transa, transb
      integer(c_int), value :: m, n, k, lda, ldb, ldc
      real(c_double), value :: alpha, beta
      real(c_double), intent(in) :: a(lda, *), b(ldb, *)
      real(c_double), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnCgemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnCgemm")
      import
      implicit none
      character(kind=c_char), value :: transa, transb
      integer(c_int), value :: m, n, k, lda, ldb, ldc
      complex(c_float_complex), value :: alpha, beta
      complex(c_float_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_float_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnZgemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnZgemm")
      import
      implicit none
      character(kind=c_char), value :: transa, transb
      integer(c_int), value :: m, n, k, lda, ldb, ldc
      complex(c_double_complex), value :: alpha, beta
      complex(c_double_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_double_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnDeviceSgemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceSgemm")
      import
      implicit none
      character(kind=c_char), value :: transa, transb
      integer(c_int), value :: m, n, k, lda, ldb, ldc
      real(c_float), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceDgemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceDgemm")
      import
      implicit none
      character(kind=c_char), value :: transa, transb
      integer(c_int), value :: m, n, k, lda, ldb, ldc
      real(c_double), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceCgemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceCgemm")
      import
      implicit none
      character(kind=c_char), value :: transa, transb
      integer(c_int), value :: m, n, k, lda, ldb, ldc
      complex(c_float_complex), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceZgemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceZgemm")
      import
      implicit none
      character(kind=c_char), value :: transa, transb
      integer(c_int), value :: m, n, k, lda, ldb, ldc
      complex(c_double_complex), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    !> Solves op(A) X = alpha B (side "L") or X op(A) = alpha B (side "R") for a triangular A; X replaces B.
    integer(c_int) function tarnStrsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnStrsm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      real(c_float), value :: alpha
      real(c_float), intent(in) :: a(lda, *)
      real(c_float), intent(inout) :: b(ldb, *)
    end function

    integer(c_int) function tarnDtrsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDtrsm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      real(c_double), value :: alpha
      real(c_double), intent(in) :: a(lda, *)
      real(c_double), intent(inout) :: b(ldb, *)
    end function

    integer(c_int) function tarnCtrsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnCtrsm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      complex(c_float_complex), value :: alpha
      complex(c_float_complex), intent(in) :: a(lda, *)
      complex(c_float_complex), intent(inout) :: b(ldb, *)
    end function

    integer(c_int) function tarnZtrsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnZtrsm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      complex(c_double_complex), value :: alpha
      complex(c_double_complex), intent(in) :: a(lda, *)
      complex(c_double_complex), intent(inout) :: b(ldb, *)
    end function

    integer(c_int) function tarnDeviceStrsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDeviceStrsm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      real(c_float), value :: alpha
      type(c_ptr), value :: a, b
    end function

    integer(c_int) function tarnDeviceDtrsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDeviceDtrsm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      real(c_double), value :: alpha
      type(c_ptr), value :: a, b
    end function

    integer(c_int) function tarnDeviceCtrsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDeviceCtrsm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      complex(c_float_complex), value :: alpha
      type(c_ptr), value :: a, b
    end function

    integer(c_int) function tarnDeviceZtrsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDeviceZtrsm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      complex(c_double_complex), value :: alpha
      type(c_ptr), value :: a, b
    end function

    !> Product with a triangular matrix, B := alpha op(A) B (side "L") or alpha B op(A) (side "R").
    integer(c_int) function tarnStrmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnStrmm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      real(c_float), value :: alpha
      real(c_float), intent(in) :: a(lda, *)
      real(c_float), intent(inout) :: b(ldb, *)
    end function

    integer(c_int) function tarnDtrmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDtrmm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      real(c_double), value :: alpha
      real(c_double), intent(in) :: a(lda, *)
      real(c_double), intent(inout) :: b(ldb, *)
    end function

    integer(c_int) function tarnCtrmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnCtrmm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      complex(c_float_complex), value :: alpha
      complex(c_float_complex), intent(in) :: a(lda, *)
      complex(c_float_complex), intent(inout) :: b(ldb, *)
    end function

    integer(c_int) function tarnZtrmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnZtrmm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      complex(c_double_complex), value :: alpha
      complex(c_double_complex), intent(in) :: a(lda, *)
      complex(c_double_complex), intent(inout) :: b(ldb, *)
    end function

    integer(c_int) function tarnDeviceStrmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDeviceStrmm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      real(c_float), value :: alpha
      type(c_ptr), value :: a, b
    end function

    integer(c_int) function tarnDeviceDtrmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDeviceDtrmm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      real(c_double), value :: alpha
      type(c_ptr), value :: a, b
    end function

    integer(c_int) function tarnDeviceCtrmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDeviceCtrmm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      complex(c_float_complex), value :: alpha
      type(c_ptr), value :: a, b
    end function

    integer(c_int) function tarnDeviceZtrmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb) &
        bind(c, name="tarnDeviceZtrmm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo, transa, diag
      integer(c_int), value :: m, n, lda, ldb
      complex(c_double_complex), value :: alpha
      type(c_ptr), value :: a, b
    end function

    !> Product with a symmetric (symm) or Hermitian (hemm) matrix, C := alpha A B + beta C (side "L") or alpha B A +
    !  beta C (side "R").
    integer(c_int) function tarnSsymm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnSsymm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      real(c_float), value :: alpha, beta
      real(c_float), intent(in) :: a(lda, *), b(ldb, *)
      real(c_float), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnDsymm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDsymm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      real(c_double), value :: alpha, beta
      real(c_double), intent(in) :: a(lda, *), b(ldb, *)
      real(c_double), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnCsymm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnCsymm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      complex(c_float_complex), value :: alpha, beta
      complex(c_float_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_float_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnZsymm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnZsymm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      complex(c_double_complex), value :: alpha, beta
      complex(c_double_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_double_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnChemm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnChemm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      complex(c_float_complex), value :: alpha, beta
      complex(c_float_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_float_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnZhemm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnZhemm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      complex(c_double_complex), value :: alpha, beta
      complex(c_double_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_double_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnDeviceSsymm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceSsymm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      real(c_float), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceDsymm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceDsymm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      real(c_double), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceCsymm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceCsymm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      complex(c_float_complex), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceZsymm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceZsymm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      complex(c_double_complex), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceChemm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceChemm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      complex(c_float_complex), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceZhemm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceZhemm")
      import
      implicit none
      character(kind=c_char), value :: side, uplo
      integer(c_int), value :: m, n, lda, ldb, ldc
      complex(c_double_complex), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    !> A rank k update of one triangle of a symmetric (syrk) or Hermitian (herk) C of order n.
    integer(c_int) function tarnSsyrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnSsyrk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      real(c_float), value :: alpha, beta
      real(c_float), intent(in) :: a(lda, *)
      real(c_float), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnDsyrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnDsyrk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      real(c_double), value :: alpha, beta
      real(c_double), intent(in) :: a(lda, *)
      real(c_double), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnCsyrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnCsyrk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      complex(c_float_complex), value :: alpha, beta
      complex(c_float_complex), intent(in) :: a(lda, *)
      complex(c_float_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnZsyrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnZsyrk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      complex(c_double_complex), value :: alpha, beta
      complex(c_double_complex), intent(in) :: a(lda, *)
      complex(c_double_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnCherk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnCherk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      real(c_float), value :: alpha, beta
      complex(c_float_complex), intent(in) :: a(lda, *)
      complex(c_float_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnZherk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnZherk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      real(c_double), value :: alpha, beta
      complex(c_double_complex), intent(in) :: a(lda, *)
      complex(c_double_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnDeviceSsyrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnDeviceSsyrk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      real(c_float), value :: alpha, beta
      type(c_ptr), value :: a, c
    end function

    integer(c_int) function tarnDeviceDsyrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnDeviceDsyrk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      real(c_double), value :: alpha, beta
      type(c_ptr), value :: a, c
    end function

    integer(c_int) function tarnDeviceCsyrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnDeviceCsyrk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      complex(c_float_complex), value :: alpha, beta
      type(c_ptr), value :: a, c
    end function

    integer(c_int) function tarnDeviceZsyrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnDeviceZsyrk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      complex(c_double_complex), value :: alpha, beta
      type(c_ptr), value :: a, c
    end function

    integer(c_int) function tarnDeviceCherk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnDeviceCherk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      real(c_float), value :: alpha, beta
      type(c_ptr), value :: a, c
    end function

    integer(c_int) function tarnDeviceZherk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc) &
        bind(c, name="tarnDeviceZherk")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldc
      real(c_double), value :: alpha, beta
      type(c_ptr), value :: a, c
    end function

    !> A rank 2k update of one triangle of a symmetric (syr2k) or Hermitian (her2k) C of order n.
    integer(c_int) function tarnSsyr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnSsyr2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      real(c_float), value :: alpha, beta
      real(c_float), intent(in) :: a(lda, *), b(ldb, *)
      real(c_float), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnDsyr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDsyr2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      real(c_double), value :: alpha, beta
      real(c_double), intent(in) :: a(lda, *), b(ldb, *)
      real(c_double), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnCsyr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnCsyr2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      complex(c_float_complex), value :: alpha, beta
      complex(c_float_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_float_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnZsyr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnZsyr2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      complex(c_double_complex), value :: alpha, beta
      complex(c_double_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_double_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnCher2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnCher2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      complex(c_float_complex), value :: alpha
      real(c_float), value :: beta
      complex(c_float_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_float_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnZher2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnZher2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      complex(c_double_complex), value :: alpha
      real(c_double), value :: beta
      complex(c_double_complex), intent(in) :: a(lda, *), b(ldb, *)
      complex(c_double_complex), intent(inout) :: c(ldc, *)
    end function

    integer(c_int) function tarnDeviceSsyr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceSsyr2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      real(c_float), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceDsyr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceDsyr2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      real(c_double), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceCsyr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceCsyr2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      complex(c_float_complex), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceZsyr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceZsyr2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      complex(c_double_complex), value :: alpha, beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceCher2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceCher2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      complex(c_float_complex), value :: alpha
      real(c_float), value :: beta
      type(c_ptr), value :: a, b, c
    end function

    integer(c_int) function tarnDeviceZher2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc) &
        bind(c, name="tarnDeviceZher2k")
      import
      implicit none
      character(kind=c_char), value :: uplo, trans
      integer(c_int), value :: n, k, lda, ldb, ldc
      complex(c_double_complex), value :: alpha
      real(c_double), value :: beta
      type(c_ptr), value :: a, b, c
    end function

    !> Matrix-vector product y := alpha op(A) x + beta y, with op(A) = A ("N"), A^T ("T") or A^H ("C").
    integer(c_int) function tarnSgemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnSgemv")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, lda, incx, incy
      real(c_float), value :: alpha, beta
      real(c_float), intent(in) :: a(lda, *), x(*)
      real(c_float), intent(inout) :: y(*)
    end function

    integer(c_int) function tarnDgemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDgemv")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, lda, incx, incy
      real(c_double), value :: alpha, beta
      real(c_double), intent(in) :: a(lda, *), x(*)
      real(c_double), intent(inout) :: y(*)
    end function

    integer(c_int) function tarnCgemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnCgemv")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, lda, incx, incy
      complex(c_float_complex), value :: alpha, beta
      complex(c_float_complex), intent(in) :: a(lda, *), x(*)
      complex(c_float_complex), intent(inout) :: y(*)
    end function

    integer(c_int) function tarnZgemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnZgemv")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, lda, incx, incy
      complex(c_double_complex), value :: alpha, beta
      complex(c_double_complex), intent(in) :: a(lda, *), x(*)
      complex(c_double_complex), intent(inout) :: y(*)
    end function

    integer(c_int) function tarnDeviceSgemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDeviceSgemv")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, lda, incx, incy
      real(c_float), value :: alpha, beta
      type(c_ptr), value :: a, x, y
    end function

    integer(c_int) function tarnDeviceDgemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDeviceDgemv")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, lda, incx, incy
      real(c_double), value :: alpha, beta
      type(c_ptr), value :: a, x, y
    end function

    integer(c_int) function tarnDeviceCgemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDeviceCgemv")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, lda, incx, incy
      complex(c_float_complex), value :: alpha, beta
      type(c_ptr), value :: a, x, y
    end function

    integer(c_int) function tarnDeviceZgemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDeviceZgemv")
      import
      implicit none
      character(kind=c_char), value :: trans
      integer(c_int), value :: m, n, lda, incx, incy
      complex(c_double_complex), value :: alpha, beta
      type(c_ptr), value :: a, x, y
    end function

    !> Matrix-vector product y := alpha A x + beta y with a symmetric (symv) or Hermitian (hemv) A of order n.
    integer(c_int) function tarnSsymv(uplo, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnSsymv")
      import
      implicit none
      character(kind=c_char), value :: uplo
      integer(c_int), value :: n, lda, incx, incy
      real(c_float), value :: alpha, beta
      real(c_float), intent(in) :: a(lda, *), x(*)
      real(c_float), intent(inout) :: y(*)
    end function

    integer(c_int) function tarnDsymv(uplo, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDsymv")
      import
      implicit none
      character(kind=c_char), value :: uplo
      integer(c_int), value :: n, lda, incx, incy
      real(c_double), value :: alpha, beta
      real(c_double), intent(in) :: a(lda, *), x(*)
      real(c_double), intent(inout) :: y(*)
    end function

    integer(c_int) function tarnChemv(uplo, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnChemv")
      import
      implicit none
      character(kind=c_char), value :: uplo
      integer(c_int), value :: n, lda, incx, incy
      complex(c_float_complex), value :: alpha, beta
      complex(c_float_complex), intent(in) :: a(lda, *), x(*)
      complex(c_float_complex), intent(inout) :: y(*)
    end function

    integer(c_int) function tarnZhemv(uplo, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnZhemv")
      import
      implicit none
      character(kind=c_char), value :: uplo
      integer(c_int), value :: n, lda, incx, incy
      complex(c_double_complex), value :: alpha, beta
      complex(c_double_complex), intent(in) :: a(lda, *), x(*)
      complex(c_double_complex), intent(inout) :: y(*)
    end function

    integer(c_int) function tarnDeviceSsymv(uplo, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDeviceSsymv")
      import
      implicit none
      character(kind=c_char), value :: uplo
      integer(c_int), value :: n, lda, incx, incy
      real(c_float), value :: alpha, beta
      type(c_ptr), value :: a, x, y
    end function

    integer(c_int) function tarnDeviceDsymv(uplo, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDeviceDsymv")
      import
      implicit none
      character(kind=c_char), value :: uplo
      integer(c_int), value :: n, lda, incx, incy
      real(c_double), value :: alpha, beta
      type(c_ptr), value :: a, x, y
    end function

    integer(c_int) function tarnDeviceChemv(uplo, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDeviceChemv")
      import
      implicit none
      character(kind=c_char), value :: uplo
      integer(c_int), value :: n, lda, incx, incy
      complex(c_float_complex), value :: alpha, beta
      type(c_ptr), value :: a, x, y
    end function

    integer(c_int) function tarnDeviceZhemv(uplo, n, alpha, a, lda, x, incx, beta, y, incy) &
        bind(c, name="tarnDeviceZhemv")
      import
      implicit none
      character(kind=c_char), value :: uplo
      integer(c_int), value :: n, lda, incx, incy
      complex(c_double_complex), value :: alpha, beta
      type(c_ptr), value :: a, x, y
    end function
  end interface

  interface tarn_device_gemm
    procedure :: tarnDeviceSgemm, tarnDeviceDgemm, tarnDeviceCgemm, tarnDeviceZgemm
  end interface

  interface tarn_device_gemv
    procedure :: tarnDeviceSgemv, tarnDeviceDgemv, tarnDeviceCgemv, tarnDeviceZgemv
  end interface

  interface tarn_device_hemm
    procedure :: tarnDeviceChemm, tarnDeviceZhemm
  end interface

  interface tarn_device_hemv
    procedure :: tarnDeviceChemv, tarnDeviceZhemv
  end interface

  interface tarn_device_her2k
    procedure :: tarnDeviceCher2k, tarnDeviceZher2k
  end interface

  interface tarn_device_herk
    procedure :: tarnDeviceCherk, tarnDeviceZherk
  end interface

  interface tarn_device_symm
    procedure :: tarnDeviceSsymm, tarnDeviceDsymm, tarnDeviceCsymm, tarnDeviceZsymm
  end interface

  interface tarn_device_symv
    procedure :: tarnDeviceSsymv, tarnDeviceDsymv
  end interface

  interface tarn_device_syr2k
    procedure :: tarnDeviceSsyr2k, tarnDeviceDsyr2k, tarnDeviceCsyr2k, tarnDeviceZsyr2k
  end interface

  interface tarn_device_syrk
    procedure :: tarnDeviceSsyrk, tarnDeviceDsyrk, tarnDeviceCsyrk, tarnDeviceZsyrk
  end interface

  interface tarn_device_trmm
    procedure :: tarnDeviceStrmm, tarnDeviceDtrmm, tarnDeviceCtrmm, tarnDeviceZtrmm
  end interface

  interface tarn_device_trsm
    procedure :: tarnDeviceStrsm, tarnDeviceDtrsm, tarnDeviceCtrsm, tarnDeviceZtrsm
  end interface

  interface tarn_gels
    procedure :: tarnSgels, tarnCgels
  end interface

  interface tarn_gemm
    procedure :: tarnSgemm, tarnDgemm, tarnCgemm, tarnZgemm
  end interface

  interface tarn_gemv
    procedure :: tarnSgemv, tarnDgemv, tarnCgemv, tarnZgemv
  end interface

  interface tarn_geqrf
    procedure :: tarnSgeqrf, tarnCgeqrf
  end interface

  interface tarn_gesv
    procedure :: tarnSgesv, tarnCgesv
  end interface

  interface tarn_gesvd
    procedure :: tarnSgesvd, tarnCgesvd
  end interface

  interface tarn_getrf
    procedure :: tarnSgetrf, tarnCgetrf
  end interface

  interface tarn_gglse
    procedure :: tarnSgglse, tarnCgglse
  end interface

  interface tarn_hemm
    procedure :: tarnChemm, tarnZhemm
  end interface

  interface tarn_hemv
    procedure :: tarnChemv, tarnZhemv
  end interface

  interface tarn_her2k
    procedure :: tarnCher2k, tarnZher2k
  end interface

  interface tarn_herk
    procedure :: tarnCherk, tarnZherk
  end interface

  interface tarn_symm
    procedure :: tarnSsymm, tarnDsymm, tarnCsymm, tarnZsymm
  end interface

  interface tarn_symv
    procedure :: tarnSsymv, tarnDsymv
  end interface

  interface tarn_syr2k
    procedure :: tarnSsyr2k, tarnDsyr2k, tarnCsyr2k, tarnZsyr2k
  end interface

  interface tarn_syrk
    procedure :: tarnSsyrk, tarnDsyrk, tarnCsyrk, tarnZsyrk
  end interface

  interface tarn_trmm
    procedure :: tarnStrmm, tarnDtrmm, tarnCtrmm, tarnZtrmm
  end interface

  interface tarn_trsm
    procedure :: tarnStrsm, tarnDtrsm, tarnCtrsm, tarnZtrsm
  end interface

contains

  !> Text of a status.
  function tarn_status_text(status) result(text)
    integer(c_int), intent(in) :: status
    character(len=:), allocatable :: text
    character(kind=c_char), pointer :: letters(:)
    type(c_ptr) :: address
    integer :: i, n
    interface
      integer(c_size_t) function length(c_text) bind(c, name="strlen")
        import
        implicit none
        type(c_ptr), value :: c_text
      end function
    end interface

    address = tarnGetStatusString(status)
    n = int(length(address))
    call c_f_pointer(address, letters, [n])
    allocate (character(len=n) :: text)
    do i = 1, n
      text(i:i) = letters(i)
    end do
  end function
end module
