"""application_test.py PROGRAM: a real application is told of while it runs.

PROGRAM is vantile-host. Ends with 77, which says why, where the machine can't show it. See
README.md.
"""
import json
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import unittest

import processes
from browsers import Chromium
from processes import await_

SKIPPED = 77
AT_MOST = 180  # seconds for all of it; ctest waits longer

PROGRAM = sys.argv.pop()
WORK = None  # a folder that goes with the test
NOWHERE = 'http://127.0.0.1:9'  # what the browser asks of other machines ends there
ENTRY = '/usr/share/applications/chromium.desktop'


class Applications:
    """vantile-host, and the running applications that it told of last, by their entries."""

    def __init__(self):
        self.running = None
        self._process = processes.start([PROGRAM, 'stream', '--monitors', 'process'], text=True,
                                        stdout=subprocess.PIPE)
        threading.Thread(target=self._listen, daemon=True).start()

    def _listen(self):
        for line in self._process.stdout:
            told = json.loads(line)['arguments'][0] or []
            self.running = {application['appPath']: application for application in told}


class RunningApplications(unittest.TestCase):
    def test_chromium_is_told_of_while_it_runs(self):
        home = pathlib.Path(WORK) / 'home'
        home.mkdir()
        applications = Applications()
        await_('a first sample', lambda: applications.running is not None)
        if ENTRY in applications.running:
            self.skipTest('Chromium is running here already')

        browser = Chromium(home, NOWHERE)
        browser.start()
        told = await_('Chromium among them', lambda: applications.running.get(ENTRY))
        self.assertEqual(told['appName'], name_of(ENTRY))
        self.assertRegex(told['stats'], '^[RSD]')
        self.assertGreater(told['phyMemoryPages'], 20 * 1024)
        command = pathlib.Path(f'/proc/{told["pid"]}/cmdline').read_bytes()
        self.assertIn(b'--remote-debugging-port=0', command, 'not the browser, but one of its own')

        browser.quit()
        await_('its leaving', lambda: ENTRY not in applications.running)


def name_of(entry):
    """The name in no language."""
    lines = pathlib.Path(entry).read_text().splitlines()
    return next(line[len('Name='):] for line in lines if line.startswith('Name='))


def main():
    global WORK
    missing = [command for command in Chromium.commands if not shutil.which(command)]
    if missing or not pathlib.Path(ENTRY).exists():
        print(f'not installed: {", ".join(missing) or ENTRY}')
        return SKIPPED

    def interrupted(number, _):
        raise SystemExit(f'ended by signal {number}')

    for number in (signal.SIGALRM, signal.SIGHUP, signal.SIGTERM):
        signal.signal(number, interrupted)
    signal.alarm(AT_MOST)
    processes.adopt_orphans()
    with tempfile.TemporaryDirectory(prefix='vantile-applications-') as WORK:
        tests = unittest.defaultTestLoader.loadTestsFromTestCase(RunningApplications)
        try:
            result = unittest.TextTestRunner(verbosity=2).run(tests)
        finally:
            processes.end_all()
    if result.skipped:
        print(result.skipped[0][1])
        return SKIPPED
    return 0 if result.wasSuccessful() else 1


if __name__ == '__main__':
    sys.exit(main())
