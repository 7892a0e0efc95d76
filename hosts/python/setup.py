# SPDX-License-Identifier: Apache-2.0
"""Builds a wheel by CMake: the module, the package and the library, all in one folder."""
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
VERSION = re.search(r"project\(zxspreadsheet VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        build = pathlib.Path(self.build_temp).resolve()
        target = pathlib.Path(self.get_ext_fullpath(extension.name)).resolve().parent
        # pip's own environment for builds has pybind11 as a package.
        found = subprocess.run([sys.executable, "-m", "pybind11", "--cmakedir"], capture_output=True, text=True)
        hint = [f"-Dpybind11_DIR={found.stdout.strip()}"] if found.returncode == 0 else []
        subprocess.run(["cmake", "-S", ROOT, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DZX_BUILD_TESTS=OFF",
                        "-DZX_PYTHON_HOST=ON", f"-DPython_EXECUTABLE={sys.executable}", "--log-level=WARNING", *hint], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "python_package"], check=True)
        stage = build / "stage"
        for component in ("python", "python_library"):
            subprocess.run(["cmake", "--install", build, "--component", component, "--prefix", stage], check=True)
        target.mkdir(parents=True, exist_ok=True)
        for file in (stage / "python" / "zxspreadsheet").iterdir():
            shutil.copy2(file, target)


setup(version=VERSION, packages=["zxspreadsheet"], package_data={"zxspreadsheet": ["py.typed", "*.pyi"]},
      ext_modules=[Extension("zxspreadsheet._zxspreadsheet", [])], cmdclass={"build_ext": CMakeBuild}, zip_safe=False)
