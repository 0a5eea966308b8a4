# The types of the package ugf; the docstrings are the compiled module's own
# (help(ugf)).
import datetime
import os
import pathlib
from collections.abc import Iterable
from types import TracebackType
from typing import Any, Literal, TypedDict

import numpy as np
import numpy.typing as npt

# A file name: what os.fsencode takes. Names with an underscore exist in the
# stubs only.
_Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]
# A pandas.DataFrame when pandas can be imported, else a dict of numpy arrays.
_Table = Any
# A date given to the archive.
_Date = datetime.date | str

__version__: str
__all__ = ["Archive", "DuplicateError", "Error", "Survey", "compare", "open"]

class Error(Exception): ...

class DuplicateError(Error):
    existing: int

class _Info(TypedDict):
    file_type_name: str
    instrument: str
    model: str
    units: str
    first_id: str
    last_id: str
    walk_pattern_name: str
    points: int
    setups_used: list[int]
    description: str
    inspector_id: str
    location: str
    notes: list[str]

class _Mark(TypedDict):
    name: str
    position: int
    amplitude: int

class _Ascan(TypedDict):
    id: str
    reading: str
    units: str
    max_samples: npt.NDArray[np.int32]
    min_samples: npt.NDArray[np.int32]
    peak_samples: npt.NDArray[np.int32]
    delay: str
    range: str
    marks: list[_Mark]
    gate1_alarm: str
    gate2_alarm: str
    dac_points: list[tuple[int, int]]

class _Bscan(TypedDict):
    id: str
    reading: str
    units: str
    values: npt.NDArray[np.float64]
    texts: npt.NDArray[np.object_]
    alarms: npt.NDArray[np.object_]

class Survey:
    @property
    def info(self) -> _Info: ...
    @property
    def grid_count(self) -> int: ...
    def points(self) -> _Table: ...
    def grid(self, k: int = 0) -> tuple[npt.NDArray[np.float64], list[str], list[str]]: ...
    def grid_indexes(self, k: int = 0) -> npt.NDArray[np.int64]: ...
    def ascans(self) -> list[_Ascan]: ...
    def bscans(self) -> list[_Bscan]: ...
    def to_csv(self, path: _Path, form: Literal["detailed", "grid"] = "detailed", quote: bool = False) -> None: ...
    def stats(self, minimum: float | None = None) -> dict[str, Any]: ...
    def to_json(self, path: _Path | None = None) -> str | None: ...
    def close(self) -> None: ...
    def __enter__(self) -> Survey: ...
    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None,
                 traceback: TracebackType | None) -> None: ...

def open(path: _Path) -> Survey: ...
def compare(baseline: Survey | _Path, latest: Survey | _Path, years: float | None = None,
            minimum: float | None = None) -> _Table: ...

class Archive:
    def __init__(self, where: str | os.PathLike[str], create: bool = True) -> None: ...
    @property
    def name(self) -> str: ...
    def add(self, path: _Path, date: _Date | None = None, part: str | None = None) -> int: ...
    def parts(self) -> list[str]: ...
    def surveys(self, part: str | None = None) -> _Table: ...
    def readings(self, part: str) -> _Table: ...
    def history(self, part: str, minimum: float | None = None, max_interval: float = 10.0,
                as_of: _Date | None = None) -> _Table: ...
    def minimums(self, part: str) -> _Table: ...
    def set_minimums(self, part: str, rows: Iterable[tuple[str, float] | tuple[str, float, str]] | _Table) -> None: ...
    def get(self, id: int, out_dir: _Path = ".") -> pathlib.Path: ...
    def close(self) -> None: ...
    def __enter__(self) -> Archive: ...
    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None,
                 traceback: TracebackType | None) -> None: ...
