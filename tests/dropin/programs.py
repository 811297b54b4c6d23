"""Programs under `tarn run`: what they print, and where their calls went."""
import collections
import glob
import json
import os
import subprocess
import sys
import tempfile

SKIPPED = 77  # exit status of a test whose programs are not installed


def fail(message):
    print(message)
    sys.exit(1)


def folder(pattern):
    """The folder of the first file that matches; ends the test as skipped if none does."""
    found = sorted(glob.glob(pattern))
    if not found:
        print(f"{pattern} is not installed")
        sys.exit(SKIPPED)
    return os.path.dirname(found[0])


def read_log(path):
    """Per routine the calls on the device, on the CPU and fallen back, over all processes of a log."""
    calls = collections.defaultdict(lambda: [0, 0, 0])
    with open(path) as log:
        for line in log:
            for routine in json.loads(line)["routines"]:
                for way, name in enumerate(("device", "cpu", "fell_back")):
                    calls[routine["name"]][way] += routine[name]["calls"]
    return dict(calls)


def run(tarn, command, text="", **environment):
    """Runs the command with everything that can going to the device. Returns its output and its calls."""
    with tempfile.TemporaryDirectory() as work:
        log = os.path.join(work, "log")
        open(log, "w").close()
        variables = {"TARN_BLAS_MIN_FLOPS": "0", "TARN_BLAS_MIN_FLOPS_PER_BYTE": "0", "TARN_BLAS_LOG": log}
        done = subprocess.run([tarn, "run", "--", *command], input=text, text=True, cwd=work, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, env={**os.environ, **variables, **environment})
        # Programs of the BLAS write their summary to the file that their input names.
        output = done.stdout + "".join(open(name).read() for name in sorted(glob.glob(os.path.join(work, "*.out"))))
        if done.returncode != 0:
            fail(f"{' '.join(command)} ends with status {done.returncode}:\n{output[-3000:]}")
        return output, read_log(log)


def check_calls(program, calls, expected):
    """Prints the calls, and fails unless each expected routine went to the device and nothing fell back."""
    device = sum(ways[0] for ways in calls.values())
    print(f"{program}: {device} calls went to the device: " +
          ", ".join(f"{name} {ways[0]} of {sum(ways)}" for name, ways in sorted(calls.items())))
    for name in expected:
        if calls.get(name, [0])[0] == 0:
            fail(f"{program}: no call of {name} went to the device")
    for name, ways in calls.items():
        if ways[2] > 0:
            fail(f"{program}: {ways[2]} calls of {name} fell back")
