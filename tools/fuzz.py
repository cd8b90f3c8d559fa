#!/usr/bin/env python3
"""Mutation fuzzing of the qvt binary on the end-to-end cases.

Each run copies one working case of tests/e2e/run into a temporary folder,
changes it, and runs it. A run is kept as a failure (folder, command and
standard error under --keep) when qvt crashes, times out, exits with a status
other than 0, 1, 2 or 64, or a sanitizer reports anything. Build qvt with the
dev preset so that memory faults and leaks are seen.

    tools/fuzz.py --qvt build/dev/qvt [--mode options|csv|text] [--runs N] [--seed S]

  options  adds random valid options (from tests/statements/options.csv and a
           list of models, intervals and outputs) to each statement, and in
           40% of the runs replaces data cells by missing, zero or extreme values;
  csv      mutates the bytes of the case's CSV input;
  text     mutates the program text: deletes, inserts and repeats tokens.
"""
import argparse, csv, glob, json, os, random, shutil, subprocess, tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
EXTRA_P = ['LEAD=0', 'LEAD=1', 'LEAD=50', 'BACK=3', 'BACK=200', 'SEASONALITY=1', 'SEASONALITY=53', 'PRINT=ALL',
           'PLOT=ALL', 'PRINT=(PERFORMANCE PERFORMANCESUMMARY)', 'OUTEST=est', 'OUTSTAT=st', 'OUTSUM=sm', 'OUTFOR=of',
           'OUT=o', 'OUTTREND=tr', 'OUTSEASON=se', 'OUTPROCINFO=pi', 'OUTSTATSELECT=ss', 'OUTCOMPONENT=co']
EXTRA_F = ['MODEL=' + m for m in ('SIMPLE', 'DOUBLE', 'LINEAR', 'DAMPTREND', 'SEASONAL', 'WINTERS', 'ADDWINTERS',
                                   'BEST', 'BESTN', 'BESTS', 'IDM', 'NONE', 'ADDSEASONAL')] + \
          ['TRANSFORM=AUTO', 'TRANSFORM=LOG', 'HOLDOUT=100', 'HOLDOUTPCT=90', 'INTERMITTENT=1.01', 'INTERMITTENT=100']
CELLS = ['', '.', '.A', '0', '0', '-1', '5', '1e15', '1e300', '-1e300', '1e-300']
BYTES = [b'"', b'""', b'\r', b'\n', b',', b'\xef\xbb\xbf', b'\xff', b'.', b'.A', b'1e999', b'2020-13-01',
         b'2020-02-29', b'2020-01-01T10:00:00', b'\x00', b' ', b'NaN', b'x' * 40]
TOKENS = [b'(', b')', b';', b'=', b',', b'.', b"'", b'"', b'/*', b'*/', b'-', b'--', b':', b'1e308', b'-1', b'0',
          b"'01JAN2020'd", b"'x'n", b'._', b'RUN;', b'QVT', b'999999999999', b'MONYY7.', b'a.b']


def option_table():
    opts = {'P': list(EXTRA_P), 'I': [], 'F': list(EXTRA_F)}
    for line in open(os.path.join(ROOT, 'tests/statements/options.csv')):
        if line.startswith('#') or line.count('|') < 2:
            continue
        ctx, opt, expected = line.rstrip('\n').split('|', 2)
        if ctx in opts and '!' not in expected:
            opts[ctx].append(opt)
    return opts


def with_options(rnd, prog, opts):
    out = []
    for st in prog.split(';'):
        word = st.split()[0].lower() if st.split() else ''
        if word == 'qvt':
            st += ' ' + ' '.join(rnd.sample(opts['P'], rnd.randint(0, 4)))
        elif word == 'id':
            st += ' ' + ' '.join(rnd.sample(opts['I'], rnd.randint(0, 2)))
        elif word == 'forecast':
            st += (' ' if '/' in st else ' / ') + ' '.join(rnd.sample(opts['F'], rnd.randint(0, 4)))
        out.append(st)
    return ';'.join(out)


def perturb_cells(rnd, path):
    rows = list(csv.reader(open(path, newline='')))
    for _ in range(rnd.randint(1, 6)):
        if len(rows) < 2:
            break
        row = rows[rnd.randrange(1, len(rows))]
        if row:
            row[rnd.randrange(len(row))] = rnd.choice(CELLS)
    with open(path, 'w', newline='') as f:
        csv.writer(f).writerows(rows)


def mutate_bytes(rnd, b, pieces):
    b = bytearray(b)
    for _ in range(rnd.randint(1, 5)):
        r, i = rnd.random(), rnd.randrange(len(b) + 1)
        if r < .4:
            b[i:i] = rnd.choice(pieces)
        elif r < .6 and b:
            del b[i:i + rnd.randint(1, 8)]
        elif r < .75 and b:
            b[min(i, len(b) - 1)] = rnd.randrange(256)
        elif r < .85:
            del b[i:]
        else:
            j = rnd.randrange(len(b) + 1)
            b[i:i] = b[j:j + rnd.randint(1, 40)]
    return bytes(b)


def main():
    ap = argparse.ArgumentParser(description=__doc__.split('\n\n')[0])
    ap.add_argument('--qvt', required=True)
    ap.add_argument('--mode', choices=['options', 'csv', 'text'], default='options')
    ap.add_argument('--runs', type=int, default=200)
    ap.add_argument('--seed', type=int, default=1)
    ap.add_argument('--keep', default='fuzz-failures')
    a = ap.parse_args()
    qvt, rnd, opts = os.path.abspath(a.qvt), random.Random(a.seed), option_table()
    cases = []
    for d in sorted(glob.glob(os.path.join(ROOT, 'tests/e2e/run/*/'))):
        spec = json.load(open(d + 'case.json'))
        if spec.get('exit', 0) == 0 and glob.glob(d + '*.csv'):
            cases.append((d, spec))
    failures, statuses = 0, {}
    for k in range(a.runs):
        d, spec = rnd.choice(cases)
        with tempfile.TemporaryDirectory() as t:
            for f in glob.glob(d + '*'):
                if os.path.isfile(f) and not f.endswith('case.json'):
                    shutil.copy(f, t)
            prog = os.path.join(t, 'program.qvt')
            text = open(prog, 'rb').read()
            if a.mode == 'options':
                open(prog, 'w').write(with_options(rnd, text.decode(), opts))
                if rnd.random() < .4:
                    perturb_cells(rnd, rnd.choice(glob.glob(t + '/*.csv')))
            elif a.mode == 'csv':
                f = rnd.choice(glob.glob(t + '/*.csv'))
                data = open(f, 'rb').read()
                open(f, 'wb').write(mutate_bytes(rnd, data, BYTES))
            else:
                open(prog, 'wb').write(mutate_bytes(rnd, text, TOKENS))
            args = spec['args']
            cmd = [qvt] + args[:1] + ['--log-format', 'jsonl', '--log', 'log'] + args[1:]
            try:
                r = subprocess.run(cmd, capture_output=True, timeout=180, cwd=t)
                status, err = r.returncode, r.stderr.decode('utf-8', 'replace')
            except subprocess.TimeoutExpired:
                status, err = 'timeout', ''
            statuses[status] = statuses.get(status, 0) + 1
            if status not in (0, 1, 2, 64) or 'Sanitizer' in err or 'runtime error' in err:
                failures += 1
                keep = os.path.join(a.keep, f'{a.mode}-{a.seed}-{k}')
                shutil.copytree(t, keep, dirs_exist_ok=True)
                open(os.path.join(keep, 'stderr'), 'w').write(err)
                open(os.path.join(keep, 'command'), 'w').write(' '.join(cmd) + '\n')
                print(f'failure: status {status}, kept in {keep}', flush=True)
    print(f'{a.runs} runs, {failures} failures, exit statuses {statuses}')
    return 1 if failures else 0


if __name__ == '__main__':
    raise SystemExit(main())
