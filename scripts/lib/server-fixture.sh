# Shell functions shared by the private test servers (scripts/pg-cluster, scripts/mariadb-cluster).
# Sourced, never run.

# True when something listens on the loopback port.
port_in_use() {
    (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

# A port between 20000 and 59999 that nothing listens on now. Another build tree may still take it
# before the server binds, so callers retry on a bind error.
pick_port() {
    local port
    for _ in $(seq 1 50); do
        port=$((20000 + RANDOM % 40000))
        if ! port_in_use "$port"; then
            echo "$port"
            return 0
        fi
    done
    echo "no free port found" >&2
    return 1
}

# write_file <file> <content>: replaced in one step, so readers never see half a file.
write_file() {
    local tmp
    tmp=$(mktemp "$1.XXXXXX")
    printf '%s' "$2" >"$tmp"
    chmod 644 "$tmp"
    mv -f "$tmp" "$1"
}

# odbc_ini_part <ini> <part> [<content>]: the user odbc.ini of a test run is shared by the servers of
# one build tree, which may start and stop at the same time. Each keeps its data sources in
# <ini>.parts/<part>; the file itself is rebuilt from every part under a lock. Without content the
# part is removed, and with the last part the file goes too.
odbc_ini_part() {
    local ini=$1 part=$2 parts=$1.parts
    mkdir -p "$parts"
    (
        flock 9
        if [ $# -ge 3 ]; then
            write_file "$parts/$part" "$3"
        else
            rm -f "$parts/$part"
        fi
        local all="" file
        for file in "$parts"/*; do
            [ -f "$file" ] || continue
            all+=$(cat "$file")$'\n\n'
        done
        if [ -n "$all" ]; then
            write_file "$ini" "$all"
        else
            rm -f "$ini"
        fi
    ) 9>"$ini.lock"
}
