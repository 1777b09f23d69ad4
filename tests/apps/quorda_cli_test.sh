#!/usr/bin/env bash
# One case of the quorda command-line tests: runs the program as a person would, on a fresh SQLite
# database, and checks its output, its files and its exit codes.
#
#   quorda_cli_test.sh <quorda binary> <work folder> <case>
set -uo pipefail

quorda=$1
work=$2/$3
case=$3
rm -rf "$work" && mkdir -p "$work"
export QUORDA_DATABASE=$work/cli.db
out=$work/out
err=$work/err
failures=0

fail() {
    echo "FAIL [$case]: $*" >&2
    echo "--- stdout" >&2 && cat "$out" >&2
    echo "--- stderr" >&2 && cat "$err" >&2
    failures=$((failures + 1))
}
# run <expected exit code> <arguments...>
run() {
    local expected=$1
    shift
    "$quorda" "$@" >"$out" 2>"$err"
    local code=$?
    if [ "$expected" = nonzero ]; then
        [ $code -ne 0 ] || fail "quorda $* exited 0"
    elif [ $code -ne "$expected" ]; then
        fail "quorda $* exited $code, expected $expected"
    fi
}
expect_out() { grep -qF -- "$1" "$out" || fail "stdout lacks: $1"; }
expect_err() { grep -qF -- "$1" "$err" || fail "stderr lacks: $1"; }
same() { [ "$1" = "$2" ] || fail "expected [$2], got [$1]"; }

people() {
    run 0 exec "create table people (id integer primary key, name varchar(40), score double precision)"
    run 0 exec "insert into people values (1, 'O''Brien, Pat', 2.5)"
    run 0 exec "insert into people values (:id, :name, NULL)" -p id=2 -p "name=Ann"
}

case $case in
help)
    run 0 --help
    for word in dsns drivers tables columns query exec export import "$QUORDA_DATABASE" QUORDA_DATABASE; do
        expect_out "$word"
    done
    for command in dsns drivers tables columns query exec export import; do
        run 0 "$command" --help
        expect_out "Usage: quorda $command"
    done
    run nonzero frobnicate
    run nonzero
    ;;
catalog)
    run 0 dsns
    expect_out "QuordaDemo"
    run 0 drivers
    expect_out "SQLite3"
    people
    run 0 tables
    expect_out "people"
    run 0 columns people
    expect_out "score   Float"
    run nonzero columns missing_table
    expect_err "SQLSTATE"
    ;;
query)
    people
    run 0 exec "update people set score = score + 1 where id < :limit" -p limit=10
    expect_out "2 rows affected"
    run 0 query "select id, name, score from people where id >= :id order by id" -p id=1
    same "$(cat "$out")" "$(printf 'id  name          score\n--  ------------  -----\n1   O'"'"'Brien, Pat  3.5\n2   Ann           NULL\n(2 rows)')"
    run 0 query "select id, name, score from people order by id" --csv
    same "$(cat "$out")" "$(printf 'id,name,score\r\n1,"O'"'"'Brien, Pat",3.5\r\n2,Ann,\r')"
    run nonzero query "select nothing from nowhere"
    expect_err "SQLSTATE"
    expect_err "native error"
    run nonzero query "select * from people where id = :id" -p bad
    expect_err "is not name=value"
    run 1 query "select * from people where id = :id"
    expect_err "Parameter :id has no value: give it with -p id=VALUE"
    run 1 query "delete from people"
    expect_err "returns no rows: run it with quorda exec"
    ;;
transfer)
    people
    run 0 export people "$work/people.txt"
    expect_out "2 rows exported"
    same "$(od -An -c "$work/people.txt" | tr -s ' ' | tr -d '\n')" \
        "$(printf "id,name,score\r\n1,'O''Brien, Pat',2.5\r\n2,'Ann',\r\n" | od -An -c | tr -s ' ' | tr -d '\n')"
    run 0 exec "create table copy (id integer primary key, name varchar(40), score double precision)"
    run 0 exec "insert into copy values (2, 'old', 1)"
    run 0 import "$work/people.txt" copy --key "where id = :id"
    run 0 query "select name from copy where id = 2" --csv
    same "$(cat "$out")" "$(printf 'name\r\nold\r')"
    run 0 import "$work/people.txt" copy --key "where id = :id" --update
    expect_out "2 lines imported into copy"
    run 0 query "select count(*) as n, min(name) as m from copy" --csv
    same "$(cat "$out")" "$(printf "n,m\r\n2,Ann\r")"
    # Without a key every line is appended: the existing keys make it fail, all or nothing.
    run 1 import "$work/people.txt" copy
    expect_err "at line 2 of the file"
    run 0 exec "create table appended (id integer primary key, name varchar(40), score double precision)"
    run 0 import "$work/people.txt" appended
    expect_out "2 lines imported into appended"
    run 0 query "select count(*) as n, max(score) as s from appended" --csv
    same "$(cat "$out")" "$(printf "n,s\r\n2,2.5\r")"
    run 0 export "select name from people where id = 2" "$work/one.txt"
    same "$(cat "$work/one.txt")" "$(printf "name\r\n'Ann'\r")"
    ;;
line5000)
    people
    {
        printf 'id,name,score\r\n'
        for i in $(seq 2 4999); do printf '%d,'"'"'p%d'"'"',%d.5\r\n' $((i + 10)) "$i" "$i"; done
        printf '6000,'"'"'bad'"'"',12x\r\n'
    } >"$work/big.txt"
    run 1 import "$work/big.txt" people --key "where id = :id"
    expect_err '"12x" is an invalid float'
    expect_err "at line 5000 of the file"
    run 0 query "select count(*) from people" --csv
    same "$(tail -n1 "$out")" "$(printf '2\r')"
    ;;
errors)
    people
    run 1 import "$work/missing.txt" people
    expect_err "Cannot open file \"$work/missing.txt\": No such file or directory"
    run 1 export people "$work/no/such/folder/out.txt"
    expect_err "Cannot write file"
    run 1 export "select nothing from nowhere" "$work/out.txt"
    [ ! -e "$work/out.txt" ] || fail "a failed export left $work/out.txt"
    ls -A "$work" | grep -q '^\.out\.txt\.' && fail "a failed export left its temporary file"
    run 1 -c "Driver=SQLite3;Database=$work/no/such/folder/x.db;PWD=s3cret;Password={a;b}" tables
    expect_err "PWD=***"
    expect_err "Password=***"
    grep -q s3cret "$err" && fail "the password was printed"
    run nonzero -d QuordaDemo -c "Driver=SQLite3" tables
    ;;
pgsql | mariadb)
    # A private server by data source name, user and password; a table of this run's own.
    if [ "$case" = pgsql ]; then
        # shellcheck disable=SC1091
        source "$QUORDA_TEST_ENV_DIR/pg/pg.env"
        dsn=$QUORDA_PG_DSN_ANSI user=$QUORDA_PG_USER password=quorda syntax_state=42601
    else
        # shellcheck disable=SC1091
        source "$QUORDA_TEST_ENV_DIR/mariadb/mariadb.env"
        dsn=$QUORDA_MARIADB_DSN user=$QUORDA_MARIADB_USER password=$QUORDA_MARIADB_PASSWORD
        syntax_state=37000
    fi
    srv() { run "$1" -d "$dsn" -u "$user" -P "$password" "${@:2}"; }
    t=cli_$$_$RANDOM
    srv 0 exec "create table $t (id bigint primary key, name text, at date)"
    srv 0 exec "insert into $t values (9007199254740993, 'x, ''y''', '2024-02-29'), (2, NULL, NULL)"
    srv 0 export "$t" "$work/t.txt"
    srv 0 exec "delete from $t where id = 2"
    srv 0 import "$work/t.txt" "$t" --key "where id = :id" --update
    srv 0 query "select id, name, at from $t order by id" --csv
    same "$(cat "$out")" "$(printf 'id,name,at\r\n2,,\r\n9007199254740993,"x, '"'y'"'",2024-02-29\r')"
    srv 1 query "select * from $t where"
    expect_err "SQLSTATE $syntax_state"
    srv 0 exec "drop table $t"
    ;;
*)
    echo "unknown case $case" >&2
    exit 2
    ;;
esac
[ $failures -eq 0 ] && echo "quorda $case: passed"
exit $((failures > 0))
