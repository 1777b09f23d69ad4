// Which databases are pooled connections ready for use by other threads: a connection joins the
// session in its base constructor, before it is whole, so threads walking the session's list pass
// over it until its own constructor has finished, and again once its destructor has begun.
#pragma once

namespace quorda {

class TODBCDatabase;
class TMultiODBCDataBase;

namespace multidb_detail {
void MarkPooledReady(TMultiODBCDataBase* DataBase, bool Ready);
// The pooled connection behind Database, or null when it is none or not whole.
TMultiODBCDataBase* ReadyPooled(TODBCDatabase* Database);

// While one lives, pooled connections made on this thread stay out of the ready set until marked:
// the pool opens a connection it grows by before other threads may choose it.
class TDeferPooledReady {
public:
    TDeferPooledReady();
    ~TDeferPooledReady();
    TDeferPooledReady(const TDeferPooledReady&) = delete;
    TDeferPooledReady& operator=(const TDeferPooledReady&) = delete;
};
} // namespace multidb_detail

} // namespace quorda
