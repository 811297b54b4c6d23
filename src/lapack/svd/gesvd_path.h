// Which way gesvd goes.
#pragma once

namespace tarn::svd {

/// Number of the path for jobs that checkGesvd has passed and m, n >= 1. 0 to 17: QR or LQ factorisation first, because
/// the longer side is at least 1.6 times the shorter one; 18, 19: bidiagonal reduction of A itself. Even: m >= n.
int gesvdPath(char jobu, char jobvt, int m, int n);

} // namespace tarn::svd
