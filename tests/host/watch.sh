# What `watch` prints for real downloads, applications and a real Trash, and how it ends.
. "$(dirname "$0")/common.sh"
command -v python3 >/dev/null || skip "python3 is not installed"

own_folders

python3 - "$HOST" <<'END' || fail "what it prints is not as it should be"
import json, os, pathlib, signal, subprocess, sys, tempfile, threading, time

host = sys.argv[1]
work = pathlib.Path(os.environ["WORK"])
downloads = pathlib.Path(os.environ["DOWNLOADS"])
trash = work / "data/Trash/files"
LONG = 30  # seconds, for what takes a fraction of one

class Watch:
    """A running program, ended after a while whatever happens."""

    def __init__(self, *arguments, before=()):
        self.errors = tempfile.TemporaryFile("w+")
        # Whatever runs the tests may ignore signals, which the program would respect.
        self.process = subprocess.Popen(
            [*before, host, *arguments], stdout=subprocess.PIPE, stderr=self.errors, text=True,
            encoding="utf-8", preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
        self.guard = threading.Timer(LONG, self.process.kill)
        self.guard.start()

    def next(self):
        line = self.process.stdout.readline()
        assert line, f"nothing more is told; {self.ended(None)}"
        report = json.loads(line)
        assert list(report) == ["time", "monitor", "operation", "arguments"], line
        assert abs(report["time"] - time.time()) < LONG, line
        return report["monitor"], report["operation"], *report["arguments"]

    def expect(self, *expected):
        told = self.next()
        assert told == expected, f"told {told}, not {expected}"

    def watches(self, path):
        """Waits until the kernel watches that very file for the program."""
        wanted = f" ino:{os.stat(path).st_ino:x} "
        end = time.monotonic() + LONG
        while time.monotonic() < end:
            for descriptor in pathlib.Path(f"/proc/{self.process.pid}/fdinfo").iterdir():
                try:
                    if wanted in descriptor.read_text():
                        return
                except FileNotFoundError:
                    pass  # it was closed meanwhile
            time.sleep(0.02)
        raise AssertionError(f"{path} is not watched")

    def ended(self, number):
        if number:
            self.process.send_signal(number)
        rest = self.process.stdout.read()
        status = self.process.wait(LONG)
        self.guard.cancel()
        self.errors.seek(0)
        return status, rest, self.errors.read()

    def check_end(self, number, status):
        end = self.ended(number)
        assert end == (status, "", ""), f"ended with {end}, not {status}"

def finish_download(watch, name):
    unfinished = downloads / os.fsdecode(name + b".crdownload")
    unfinished.write_text("a film")
    watch.watches(unfinished)
    unfinished.rename(downloads / os.fsdecode(name))

def install(folder, name):
    """In one step, so that nobody sees half of it; gives the bytes."""
    made = work / name
    made.write_text("[Desktop Entry]\nType=Application\nName=A\nExec=a\n")
    made.rename(folder / name)
    return (folder / name).stat().st_size

# A download is told once, and nothing else is.
watch = Watch("watch", "downloads")
watch.watches(downloads)
finish_download(watch, b"film.mp4")
watch.expect("downloads", "downloadFileCompleted", f"{downloads}/film.mp4")
finish_download(watch, b"caf\xff.mp4")
watch.expect("downloads", "downloadFileCompleted", f"{downloads}/caf\ufffd.mp4")
watch.check_end(signal.SIGTERM, 143)

# The Trash, which is made, and a signal from the keyboard.
watch = Watch("watch", "trash")
watch.expect("trash", "trashUsedSizeChanged", 0)
size = install(trash, "a.desktop")
watch.expect("trash", "trashAddedApp", f"{trash}/a.desktop")
watch.expect("trash", "trashUsedSizeChanged", size)
watch.check_end(signal.SIGINT, 130)

# The lines of all watchers count.
watch = Watch("watch", "downloads,applications", "trash", "--count", "2")
watch.expect("trash", "trashUsedSizeChanged", size)
finish_download(watch, b"book.pdf")
watch.expect("downloads", "downloadFileCompleted", f"{downloads}/book.pdf")
watch.check_end(None, 0)

# What is told at the start may be all that was asked for.
watch = Watch("stream", "--monitors", "trash", "--count", "1")
watch.expect("trash", "trashUsedSizeChanged", size)
watch.check_end(None, 0)

# In a stream each monitor counts for itself, also where one reports before the next is started.
watch = Watch("stream", "--monitors", "trash,memory", "--count", "1")
watch.expect("trash", "trashUsedSizeChanged", size)
assert watch.next()[0] == "memory"
watch.check_end(None, 0)

# The applications' folder is the machine's: another one takes its place, for the program alone.
applications = work / "applications"
applications.mkdir()
before = ["unshare", "--map-root-user", "--mount", "sh", "-c",
          'mount --bind "$0" /usr/share/applications && exec "$@"', str(applications)]
try:
    possible = subprocess.run([*before, "true"], stderr=subprocess.DEVNULL).returncode == 0
except OSError:
    possible = False
if possible:
    watch = Watch("watch", "applications,trash", before=before)
    watch.expect("trash", "trashUsedSizeChanged", size)  # applications are watched by then
    install(applications, "b.desktop")
    watch.expect("applications", "appAdded", "/usr/share/applications/b.desktop")
    watch.check_end(signal.SIGTERM, 143)
else:
    print("not shown here: applications (no folder can be mounted)")
END

# The reader is gone before there is anything to tell.
{
  "$HOST" watch downloads
  echo $? >"$WORK/status"
} | true
check "a reader that left is noticed" [ "$(cat "$WORK/status")" -eq 0 ]
