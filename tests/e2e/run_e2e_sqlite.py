#!/usr/bin/env python3
"""The end-to-end cases once more, with every data set of the default library
in a SQLite database instead of CSV files.

For each case the folder is copied; run_e2e.py's own run_case then runs it,
with this script standing in for the qvt binary. Standing in, it

  1. loads every CSV file of the working folder into the database work.db
     (one table per file, typed as the SQLite engine expects: a column of
     plain numbers REAL, with "" and "." as NULL and ".A" as the text '.A';
     a column that the side file NAME.csv.meta.json calls character TEXT;
     any other column without a declared type, its cells as text; labels
     and formats from the side file in qvt_columns) and removes the CSV
     files, so that nothing can be read from them;
  2. runs qvt with --lib work=sqlite:work.db, so that one-level names are
     tables of the database;
  3. exports every table back to NAME.csv (NULL as an empty cell, numbers in
     their shortest form, text as stored), so that run_case compares the
     outputs with the case's expected files by run_e2e.py's comparison, and
     checks messages, exit status, absent files and qvt check's records as
     it does for CSV.

The one expectation that names the CSV engine, message 900/12 (no such
file), is read as its SQLite counterpart 900/103 (no such table).

    run_e2e_sqlite.py --qvt build/dev/qvt --cases tests/e2e/check [names...]
"""
import csv
import json
import os
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import run_e2e  # noqa: E402  (the runner and comparisons of the CSV cases)

DB = "work.db"
REAL_QVT = "QVT_E2E_SQLITE_REAL"
NUMBER = re.compile(r"^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?$|^[+-]?inf(inity)?$", re.IGNORECASE)
MISSING = re.compile(r"^(\.|\.[A-Za-z_])?$")
# The engine's message for a missing CSV file, and for a missing table.
NO_FILE, NO_TABLE = [900, 12], [900, 103]


def quote(name):
    return '"' + name.replace('"', '""') + '"'


def load_csv(con, path):
    member = os.path.basename(path)[: -len(".csv")]
    meta = {}
    meta_path = path + ".meta.json"
    if os.path.exists(meta_path):
        with open(meta_path, encoding="utf-8") as f:
            meta = json.load(f)
    by_name = {v["name"].lower(): v for v in meta.get("variables", [])}
    with open(path, newline="", encoding="utf-8-sig") as f:
        rows = [r for r in csv.reader(f) if r]
    if not rows:
        return
    head, body = rows[0], rows[1:]
    kinds = []
    for c, name in enumerate(head):
        cells = [r[c].strip(" \t") for r in body if c < len(r)]
        m = by_name.get(name.lower(), {})
        if m.get("type") == "character":
            kinds.append("TEXT")
        elif all(MISSING.match(x) or NUMBER.match(x) for x in cells):
            kinds.append("REAL")
        else:
            kinds.append("")
    con.execute(f"DROP TABLE IF EXISTS {quote(member)}")
    cols = ", ".join(f"{quote(n)} {k}".rstrip() for n, k in zip(head, kinds))
    con.execute(f"CREATE TABLE {quote(member)} ({cols})")

    def cell(kind, text):
        if kind != "REAL":
            return text
        t = text.strip(" \t")
        if t in ("", "."):
            return None
        return t.upper() if MISSING.match(t) else float(t)

    marks = ", ".join("?" for _ in head)
    con.executemany(f"INSERT INTO {quote(member)} VALUES ({marks})",
                    ([cell(k, r[c] if c < len(r) else "") for c, k in enumerate(kinds)] for r in body))
    con.execute("CREATE TABLE IF NOT EXISTS qvt_columns (member TEXT NOT NULL COLLATE NOCASE,"
                " name TEXT NOT NULL COLLATE NOCASE, label TEXT, format TEXT, PRIMARY KEY (member, name))")
    con.execute("DELETE FROM qvt_columns WHERE member = ? COLLATE NOCASE", (member,))
    con.execute("INSERT INTO qvt_columns VALUES (?, '', ?, '')", (member, meta.get("label", "")))
    for v in meta.get("variables", []):
        con.execute("INSERT INTO qvt_columns VALUES (?, ?, ?, ?)",
                    (member, v["name"], v.get("label", ""), v.get("format", "")))


def number_text(x):
    if isinstance(x, int) or (x.is_integer() and abs(x) < 1e16):
        return str(int(x))
    return repr(x)


def export_tables(con, folder):
    names = [r[0] for r in con.execute("SELECT name FROM sqlite_master WHERE type = 'table'")]
    for name in names:
        if name.lower() == "qvt_columns":
            continue
        cur = con.execute(f"SELECT * FROM {quote(name)} ORDER BY rowid")
        with open(os.path.join(folder, name + ".csv"), "w", newline="", encoding="utf-8") as f:
            w = csv.writer(f, lineterminator="\n")
            w.writerow([d[0] for d in cur.description])
            for row in cur:
                w.writerow(["" if v is None else number_text(v) if isinstance(v, (int, float)) else v for v in row])


def as_qvt(args):
    """Stands in for the qvt binary inside a case's working folder."""
    real = os.environ[REAL_QVT]
    if args[:1] not in (["run"], ["check"]):
        return subprocess.call([real] + args)
    con = sqlite3.connect(DB)
    for name in sorted(os.listdir(".")):
        if name.endswith(".csv") and os.path.isfile(name):
            load_csv(con, name)
            os.remove(name)
            if os.path.exists(name + ".meta.json"):
                os.remove(name + ".meta.json")
    con.commit()
    con.close()
    rc = subprocess.call([real, args[0], "--lib", "work=sqlite:" + DB] + args[1:])
    con = sqlite3.connect(DB)
    export_tables(con, ".")
    con.close()
    return rc


def sqlite_case(case_dir, folder):
    """The case copied, with its CSV-only expectation read for a database."""
    shutil.copytree(case_dir, folder)
    path = os.path.join(folder, "case.json")
    spec = load_spec(folder)
    for key in ("messages", "absent"):
        spec[key] = [NO_TABLE if m == NO_FILE else m for m in spec.get(key, [])]
    with open(path, "w", encoding="utf-8") as f:
        json.dump(spec, f)
    return folder


def load_spec(case_dir):
    with open(os.path.join(case_dir, "case.json"), encoding="utf-8") as f:
        return json.load(f)


def main():
    if len(sys.argv) > 1 and sys.argv[1] == "--as-qvt":
        return as_qvt(sys.argv[2:])
    a = run_e2e.arguments()
    # A case about the CSV engine's files themselves says "csv_only" (why).
    cases = [c for c in run_e2e.find_cases(a.cases, a.only) if "csv_only" not in load_spec(c)]
    with tempfile.TemporaryDirectory(prefix="qvt-e2e-sqlite-") as tmp:
        wrapper = os.path.join(tmp, "qvt")
        with open(wrapper, "w", encoding="utf-8") as f:
            f.write(f'#!/bin/sh\nexec "{sys.executable}" "{os.path.abspath(__file__)}" --as-qvt "$@"\n')
        os.chmod(wrapper, 0o755)
        os.environ[REAL_QVT] = a.qvt
        return run_e2e.run_all(
            "e2e sqlite", a.cases, cases,
            lambda n, c: run_e2e.run_case(wrapper, sqlite_case(c, os.path.join(tmp, f"case{n}"))))


if __name__ == "__main__":
    sys.exit(main())
