# `info` as a table and as JSON, beside what the machine's own tools say.
. "$(dirname "$0")/common.sh"

"$HOST" info >"$WORK/table" 2>"$WORK/err" || fail "info ended with $?"
check "info prints a line a property" [ "$(grep -Ecv '^(volume|  used for):' "$WORK/table")" -eq 13 ]
check "info complains of nothing" [ ! -s "$WORK/err" ]
check "the table has this machine's name" grep -qFx "host name:          $(uname -n)" "$WORK/table"
check "the table has this user" grep -qFx "user:               $(id -nru)" "$WORK/table"
check "all values stand in one column" [ -z "$(grep -v '^[^:]*:  *[^ ]' "$WORK/table")" ]

"$HOST" info --json >"$WORK/json" || fail "info --json ended with $?"
check "info --json prints one line" [ "$(wc -l <"$WORK/json")" -eq 1 ]

"$HOST" info >/dev/full 2>"$WORK/err"
status=$?
check "an output that takes nothing ends it with 1, not $status" [ "$status" -eq 1 ]
check "it says so in a line" [ "$(wc -l <"$WORK/err")" -eq 1 ]

command -v python3 >/dev/null || skip "python3 is not installed"
python3 - "$WORK/json" "$WORK/table" <<'END' || fail "the JSON is not as it should be"
import json, os, sys

with open(sys.argv[1], encoding="utf-8") as file:
    info = json.load(file)
assert list(info) == [
    "computerName", "sysName", "sysUserName", "sysFullUserName", "sysOSName", "sysOSVersion",
    "sysPhysicalMemory", "sysSerialNumber", "sysUUID", "sysModelID", "sysProcessorName",
    "sysProcessorSpeed", "sysProcessorCount", "volumes"], list(info)
assert info["sysName"] == os.uname().nodename, info
assert info["sysOSName"] is None, info
assert info["sysPhysicalMemory"] == os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE"), info
for volume in info["volumes"]:
    space = os.statvfs(volume["disk_path"])
    assert volume["disk_totalsize"] == space.f_blocks * space.f_frsize, volume
with open(sys.argv[2], encoding="utf-8") as file:
    lines = [line for line in file if line.startswith("volume:")]
assert len(lines) == len(info["volumes"]), lines
END

# On a volume that was counted before, in a root of our own, `info` knows what it is used for.
[ "$(id -u)" -eq 0 ] && command -v mkfs.ext4 >/dev/null || {
  echo "not shown here: a counted volume (needs root and mkfs.ext4)"
  exit 0
}
cat >"$WORK/root.sh" <<'END'
mkfs.ext4 -q "$WORK/image" && mkdir "$WORK/root" && mount -o loop "$WORK/image" "$WORK/root" || exit 77
cd "$WORK/root" && mkdir proc cache program || exit 77
for folder in dev usr lib lib64 etc; do
  [ -d "/$folder" ] || continue
  mkdir "$folder" && mount --rbind "/$folder" "$folder" || exit 77
done
mount -t proc proc proc && mount --bind "$(dirname "$HOST")/.." program || exit 77
head -c 3000000 /dev/zero >film.mkv
cp "$SUPPRESSED" suppressed || exit 1
run() {
  LD_LIBRARY_PATH=/program/vantile XDG_CACHE_HOME=/cache HOME=/ TSAN_OPTIONS=suppressions=/suppressed \
    chroot . "/program/host/$(basename "$HOST")" "$@"
}
run stream --monitors disk | grep -m 1 -q '"disk_movies":30' || exit # kept before it is told
# The library reads it on a thread that others go before: on a busy machine it may come too late.
for _ in 1 2 3 4 5 6 7 8; do
  run info >"$WORK/counted" || exit
  grep -q '^  used for:  *movies 2.86 MiB, apps ' "$WORK/counted" && exit
done
exit 1
END
truncate -s 32M "$WORK/image"
SUPPRESSED=$(cd "$(dirname "$0")/.." && pwd)/tsan.supp
export WORK HOST SUPPRESSED
unshare --mount sh "$WORK/root.sh"
case $? in
  0) ;;
  77) echo "not shown here: a counted volume (nothing can be mounted)" ;;
  *) cat "$WORK/counted" 2>/dev/null
     fail "a volume that was counted is not told so" ;;
esac
