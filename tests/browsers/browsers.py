"""Chromium and Firefox as a user has them, in a home of the test's own, steered through their
remote protocols: DevTools and WebDriver BiDi."""
import configparser
import json
import os
import re
import unittest

from processes import Display, Program, await_
from websocket import Remote

# What Chromium says where it can build no sandbox: by itself, with chromium-sandbox.
NO_SANDBOX = 'No usable sandbox|Failed to move to new namespace'


def environment_of(home, proxy):
    """What a program needs to take `home` for its home, and nothing of this session: neither its
    display nor its message bus. Requests to other machines end at `proxy`."""
    return {
        'PATH': os.environ.get('PATH', os.defpath),
        'LANG': 'C.UTF-8',
        'HOME': str(home),
        'XDG_CONFIG_HOME': str(home / '.config'),
        'XDG_CACHE_HOME': str(home / '.cache'),
        'XDG_DATA_HOME': str(home / '.local/share'),
        'XDG_STATE_HOME': str(home / '.local/state'),
        'XDG_RUNTIME_DIR': str(home / 'run'),
        'TMPDIR': str(home / 'tmp'),
        'DBUS_SESSION_BUS_ADDRESS': 'disabled:',
        'DBUS_SYSTEM_BUS_ADDRESS': 'disabled:',
        'http_proxy': proxy,
        'https_proxy': proxy,
        'all_proxy': proxy,
        'no_proxy': '127.0.0.1,localhost',
    }


class Browser:
    """What the two have in common. The first start makes the profile."""

    _program = _remote = None

    def __init__(self, home, proxy):
        self._home = home
        for folder in ('run', 'tmp'):
            (home / folder).mkdir(mode=0o700)
        self.environment = environment_of(home, proxy)

    def start(self):
        self._program = Program(self._home, self._command(), self.environment)
        listening = await_(f'the start of {self.name}', self._listening)
        self._remote = Remote(listening[1] + self.session_path)
        self._greet()

    def quit(self):
        self._say_goodbye()
        self.let_go()
        status = self._program.status()
        assert status == 0, f'{self.name} ended with status {status}'

    def let_go(self):
        if self._remote:
            self._remote.close()

    def said(self):
        return self._program.said() if self._program else ''

    def has_preferences(self):
        """Whether it has written its preferences, which at first takes a while."""
        return self._preferences().exists()

    def _listening(self):
        is_running, said = self._program.is_running(), self.said()
        if not is_running and re.search(NO_SANDBOX, said):
            raise unittest.SkipTest(f'{self.name} may build no sandbox here')
        assert is_running, f'{self.name} has ended'
        return re.search(r'listening on (ws://\S+)\n', said)


class Chromium(Browser):
    name, code, unfinished = 'chromium', 'chbw', '.crdownload'
    commands = ('chromium', 'Xvfb')
    session_path = ''

    def __init__(self, home, proxy):
        super().__init__(home, proxy)
        # Without a display of its own it denies downloads.
        self.environment['DISPLAY'] = Display(home, self.environment).name

    def _command(self):
        as_root = ['--no-sandbox'] if os.geteuid() == 0 else []
        return ['chromium', *as_root, '--no-first-run', '--password-store=basic',
                '--remote-debugging-port=0', 'about:blank']

    def _greet(self):
        self._remote.call('Browser.setDownloadBehavior', behavior='default', eventsEnabled=True)

    def _say_goodbye(self):
        self._remote.call('Browser.close')

    def _preferences(self):
        return self._home / '.config/chromium/Default/Preferences'

    def save_to(self, folder):
        """Sets the download folder while the browser is not running."""
        file = self._preferences()
        preferences = json.loads(file.read_text())
        preferences.setdefault('download', {})['default_directory'] = str(folder)
        fresh = file.with_name('.new')
        fresh.write_text(json.dumps(preferences))
        fresh.rename(file)

    def open(self, address):
        """Opens a link in a tab of its own."""
        self._remote.call('Target.createTarget', url=address)

    def cancel(self, address):
        begun = self._remote.event('Browser.downloadWillBegin', lambda what: what['url'] == address)
        self._remote.call('Browser.cancelDownload', guid=begun['guid'])


class Firefox(Browser):
    name, code, unfinished = 'firefox-esr', 'fibw', '.part'
    commands = ('firefox-esr',)
    session_path = '/session'

    def __init__(self, home, proxy):
        super().__init__(home, proxy)
        # Its remote settings go round a proxy that refuses. With this it takes them from where a
        # browser that is steered shall take them: nowhere.
        self.environment['MOZ_REMOTE_SETTINGS_DEVTOOLS'] = '1'

    def _command(self):
        return ['firefox-esr', '--headless', '--remote-debugging-port=0',
                '--remote-allow-system-access', 'about:blank']

    def _greet(self):
        self._remote.call('session.new', capabilities={})

    def _say_goodbye(self):
        self._remote.call('browser.close')

    def _preferences(self):
        base = self._home / '.mozilla/firefox'
        if not base.exists():
            base = self._home / '.config/mozilla/firefox'
        installs = configparser.ConfigParser()
        installs.read(base / 'installs.ini')
        return base / installs[installs.sections()[0]]['Default'] / 'prefs.js'

    def save_to(self, folder):
        """Sets the download folder while the browser is not running."""
        file = self._preferences()
        kept = [line for line in file.read_text().splitlines(True)
                if 'browser.download.dir"' not in line
                and 'browser.download.folderList"' not in line]
        fresh = file.with_name('prefs.new')
        fresh.write_text(''.join(kept) + 'user_pref("browser.download.folderList", 2);\n'
                         f'user_pref("browser.download.dir", {json.dumps(str(folder))});\n')
        fresh.rename(file)

    def open(self, address):
        """Opens a link in a tab of its own."""
        self._in_its_window(f'openTrustedLinkIn({json.dumps(address)}, "tab")')

    def cancel(self, address):
        """As the button in its list of downloads does."""
        self._in_its_window('''(async () => {
          const { Downloads } = ChromeUtils.importESModule(
            "resource://gre/modules/Downloads.sys.mjs");
          const list = await Downloads.getList(Downloads.ALL);
          const download = (await list.getAll()).find(one => one.source.url === %s);
          await download.cancel();
          await download.removePartialData();
        })()''' % json.dumps(address))

    def _in_its_window(self, script):
        windows = self._remote.call('browsingContext.getTree', **{'moz:scope': 'chrome'})
        window = windows['contexts'][0]['context']
        answer = self._remote.call('script.evaluate', expression=script, target={'context': window},
                                   awaitPromise=True)
        assert answer['type'] == 'success', answer
