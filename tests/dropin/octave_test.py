"""Octave, which computes with its single matrices in single precision.

Usage: octave_test.py TARN
"""
import os
import shutil
import sys

from programs import SKIPPED, check_calls, run

if not shutil.which("octave-cli"):
    print("Octave is not installed")
    sys.exit(SKIPPED)
program = os.path.join(os.path.dirname(os.path.abspath(__file__)), "octave_program.m")
output, calls = run(sys.argv[1], ["octave-cli", "-qf", program])
print(output)
check_calls("octave_program.m", calls, [letter + name for letter in "sc" for name in
                                        ("gemm", "getrf", "geqrf", "gesvd")] + ["dgemm", "zgemm"])
