"""scripts/performance on made-up results: tables, targets and plots say what the results file says."""
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = "Prose.\n<!-- scripts/performance writes from here -->\nold\n<!-- to here -->\nMore prose.\n"
SVG = "{http://www.w3.org/2000/svg}"


def row(n, pointers, seconds, type="s"):
    return {"routine": "getrf", "type": type, "pointers": pointers, "size": n, "seconds": seconds,
            "gflops": 100 / seconds, "reference": "CPU LAPACK", "reference_seconds": 1.0, "ratio": seconds,
            "error": 0.25}


class Performance(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.root = pathlib.Path(scratch.name)
        for folder in ("scripts", "docs/plots", "bench/results"):
            (self.root / folder).mkdir(parents=True)
        shutil.copy(ROOT / "scripts" / "performance", self.root / "scripts")
        (self.root / "docs" / "performance.md").write_text(PAGE)
        (self.root / "docs" / "plots" / "stale.svg").write_text("")

    def written(self, rows, name="software-2-cores", **facts):
        results = {"provider": "software", "device": "a device, capability 9.0", "cpu": "a CPU", "cores": 2,
                   "cpu_blas": "a BLAS", "versions": {"tarn": "14.0.0"}, "revision": "", "build": "0",
                   "date": "2000-01-02", "tests": {}, "sanitizer": {}, "bench": {"rows": rows, "failures": []}}
        (self.root / "bench" / "results" / f"{name}.json").write_text(json.dumps(dict(results, **facts)))
        subprocess.run([sys.executable, self.root / "scripts" / "performance"], check=True, capture_output=True)
        return (self.root / "docs" / "performance.md").read_text()

    def test_tables_and_targets(self):
        rows = [row(4096, "host", 1.25), row(4096, "device", 1.0), row(512, "host", 0.5), row(512, "device", 0.25)]
        page = self.written(rows)
        self.assertIn("| s | 512 | 200.0 | 400.0 | 100.0 | 0.50 | 0.25 | 0.25 |\n"
                      "| s | 4096 | 80.0 | 100.0 | 100.0 | 1.25 | 1.00 | 0.25 |\n", page)
        self.assertIn("| getrf | 4096 | 1.15 | 1.25 | 1.00 | missed |", page)
        self.assertTrue(page.startswith("Prose.\n") and page.endswith("\nMore prose.\n"), page)
        self.assertNotIn("old", page)
        self.assertIn("No results yet", page)
        self.assertEqual(page, self.written(rows), "the same once more")
        page = self.written(rows, "a-gpu", provider="cuda", device="A GPU, capability 9.0")
        self.assertNotIn("No results yet", page)
        self.assertLess(page.index("## A GPU"), page.index("## Software device"))

    def test_plots(self):
        self.written([row(n, pointers, 512 / n, type) for type in "sc" for n in (512, 2048)
                      for pointers in ("host", "device")])
        plots = list((self.root / "docs" / "plots").iterdir())
        self.assertEqual([plot.name for plot in plots], ["getrf-software-2-cores.svg"])
        svg = xml.etree.ElementTree.parse(plots[0]).getroot()
        points = [(float(c.get("cx")), float(c.get("cy"))) for c in svg.iter(SVG + "circle")]
        self.assertEqual(len(points), 2 * 3 * 2)
        peer, device = points[0:2], points[2:4]
        self.assertEqual(peer[0][1], peer[1][1])
        self.assertEqual(peer[0], device[0], "the ratio is 1 there")
        self.assertLess(device[1][1], device[0][1], "four times as fast is higher up")
        height = float(svg.get("height"))
        self.assertTrue(all(0 < y < height for _, y in points))


if __name__ == "__main__":
    unittest.main()
