"""Datalogger surveys (.ugf) of ultrasonic thickness gauges and flaw detectors, as arrays and tables.

    import ugf
    with ugf.open("tank4.ugf") as survey:
        print(survey.info["file_type_name"], survey.stats()["mean"])
        table = survey.points()          # pandas.DataFrame, or a dict of numpy arrays
        values, rows, columns = survey.grid(0)
        survey.to_csv("tank4.csv", form="grid")
    rows = ugf.compare("tank4_2021.ugf", "tank4.ugf", years=3, minimum=0.15)

    with ugf.Archive("plant7.ugfdb") as archive:   # or "postgresql://..."
        archive.add("tank4_2026-03-01.ugf")       # date and part from the name
        rows = archive.history("tank4", minimum=0.2)

Readings are the numbers that the points' grid cells show, in the survey's
units. Fields go by the names of the JSON export (docs/survey.schema.json).
Every argument that names a file takes a str, bytes or any os.PathLike.
Every failure raises ugf.Error with the message that the `ugf` command prints.
"""
from ._ugf import Archive, DuplicateError, Error, Survey, __version__, compare, open

__all__ = ["Archive", "DuplicateError", "Error", "Survey", "compare", "open"]
