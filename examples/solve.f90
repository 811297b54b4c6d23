! Solves three equations from Fortran, and checks the solution by a product in double precision.
program solve
  use tarn
  implicit none
  integer, parameter :: n = 3
  ! Column by column:  2x +  y -  z =  8,  -3x -  y + 2z = -11,  -2x +  y + 2z = -3
  real(c_float), parameter :: matrix(n, n) = reshape([2., -3., -2., 1., -1., 1., -1., 2., 2.], [n, n])
  real(c_float) :: a(n, n), b(n, 1)
  real(c_double) :: residual(n)
  integer(c_int) :: pivots(n)

  call check(tarnInitialize())
  a = matrix
  b(:, 1) = [8., -11., -3.]
  residual = b(:, 1)
  call check(tarn_gesv(n, 1, a, n, pivots, b, n))
  call check(tarn_gemv('N', n, n, -1._c_double, real(matrix, c_double), n, real(b(:, 1), c_double), 1, &
                       1._c_double, residual, 1))
  if (maxval(abs(residual)) > 1e-4) error stop "the equations are not met"
  print '(3(a, f0.4))', 'x = ', b(1, 1), ', y = ', b(2, 1), ', z = ', b(3, 1)
  call tarnShutdown()

contains

  subroutine check(status)
    integer(c_int), intent(in) :: status

    if (status == tarnNoError) return
    print '(2a, i0)', tarn_status_text(status), ', info ', tarnGetErrorInfo()
    error stop
  end subroutine
end program
