"""The reference test programs of the BLAS and of LAPACK, with every call that can going to the device.

Usage: reference_programs.py TARN blas|cblas|lapack
"""
import os
import re
import sys

from programs import check_calls, fail, folder, run

tarn, group = sys.argv[1:]


def level_routines(letter, level):
    """The routines of a level in a type that the drop-in answers."""
    symmetric = {"2": "symv" if letter in "sd" else "hemv"}.get(level)
    if level == "2":
        return [letter + "gemv", letter + symmetric]
    names = ["gemm", "symm", "trmm", "trsm", "syrk", "syr2k"]
    return [letter + name for name in names + (["hemm", "herk", "her2k"] if letter in "cz" else [])]


def check_summary(program, output, patterns, times=1):
    """Prints the lines that match one of the patterns. Fails unless each is there so many times, and for any complaint."""
    for pattern in patterns:
        if len(re.findall(pattern, output)) < times:
            fail(f"{program}: {times} of '{pattern}' are not in its output:\n{output[-3000:]}")
    print("\n".join(line for line in output.splitlines() if any(re.search(p, line) for p in patterns)))
    bad = [line for line in output.splitlines()
           if re.search(r"fail|\*\*\*|suspect|incorrect", line, re.IGNORECASE) and "signalling" not in line]
    if bad:
        fail(f"{program}:\n" + "\n".join(bad[:20]))


def blas():
    place = folder("/usr/lib/*/blas/xblat3s")
    for letter in "sdcz":
        for level in "23":
            program = f"xblat{level}{letter}"
            text = open(f"{place}/{letter}blat{level}.in").read()
            names = level_routines(letter, level)
            output, calls = run(tarn, [f"{place}/{program}"], text)
            check_summary(program, output, [fr"{name.upper()} +PASSED THE {tests}" for name in names
                                            for tests in ("COMPUTATIONAL TESTS", "TESTS OF ERROR-EXITS")])
            check_calls(program, calls, names)


def cblas():
    """These link only against the reference BLAS, whose CBLAS names stand on its Fortran names."""
    place = folder("/usr/lib/*/blas/xscblat3")
    libraries = os.pathsep.join(filter(None, [place, os.environ.get("LD_LIBRARY_PATH")]))
    for letter in "sdcz":
        for level in "23":
            program = f"x{letter}cblat{level}"
            text = open(f"{place}/{letter}in{level}").read()
            names = level_routines(letter, level)
            output, calls = run(tarn, [f"{place}/{program}"], text, LD_LIBRARY_PATH=libraries)
            # By columns and by rows.
            check_summary(program, output, [f"cblas_{name} +PASSED THE [A-Z -]*COMPUTATIONAL" for name in names], 2)
            check_calls(program, calls, names)


EQUATIONS = """Linear equations
7
0 1 2 3 5 10 50
7
0 1 2 3 5 10 50
2
1 15
2
1 20
0 1
1
50
30.0
T
T
T
"""
SINGULAR_VALUES = """SVD: singular values
19
0 0 0 1 1 1 2 2 3 3 3 10 10 16 16 30 30 40 40
0 1 3 0 1 2 0 1 0 1 3 10 16 10 16 30 40 30 40
1
20
2
1
2
50.0
T
T
T
1
SVD 16
"""


def lapack():
    place = folder("/usr/lib/*/lapack/xlintsts")
    for letter in "scdz":
        paths = ["GE", "QR", "LS"] if letter in "sc" else ["GE", "QR"]
        expected = ["getrf", "gesv", "geqrf", "gels"] if letter in "sc" else ["gemm", "trmm", "gemv"]
        program = f"xlintst{letter}"
        types = {"GE": 11, "QR": 8, "LS": 6}
        text = EQUATIONS + "".join(f"{letter.upper()}{path} {types[path]}\n" for path in paths)
        output, calls = run(tarn, [f"{place}/{program}"], text)
        check_summary(program, output, [f"{letter.upper()}{path} (routines|drivers) +passed the t" for path in paths])
        check_calls(program, calls, [letter + name for name in expected])
    for letter in "sc":
        program = f"xeigtst{letter}"
        bidiagonal = {"s": "SBD", "c": "CBD"}[letter]
        output, calls = run(tarn, [f"{place}/{program}"], SINGULAR_VALUES)
        check_summary(program, output, [f"{bidiagonal} {what} +passed the threshold" for what in ("routines", "drivers")])
        check_calls(program, calls, [letter + "gesvd", letter + "geqrf", letter + "gemm"])
        output, calls = run(tarn, [f"{place}/{program}"], open(os.path.join(place, "lse.in")).read())
        check_summary(program, output, ["LSE routines passed the threshold"])
        check_calls(program, calls, [letter + "gglse"])


{"blas": blas, "cblas": cblas, "lapack": lapack}[group]()
