"""scripts/coverage on made-up instances of a template: what counts as a branch, and which were taken."""
import importlib.machinery
import importlib.util
import pathlib
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
loader = importlib.machinery.SourceFileLoader("coverage_script", str(ROOT / "scripts" / "coverage"))
coverage = importlib.util.module_from_spec(importlib.util.spec_from_loader("coverage_script", loader))
loader.exec_module(coverage)

CONDITIONS = {"if": [3, 9, 3, 14], "if constexpr": [4, 19, 4, 24], "inside": [5, 13, 5, 18]}


def instance(runs, counts, file="src/blas/gemm.cpp"):
    """A function that ran so often, with a part in braces that did not; counts: of each condition, to true and false."""
    branches = [CONDITIONS[name] + [true, false, 0, 0, 4] for name, (true, false) in counts.items()]
    return {"filenames": [str(ROOT / file)], "regions": [[2, 1, 9, 2, runs, 0, 0, 0], [5, 5, 6, 6, 0, 0, 0, 0]],
            "branches": branches}


class Coverage(unittest.TestCase):
    def test_a_branch_is_taken_if_an_instance_took_it(self):
        counts = {"if": (3, 0), "if constexpr": (0, 0), "inside": (0, 0)}
        others = {"if": (0, 2), "if constexpr": (0, 0), "inside": (0, 0)}
        taken = coverage.branches_taken([instance(3, counts), instance(2, others), instance(9, counts, "tests/a.cpp")])
        self.assertEqual({place[1:]: counts for place, counts in taken.items()},
                         {tuple(CONDITIONS["if"]): [3, 2], tuple(CONDITIONS["inside"]): [0, 0]})

    def test_what_never_ran_counts_as_not_taken(self):
        taken = coverage.branches_taken([instance(0, {"if": (0, 0)})])
        self.assertEqual(list(taken.values()), [[0, 0]])


if __name__ == "__main__":
    unittest.main()
