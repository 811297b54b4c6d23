"""NumPy and SciPy with the drop-in answer as they do without it, to rounding.

Usage: scipy_test.py TARN
"""
import os
import subprocess
import sys
import tempfile

from programs import SKIPPED, check_calls, fail, run

COMPARE = """
import sys, numpy as np
ours, plain = np.load(sys.argv[1]), np.load(sys.argv[2])
worst = 0
for name in plain.files:
    size = np.linalg.norm(plain[name])
    error = np.linalg.norm(ours[name] - plain[name]) / size
    print(f"{name:28} relative difference {error:.2g}")
    worst = max(worst, error) if error == error else np.inf
sys.exit(0 if worst < 1e-4 and set(ours.files) == set(plain.files) else f"too far apart: {worst:.2g}")
"""
here = os.path.dirname(os.path.abspath(__file__))
tarn = sys.argv[1]

# The distribution's own Python has the NumPy that stands on the CPU BLAS of the system.
python = "/usr/bin/python3"
if subprocess.run([python, "-c", "import scipy"], stderr=subprocess.DEVNULL).returncode != 0:
    print("SciPy is not installed")
    sys.exit(SKIPPED)
with tempfile.TemporaryDirectory() as work:
    ours, plain = os.path.join(work, "ours.npz"), os.path.join(work, "plain.npz")
    program = [python, os.path.join(here, "scipy_program.py")]
    subprocess.run([*program, plain], check=True)
    _, calls = run(tarn, [*program, ours])
    if subprocess.run([python, "-c", COMPARE, ours, plain]).returncode != 0:
        fail("the results differ")
    check_calls("scipy_program.py", calls, [letter + name for letter in "sc" for name in
                                            ("gemm", "getrf", "gesv", "geqrf", "gels", "gglse", "gesvd")])
