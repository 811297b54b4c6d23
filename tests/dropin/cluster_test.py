"""The ScaLAPACK example on one process and on four, whose calls go to two devices.

Usage: cluster_test.py TARN CLUSTER DATA
"""
import os
import shutil
import sys

from programs import SKIPPED, check_calls, fail, run

tarn, cluster, data = sys.argv[1:]
if not shutil.which("mpirun"):
    print("mpirun is not installed")
    sys.exit(SKIPPED)
# For a build under the rights of root, and several processes on few cores.
os.environ.update(OMPI_ALLOW_RUN_AS_ROOT="1", OMPI_ALLOW_RUN_AS_ROOT_CONFIRM="1", OPENBLAS_NUM_THREADS="1")

for ranks in (1, 4):
    for routine, matrix, expected in (("gesv", "utm300", ["sgemm", "strsm"]), ("gels", "well1850", ["sgemm", "strmm"]),
                                      ("gesvd", "utm300", ["sgemm", "sgemv"])):
        output, calls = run(tarn, ["mpirun", "--oversubscribe", "-n", str(ranks), cluster, routine,
                                   os.path.join(data, matrix + ".mtx")], TARN_SOFTWARE_DEVICES="2")
        print(output.strip())
        if f"on {1 if ranks == 1 else 2} x" not in output:
            fail("the processes are not arranged as they should be")
        check_calls(f"cluster {routine}, {ranks} ranks", calls, expected)
