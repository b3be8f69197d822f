# What the checks of exports share: recordings, and what list, stats and info say of them. All that a check writes goes
# into a folder that is gone at its end.
import csv, json, os, subprocess, sys, tempfile

here = os.path.dirname(os.path.realpath(__file__))
arguments = [os.path.realpath(path) for path in sys.argv[1:]]
tasklog = arguments[0]
folder = tempfile.TemporaryDirectory()
os.chdir(folder.name)

SMALL = '''
clock = "stepped"
step = "70ms"
[timer]
resolution_ns = 1000.0
start_ticks = 1000000
[scheduler]
slots = 16
idle = "Idle \\"0\\""
[[scheduler.task]]
name = "Ctrl,1"
priority = 5
period = "10ms"
run = "2ms"
testpoints = [{ name = "Half", at = "1ms" }]
'''

def run(*command, **more):
    result = subprocess.run(command, capture_output=True, text=True, **more)
    if result.returncode:
        sys.exit(f'{command} failed: {result.stderr}')
    return result

class Recording:
    def __init__(self, name):
        self.name = name
        self.lanes = json.loads(run(tasklog, 'info', '--json', name).stdout)
        self.entries, self.tasks = self.rows('list'), self.rows('stats')
        for row in self.entries:  # without a lane when there is only one
            row.setdefault('lane', self.tasks[0]['lane'])

    def rows(self, command):
        return list(csv.DictReader(run(tasklog, command, '--format', 'csv', self.name).stdout.splitlines()))

    def export(self, format):
        place = f'{self.name}-{format}'
        run(tasklog, 'export', self.name, '--to', format, '-o', place)
        return place

    def equal(self, what, found, expected):
        if found != expected:
            sys.exit(f'{self.name}, {what}: found {str(found)[:2000]}\nexpected {str(expected)[:2000]}')

# One of all loggers, and one with gaps.
def recordings():
    run(tasklog, 'record', 'demo', '--logger', 'all', '--start', '--for', '400ms', '-o', 'demo')
    yield Recording('demo')
    with open('small.toml', 'w') as scenario:
        scenario.write(SMALL)
    os.mkdir('gaps')
    run(tasklog, 'record', 'small.toml', '--start', '--for', '20ms', '--every', '1ms', '-o', 'gaps/all.tasklog')
    gaps = Recording('gaps')
    if not gaps.lanes[0]['gaps']:
        sys.exit('the recording with gaps has none')
    yield gaps
