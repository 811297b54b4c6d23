"""The package as it is installed: what it tells of itself, and that its documentation is true."""

import doctest
import importlib.metadata
import inspect
import pathlib
import subprocess
import sys

import pytest
import scipy.linalg
import tarn

ROOT = pathlib.Path(__file__).parents[2]


@pytest.mark.parametrize("page", ["docs/python.md"])
def test_examples_of_the_documentation(page):
    failures, examples = doctest.testfile(
        str(ROOT / page), module_relative=False, optionflags=doctest.NORMALIZE_WHITESPACE | doctest.ELLIPSIS
    )
    assert examples > 10 and failures == 0


def test_configuration(capsys):
    tarn.show_config()
    version = importlib.metadata.version("tarn")
    printed = dict(line.split(maxsplit=1) for line in capsys.readouterr().out.splitlines() if line[:4] != "CUDA")
    assert printed["tarn"] == version and "threads" in printed["CPU"]
    (first, *_) = tarn.device_info()
    assert first["device"] == 0 and first["memory"] > 2**30 and len(first["capability"]) == 2
    tarn.select_device(0)
    with pytest.raises(ValueError):
        tarn.select_device(99)


@pytest.mark.parametrize("name", ["solve", "lu_factor", "lu_solve", "qr", "lstsq", "svd", "svdvals"])
def test_arguments_are_scipys(name):
    ours, theirs = (inspect.signature(getattr(module, name)).parameters for module in (tarn, scipy.linalg))
    shared = [p for p in ours.values() if p.kind is not p.KEYWORD_ONLY]
    assert [p.name for p in shared] == list(theirs)
    # lwork is SciPy's to grow out of: its default is no value any more.
    assert all(p.default == theirs[p.name].default for p in shared if p.name != "lwork")


def test_nothing_of_it_lies_outside_of_the_package():
    """Its own libraries are those beside it, whatever the environment names."""
    code = "import tarn, sys; print(open('/proc/self/maps').read())"
    maps = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True).stdout
    loaded = {line.split()[-1] for line in maps.splitlines() if "libtarn" in line}
    folders = {str(pathlib.Path(path).parent) for path in loaded}
    assert len(loaded) >= 3 and folders <= {str(pathlib.Path(tarn.__file__).parent)}, loaded


def test_works_without_scipy():
    code = (
        "import sys; sys.modules['scipy'] = None; import numpy, tarn, warnings; warnings.simplefilter('error')\n"
        "try: tarn.solve(numpy.diag([1, 1e-20]), numpy.ones(2))\n"
        "except tarn.LinAlgWarning as warning: print(type(warning).__mro__[1].__name__)"
    )
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert result.stdout.strip() == "RuntimeWarning", result.stderr
