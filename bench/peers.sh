#!/usr/bin/env bash
# Times the headless chart export of a one-year, ten-channel minute CSV file against kst2
# drawing the same file, both in this one run, and prints the medians and their ratio.
#
#   bench/peers.sh [CSV] [REPS]
#
# CSV is a file "timestamp,ch1,...,ch10" with ISO times (default
# /tmp/perf/data/load_10ch_1min_1y.csv); REPS the runs per program (default 3). The view
# shows every channel as its own curve over the whole of 2023 at one-minute resolution, so
# both programs draw all 5.26 million samples. Needs kst2 (Debian package kst) and
# /usr/bin/time; builds the release tree when its program is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
csv=$(realpath "${1:-/tmp/perf/data/load_10ch_1min_1y.csv}")
reps=${2:-3}
[ -f "$csv" ] || { echo "No CSV file at $csv" >&2; exit 2; }
command -v kst2 >/dev/null || { echo "kst2 is missing: apt-get install -y kst" >&2; exit 2; }
[ -x /usr/bin/time ] || { echo "/usr/bin/time is missing: apt-get install -y time" >&2; exit 2; }
if [ ! -x build-release/bin/sorano ]; then
  cmake --preset release >/dev/null
  cmake --build --preset release --parallel "$(nproc)" --target sorano sorano_csv
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/data" "$work/etc/xdg/HARVOLD" "$work/home" "$work/xdg/kst" "$work/run"
chmod 700 "$work/run"
name=$(basename "$csv")
ln "$csv" "$work/data/$name" 2>/dev/null || cp "$csv" "$work/data/$name"

# The CSV module on the folder, as address 2. A file's id is the FNV-1a hash of its path
# below the folder, cut to 31 bits; a channel's id is "<file id>#<column>".
cat > "$work/etc/xdg/HARVOLD/Sorano.ini" <<INI
[Software]
HARVOLD\\Sorano\\Settings\\whoami=sorano
HARVOLD\\Sorano\\Settings\\LogPath="$work/log"
HARVOLD\\DataModules\\Peers=Sorano.CSV:2
HARVOLD\\ModuleSettings\\Peers\\Folder="$work/data"
INI
file_id=$(python3 -c 'import sys
h = 2166136261
for b in sys.argv[1].encode(): h = ((h ^ b) * 16777619) & 0xFFFFFFFF
print((h & 0x7FFFFFFF) or 1)' "$name")

{
  cat <<XML
<?xml version="1.0"?>
<sorano-measuring>
  <name>Zehn Kanäle 2023</name>
  <intervall-unit>n</intervall-unit>
  <intervall-count>1</intervall-count>
  <showstatistics>false</showstatistics>
  <viewmode>chart</viewmode>
  <startdate>2023-01-01 00:00:00</startdate>
  <enddate>2024-01-01 00:00:00</enddate>
  <modules>
    <module>2</module>
  </modules>
  <graph-properties>
    <gallery>lines</gallery>
    <legend>true</legend>
    <grid1>true</grid1>
    <title>Zehn Kanäle 2023</title>
  </graph-properties>
  <curves>
XML
  # Ten colours (0x00BBGGRR), so that the curves can be told apart in the picture.
  colors=(255 16711680 32768 16711935 8421376 33023 8388736 16512 0 8421504)
  for c in 1 2 3 4 5 6 7 8 9 10; do
    cat <<XML
    <curve>
      <name>ch$c</name>
      <unit>kW</unit>
      <y-axis>0</y-axis>
      <channels>
        <channel>2\$$file_id#$c</channel>
      </channels>
      <series-properties>
        <color>${colors[c - 1]}</color>
      </series-properties>
    </curve>
XML
  done
  echo "  </curves>"
  echo "</sorano-measuring>"
} > "$work/ten.sor"

# kst2 reads CSV only with its ASCII source set up for it: comma, names in line 0, data
# from line 1, the index column "timestamp" read as formatted time.
cat > "$work/xdg/kst/data.conf" <<'CONF'
[ASCII%20file]
Column%20Type=2
Column%20Delimiter=","
Data%20Start=1
Read%20Fields=true
Fields%20Line=0
Read%20Units=false
Use%20Dot=true
Index=timestamp
Default%20INDEX%20Interpretation=4
ASCII%20Time%20format=yyyy-MM-ddThh:mm:ss
CONF

sorano_cmd=(env QT_QPA_PLATFORM=offscreen HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config"
  XDG_DATA_HOME="$work/home/.local/share" SORANO_MACHINE_SETTINGS="$work/etc/xdg"
  "$root/build-release/bin/sorano" --export-png "$work/sorano.png" "$work/ten.sor")
kst_cmd=(env QT_QPA_PLATFORM=offscreen XDG_CONFIG_HOME="$work/xdg" XDG_RUNTIME_DIR="$work/run"
  kst2 "$work/data/$name" -x timestamp -P P1)
for c in 1 2 3 4 5 6 7 8 9 10; do kst_cmd+=(-y "ch$c"); done
kst_cmd+=(--png "$work/kst.png")

# Wall time and peak memory of one run; fails when the program fails or writes no picture.
run_once() {
  local png=$1
  shift
  rm -f "$png"
  /usr/bin/time -f '%e %M' -o "$work/time" "$@" >"$work/out" 2>&1 || { cat "$work/out" >&2; return 1; }
  [ -s "$png" ] || { echo "no picture from: $*" >&2; return 1; }
  cat "$work/time"
}

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

: > "$work/sorano.times"
: > "$work/kst.times"
# Alternating runs, so that both see the same machine state.
for ((i = 1; i <= reps; i++)); do
  run_once "$work/sorano.png" "${sorano_cmd[@]}" >> "$work/sorano.times"
  run_once "$work/kst.png" "${kst_cmd[@]}" >> "$work/kst.times"
done
s_wall=$(cut -d' ' -f1 "$work/sorano.times" | median)
s_rss=$(cut -d' ' -f2 "$work/sorano.times" | median)
k_wall=$(cut -d' ' -f1 "$work/kst.times" | median)
k_rss=$(cut -d' ' -f2 "$work/kst.times" | median)

echo "| program | wall s (median of $reps) | runs | max RSS MiB |"
echo "|---|---|---|---|"
printf '| sorano --export-png (1600x900) | %s | %s | %d |\n' "$s_wall" \
  "$(cut -d' ' -f1 "$work/sorano.times" | paste -sd/ | sed 's|/| / |g')" $((s_rss / 1024))
printf '| kst2 --png (1280x960) | %s | %s | %d |\n' "$k_wall" \
  "$(cut -d' ' -f1 "$work/kst.times" | paste -sd/ | sed 's|/| / |g')" $((k_rss / 1024))
awk -v s="$s_wall" -v k="$k_wall" 'BEGIN { printf "kst2 / sorano: %.1fx\n", (s > 0 ? k / s : 0) }'
if [ -n "${PEERS_KEEP:-}" ]; then
  mkdir -p "$PEERS_KEEP"
  cp "$work/sorano.png" "$work/kst.png" "$work/ten.sor" "$PEERS_KEEP/"
fi
