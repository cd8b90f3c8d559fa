#!/usr/bin/env python3
"""End-to-end cases: every folder under tests/e2e that holds a case.json is one
run of the qvt binary on real files.

A case folder holds the program (any *.qvt), its input files, and case.json:

    {
      "args": ["run", "program.qvt"],      # qvt's arguments; the folder is the working directory
      "exit": 0,                           # expected exit status
      "messages": [[743, 101], ...],       # (group, number) pairs that must appear in the jsonl log
      "absent": [[900, 12], ...],          # pairs that must not appear
      "message_args": [[743, 7, [null, 10]], ...],  # some message of that number has these
                                           # arguments (null: any), in order, as a prefix;
                                           # a fourth element is the BY group it names ("g=b")
      "outputs": {"out.csv": "expect/out.csv"},   # produced file -> expected file (CSV, compared cell by cell);
                                           # or -> {"expect": "expect/out.csv", "tolerance": 1e-3}
      "stdout_json": "expect/check.json",  # stdout parsed as JSON equals this file
      "stdout_json_contains": {...},        # stdout JSON contains this (dicts by key, lists element-wise prefix)
      "absent_files": ["out.csv"],         # files that must not exist after the run
      "svg_files": ["plots/a_ModelPlot.svg"],  # files that must exist and be well-formed SVG documents
      "svg_texts": {"plots/a.svg": ["12", "2"]},  # these texts stand in the SVG's text elements, in
                                           # this order (others may stand between them)
      "report_plots": {"file": "report.html", "names": [...]},  # the plots of the HTML report, in order,
                                           # each a <figure data-name=...> holding well-formed SVG;
                                           # optional "groups": [...], for each plot the output groups
                                           # around it, outermost first, as "Variable/PredictionErrors"
      "tables": {"file": "report.html", "checks": [...]},  # printed tables of the HTML report,
                                           # found by table and column name (see compare_tables)
      "fields": [{"step": 0, "record": 1, "field": 3, "value": 43}],  # qvt check: a field's value
      "bits": [{"step": 0, "record": 1, "set": [2]}],   # qvt check: exactly these flag bits are set
      "same_records": ["a.qvt", "b.qvt"],  # qvt check gives identical records for these programs
      "tolerance": 1e-9,                   # relative tolerance for numeric cells
      "csv_only": "why",                   # not run again through SQLite (run_e2e_sqlite.py)
      "file_size_limit": 4096              # no file qvt writes may grow past this many bytes
                                           # (RLIMIT_FSIZE): a full disk, without filling one
    }

Expected numbers are worked out independently of qvt (by hand, or by a script
kept beside the case), never pasted from its output. The log is asked for as
jsonl so that cases assert message numbers, not wording.
"""
import argparse
import csv
import html.parser
import json
import math
import os
import re
import resource
import signal
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET


def load_log(path):
    msgs = []
    if os.path.exists(path):
        with open(path, encoding="utf-8") as f:
            for line in f:
                line = line.strip()
                if line:
                    msgs.append(json.loads(line))
    return msgs


# A cell's number; a PERCENT text such as "12.345%" or "(5.12%)" gives its
# number of percent, negative in parentheses.
def number(text):
    t = text.strip()
    return -float(t[1:-2]) if t[:1] == "(" and t[-2:] == "%)" else float(t.removesuffix("%"))


def cells_equal(got, want, tol):
    if got == want:
        return True
    try:
        g, w = number(got), float(want)
    except ValueError:
        return False
    if math.isnan(g) or math.isnan(w):
        return False
    return abs(g - w) <= tol * max(1.0, abs(w))


def compare_csv(got_path, want_path, tol):
    with open(got_path, newline="", encoding="utf-8") as f:
        got = list(csv.reader(f))
    with open(want_path, newline="", encoding="utf-8") as f:
        want = list(csv.reader(f))
    if not got or not want:
        return [] if got == want else [f"{got_path}: empty vs expected {len(want)} rows"]
    errors = []
    # Compare the expected columns only, by name, so that a case need not list every column.
    head_g, head_w = got[0], want[0]
    missing = [c for c in head_w if c not in head_g]
    if missing:
        return [f"{os.path.basename(got_path)}: missing columns {missing}"]
    idx = [head_g.index(c) for c in head_w]
    if len(got) != len(want):
        errors.append(f"{os.path.basename(got_path)}: {len(got) - 1} rows, expected {len(want) - 1}")
    for r, (rg, rw) in enumerate(zip(got[1:], want[1:]), start=2):
        for c, i in enumerate(idx):
            g = rg[i] if i < len(rg) else "<absent>"
            if not cells_equal(g, rw[c], tol):
                errors.append(f"{os.path.basename(got_path)} row {r} column {head_w[c]}: got {g!r}, expected {rw[c]!r}")
                if len(errors) > 10:
                    return errors
    return errors


class ReportTables(html.parser.HTMLParser):
    """The data tables of an HTML report: name -> (column names, rows of cell texts).
    A table is a <section class="table" data-name=...>; its columns are the <th data-name=...>."""

    def __init__(self):
        super().__init__()
        self.tables, self.name, self.cell = {}, None, None

    def handle_starttag(self, tag, attrs):
        a = dict(attrs)
        if tag == "section" and a.get("class") == "table":
            self.name = a["data-name"]
            self.tables.setdefault(self.name, []).append(([], []))
        elif self.name and tag == "th" and "data-name" in a:
            self.tables[self.name][-1][0].append(a["data-name"])
        elif self.name and tag == "tr":
            self.tables[self.name][-1][1].append([])
        elif self.name and tag == "td":
            self.cell = ""

    def handle_data(self, data):
        if self.cell is not None:
            self.cell += data

    def handle_endtag(self, tag):
        if tag == "td" and self.cell is not None:
            self.tables[self.name][-1][1][-1].append(self.cell.strip())
            self.cell = None
        elif tag == "section":
            self.name = None


class ReportGroups(html.parser.HTMLParser):
    """For each <figure> of an HTML report, the data-names of the group sections
    around it, outermost first, joined by "/"."""

    def __init__(self):
        super().__init__()
        self.stack, self.paths = [], []

    def handle_starttag(self, tag, attrs):
        a = dict(attrs)
        if tag == "section":
            self.stack.append(a.get("data-name") if a.get("class") == "group" else None)
        elif tag == "figure":
            self.paths.append("/".join(n for n in self.stack if n is not None))

    def handle_endtag(self, tag):
        if tag == "section" and self.stack:
            self.stack.pop()


def compare_tables(path, checks, case_dir, tol):
    """Each check names a table (its first instance in the report) and an
    expected CSV. "rows": "last" with "columns" {table column: CSV column}
    compares the table's rows with as many last rows of the CSV; "rows"
    {table row index: CSV column} with "column" compares that column's cells
    with the first CSV row. A "." cell stands for an empty CSV cell."""
    if not os.path.exists(path):
        return [f"{os.path.basename(path)} was not written"]
    p = ReportTables()
    with open(path, encoding="utf-8") as f:
        p.feed(f.read())
    errors = []
    for c in checks:
        cols, rows = p.tables.get(c["table"], [([], [])])[0]
        rows = [r for r in rows if r]
        with open(os.path.join(case_dir, c["expect"]), newline="", encoding="utf-8") as f:
            want = list(csv.DictReader(f))
        cell = lambda r, col: rows[r][cols.index(col)] if col in cols and r < len(rows) else "<absent>"
        if c["rows"] == "last":
            if not rows or len(rows) > len(want):
                errors.append(f"{c['table']}: {len(rows)} rows for {len(want)} expected")
                continue
            tail = want[len(want) - len(rows):]
            pairs = [(f"row {i} {tc}", cell(i, tc), w[wc])
                     for i, w in enumerate(tail) for tc, wc in c["columns"].items()]
        else:
            pairs = [(f"row {ri} ({wc})", cell(int(ri), c["column"]), want[0][wc])
                     for ri, wc in c["rows"].items()]
        errors += [f"{c['table']} {at}: got {g!r}, expected {w!r}" for at, g, w in pairs
                   if not cells_equal("" if g == "." else g, w, tol)]
    return errors


SVG_ROOT = "{http://www.w3.org/2000/svg}svg"


def svg_errors(text, name):
    try:
        root = ET.fromstring(text)
    except ET.ParseError as e:
        return [f"{name} is not well-formed XML: {e}"]
    return [] if root.tag == SVG_ROOT else [f"{name}: root element {root.tag}, expected an SVG document"]


def check_plots(work, spec):
    errors = []
    for name in spec.get("svg_files", []):
        p = os.path.join(work, name)
        if not os.path.exists(p):
            errors.append(f"{name} was not written")
            continue
        with open(p, encoding="utf-8") as f:
            errors += svg_errors(f.read(), name)
    for name, want in spec.get("svg_texts", {}).items():
        p = os.path.join(work, name)
        try:
            texts = [e.text or "" for e in ET.parse(p).getroot().iter() if e.tag.endswith("}text")]
        except (OSError, ET.ParseError) as e:
            errors.append(f"{name}: {e}")
            continue
        it = iter(texts)
        if not all(any(t == w for t in it) for w in want):
            errors.append(f"{name}: texts {texts} do not hold {want} in this order")
    if "report_plots" in spec:
        p = os.path.join(work, spec["report_plots"]["file"])
        text = open(p, encoding="utf-8").read() if os.path.exists(p) else ""
        figs = re.findall(r'<figure class="plot" data-name="([^"]*)">\n(.*?)</figure>', text, re.S)
        if [n for n, _ in figs] != spec["report_plots"]["names"]:
            errors.append(f"report plots {[n for n, _ in figs]}, expected {spec['report_plots']['names']}")
        for n, svg in figs:
            errors += svg_errors(svg, f"report plot {n}")
        if "groups" in spec["report_plots"]:
            parser = ReportGroups()
            parser.feed(text)
            if parser.paths != spec["report_plots"]["groups"]:
                errors.append(f"report plot groups {parser.paths}, expected {spec['report_plots']['groups']}")
    return errors


def contains(got, want, where="$"):
    if isinstance(want, dict):
        if not isinstance(got, dict):
            return [f"{where}: expected an object"]
        errs = []
        for k, v in want.items():
            if k not in got:
                errs.append(f"{where}.{k}: absent")
            else:
                errs += contains(got[k], v, f"{where}.{k}")
        return errs
    if isinstance(want, list):
        if not isinstance(got, list) or len(got) < len(want):
            return [f"{where}: expected a list of at least {len(want)}"]
        errs = []
        for i, v in enumerate(want):
            errs += contains(got[i], v, f"{where}[{i}]")
        return errs
    return [] if got == want else [f"{where}: got {got!r}, expected {want!r}"]


def run_case(qvt, case_dir):
    with open(os.path.join(case_dir, "case.json"), encoding="utf-8") as f:
        spec = json.load(f)
    tol = spec.get("tolerance", 1e-9)
    with tempfile.TemporaryDirectory(prefix="qvt-e2e-") as work:
        for name in os.listdir(case_dir):
            src = os.path.join(case_dir, name)
            if os.path.isfile(src):
                shutil.copy(src, work)
            elif name != "expect":
                shutil.copytree(src, os.path.join(work, name))
        log = os.path.join(work, "log.jsonl")
        args = list(spec["args"])
        cmd = [qvt] + args[:1] + ["--log-format", "jsonl", "--log", log] + args[1:]
        if args[:1] not in (["run"], ["check"]):
            cmd = [qvt] + args
        limit = spec.get("file_size_limit")

        def limit_files():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # a write past the limit fails, not the process
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

        proc = subprocess.run(cmd, cwd=work, capture_output=True, text=True, timeout=300,
                              preexec_fn=limit_files if limit else None)
        errors = []
        if proc.returncode != spec.get("exit", 0):
            errors.append(f"exit {proc.returncode}, expected {spec.get('exit', 0)}; stderr: {proc.stderr[-800:]}")
        msgs = load_log(log)
        seen = {(m.get("group"), m.get("number")) for m in msgs}
        for g, n in spec.get("messages", []):
            if (g, n) not in seen:
                errors.append(f"message {g}/{n} not in the log (saw {sorted(seen)})")
        for g, n, want, *by in spec.get("message_args", []):
            got = [(m.get("args", []), m.get("by")) for m in msgs if (m.get("group"), m.get("number")) == (g, n)]
            if not any(len(a) >= len(want) and all(w is None or w == v for w, v in zip(want, a))
                       and (not by or by[0] == b) for a, b in got):
                errors.append(f"no message {g}/{n} with arguments {want} {by} (saw {got})")
        for g, n in spec.get("absent", []):
            if (g, n) in seen:
                errors.append(f"message {g}/{n} is in the log but must not be")
        if "tables" in spec:
            errors += compare_tables(os.path.join(work, spec["tables"]["file"]), spec["tables"]["checks"],
                                     case_dir, tol)
        for produced, expected in spec.get("outputs", {}).items():
            p = os.path.join(work, produced)
            if not os.path.exists(p):
                errors.append(f"{produced} was not written")
                continue
            # An output may carry its own tolerance: {"expect": path, "tolerance": t}.
            otol = tol
            if isinstance(expected, dict):
                otol = expected.get("tolerance", tol)
                expected = expected["expect"]
            errors += compare_csv(p, os.path.join(case_dir, expected), otol)
        errors += check_plots(work, spec)
        for absent in spec.get("absent_files", []):
            if os.path.exists(os.path.join(work, absent)):
                errors.append(f"{absent} must not exist")
        if "stdout_json" in spec or "stdout_json_contains" in spec:
            try:
                got = json.loads(proc.stdout)
            except json.JSONDecodeError as e:
                errors.append(f"stdout is not JSON: {e}: {proc.stdout[:300]!r}")
                got = None
            if got is not None and "stdout_json" in spec:
                with open(os.path.join(case_dir, spec["stdout_json"]), encoding="utf-8") as f:
                    want = json.load(f)
                if got != want:
                    errors.append("stdout JSON differs: " + "; ".join(contains(got, want)[:5]))
            if got is not None and "stdout_json_contains" in spec:
                errors += contains(got, spec["stdout_json_contains"])
        if "fields" in spec or "bits" in spec:
            try:
                steps = json.loads(proc.stdout)
            except json.JSONDecodeError as e:
                return errors + [f"stdout is not JSON: {e}"]
            for want in spec.get("fields", []):
                try:
                    rec = steps[want.get("step", 0)]["records"][want["record"]]
                except (IndexError, KeyError):
                    errors.append(f"no record {want}")
                    continue
                got = [f for f in rec["fields"] if f["field"] == want["field"]]
                if not got:
                    errors.append(f"field {want['field']} of record {want['record']} not given")
                elif not cells_equal(str(got[0]["value"]), str(want["value"]), tol) if not isinstance(want["value"], (dict, list)) else got[0]["value"] != want["value"]:
                    errors.append(f"field {want['field']} of record {want['record']}: got {got[0]['value']!r}, expected {want['value']!r}")
            for want in spec.get("bits", []):
                try:
                    rec = steps[want.get("step", 0)]["records"][want["record"]]
                except (IndexError, KeyError):
                    errors.append(f"no record {want}")
                    continue
                got = sorted(b["bit"] for b in rec["bits"])
                if got != sorted(want["set"]):
                    errors.append(f"bits of record {want['record']}: got {got}, expected {sorted(want['set'])}")
        if "same_records" in spec:
            outs = []
            for prog in spec["same_records"]:
                pr = subprocess.run([qvt, "check", prog], cwd=work, capture_output=True, text=True, timeout=300)
                outs.append(pr.stdout)
            for prog, o in zip(spec["same_records"][1:], outs[1:]):
                if o != outs[0]:
                    errors.append(f"qvt check {prog} differs from {spec['same_records'][0]}")
        return errors


def find_cases(root, only):
    """Every folder under root that holds a case.json, in a stable order."""
    cases = []
    for folder, dirs, files in os.walk(root):
        dirs.sort()
        if "case.json" in files:
            cases.append(folder)
    if only:
        cases = [c for c in cases if os.path.basename(c) in only]
    return sorted(cases)


def run_all(label, root, cases, run):
    """Runs run(index, case folder) -> list of errors for every case and reports."""
    passed = failed = 0
    for n, c in enumerate(cases):
        name = os.path.relpath(c, root)
        try:
            errs = run(n, c)
        except Exception as e:  # a broken case is a failure, not a crash of the runner
            errs = [f"{type(e).__name__}: {e}"]
        if errs:
            failed += 1
            print(f"FAIL {name}")
            for e in errs:
                print(f"    {e}")
        else:
            passed += 1
            print(f"ok   {name}")
    print(f"{label}: {passed} passed, {failed} failed")
    return 1 if failed or not cases else 0


def arguments():
    ap = argparse.ArgumentParser()
    ap.add_argument("--qvt", required=True)
    ap.add_argument("--cases", required=True)
    ap.add_argument("only", nargs="*", help="run only these case names")
    a = ap.parse_args()
    a.qvt = os.path.abspath(a.qvt)
    return a


def main():
    a = arguments()
    return run_all("e2e", a.cases, find_cases(a.cases, a.only), lambda n, c: run_case(a.qvt, c))


if __name__ == "__main__":
    sys.exit(main())
