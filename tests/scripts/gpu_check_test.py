"""scripts/gpu-check over a bundle of stand-ins: what it records, when it stops, and where it goes on."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import textwrap
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

TOOL = """
    import sys
    arguments = sys.argv[1:]
    if arguments == ["info"]:
        print("tarn          14.0.0\\nCUDA runtime  13.0\\nCUDA driver   13.0\\ncuBLAS        13.1.0")
        print("device 0      Test GPU 1, capability 9.0\\nCPU BLAS      OpenBLAS, 2 threads\\nstatus        No errors")
    elif arguments == ["bench", "--list"]:
        print("gemm sdcz 65536 cuBLAS\\nherk cz 65536 cuBLAS\\ngels s 8192 cuSOLVER")
    else:
        option = dict(zip(arguments[2::2], arguments[3::2]))
        print("[")
        for size in map(int, option["--size"].split(",")):
            if option["--routine"] == "gels" and size > 512:
                sys.exit("tarn: out of device memory")
            for pointers in ("host", "device"):
                print('{"routine":"%s","type":"%s","pointers":"%s","m":0,"n":%d,"seconds":2,"gflops":1,'
                      '"reference":"cuBLAS","reference_seconds":1,"ratio":2,"error":%s,"bound":3},'
                      % (option["--routine"], option["--type"], pointers, size, ERROR), flush=True)
        sys.exit(ERROR != 0)
"""

GOOGLETEST = """
    import json, sys
    report = next((a.split(":", 1)[1] for a in sys.argv if a.startswith("--gtest_output")), None)
    tests = [dict(name="Quick", result="COMPLETED", time="0.01s"), dict(name="Slow", result="COMPLETED", time="9s"),
             dict(name="Controls", result="SKIPPED", time="0s")]
    if FAILS:
        tests.append(dict(name="Bad", result="COMPLETED", time="0s",
                          failures=[dict(failure="/home/a/b/tests/lu/x.cpp:3: not equal")]))
    if report:
        json.dump({"testsuites": [{"name": "Suite", "testsuite": tests}]}, open(report, "w"))
    sys.exit(FAILS)
"""

SANITIZER = """
    import sys
    print("========= ERROR SUMMARY: %d errors" % ERRORS)
    sys.exit(86 if ERRORS else 0)
"""


class GpuCheck(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.bundle = self.folder / "bundle"
        (self.bundle / "bin").mkdir(parents=True)
        self.write("tarn", TOOL, ERROR=0.0)
        self.write("good_test", GOOGLETEST, FAILS=0)
        self.write("example", 'print("x = 2")')
        self.write("compute-sanitizer", SANITIZER, ERRORS=0)
        entry = {"pass": [], "fails": False}
        tests = [dict(entry, name="good", command=["bin/good_test"], gtest=True),
                 dict(entry, name="example", command=["bin/example"], gtest=False, **{"pass": ["x = 2"]}),
                 dict(entry, name="refusal", command=["bin/good_test", "--nonsense"], gtest=False)]
        (self.bundle / "manifest.json").write_text(json.dumps({"revision": "abc", "tests": tests}))

    def write(self, name, body, **constants):
        path = self.bundle / "bin" / name
        values = "".join(f"{key} = {value!r}\n" for key, value in constants.items())
        path.write_text(f"#!{sys.executable}\n{values}{textwrap.dedent(body)}")
        path.chmod(0o755)

    def check(self, *arguments):
        """Exit status, output with errors, and results."""
        env = dict(os.environ, PATH=f"{self.bundle / 'bin'}:{os.environ['PATH']}")
        run = subprocess.run([sys.executable, ROOT / "scripts" / "gpu-check", "--programs", self.bundle,
                              "--out", self.folder, *arguments], env=env, capture_output=True, text=True)
        path = self.folder / "test-gpu-1.json"
        return run.returncode, run.stdout + run.stderr, json.loads(path.read_text()) if path.exists() else None

    def test_records_all_parts(self):
        status, output, results = self.check()
        self.assertEqual(status, 1, output)
        self.assertEqual(results["device"], "Test GPU 1, capability 9.0")
        self.assertEqual(results["tests"]["good"]["passed"], 2)
        self.assertEqual(results["tests"]["good"]["skipped"], 1)
        self.assertEqual(results["tests"]["example"]["passed"], 1)
        clean = {name: record["tests"] for name, record in results["sanitizer"].items() if record["clean"]}
        self.assertEqual(clean, {"memcheck good": 1, "racecheck good": 1}, "the quick test only")
        found = {(row["routine"], row["type"], row["size"], row["pointers"]) for row in results["bench"]["rows"]}
        self.assertTrue({("gemm", "s", 512, "host"), ("gemm", "s", 20000, "device"), ("gemm", "z", 8192, "host"),
                         ("herk", "c", 512, "host"), ("gels", "s", 512, "device")} <= found, found)
        self.assertFalse([row for row in found if row[:2] == ("herk", "s")])
        failed = {(failure["routine"], failure["size"]) for failure in results["bench"]["failures"]}
        self.assertEqual(failed, {("gels", size) for size in (1024, 2048, 4096, 8192)}, "20000 is too large")
        self.assertIn("out of device memory", output)

    def test_goes_on_where_it_stopped(self):
        first = self.check("bench", "--routine", "gemm", "--size", "64,32", "--type", "sc")
        self.assertEqual(first[0], 0, first[1])
        self.assertEqual(self.check("bench", "--routine", "gemm", "--size", "64", "--limit", "1")[0], 0, "all there")
        self.assertEqual(self.check("bench", "--routine", "gemm", "--size", "16", "--limit", "1")[0], 3, "no time")
        status, _, results = self.check("bench", "--routine", "gemm", "--size", "16,64")
        self.assertEqual((status, len(results["bench"]["rows"])), (0, 10))
        self.write("good_test", GOOGLETEST, FAILS=1)
        status, output, results = self.check("tests")
        self.assertIn("another build", output)
        self.assertEqual((status, results["bench"]["rows"]), (1, []))

    def test_failures_are_told(self):
        self.write("good_test", GOOGLETEST, FAILS=1)
        status, output, results = self.check("tests")
        self.assertEqual(status, 1)
        self.assertIn("FAILED good: Suite.Bad: tests/lu/x.cpp:3: not equal", output)
        self.assertEqual(results["tests"]["refusal"]["failed"], 1)

        self.write("good_test", "import sys; sys.exit(139)")
        status, output, _ = self.check("tests")
        self.assertEqual(status, 1)
        self.assertIn("ended with 139", output)

        self.write("good_test", GOOGLETEST, FAILS=0)
        self.write("compute-sanitizer", SANITIZER, ERRORS=2)
        status, _, results = self.check("tests", "sanitizer")
        self.assertEqual((status, results["sanitizer"]["memcheck good"]["summary"]), (1, "2 errors"))

        for error in ("7.0", "null"):
            self.write("tarn", TOOL, ERROR=error)
            status, output, _ = self.check("bench", "--size", "32", "--routine", "gemm")
            self.assertEqual(status, 1)
            self.assertIn("WRONG gemm s 32 host", output)
            self.assertIn("2 rows, 2 with too large an error, 0 failures", output)

    def test_without_a_gpu_it_says_so(self):
        self.write("tarn", 'import sys; sys.exit("tarn: No hardware is present")')
        status, output, results = self.check()
        self.assertEqual((status, results), (2, None))
        self.assertEqual(output, "gpu-check: no GPU to check on: tarn: No hardware is present\n")


if __name__ == "__main__":
    unittest.main()
