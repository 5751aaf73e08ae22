# A signal ends a stream at once, with the status that shells expect.
. "$(dirname "$0")/common.sh"
command -v python3 >/dev/null || skip "python3 is not installed"

python3 - "$HOST" <<'EOF'
import fcntl, os, signal, subprocess, sys, time

host = sys.argv[1]

def start(**options):
    # Whatever runs the tests may ignore signals, which the program would respect.
    ready = lambda: [signal.signal(number, signal.SIG_DFL)
                     for number in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP)]
    return subprocess.Popen([host, "stream"], stdout=subprocess.PIPE, preexec_fn=ready, **options)

for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT):
    process = start()
    process.stdout.readline()
    process.send_signal(number)
    status = process.wait(10)
    assert status == 128 + number, f"{number.name}: ended with {status}"

# One page of pipe is full after a few samples, which nobody reads.
process = start()
fcntl.fcntl(process.stdout, 1031, 4096)  # F_SETPIPE_SZ
time.sleep(7)
process.send_signal(signal.SIGTERM)
status = process.wait(10)
assert status == 128 + signal.SIGTERM, f"with a full pipe: ended with {status}"
EOF
