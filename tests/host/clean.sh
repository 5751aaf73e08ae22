# `clean` where its output is no terminal: a run to its end, the ways to stop it, a reader that
# leaves. The program has little address space, so that the machine does not feel the pressure.
. "$(dirname "$0")/common.sh"
command -v python3 >/dev/null || skip "python3 is not installed"
ulimit -v 1500000 || fail "the address space cannot be limited"

python3 - "$HOST" <<'END'
import re, signal, subprocess, sys, time

host = sys.argv[1]
BEGINNING = "cleaning memory: about 11 s\n"

def start():
    # Whatever runs the tests may ignore signals, which the program would respect.
    return subprocess.Popen([host, "clean"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True,
                            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))

def begun():
    process = start()
    line = process.stdout.readline()
    assert line == BEGINNING, line
    time.sleep(1)  # into the filling
    return process

def ended(process, status, what):
    """The rest of what it printed."""
    output, errors = process.communicate(timeout=30)
    assert process.returncode == status, f"{what}: ended with {process.returncode}"
    assert errors == "", f"{what}: {errors}"
    return output

def check_summary(output, how, what):
    amount = r"[\d.]+ (B|[KMGT]iB)"
    change = rf"\([+-]?{amount}\)|\([^()]*\)"
    lines = (rf"{how} after [\d.]+ s: ({amount} freed|nothing was freed)\n"
             rf"free memory:         {amount} before, {amount} after ({change})\n"
             rf"active and inactive: {amount} before, {amount} after ({change})\n")
    assert re.fullmatch(lines, output), f"{what}: {output}"

process = begun()
check_summary(ended(process, 0, "a whole run"), "finished", "a whole run")

process = begun()
process.send_signal(signal.SIGINT)
line = process.stdout.readline()
assert line == "stopping\n", line
check_summary(ended(process, 130, "Ctrl-C"), "stopped", "Ctrl-C")

# The run itself would rest for a second yet, and then print what it did.
process = begun()
process.send_signal(signal.SIGINT)
process.stdout.readline()
process.send_signal(signal.SIGINT)
output = ended(process, 130, "a second Ctrl-C")
assert output == "", f"a second Ctrl-C: {output}"

def left(process, what):
    process.stdout.close()
    errors = process.stderr.read()
    status = process.wait(30)
    assert (status, errors) == (0, ""), f"{what}: ended with {status}: {errors}"

left(start(), "a reader that was never there")
left(begun(), "a reader that leaves")
END
