#include "demo_entity.h"

#include "demo_sql.h"
#include "quorda/db/field.h"
#include "quorda/entity.h"
#include "quorda/rtl/data_module.h"
#include "quorda/rtl/stream.h"
#include "quorda/tools/query_helpers.h"

#include <iostream>
#include <memory>
#include <string>

namespace quorda::demo {

namespace {

// Orders as the user sees them, with the customer's name looked up in the customers table; rows are
// written to the orders table.
class TOrdersEntity : public TEntity {
public:
    TOrdersEntity() : TEntity(nullptr) {
        SetFactTable("orders");
        SetViewTable("orders");
        SetviewEntity("ORDERS");
        CreateField("id", "Order", "", 6, true, true, true, false, ftInteger, cnstETPK);
        CreateField("customer_id", "Customer no", "", 6, true, false, false, false, ftInteger, cnstETField);
        CreateField("name", "Customer", "", 30, true, true, false, true, ftString, cnstETView)
            ->SetSelectStr("(select c.name from customers c where c.id = customer_id) as name");
        CreateField("order_date", "Date", "", 10, true, true, false, true, ftDate, cnstETField);
        CreateField("status", "Status", "", 10, true, true, false, true, ftString, cnstETField);
    }
    bool CheckUpdate() override { return true; }
};

void Print(const std::string& Caption, const TStrings& Lines) {
    std::cout << "  " << Caption << ":\n";
    for (int I = 0; I < Lines.Count(); ++I) {
        std::cout << "    | " << Lines[I] << '\n';
    }
}

void PrintRow(const TDataSet& DataSet) {
    std::string Line = "   ";
    for (int I = 0; I < DataSet.Fields().Count(); ++I) {
        Line += " " + DataSet.Fields()[I]->AsString();
    }
    std::cout << Line << '\n';
}

// From the current row on (the lock query is forward-only).
void PrintRows(TDataSet& DataSet) {
    for (; !DataSet.Eof(); DataSet.Next()) {
        PrintRow(DataSet);
    }
}

const char* LockText(TLockResult Result) {
    switch (Result) {
    case lrOk:
        return "lrOk";
    case lrLocked:
        return "lrLocked";
    case lrDeleted:
        return "lrDeleted";
    }
    return "?";
}

void PrintShownRows(TDataSet& DataSet) {
    for (DataSet.First(); !DataSet.Eof(); DataSet.Next()) {
        std::string Line = "   ";
        for (int I = 0; I < DataSet.Fields().Count(); ++I) {
            Line += " " + DataSet.Fields()[I]->DisplayText();
        }
        std::cout << Line << '\n';
    }
}

// Loads the order totals as configured at design time and shipped in a data module file (read-only
// columns of the view from a fixed date on, at least a minimum total, largest first), opens them and
// finds a customer by the beginning of its name.
void ShowOrderTotalsEntity() {
    std::cout << "\n== A user entity loaded from a data module file ==\n";
    const auto Module = TDataModule::CreateFromFile(QUORDA_DEMO_MODULE);
    auto* Totals = dynamic_cast<TUserEntity*>(Module->FindComponent("OrderTotals"));
    if (Totals == nullptr) {
        throw EDatabaseError(std::string("No user entity OrderTotals in ") + QUORDA_DEMO_MODULE);
    }
    // Filter values live in the settings, not in the module.
    Totals->SetFieldFilter("total", 100.0);
    Totals->EntityOpen();
    TEntityQuery& Query = *Totals->DataQuery();
    Print("order totals from 5 March, at least 100, largest first", Query.SQL());
    PrintShownRows(Query);

    Query.First();
    Totals->SetFieldFind("customer", "brennan");
    const bool Found = Totals->Find();
    std::cout << "  find a customer starting with \"brennan\" (any case): "
              << (Found ? "order " + Query.FieldByName("order_id")->AsString() + ", " +
                              Query.FieldByName("customer")->AsString()
                        : std::string("none"))
              << '\n';
    Totals->SetFieldFind("customer", "Nobody");
    std::cout << "  find \"Nobody\": " << (Totals->Find() ? "found" : "none, still on order ")
              << Query.FieldByName("order_id")->AsString() << '\n';

    TStringStream Text;
    Module->SaveToStream(Text, TStreamFormat::Text);
    std::cout << "  the module in its text form (" << QUORDA_DEMO_MODULE << "), first lines:\n";
    TStringList Lines;
    Lines.SetText(Text.DataString());
    for (int I = 0; I < Lines.Count() && I < 22; ++I) {
        std::cout << "    | " << Lines[I] << '\n';
    }
    std::cout << "    | ... (" << Lines.Count() << " lines)\n";
}

} // namespace

void ShowOrdersEntity(TODBCDatabase& db) {
    std::cout << "\n== An entity over the orders ==\n";
    DataBase = &db;
    {
        TOrdersEntity Orders;
        TStringList Text;

        // The selection ordered by the status column: the status first, then the other sortable
        // columns in their declared order.
        Orders.SetOrdering(Orders.lstFields().IndexOf("status"));
        Orders.GenerateSQLSelection(Orders.DataQuery()->SQL());
        Print("selection ordered by status", Orders.DataQuery()->SQL());
        OpenQry(Orders.DataQuery());
        PrintRows(*Orders.DataQuery());
        Orders.DataQuery()->Close();

        const long long Id = Scalar(db, "select max(id) + 1 from orders");
        Orders.SetFieldValue("id", static_cast<std::int32_t>(Id));
        Orders.SetFieldValue("customer_id", 3);
        Orders.SetFieldValue("order_date", "2024-03-20");
        Orders.SetFieldValue("status", "open");
        Orders.GenerateSQLInsert(Text);
        Print("add", Text);
        Orders.Add();

        Orders.GenerateSQLLock(Text);
        Print("lock", Text);
        std::cout << "  lock result: " << LockText(Orders.Lock()) << "; the row re-read after the lock:\n";
        PrintRow(*Orders.LockQuery());

        // The values to write start as the locked row; only the status changes.
        for (int I = 0; I < Orders.FieldCount(); ++I) {
            TFieldItem* Field = Orders.GetFields(I);
            if (TField* Column = Orders.LockQuery()->FindField(Field->FactName())) {
                Field->SetValue(Column->AsVariant());
            }
        }
        Orders.SetFieldValue("status", "invoiced");
        Orders.GenerateSQLUpdate(Text);
        Print("edit (only the status changed)", Text);
        std::cout << "  rows updated: " << Orders.Edit().AsInteger() << '\n';
        // Compared with the row a new lock re-reads, nothing differs any more: no statement runs.
        Orders.Lock();
        std::cout << "  locked again and edited with nothing changed: " << Orders.Edit().AsInteger()
                  << " rows, no statement\n";

        Orders.GenerateSQLDelete(Text);
        Print("delete", Text);
        std::cout << "  rows deleted: " << Orders.Delete().AsInteger() << '\n';
    }
    ShowOrderTotalsEntity();
    DataBase = nullptr;
}

} // namespace quorda::demo
