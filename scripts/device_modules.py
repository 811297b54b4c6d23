"""The device modules of a CUDA build folder, and what the assembler of sm_90 reports of their kernels."""
import json
import pathlib
import re
import shlex
import subprocess

DROPPED = {"-c": 1, "-MD": 1, "-o": 2, "-MT": 2, "-MF": 2}  # option: words that it takes up
KERNEL = re.compile(r"Compiling entry function '(\w+)'.*?(\d+) bytes stack frame, (\d+) bytes spill stores, "
                    r"(\d+) bytes spill loads.*?Used (\d+) registers(?:.*?(\d+) bytes smem)?", re.DOTALL)


def commands(build):
    """The entries of the compile commands that make device modules of the library."""
    entries = json.loads((pathlib.Path(build) / "compile_commands.json").read_text())
    return [entry for entry in entries
            if "tarn_objects.dir" in str(object_of(entry)) and entry["file"].endswith(".cu")]


def object_of(entry):
    words = shlex.split(entry["command"])
    return pathlib.Path(entry["directory"]) / words[words.index("-o") + 1]


def _cubin_command(command, cubin, arch):
    words, kept = shlex.split(command), []
    while words:
        taken = DROPPED.get(words[0], 1)
        if words[0] not in DROPPED and not words[0].startswith("--generate-code"):
            kept.append(words[0])
        del words[:taken]
    return kept + [f"-arch=sm_{arch}", "-cubin", "-Xptxas", "-v", "-o", cubin]


def assembled(entry, folder, arch="90"):
    """Compiles the module of an entry for one architecture alone: (kernels, message). The kernels by their names: stack,
    spill stores, spill loads, registers, shared memory, in bytes but for the registers; none if it does not compile."""
    cubin = f"{folder}/{pathlib.Path(entry['file']).stem}-{arch}.cubin"
    made = subprocess.run(_cubin_command(entry["command"], cubin, arch), cwd=entry["directory"], capture_output=True,
                          text=True)
    if made.returncode != 0:
        return {}, made.stderr
    report = made.stdout + made.stderr
    # One report a kernel: none may swallow the next.
    parts = re.split(r"(?=ptxas info\s+: Compiling entry function)", report)
    found = (KERNEL.search(part) for part in parts)
    return {m[1]: tuple(int(value or 0) for value in m.groups()[1:]) for m in found if m}, ""
