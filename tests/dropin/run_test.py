"""`tarn run` and its report.

Usage: run_test.py TARN
"""
import re
import subprocess
import sys

from programs import fail, folder

tarn = sys.argv[1]


def status(*arguments):
    return subprocess.run([tarn, *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode


# The program's own status; 128 and the signal for one that a signal ends.
for report in ([], ["--report"]):
    for command, expected in ((["sh", "-c", "exit 3"], 3), (["true"], 0), (["/nowhere/program"], 1)):
        if status("run", *report, "--", *command) != expected:
            fail(f"{report} {command}: not status {expected}")
if status("run", "--report", "--", "sh", "-c", "kill -TERM $$") != 128 + 15:
    fail("a signal is not told")
if status("report", "/nowhere/log") != 1 or status("report", __file__) != 1:
    fail("what is no log is taken for one")

# Two processes, and a shell that calls nothing: one table.
place = folder("/usr/lib/*/blas/xblat3s")
shell = f"cd $(mktemp -d) && for i in 1 2; do {place}/xblat3s < {place}/sblat3.in; done"
done = subprocess.run([tarn, "run", "--report", "--", "sh", "-c", shell], text=True, stdout=subprocess.DEVNULL,
                      stderr=subprocess.PIPE)
print(done.stderr)
if not re.search(r"2 processes\n.*\nroutine .*\nsgemm +0 +35[0-9]+ +0 .* 9 x 9 x 9\n", done.stderr, re.DOTALL):
    fail("no such report as expected")
