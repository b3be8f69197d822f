# The questions of docs/fleet.md: each a heading, one SQL statement, and the output that it had.
import json, os, pathlib, re, subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / 'docs/fleet.md'
VIEW = re.compile(r'```sql\n(CREATE VIEW fleet .*?);?\n```', re.S)
QUESTION = re.compile(r'### (\d+)\. ([^\n]*)\n\n```sql\n(.*?)\n```\n\n```\n(.*?)```', re.S)


def questions():
    """Number, title, statement and output of each."""
    return QUESTION.findall(PAGE.read_text())


def view(dataset):
    return VIEW.search(PAGE.read_text()).group(1).replace('build/fleet/dataset', str(dataset))


def ask(packages, dataset, *statements):
    """The rows of each, as lists of dictionaries."""
    reader = str(ROOT / 'tests/exporters/readers/read')
    asked = [reader, os.path.abspath(packages), 'duckdb', view(dataset), *statements]
    done = subprocess.run(asked, capture_output=True, check=False)
    if done.returncode:
        raise RuntimeError(done.stderr.decode())
    return json.loads(done.stdout)[1:]


def cell(value):
    if isinstance(value, float):
        return f'{value:.4g}' if abs(value) < 1000 else f'{value:.1f}'
    return '-' if value is None else str(value).replace('T00:00:00.000Z', '')


def table(rows, most=6):
    if not rows:
        return '(none)\n'
    lines = [list(rows[0])] + [[cell(value) for value in row.values()] for row in rows[:most]]
    widths = [max(len(line[i]) for line in lines) for i in range(len(lines[0]))]
    text = ''.join('  '.join(word.ljust(width) for word, width in zip(line, widths)).rstrip() + '\n' for line in lines)
    return text + (f'... {len(rows)} rows\n' if len(rows) > most else '')
