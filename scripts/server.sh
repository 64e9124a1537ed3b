#!/usr/bin/env bash
# Starts, stops and checks throwaway PostgreSQL and ClickHouse servers for tests, benchmarks and demos.
# Every file of a server lives in the folder it is given; it listens on a free loopback port only.
#
#   server.sh start   postgres|clickhouse DIR   start (or find running) and print the SQL/HTTP port
#   server.sh stop    postgres|clickhouse DIR   stop it; a folder without a running server is fine
#   server.sh status  postgres|clickhouse DIR   exit 0 when the server answers
#   server.sh destroy postgres|clickhouse DIR   stop it and remove the folder
#
# DIR/port holds the port(s): PostgreSQL one line; ClickHouse the HTTP port, then the native TCP port.
set -euo pipefail

usage() {
  echo "usage: $0 start|stop|status|destroy postgres|clickhouse DIR" >&2
  exit 2
}

[ $# -eq 3 ] || usage
action=$1
kind=$2
dir=$3
case "$action" in start | stop | status | destroy) ;; *) usage ;; esac
case "$kind" in postgres | clickhouse) ;; *) usage ;; esac
[ -n "$dir" ] || usage

startTimeout=60
stopTimeout=20

die() {
  echo "server.sh: $*" >&2
  exit 1
}

# True when something accepts connections on 127.0.0.1:$1.
port_in_use() {
  (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

# Prints a random port in 20000-60000 that nothing listens on and that differs from the arguments.
free_port() {
  local p i
  for i in $(seq 1 200); do
    p=$((20000 + (RANDOM * 32768 + RANDOM) % 40001))
    case " $* " in *" $p "*) continue ;; esac
    port_in_use "$p" || {
      echo "$p"
      return 0
    }
  done
  die "no free port found in 20000-60000"
}

# Prints the last lines of the given log files to stderr.
log_tail() {
  local f
  for f in "$@"; do
    [ -s "$f" ] || continue
    echo "---- $f (last lines) ----" >&2
    tail -n 30 "$f" >&2
  done
}

# Absolute path of DIR, which need not exist yet.
if [ "$action" = start ]; then
  mkdir -p "$dir"
fi
if [ -d "$dir" ]; then
  dir=$(cd "$dir" && pwd -P)
elif [ "$action" = status ]; then
  exit 1
else
  exit 0 # stop/destroy of a folder that does not exist: nothing runs there
fi

portLine() { # portLine N: line N of DIR/port, empty when missing
  [ -f "$dir/port" ] && sed -n "${1}p" "$dir/port" || true
}

# ---------------------------------------------------------------- PostgreSQL

pgBin=""
pg_find_bin() {
  local d
  for d in /usr/lib/postgresql/*/bin; do
    [ -x "$d/pg_ctl" ] && pgBin=$d
  done
  [ -n "$pgBin" ] || pgBin=$(dirname "$(command -v pg_ctl 2>/dev/null || echo /nonexistent/pg_ctl)")
  [ -x "$pgBin/pg_ctl" ] || die "PostgreSQL server binaries (initdb, pg_ctl) not found; run scripts/install-deps.sh"
}

# Runs a server binary as the user that owns the cluster: postgres when we are root, else ourselves.
pg_as_owner() {
  if [ "$(id -u)" -eq 0 ]; then
    (cd / && runuser -u postgres -- "$@")
  else
    "$@"
  fi
}

pgData="$dir/data"
pgLog="$dir/data/server.log"

# The socket folder: DIR/sock unless its socket path would pass the 107-character limit of
# Unix sockets; then a short folder under /tmp, remembered in DIR/socketdir.
pg_socket_dir() {
  if [ -f "$dir/socketdir" ]; then
    cat "$dir/socketdir"
    return
  fi
  local s="$dir/sock"
  if [ $((${#s} + 15)) -gt 107 ]; then
    s=$(mktemp -d /tmp/sorano-pg.XXXXXX)
    echo "$s" >"$dir/socketdir"
  fi
  echo "$s"
}

pg_answers() { # pg_answers PORT [DB]
  [ -n "$1" ] || return 1
  PGCONNECT_TIMEOUT=3 psql -X -q -A -t -h 127.0.0.1 -p "$1" -U sorano -d "${2:-sorano}" \
    -c "SELECT 1" >/dev/null 2>&1
}

pg_running() {
  [ -f "$pgData/PG_VERSION" ] && pg_as_owner "$pgBin/pg_ctl" status -D "$pgData" >/dev/null 2>&1
}

pg_init() {
  if [ "$(id -u)" -eq 0 ]; then
    id postgres >/dev/null 2>&1 || die "user 'postgres' does not exist; install the postgresql package"
    chmod 755 "$dir"
    mkdir -p "$pgData"
    chown postgres: "$pgData"
    chmod 700 "$pgData"
    runuser -u postgres -- test -x "$dir" -a -w "$pgData" ||
      die "user 'postgres' cannot reach $dir; every parent folder must be traversable (chmod o+x)"
  else
    mkdir -p "$pgData"
    chmod 700 "$pgData"
  fi
  pg_as_owner "$pgBin/initdb" -D "$pgData" -U sorano --auth=trust -E UTF8 --locale=C \
    >"$dir/initdb.log" 2>&1 || {
    log_tail "$dir/initdb.log"
    die "initdb failed in $pgData"
  }
  # A throwaway server: speed over durability.
  cat >>"$pgData/postgresql.conf" <<EOF

# Throwaway test server
listen_addresses = '127.0.0.1'
fsync = off
synchronous_commit = off
full_page_writes = off
shared_buffers = 256MB
max_connections = 50
EOF
}

pg_start() {
  local port sock try
  port=$(portLine 1)
  if pg_running; then
    # Started before (perhaps by another caller that is still waiting): wait until it answers.
    for _ in $(seq 1 $((startTimeout * 5))); do
      pg_answers "$port" && {
        echo "$port"
        return 0
      }
      sleep 0.2
      port=$(portLine 1)
    done
    log_tail "$pgLog"
    die "PostgreSQL in $dir runs but does not answer on port ${port:-?}"
  fi
  [ -f "$pgData/PG_VERSION" ] || pg_init
  sock=$(pg_socket_dir)
  mkdir -p "$sock"
  [ "$(id -u)" -eq 0 ] && chown postgres: "$sock"
  for try in 1 2 3; do
    port=$(free_port)
    echo "$port" >"$dir/port"
    if pg_as_owner "$pgBin/pg_ctl" start -D "$pgData" -l "$pgLog" -w -t "$startTimeout" \
      -o "-p $port -k $sock" >"$dir/pg_ctl.log" 2>&1; then
      break
    fi
    # Another process may have taken the port between the check and the start: try another.
    if [ $try -lt 3 ] && grep -q "could not bind\|could not create any TCP/IP sockets" "$pgLog" 2>/dev/null; then
      continue
    fi
    log_tail "$dir/pg_ctl.log" "$pgLog"
    die "PostgreSQL did not start in $dir"
  done
  for _ in $(seq 1 $((startTimeout * 5))); do
    pg_answers "$port" postgres && break
    sleep 0.2
  done
  pg_answers "$port" postgres || {
    log_tail "$pgLog"
    die "PostgreSQL in $dir does not answer on port $port"
  }
  if [ "$(psql -X -q -A -t -h 127.0.0.1 -p "$port" -U sorano -d postgres \
    -c "SELECT count(*) FROM pg_database WHERE datname = 'sorano'")" != 1 ]; then
    psql -X -q -h 127.0.0.1 -p "$port" -U sorano -d postgres -v ON_ERROR_STOP=1 \
      -c "CREATE DATABASE sorano OWNER sorano" >/dev/null || die "could not create database sorano"
  fi
  echo "$port"
}

pg_stop() {
  [ -f "$pgData/PG_VERSION" ] || return 0
  if pg_running; then
    pg_as_owner "$pgBin/pg_ctl" stop -D "$pgData" -m fast -w -t "$stopTimeout" >/dev/null 2>&1 ||
      pg_as_owner "$pgBin/pg_ctl" stop -D "$pgData" -m immediate -w >/dev/null 2>&1 ||
      die "PostgreSQL in $dir did not stop"
  fi
  if [ -f "$dir/socketdir" ]; then
    rm -rf "$(cat "$dir/socketdir")"
    rm -f "$dir/socketdir"
  fi
}

# ---------------------------------------------------------------- ClickHouse

chPidFile="$dir/server.pid"

ch_pid() { # prints the pid of the server of DIR when it runs
  local pid
  [ -f "$chPidFile" ] || return 1
  pid=$(cat "$chPidFile")
  [ -n "$pid" ] && [ -r "/proc/$pid/cmdline" ] || return 1
  # Guard against a reused pid: the process must be a server on this folder's config.
  tr '\0' ' ' <"/proc/$pid/cmdline" | grep -qF -- "--config-file=$dir/config.xml" || return 1
  echo "$pid"
}

ch_answers() { # ch_answers HTTPPORT
  [ -n "$1" ] || return 1
  [ "$(curl -s -m 3 --data-binary 'SELECT 1' "http://127.0.0.1:$1/" 2>/dev/null)" = 1 ]
}

ch_write_config() { # ch_write_config HTTPPORT TCPPORT
  cat >"$dir/config.xml" <<EOF
<?xml version="1.0"?>
<yandex>
  <logger>
    <level>warning</level>
    <log>$dir/log/server.log</log>
    <errorlog>$dir/log/error.log</errorlog>
    <size>10M</size>
    <count>2</count>
  </logger>
  <http_port>$1</http_port>
  <tcp_port>$2</tcp_port>
  <listen_host>127.0.0.1</listen_host>
  <path>$dir/data/</path>
  <tmp_path>$dir/tmp/</tmp_path>
  <user_files_path>$dir/user_files/</user_files_path>
  <format_schema_path>$dir/format_schemas/</format_schema_path>
  <users_config>$dir/users.xml</users_config>
  <default_profile>default</default_profile>
  <default_database>default</default_database>
  <mark_cache_size>268435456</mark_cache_size>
  <uncompressed_cache_size>268435456</uncompressed_cache_size>
</yandex>
EOF
  cat >"$dir/users.xml" <<'EOF'
<?xml version="1.0"?>
<yandex>
  <profiles><default><max_memory_usage>4000000000</max_memory_usage></default></profiles>
  <users>
    <default>
      <password></password>
      <networks><ip>127.0.0.1</ip></networks>
      <profile>default</profile>
      <quota>default</quota>
    </default>
  </users>
  <quotas><default></default></quotas>
</yandex>
EOF
}

ch_start() {
  local bin http tcp pid try
  bin=$(command -v clickhouse-server 2>/dev/null || true)
  [ -n "$bin" ] || [ ! -x /usr/sbin/clickhouse-server ] || bin=/usr/sbin/clickhouse-server
  [ -n "$bin" ] || die "clickhouse-server not found; run scripts/install-deps.sh"
  if pid=$(ch_pid); then
    http=$(portLine 1)
    for _ in $(seq 1 $((startTimeout * 5))); do
      ch_answers "$http" && {
        echo "$http"
        return 0
      }
      sleep 0.2
    done
    log_tail "$dir/log/error.log" "$dir/stdout.log"
    die "ClickHouse in $dir runs (pid $pid) but does not answer on port ${http:-?}"
  fi
  mkdir -p "$dir/data" "$dir/tmp" "$dir/log" "$dir/user_files" "$dir/format_schemas"
  for try in 1 2 3; do
    http=$(free_port)
    tcp=$(free_port "$http")
    printf '%s\n%s\n' "$http" "$tcp" >"$dir/port"
    ch_write_config "$http" "$tcp"
    : >"$dir/log/error.log"
    (cd "$dir" && exec nohup "$bin" --config-file="$dir/config.xml" </dev/null >"$dir/stdout.log" 2>&1) &
    pid=$!
    echo "$pid" >"$chPidFile"
    for _ in $(seq 1 $((startTimeout * 5))); do
      ch_answers "$http" && {
        echo "$http"
        return 0
      }
      kill -0 "$pid" 2>/dev/null || break
      sleep 0.2
    done
    if kill -0 "$pid" 2>/dev/null; then
      kill -9 "$pid" 2>/dev/null || true
      log_tail "$dir/log/error.log" "$dir/stdout.log"
      die "ClickHouse in $dir did not answer on port $http within ${startTimeout}s"
    fi
    rm -f "$chPidFile"
    # Another process may have taken a port between the check and the start: try others.
    if [ $try -lt 3 ] && grep -qi "address already in use" "$dir/log/error.log" "$dir/stdout.log" 2>/dev/null; then
      continue
    fi
    log_tail "$dir/log/error.log" "$dir/stdout.log"
    die "ClickHouse did not start in $dir"
  done
}

ch_stop() {
  local pid
  pid=$(ch_pid) || {
    rm -f "$chPidFile"
    return 0
  }
  kill "$pid" 2>/dev/null || true
  for _ in $(seq 1 $((stopTimeout * 10))); do
    [ -d "/proc/$pid" ] || break
    sleep 0.1
  done
  if [ -d "/proc/$pid" ]; then
    kill -9 "$pid" 2>/dev/null || true
    for _ in $(seq 1 50); do
      [ -d "/proc/$pid" ] || break
      sleep 0.1
    done
  fi
  rm -f "$chPidFile"
}

# ----------------------------------------------------------------

case "$kind" in
postgres)
  pg_find_bin
  case "$action" in
  start) pg_start ;;
  stop) pg_stop ;;
  status) pg_running && pg_answers "$(portLine 1)" || exit 1 ;;
  destroy) pg_stop && rm -rf "$dir" ;;
  esac
  ;;
clickhouse)
  case "$action" in
  start) ch_start ;;
  stop) ch_stop ;;
  status) ch_pid >/dev/null && ch_answers "$(portLine 1)" || exit 1 ;;
  destroy) ch_stop && rm -rf "$dir" ;;
  esac
  ;;
esac
