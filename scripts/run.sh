#!/usr/bin/env bash
# Installs what is missing, builds the program, writes its machine-wide settings as an
# installer would, and starts it. Arguments are passed on (for example .sor files); without
# any, the example view examples/Hauptzaehler.sor is opened.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
scripts/install-deps.sh
cmake --preset app >/dev/null
cmake --build --preset app --parallel "$(nproc)"

# Demo data for the SQLite module, written once and again when the generator changed.
demo_db="$root/build/demo/sorano-demo.sqlite"
if [ ! -f "$demo_db" ] || [ build/bin/sorano-demodata -nt "$demo_db" ]; then
  mkdir -p build/demo
  build/bin/sorano-demodata --force "$demo_db" || echo "Could not write the demo data; the Demo module will report it." >&2
fi

# Two profiles that fit the demo site, copied once so that the user's changes stay.
[ -f build/demo/Profiles.dat ] || cp examples/Profiles.dat build/demo/Profiles.dat

# The machine-wide settings of this build tree: build/etc/xdg/HARVOLD/Sorano.ini, with the
# SQLite module registered as "Demo" (ProgID:address) on the demo database, and the add-in.
lang_offset=0
[ "${SORANO_LANG:-de}" = "en" ] && lang_offset=1000
# scripts/demo-server.sh hands over the lines of a server module that takes the SQLite module's place.
demo_module="HARVOLD\\DataModules\\Demo=Sorano.SQLite:1
HARVOLD\\ModuleSettings\\Demo\\Database=\"$demo_db\""
if [ -n "${SORANO_DEMO_REGISTRATION:-}" ]; then
  demo_module=$(cat "$SORANO_DEMO_REGISTRATION")
fi
mkdir -p build/etc/xdg/HARVOLD build/log
cat > build/etc/xdg/HARVOLD/Sorano.ini <<INI
[Software]
HARVOLD\\Sorano\\Settings\\LangOffset=$lang_offset
HARVOLD\\Sorano\\Settings\\whoami=sorano
HARVOLD\\Sorano\\Settings\\LogPath="$root/build/log"
HARVOLD\\Sorano\\Settings\\LogMode=3
HARVOLD\\Sorano\\Settings\\Profiles="$root/build/demo/Profiles.dat"
HARVOLD\\Sorano\\AddIns\\RemoveGaps=Sorano.RemoveGaps
$demo_module
INI

# Without arguments the main-meter example view on the demo data opens.
if [ "$#" -eq 0 ]; then
  set -- "$root/examples/Hauptzaehler.sor"
fi

if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && command -v xvfb-run >/dev/null; then
  echo "No display found: starting under Xvfb." >&2
  exec xvfb-run -a build/bin/sorano "$@"
fi
exec build/bin/sorano "$@"
