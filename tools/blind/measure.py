"""Runs both halves of the study of the blind search and writes their tables into a document."""

import argparse
import re
import subprocess
from pathlib import Path


def start(program, photographs, half, options):
    pictures = [f"{path.stem}={path}" for path in sorted((photographs / str(half)).glob("*.png"))]
    return subprocess.Popen([program, *pictures, "--half", str(half), *options],
                            stdout=subprocess.PIPE, text=True)


def replaced(document, mark, table):
    """`document` with `table` between `<!-- mark -->` and `<!-- end -->`."""
    pattern = re.compile(rf"(<!-- {re.escape(mark)} -->\n).*?(\n?<!-- end -->)", re.DOTALL)
    if not pattern.search(document):
        raise SystemExit(f"the document has no table \"{mark}\"")
    return pattern.sub(lambda found: found[1] + table.strip() + found[2], document, count=1)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("photographs", type=Path)
    parser.add_argument("--update", type=Path, help="document to write the tables into")
    parser.add_argument("--every", type=int, default=6, help="one of so many cases is measured")
    arguments = parser.parse_args()
    options = ["--every", str(arguments.every)]
    runs = [start(arguments.program, arguments.photographs, half, options) for half in (0, 1)]
    document = arguments.update.read_text() if arguments.update else None
    for half, run in enumerate(runs):
        output, _ = run.communicate()
        if run.returncode != 0:
            raise SystemExit(run.returncode)
        print(output)
        tables = re.findall(r"(?:^\|.*\n)+", output, re.MULTILINE)
        for name, table in zip(("cases", "blurs", "pictures", "reliability"), tables, strict=True):
            if document is not None:
                document = replaced(document, f"half {half} {name}", table)
    if document is not None:
        arguments.update.write_text(document)


main()
