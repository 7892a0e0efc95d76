# SPDX-License-Identifier: Apache-2.0
"""Where the tests find workbooks; the same names serve the examples in docstrings and pages."""
import io
import os
import shutil

import pytest

ROOT = os.environ["ZX_SOURCE_FOLDER"]
SHARED = os.environ.get("ZX_SHARED_DATA", "")

import zxspreadsheet as zx  # noqa: E402


@pytest.fixture
def data():
    """The path of a fixture of the project."""
    return lambda name: os.path.join(ROOT, "tests", "data", name)


@pytest.fixture(scope="session")
def corpus():
    """The folder of real workbooks."""
    folder = os.path.join(SHARED, "corpus", "dev")
    if not os.path.isdir(folder):
        pytest.skip("there is no corpus of real workbooks here")
    return folder


@pytest.fixture(autouse=True)
def _names_of_examples(request, tmp_path):
    if not hasattr(request, "getfixturevalue") or "doctest_namespace" not in request.fixturenames:
        if type(request.node).__name__ != "DoctestItem":
            return
    names = request.getfixturevalue("doctest_namespace")
    examples = tmp_path / "examples"
    shutil.copytree(os.path.join(ROOT, "examples"), examples)
    names.update(zx=zx, io=io, example=lambda name: str(examples / name), scratch=lambda name: str(tmp_path / name))
