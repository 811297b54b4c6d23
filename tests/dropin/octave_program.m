% Linear algebra in single precision, real and complex; prints the largest backward error in units of 2^-23.
1;
function check(name, error)
  printf("%-12s %.3g\n", name, error / 2^-23);
  if !(error < 100 * 2^-23)
    exit(1);
  end
end

rand("twister", 1);
for complexity = [0, 1]
  n = 200;
  draw = @(m, n) single(rand(m, n) - 0.5 + complexity * 1i * (rand(m, n) - 0.5));
  A = draw(n, n);
  B = draw(n, 5);
  X = A \ B;
  check("A \\ B", norm(double(B) - double(A) * double(X), "fro") / norm(A, "fro") / norm(X, "fro"));
  [L, U, P] = lu(A);
  check("lu", norm(P * double(A) - double(L) * double(U), "fro") / norm(A, "fro"));
  [Q, R] = qr(A);
  check("qr", norm(double(A) - double(Q) * double(R), "fro") / norm(A, "fro"));
  D = draw(150, 60);
  [U, S, V] = svd(D);
  check("svd", norm(double(D) - double(U) * double(S) * double(V)', "fro") / norm(D, "fro"));
  C = A * B;
  check("A * B", norm(double(C) - double(A) * double(B), "fro") / norm(A, "fro") / norm(B, "fro"));
end
