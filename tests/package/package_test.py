"""package_test.py BUILD CONSUMER: installs the library into a folder of its own and uses it from
outside, through CMake and through pkg-config. Checks names and flags of the libraries, too."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

CONSUMER = sys.argv.pop()
BUILD = sys.argv.pop()

C_NAMES = set('''get_folder_size trv_all_app trv_sub_app trv_sub_download stopClearMemory clear_memory
auto_calloc auto_free add_memory_block add_memory_block_ex get_memory_info int_timer uninit_time
signal_handler cleanmemorycomplete WatchQueueRenameNotification WatchQueueWriteNotification
WatchQueueDeleteNotification WatchQueueAttributeChangeNotification WatchQueueSizeIncreaseNotification
WatchQueueLinkCountChangeNotification WatchQueueAccessRevocationNotification downloadcallback
applicationcallback appcallback folder_app_callback PowerSourceChanged SMCOpen SMCClose SMCCall SMCReadKey
SMCGetTemperature _strtoul _ultostr'''.split())

# What hosts use, and what the one library uses of the other: no more of the C++ names is seen.
PUBLIC_NAMES = set('''
appendingPathComponent CPUStatus Dictionary doubleValue FolderWatcher FreshInterval FSWatchQueue
GeneralUtility intValue isLessThanOrEqual isNilOrEmpty keepForGood KVDBatteryInfo KVDDisk
KVDMemory KVDSystemInfo lastPathComponent logLine makeLoopDriver makeMainLoopDriver NetManage
NetPPP Network NotificationCenter onFirstThread operator pathExtension ProcessInfo ProcessStats
Queue RunLoop setHostResourceFolder setLogSink startWithString systemTextPatterns
systemWorkerQueue Timer twoDecimals Value WatchApplication WatchDownload WatchQueuePathEntry
WatchTrash withoutLastPathComponent withoutPathExtension
'''.split())
SHARED_NAMES = set('''
makeInterfaceCounters makeVolumeCategories systemApplications systemBatteryEntry
systemBatteryRecords systemBrowsers systemChildTasks systemConfigurationStore systemEntries
systemFacts systemFileEvents systemFileSystem systemFolderReader systemHostMemory
systemHostResources systemInterfaceFacts systemIntervalAlarm systemLaunchedApplications
systemPowerSources systemPppDaemon systemPressureMemory systemProcessLister systemProcessors
systemPropertyLists systemSmcService systemStandardFolders systemSwapAreas systemTextFolding
systemTextPieces systemThreads systemTimeRemaining systemVersion systemVolumes systemWorkspace
WalkedEntry walkFolder
'''.split())


def run(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode:
        raise AssertionError(f'{" ".join(map(str, command))}\n{done.stdout}{done.stderr}')
    return done.stdout


class Package(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.work = pathlib.Path(tempfile.mkdtemp())
        first = cls.work / 'first'
        run('cmake', '--install', BUILD, '--prefix', first)
        cls.prefix = cls.work / 'moved'  # an installed tree may be moved
        first.rename(cls.prefix)
        cls.libraries = next(cls.prefix.rglob('libvantile.so')).parent
        cls.environment = dict(os.environ, LD_LIBRARY_PATH=str(cls.libraries),
                               PKG_CONFIG_PATH=str(cls.libraries / 'pkgconfig'))

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.work)

    def test_a_cmake_project_finds_and_uses_it(self):
        build = self.work / 'cmake'
        run('cmake', '-G', 'Ninja', '-S', CONSUMER, '-B', build, f'-DCMAKE_PREFIX_PATH={self.prefix}')
        run('cmake', '--build', build)
        self.assertEqual(run(build / 'consumer', env=self.environment), 'ok\n')

    def test_a_pkg_config_user_finds_and_uses_it(self):
        program = self.work / 'consumer'
        flags = run('pkg-config', '--cflags', '--libs', 'vantile', env=self.environment).split()
        run('c++', '-std=c++20', pathlib.Path(CONSUMER, 'main.cpp'), *flags, '-o', program)
        self.assertEqual(run(program, env=self.environment), 'ok\n')

    def test_the_installed_host_finds_its_libraries(self):
        plain = {name: value for name, value in os.environ.items() if name != 'LD_LIBRARY_PATH'}
        self.assertIn('vantile-host', run(self.prefix / 'bin/vantile-host', '--help', env=plain))

    def test_every_installed_header_stands_by_itself(self):
        include = self.prefix / 'include'
        for header in sorted(include.rglob('*.h')):
            with self.subTest(header.name):
                run('c++', '-std=c++20', '-fsyntax-only', '-Wall', '-Wextra', '-Werror', '-x', 'c++',
                    '-I', include, '-', input=f'#include <{header.relative_to(include)}>')

    def test_exactly_the_public_names_are_exported(self):
        names = set()
        for name in ('libvantile.so', 'libvantile-utility.so'):
            symbols = run('nm', '-D', '--defined-only', '--demangle', self.libraries / name)
            names |= {line.split(' ', 2)[2] for line in symbols.splitlines()}
        ours = re.compile(r'(?:(?:typeinfo(?: name)?|vtable|guard variable) for )?vantile::(\w+)')
        matches = {name: ours.match(name) for name in names}
        self.assertEqual({name for name, match in matches.items() if not match}, C_NAMES)
        self.assertEqual({match[1] for match in matches.values() if match},
                         PUBLIC_NAMES | SHARED_NAMES)

    def test_the_libraries_have_sonames_and_stay_where_they_are(self):
        for name in ('libvantile', 'libvantile-utility'):
            dynamic = run('readelf', '-dW', self.libraries / f'{name}.so')
            self.assertIn(f'soname: [{name}.so.0.1]', dynamic)
            self.assertIn('NODELETE', dynamic)


unittest.main()
