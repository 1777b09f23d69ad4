# Private ODBC configuration of a build tree.
#
# Writes ${QUORDA_ODBC_DIR}/odbcinst.ini (the drivers) and ${QUORDA_ODBC_DIR}/odbc.ini (system data
# sources) at generate time, so that the demo and the tests never depend on /etc/odbc*.ini. Point
# unixODBC at them with ODBCSYSINI=${QUORDA_ODBC_DIR} and ODBCINSTINI=odbcinst.ini. The PostgreSQL and
# MariaDB data sources need the port of their test server, which is only known when it starts:
# scripts/pg-cluster and scripts/mariadb-cluster write them into the user file
# ${QUORDA_TEST_ENV_DIR}/odbc.ini (ODBCINI) of the test run.

set(QUORDA_ODBC_DIR ${PROJECT_BINARY_DIR}/odbc)
set(QUORDA_TEST_ENV_DIR ${PROJECT_BINARY_DIR}/test-env)
set(QUORDA_DEMO_DATABASE ${PROJECT_BINARY_DIR}/demo/quorda-demo.db)

# SQLite creates database files but not their folders.
file(MAKE_DIRECTORY ${QUORDA_ODBC_DIR} ${QUORDA_TEST_ENV_DIR} ${PROJECT_BINARY_DIR}/demo)

# quorda_find_odbc_driver(<var> <file name>): the driver library in the multiarch odbc folder.
function(quorda_find_odbc_driver var file)
  find_library(${var} NAMES ${file} PATH_SUFFIXES odbc HINTS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/odbc)
  if(NOT ${var})
    message(WARNING "ODBC driver ${file} not found; run scripts/setup. Registering the Debian path.")
    set(${var} /usr/lib/x86_64-linux-gnu/odbc/${file} CACHE FILEPATH "ODBC driver ${file}" FORCE)
  endif()
endfunction()

quorda_find_odbc_driver(QUORDA_SQLITE3_ODBC_DRIVER libsqlite3odbc.so)
quorda_find_odbc_driver(QUORDA_PSQL_ANSI_ODBC_DRIVER psqlodbca.so)
quorda_find_odbc_driver(QUORDA_PSQL_UNICODE_ODBC_DRIVER psqlodbcw.so)
quorda_find_odbc_driver(QUORDA_MARIADB_ODBC_DRIVER libmaodbc.so)

# The fault-injection driver is a target of tests/support; it is registered only when that target
# exists (a build without tests has none).
set(_quorda_fault_driver "[QuordaFault]
Description=Quorda fault-injection driver (tests only)
Driver=$<TARGET_FILE:quorda_fault_odbc>
")
set(_quorda_fault_dsn "[QuordaTestFault]
Description=Quorda fault-injection driver with script and log from QUORDA_FAULT_SCRIPT and QUORDA_FAULT_LOG
Driver=QuordaFault
")

file(GENERATE OUTPUT ${QUORDA_ODBC_DIR}/odbcinst.ini CONTENT "[ODBC]
Trace=No

[SQLite3]
Description=SQLite3 ODBC driver
Driver=${QUORDA_SQLITE3_ODBC_DRIVER}

[PostgreSQL ANSI]
Description=PostgreSQL ODBC driver (ANSI)
Driver=${QUORDA_PSQL_ANSI_ODBC_DRIVER}

[PostgreSQL Unicode]
Description=PostgreSQL ODBC driver (Unicode)
Driver=${QUORDA_PSQL_UNICODE_ODBC_DRIVER}

[MariaDB Unicode]
Description=MariaDB Connector/ODBC
Driver=${QUORDA_MARIADB_ODBC_DRIVER}

$<$<TARGET_EXISTS:quorda_fault_odbc>:${_quorda_fault_driver}>")

# Timeout is SQLite's busy timeout in milliseconds: parallel test processes may share the DSN's file.
file(GENERATE OUTPUT ${QUORDA_ODBC_DIR}/odbc.ini CONTENT "[QuordaDemo]
Description=Quorda demo database
Driver=SQLite3
Database=${QUORDA_DEMO_DATABASE}
Timeout=5000

[QuordaTestSQLite]
Description=Quorda tests: SQLite database shared by connect-by-name tests
Driver=SQLite3
Database=${QUORDA_TEST_ENV_DIR}/dsn-sqlite.db
Timeout=10000

$<$<TARGET_EXISTS:quorda_fault_odbc>:${_quorda_fault_dsn}>")
