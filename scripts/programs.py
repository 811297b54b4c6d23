"""Built programs: a build folder's or a bundle's tool, and its tests as the manifest lists them."""
import hashlib
import json
import pathlib
import re
import subprocess
import sys

MANIFEST = "manifest.json"


def from_ctest(build):
    """The tests of a build folder that are programs, with commands relative to it."""
    listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True)
    build = pathlib.Path(build).resolve()
    tests = []
    for entry in json.loads(listing.stdout)["tests"]:
        if "command" not in entry:  # ctest does not find the program
            sys.exit(f"{build.name}/ is not built: it lacks the program of {entry['name']}")
        program = pathlib.Path(entry["command"][0]).resolve()
        if build not in program.parents:
            continue  # a script over the sources
        properties = {p["name"]: p["value"] for p in entry["properties"]}
        if "emulated" in properties.get("LABELS", []):
            continue  # not for a GPU
        tests.append({
            "name": entry["name"],
            "command": [str(program.relative_to(build)), *entry["command"][1:]],
            "gtest": b"gtest_output" in program.read_bytes(),
            "pass": properties.get("PASS_REGULAR_EXPRESSION", []),
            "fails": properties.get("WILL_FAIL", False),
        })
    return tests


def revision():
    """The sources' commit, with -dirty after changes of other files than results; empty where it is not known."""
    git = subprocess.run(["git", "describe", "--always"], capture_output=True, text=True)
    if git.returncode != 0:
        return ""
    changes = ["git", "diff", "--quiet", "HEAD", "--", ":/", ":(top,exclude)bench/results", ":(top,exclude)docs"]
    return git.stdout.strip() + ("-dirty" if subprocess.run(changes).returncode else "")


class Programs:
    """What lies in a folder with bin/ and lib/: a bundle, or a build folder."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()
        self.tool = self.folder / "bin" / "tarn"
        manifest = self.folder / MANIFEST
        if manifest.exists():
            content = json.loads(manifest.read_text())
            self.tests, self.revision = content["tests"], content["revision"]
            self.data = self.folder / "share" / "tarn_lapack"
        else:
            self.tests, self.revision = from_ctest(folder), revision()
            self.data = pathlib.Path("data").resolve()

    @property
    def provider(self):
        return "software" if list(self.folder.glob("lib/libtarn_softdev.so*")) else "cuda"

    def identity(self):
        """Tells this build from others."""
        digest = hashlib.sha256()
        programs = {self.tool, *(self.folder / test["command"][0] for test in self.tests)}
        for path in sorted({*programs, *self.folder.glob("lib/libtarn*.so*")}):
            digest.update(path.read_bytes())
        return digest.hexdigest()[:12]

    def info(self, env):
        """What `tarn info` prints, label by label, and whether it could start the library."""
        try:
            run = subprocess.run([self.tool, "info"], env=env, capture_output=True, text=True, timeout=120)
        except subprocess.TimeoutExpired:
            return {}, "tarn info does not answer"
        labels = dict(re.findall(r"^(\S.*?) {2,}(.+)$", run.stdout, re.MULTILINE))
        if run.returncode == 0:
            return labels, ""
        return labels, (run.stderr.strip() or f"tarn info ended with {run.returncode}").splitlines()[-1]
