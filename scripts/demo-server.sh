#!/usr/bin/env bash
# Starts a PostgreSQL or ClickHouse server of the build tree's own with the demo data loaded, registers
# the matching data module as the "Demo" source (so that the example views read from the server), and
# starts the program on it, as scripts/run.sh does. The server stops when the program ends.
#   scripts/demo-server.sh postgres|clickhouse [VIEW.sor ...]
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

kind=${1:-}
case "$kind" in
  postgres|clickhouse) shift ;;
  *) echo "usage: scripts/demo-server.sh postgres|clickhouse [VIEW.sor ...]" >&2; exit 2 ;;
esac

scripts/install-deps.sh
cmake --preset app >/dev/null
cmake --build --preset app --parallel "$(nproc)"

demo_db="$root/build/demo/sorano-demo.sqlite"
if [ ! -f "$demo_db" ] || [ build/bin/sorano-demodata -nt "$demo_db" ]; then
  mkdir -p build/demo
  build/bin/sorano-demodata --force "$demo_db"
fi

server_dir="$root/build/demo/$kind-server"
port=$(scripts/server.sh start "$kind" "$server_dir")
trap 'scripts/server.sh stop "$kind" "$server_dir"' EXIT

# The demo data is copied once, and again when the demo database is newer than the copy.
loaded="$server_dir/demo-loaded"
if [ ! -f "$loaded" ] || [ "$demo_db" -nt "$loaded" ]; then
  echo "Loading the demo data into $kind on port $port ..." >&2
  rm -f "$loaded"
  if [ "$kind" = postgres ]; then
    build/bin/sorano-storeload postgres "host=127.0.0.1 port=$port dbname=sorano user=sorano" demo "$demo_db"
  else
    build/bin/sorano-storeload clickhouse "http://127.0.0.1:$port/" demo "$demo_db"
  fi
  touch "$loaded"
fi

# scripts/run.sh writes the settings with these lines in place of the SQLite module's.
registration="$server_dir/registration.ini"
if [ "$kind" = postgres ]; then
  cat > "$registration" <<INI
HARVOLD\\DataModules\\Demo=Sorano.PostgreSQL:1
HARVOLD\\ModuleSettings\\Demo\\Connection="host=127.0.0.1 port=$port dbname=sorano user=sorano"
HARVOLD\\ModuleSettings\\Demo\\Schema=demo
INI
else
  cat > "$registration" <<INI
HARVOLD\\DataModules\\Demo=Sorano.ClickHouse:1
HARVOLD\\ModuleSettings\\Demo\\URL="http://127.0.0.1:$port/"
HARVOLD\\ModuleSettings\\Demo\\Database=demo
INI
fi
echo "The $kind server runs on 127.0.0.1:$port with the demo data; it stops when Sorano ends." >&2
SORANO_DEMO_REGISTRATION="$registration" scripts/run.sh "$@"
