"""Builds the wheel of the package `ugf` with the project's CMake.

The package's Python files come from python/ugf/; its compiled part
`ugf._ugf` is the CMake target ugf_python, configured as a Release build of
the module alone (no tests, no programs) and copied into the wheel. CMake's
folder, setuptools' own and the egg-info all go under build-wheel/ (or
$UGF_WHEEL_BUILD), never into the source folders. CMAKE_BUILD_PARALLEL_LEVEL
sets the compile jobs (2 by default).
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent
BUILD = os.path.abspath(os.environ.get("UGF_WHEEL_BUILD", "build-wheel"))
os.makedirs(BUILD, exist_ok=True)  # egg_info wants its folder to be there


def version():
    """The project's version, from the project() line of CMakeLists.txt."""
    text = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"project\(\w+ VERSION ([0-9.]+)", text).group(1)


class CMakeBuild(build_ext):
    """Builds every extension as the CMake target ugf_python."""

    def build_extension(self, ext):
        cmake_dir = os.path.join(BUILD, "cmake")
        subprocess.run(["cmake", "-S", str(ROOT), "-B", cmake_dir, "-DCMAKE_BUILD_TYPE=Release",
                        "-DUGF_PYTHON=ON", "-DUGF_BUILD_TESTS=OFF", "-DCMAKE_POSITION_INDEPENDENT_CODE=ON",
                        f"-DPython3_EXECUTABLE={sys.executable}"], check=True)
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", "2")
        subprocess.run(["cmake", "--build", cmake_dir, "--target", "ugf_python", "--parallel", jobs], check=True)
        # The module's file name carries this Python's extension suffix, as
        # pybind11 names it; the wheel wants it where setuptools says.
        target = pathlib.Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(os.path.join(cmake_dir, "python", "ugf", target.name), target)


setup(
    version=version(),
    packages=["ugf"],
    package_dir={"": "python"},
    package_data={"ugf": ["__init__.pyi", "py.typed"]},
    ext_modules=[Extension("ugf._ugf", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
    options={"build": {"build_base": BUILD}, "egg_info": {"egg_base": BUILD}},
    zip_safe=False,
)
