! What the compiler cannot see of the interfaces: that complex scalars arrive by value as the C functions take them, that
! an absent array arrives as none, and that operands in each place reach theirs.
program fortran_test
  use tarn
  implicit none
  real(c_float) :: s(2), diagonal(3, 2) = reshape([3., 0., 0., 0., 2., 0.], [3, 2])
  integer(c_int) :: pivots(2)

  if (tarnInitialize() /= tarnNoError) error stop "the library does not start"
  call single()
  call double()
  call expect(tarn_gesvd('N', 'N', 3, 2, diagonal, 3, s, ldu=1, ldvt=1) == tarnNoError, 'gesvd without vectors')
  call expect(all(abs(s - [3., 2.]) < 1e-5), 'singular values')
  call expect(tarn_status_text(tarnNoError) == 'No errors', 'text of a status')
  call expect(tarn_getrf(3, -2, diagonal, 3, pivots) == tarnArgumentError, 'negative n')
  call expect(tarnGetErrorInfo() == -2, 'info of a negative n')
  call tarnShutdown()

contains

  subroutine expect(holds, what)
    logical, intent(in) :: holds
    character(len=*), intent(in) :: what

    if (.not. holds) error stop what
  end subroutine

  ! her2k: alpha complex, beta real. Lower triangle of i a b^H - i b a^H + 2 c.
  subroutine single()
    complex(c_float_complex), parameter :: i = (0., 1.)
    complex(c_float_complex) :: a(2, 1), b(2, 1), c(2, 2)

    a(:, 1) = [(1., 2.), (3., -1.)]
    b(:, 1) = [(2., 0.), (1., 1.)]
    c = 1
    call expect(tarn_her2k('L', 'N', 2, 1, i, a, 2, b, 2, 2._c_float, c, 2) == tarnNoError, 'her2k')
    call expect(abs(c(2, 1) - (i * a(2, 1) * conjg(b(1, 1)) - i * b(2, 1) * conjg(a(1, 1)) + 2)) < 1e-5, 'its value')
  end subroutine

  subroutine double()
    complex(c_double_complex) :: a(2, 3), b(3, 2), c(2, 2), expected(2, 2)
    complex(c_double_complex), parameter :: alpha = (2, -3), beta = (-1, 4)
    integer :: k

    a = reshape([(cmplx(k, 1 - k, c_double), k=1, 6)], [2, 3])
    b = reshape([(cmplx(7 - k, k, c_double), k=1, 6)], [3, 2])
    c = reshape([(cmplx(1, k, c_double), k=1, 4)], [2, 2])
    expected = alpha * matmul(a, b) + beta * c
    call expect(tarn_gemm('N', 'N', 2, 2, 3, alpha, a, 2, b, 3, beta, c, 2) == tarnNoError, 'gemm')
    call expect(all(abs(c - expected) < 1e-12), 'its value')
  end subroutine
end program
