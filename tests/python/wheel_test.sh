#!/bin/sh
# The module's tests against its wheel: builds the wheel from the source tree
# as `pip wheel .` does, installs it into a fresh virtual environment that
# sees the system's packages (numpy, pytest), and runs tests/python there,
# from a folder where neither the source's package nor the build's is found.
#   wheel_test.sh PYTHON SOURCE WORK   (UGF_BUILD: the build with the programs)
# WORK keeps CMake's folder between runs, so that a second run only relinks.
set -eu
python=$1 source=$2 work=$3
rm -rf "$work/dist" "$work/venv" "$work/run"
mkdir -p "$work/run"
UGF_WHEEL_BUILD="$work/build" "$python" -m pip wheel "$source" --no-build-isolation --no-deps -q -w "$work/dist"
# No pip of the venv's own (ensurepip): the system's pip, which the venv sees,
# installs into the venv.
"$python" -m venv --system-site-packages --without-pip "$work/venv"
"$work/venv/bin/python" -m pip install -q --no-index --no-deps "$work"/dist/ugf-*.whl
cd "$work/run"
unset PYTHONPATH
PYTHONDONTWRITEBYTECODE=1 UGF_MODULE_DIR="$work/venv" exec "$work/venv/bin/python" -m pytest -q -p no:cacheprovider "$source/tests/python"
