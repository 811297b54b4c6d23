"""scripts/performance on made-up results: tables, targets and plots say what the results file says."""
import json
import pathlib
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = "Prose.\n<!-- scripts/performance writes from here -->\nold\n<!-- to here -->\nMore prose.\n"
SVG = "{http://www.w3.org/2000/svg}"
DRAWS = subprocess.run(["/usr/bin/python3", "-c", "import matplotlib"], capture_output=True).returncode == 0


def row(n, pointers, seconds, type="s"):
    return {"routine": "getrf", "type": type, "pointers": pointers, "size": n, "seconds": seconds,
            "gflops": 100 / seconds, "reference": "CPU LAPACK", "reference_seconds": 1.0, "ratio": seconds,
            "error": 0.25}


def group(svg, name):
    return next(g for g in svg.iter(SVG + "g") if g.get("id") == name)


def marks(svg, name):
    """Where the marks of a line lie."""
    return [(float(use.get("x")), float(use.get("y"))) for use in group(svg, name).iter(SVG + "use")]


@unittest.skipUnless(DRAWS, "the system's Python has no matplotlib")
class Performance(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.root = pathlib.Path(scratch.name)
        for folder in ("scripts", "docs/plots", "bench/results"):
            (self.root / folder).mkdir(parents=True)
        for script in ("performance", "plots.py"):
            shutil.copy(ROOT / "scripts" / script, self.root / "scripts")
        (self.root / "docs" / "performance.md").write_text(PAGE)
        (self.root / "docs" / "plots" / "stale.svg").write_text("")

    def written(self, rows, name="software-2-cores", **facts):
        results = {"provider": "software", "device": "a device, capability 9.0", "cpu": "a CPU", "cores": 2,
                   "cpu_blas": "a BLAS", "versions": {"tarn": "14.0.0"}, "revision": "", "build": "0",
                   "date": "2000-01-02", "tests": {}, "sanitizer": {}, "bench": {"rows": rows, "failures": []}}
        (self.root / "bench" / "results" / f"{name}.json").write_text(json.dumps(dict(results, **facts)))
        subprocess.run([self.root / "scripts" / "performance"], check=True, capture_output=True)
        return (self.root / "docs" / "performance.md").read_text()

    def test_tables_and_targets(self):
        rows = [row(4096, "host", 1.25), row(4096, "device", 1.0), row(512, "host", 0.5), row(512, "device", 0.25)]
        page = self.written(rows)
        self.assertIn("| s | 512 | 200.0 | 400.0 | 100.0 | 0.50 | 0.25 | 0.25 |\n"
                      "| s | 4096 | 80.0 | 100.0 | 100.0 | 1.25 | 1.00 | 0.25 |\n", page)
        self.assertIn("| getrf | 4096 | 1.1 | 1.25 | 1.00 | missed |", page)
        self.assertTrue(page.startswith("Prose.\n") and page.endswith("\nMore prose.\n"), page)
        self.assertNotIn("old", page)
        self.assertIn("No results yet", page)
        self.assertEqual(page, self.written(rows), "the same once more")
        page = self.written(rows, "a-gpu", provider="cuda", device="A GPU, capability 9.0")
        self.assertNotIn("No results yet", page)
        self.assertLess(page.index("## A GPU"), page.index("## Software device"))

    def test_plots(self):
        rows = [row(n, pointers, 512 / n, type) for type in "sc" for n in (512, 2048) for pointers in ("host", "device")]
        self.written(rows)
        plots = self.root / "docs" / "plots"
        first = {path.name: path.read_text() for path in plots.iterdir()}
        self.assertEqual(set(first), {"getrf-software-2-cores.svg", "ratios-software-2-cores.svg"})
        self.written(rows)
        self.assertEqual(first, {path.name: path.read_text() for path in plots.iterdir()}, "the same once more")

        svg = xml.etree.ElementTree.parse(plots / "getrf-software-2-cores.svg").getroot()
        host, peer = marks(svg, "c-host"), marks(svg, "c-peer")
        self.assertEqual(peer[0], host[0], "the ratio is 1 there")
        self.assertEqual(peer[0][1], peer[1][1])
        self.assertLess(host[1][1], host[0][1], "four times as fast is higher up")
        [foot] = {y for _, y in marks(svg, "xtick_1")}
        self.assertAlmostEqual((foot - host[1][1]) / (foot - host[0][1]), 4, 3, "and that times as high")
        self.assertIn("getrf: software device, 2 cores of a CPU", [text.text for text in svg.iter(SVG + "text")])

        svg = xml.etree.ElementTree.parse(plots / "ratios-software-2-cores.svg").getroot()
        [(slow, line)], [(fast, other)] = marks(svg, "s-512-host"), marks(svg, "s-2048-host")
        self.assertEqual(line, other)
        self.assertLess(fast, slow)

    def test_narrow_plots_hold_their_legend(self):
        self.written([row(n, pointers, 1) for n in (512, 2048) for pointers in ("host", "device")])
        svg = xml.etree.ElementTree.parse(self.root / "docs" / "plots" / "getrf-software-2-cores.svg").getroot()
        width = float(svg.get("viewBox").split()[2])
        legend = list(group(svg, "legend_1").iter(SVG + "text"))
        self.assertEqual([text.text for text in legend], ["host pointers", "device pointers", "CPU LAPACK"])
        for text in legend:
            self.assertLess(float(text.get("x")) + 0.6 * 9 * len(text.text), width, text.text)


if __name__ == "__main__":
    unittest.main()
