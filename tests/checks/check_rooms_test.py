"""check_rooms_test.py CHECK_ROOMS: each kind of offence is found, and a clean house passes."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECKER = sys.argv.pop()


class CheckRooms(unittest.TestCase):

    def check(self, path, text):
        """What the checker prints for a house that consists of one file, and how it ends."""
        with tempfile.TemporaryDirectory() as root:
            file = pathlib.Path(root, path)
            file.parent.mkdir(parents=True)
            file.write_text(text)
            run = subprocess.run([sys.executable, CHECKER, root], capture_output=True, text=True)
            return run.stdout, run.returncode

    def assert_offence(self, path, text, part):
        printed, status = self.check(path, text)
        self.assertEqual(status, 1, printed)
        self.assertIn(part, printed)

    def assert_clean(self, path, text):
        printed, status = self.check(path, text)
        self.assertEqual(status, 0, printed)

    def test_a_room_may_include_those_below_it_and_the_standard_library(self):
        self.assert_clean('vantile/memory/a.cpp', '#include <vector>\n#include "vantile/utility/b.h"\n')

    def test_a_room_may_not_include_one_above_it(self):
        self.assert_offence('vantile/utility/a.h', '#include "vantile/memory/b.h"\n', 'is below')
        self.assert_offence('vantile/foundation/a.h', '#include "vantile/platform/b.h"\n', 'is below')

    def test_two_subsystems_may_not_include_each_other(self):
        self.assert_offence('vantile/memory/a.h', '#include "vantile/disk/b.h"\n', 'neighbour')

    def test_only_adapters_include_their_own_adapters(self):
        inclusion = '#include "vantile/platform/linux/b.h"\n'
        self.assert_offence('vantile/memory/a.h', inclusion, 'includes an adapter')
        self.assert_offence('vantile/platform/macos/a.h', inclusion, 'includes an adapter')
        self.assert_clean('vantile/platform/linux/a.h', inclusion)

    def test_adapters_share_what_posix_gives_and_it_knows_none_of_them(self):
        self.assert_clean('vantile/platform/macos/a.h', '#include "vantile/platform/posix/b.h"\n')
        self.assert_offence('vantile/memory/a.h', '#include "vantile/platform/posix/b.h"\n', 'adapter')
        self.assert_offence('vantile/platform/posix/a.h', '#include "vantile/platform/linux/b.h"\n',
                            'adapter')

    def test_operating_system_headers_stand_in_the_adapters_only(self):
        inclusion = '#include <unistd.h>\n'
        self.assert_offence('vantile/platform/parsers/a.cpp', inclusion, 'unistd.h')
        self.assert_clean('vantile/platform/linux/a.cpp', inclusion)

    def test_conditions_stand_in_the_adapters_only(self):
        condition = '#ifdef __linux__\n#endif\n'
        self.assert_offence('vantile/memory/a.cpp', condition, 'condition')
        self.assert_clean('vantile/platform/macos/a.cpp', condition)

    def test_kernel_folders_are_named_in_one_place(self):
        self.assert_offence('vantile/platform/linux/a.cpp', 'auto a = "/proc/stat";\n', 'roots.h')
        self.assert_clean('vantile/platform/linux/roots.h', 'auto a = "/proc";\n')

    def test_a_room_that_is_not_known_is_named(self):
        self.assert_offence('vantile/attic/a.h', '', 'attic')
        self.assert_offence('vantile/memory/a.h', '#include "vantile/attic/a.h"\n', 'attic')

    def test_a_file_longer_than_one_sitting_is_named(self):
        self.assert_offence('host/a.cpp', '\n' * 401, '401 lines')


unittest.main()
