"""The processes that a test starts, and those that they start in turn."""
import ctypes
import os
import pathlib
import signal
import subprocess
import time

PR_SET_CHILD_SUBREAPER = 36

_started = []


def await_(what, condition, seconds=60):
    """The first true answer of `condition`."""
    end = time.monotonic() + seconds
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f'{seconds} seconds went by without {what}')
        time.sleep(0.02)


def adopt_orphans():
    """Browsers leave processes behind that nobody else would end: they become this one's."""
    if ctypes.CDLL(None, use_errno=True).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0):
        raise OSError(ctypes.get_errno(), 'PR_SET_CHILD_SUBREAPER')


def _children():
    """The processes that live, by their parents."""
    children = {}
    for entry in pathlib.Path('/proc').glob('[0-9]*/stat'):
        try:
            text = entry.read_text(errors='replace')
        except OSError:
            continue  # it has ended
        # The name may itself contain ')', so cut at the last one.
        state, parent = text.rpartition(')')[2].split()[:2]
        if state != 'Z':
            children.setdefault(int(parent), []).append(int(entry.parent.name))
    return children


def descendants():
    children = _children()
    found, ahead = [], [os.getpid()]
    while ahead:
        below = children.get(ahead.pop(), [])
        found += below
        ahead += below
    return found


def _send(process, number):
    try:
        os.kill(process, number)
    except (ProcessLookupError, PermissionError):
        pass  # chromium-sandbox runs as root, and ends with what it was started for


def _reap():
    for process in _started:
        process.poll()
    try:
        while os.waitpid(-1, os.WNOHANG)[0]:
            pass
    except ChildProcessError:
        pass


def end_all():
    """Ends every process that came of this one, and those that come meanwhile."""
    patience = time.monotonic() + 5
    for process in descendants():
        _send(process, signal.SIGTERM)
    while left := descendants():
        _reap()
        if time.monotonic() > patience:
            for process in left:
                _send(process, signal.SIGKILL)
        time.sleep(0.02)
    _reap()


def start(*arguments, **options):
    _started.append(subprocess.Popen(*arguments, **options))
    return _started[-1]


class Program:
    """A program that was started in a home of its own. What it says goes to a file beside that."""

    def __init__(self, home, command, environment, **options):
        self._said = home.parent / (command[0] + '.log')
        with open(self._said, 'w') as output:
            self._process = start(command, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                  stderr=output, start_new_session=True, **options)

    def said(self):
        return self._said.read_text(errors='replace')

    def is_running(self):
        return self._process.poll() is None

    def status(self):
        """What it ended with; waits for that."""
        return self._process.wait(60)


class Display:
    """A screen that nobody sees, of the X server Xvfb. `name` is what DISPLAY is to say."""

    def __init__(self, home, environment):
        read, write = os.pipe()
        self._program = Program(home, ['Xvfb', '-displayfd', str(write), '-screen', '0',
                                       '1280x1024x24', '-nolisten', 'tcp'],
                                environment, pass_fds=[write])
        os.close(write)
        with open(read) as number:
            self.name = ':' + number.readline().strip()
        if self.name == ':':
            raise AssertionError(f'Xvfb did not start:\n{self._program.said()}')
