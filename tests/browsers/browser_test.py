"""browser_test.py BROWSER PROGRAM: what the library reports of real downloads.

BROWSER is chromium or firefox, PROGRAM is download_watch. Ends with 77, which says why, where the
machine can't show it. See README.md.
"""
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import download_server
import processes
from browsers import Chromium, Firefox
from processes import await_

SKIPPED = 77
AT_MOST = 420  # seconds for all of it; ctest waits longer
UNPACKING_TIME = 2  # seconds that the library gives browsers to unpack an archive

PROGRAM = sys.argv.pop()
BROWSER = {'chromium': Chromium, 'firefox': Firefox}[sys.argv.pop()]
WORK = None  # a folder that goes with the test


class Watch:
    """download_watch, and what it has told: a list of (seconds, words)."""

    def __init__(self, browser, home):
        self.told = []
        self._process = processes.start([PROGRAM, home], env=browser.environment, text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self._listener = threading.Thread(target=self._listen)
        self._listener.start()
        await_('a word of download_watch', lambda: self.told)
        assert self.told.pop(0)[1] == ['watching']

    def _listen(self):
        for line in self._process.stdout:
            self.told.append((time.monotonic(), line.rstrip('\n').split('\t')))

    def about(self, word):
        """The lines that begin with it, without it."""
        return [words[1:] for _, words in self.told if words[0] == word]

    def completed(self):
        return [path for path, in self.about('completed')]

    def moment(self, word, path):
        return next(when for when, words in self.told if (words[0], words[-1]) == (word, path))

    def watches(self, file):
        """Whether the item itself is watched, by what the kernel tells of inotify descriptors."""
        wanted = f' ino:{file.stat().st_ino:x} '
        descriptors = pathlib.Path(f'/proc/{self._process.pid}/fdinfo')
        return any(wanted in one.read_text() for one in descriptors.iterdir())

    def end(self):
        self._process.stdin.close()
        status = self._process.wait(60)
        self._listener.join()
        self._process.stdout.close()
        assert status == 0, f'download_watch ended with status {status}'


class Downloads(unittest.TestCase):

    browser = watch = None

    def setUp(self):
        self.addCleanup(processes.end_all)
        self.server = download_server.DownloadServer()
        self.addCleanup(self.server.close)
        place = pathlib.Path(tempfile.mkdtemp(dir=WORK))
        self.home = place / 'home'
        self.home.mkdir()
        self.browser = BROWSER(self.home, self.server.address)
        self.addCleanup(self.browser.let_go)
        self.first, self.second = place / 'first', place / 'second'
        self.first.mkdir()
        self.second.mkdir()

    def make_profile(self):
        self.browser.start()
        self.browser.quit()
        self.browser.save_to(self.first)

    def start_watch(self):
        self.watch = Watch(self.browser, self.home)
        self.addCleanup(self.watch.end)

    def await_completed(self, *paths):
        """Until all have been reported, and for as long as more might come."""
        paths = list(map(str, paths))
        await_(f'a report of {paths}', lambda: set(paths) <= set(self.watch.completed()))
        time.sleep(UNPACKING_TIME + 1)
        self.assertEqual(sorted(self.watch.completed()), sorted(paths))

    def test_each_finished_download_is_reported_once_with_its_final_path(self):
        self.make_profile()
        self.start_watch()
        self.browser.start()
        served = {'film.bin': download_server.noise(), 'papers.zip': download_server.zip_archive(),
                  'source.tar.gz': download_server.tar_archive()}
        for name, contents in served.items():
            self.browser.open(self.server.add(name, contents))
        final = {name: str(self.first / name) for name in served}
        self.await_completed(*final.values())
        # Told of, too, may be an empty file with which Chromium takes the name of an unfinished
        # download: it goes as the download takes its place.
        notified = [told for told in self.watch.about('notified') if told[1] in final.values()]
        self.assertEqual(sorted(notified), [[self.browser.code, path] for path in final.values()])
        for name, contents in served.items():
            self.assertEqual((self.first / name).read_bytes(), contents)
            waited = (self.watch.moment('completed', final[name]) -
                      self.watch.moment('notified', final[name]))
            archive = not name.endswith('.bin')
            self.assertEqual(waited > UNPACKING_TIME - 0.1, archive, f'{name}: {waited} s')

    def test_a_cancelled_download_is_not_reported(self):
        self.make_profile()
        self.start_watch()
        self.browser.start()
        for name in ('film.bin', 'papers.zip'):
            address = self.server.add(name, download_server.noise(), held=True)
            self.browser.open(address)
            await_('a watch on the unfinished download', self.watches_unfinished)
            self.browser.cancel(address)
            await_('the end of the cancelled download', lambda: not any(self.first.iterdir()))
        self.browser.open(self.server.add('after.bin', download_server.noise()))
        self.await_completed(self.first / 'after.bin')

    def watches_unfinished(self):
        """Whether an unfinished download is itself watched. The browser may rename it meanwhile."""
        try:
            return any(self.watch.watches(item) for item in self.first.iterdir()
                       if item.name.endswith(self.browser.unfinished))
        except FileNotFoundError:
            return False

    def test_a_download_folder_that_is_changed_between_two_starts_is_followed(self):
        self.make_profile()
        self.start_watch()
        self.browser.start()
        self.browser.open(self.server.add('film.bin', download_server.noise()))
        self.await_completed(self.first / 'film.bin')
        self.browser.quit()
        self.browser.save_to(self.second)
        self.browser.start()
        self.browser.open(self.server.add('more.bin', download_server.noise()))
        self.await_completed(self.first / 'film.bin', self.second / 'more.bin')

    def test_a_browser_that_is_first_started_while_it_watches_is_followed(self):
        self.start_watch()
        self.browser.start()
        await_('preferences', self.browser.has_preferences)
        downloads = self.home / 'Downloads'
        self.browser.open(self.server.add('film.bin', download_server.noise()))
        self.await_completed(downloads / 'film.bin')
        self.browser.open(self.server.add('more.bin', download_server.noise()))
        self.await_completed(downloads / 'film.bin', downloads / 'more.bin')


class Result(unittest.TextTestResult):
    """Shows what the programs said where a test fails."""

    def addFailure(self, test, error):
        super().addFailure(test, error)
        self._show(test)

    def addError(self, test, error):
        super().addError(test, error)
        self._show(test)

    def _show(self, test):
        self.stream.writeln(test.browser.said() if test.browser else '')
        for when, words in test.watch.told if test.watch else ():
            self.stream.writeln(f'{when:.3f} {" ".join(words)}')


def skip(reason):
    print(f'skipped: {reason}')
    return SKIPPED


def interrupted(number, _):
    raise KeyboardInterrupt(signal.Signals(number).name)


def main():
    """The status to end with."""
    global WORK
    for command in BROWSER.commands:
        if not shutil.which(command):
            return skip(f'{command} is not installed')
    for number in (signal.SIGALRM, signal.SIGHUP, signal.SIGTERM):
        signal.signal(number, interrupted)
    signal.alarm(AT_MOST)
    processes.adopt_orphans()
    with tempfile.TemporaryDirectory(prefix='vantile-browsers-') as WORK:
        tests = unittest.defaultTestLoader.loadTestsFromTestCase(Downloads)
        runner = unittest.TextTestRunner(verbosity=2, failfast=True, resultclass=Result)
        try:
            result = runner.run(tests)
        finally:
            processes.end_all()
    if result.skipped:
        return skip(result.skipped[0][1])
    return 0 if result.wasSuccessful() else 1


if __name__ == '__main__':
    sys.exit(main())
