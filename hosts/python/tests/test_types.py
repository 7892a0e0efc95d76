# SPDX-License-Identifier: Apache-2.0
"""The annotations and the stub of the compiled module, as type checkers see them."""
import os
import subprocess
import sys

import pytest

import zxspreadsheet

pytest.importorskip("mypy")
HERE = os.path.dirname(os.path.abspath(__file__))
BUILT = os.path.dirname(os.path.dirname(zxspreadsheet.__file__))


@pytest.mark.parametrize("command", [
    ["mypy", "--config-file", f"{HERE}/mypy.ini", "zxspreadsheet", f"{HERE}/typed_program.py"],
    # Every class of pybind11 has its metaclass and an __init__ that takes anything.
    ["mypy.stubtest", "--allowlist", f"{HERE}/stubtest_allowlist", "--mypy-config-file", f"{HERE}/mypy.ini", "zxspreadsheet._zxspreadsheet"],
])
def test_a_type_checker_finds_nothing(command):
    done = subprocess.run([sys.executable, "-m", *command], cwd=BUILT, capture_output=True, text=True)
    assert done.returncode == 0, done.stdout + done.stderr
