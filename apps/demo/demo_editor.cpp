#include "demo_editor.h"

#include "demo_sql.h"
#include "quorda/core/odbc_query.h"
#include "quorda/ext/odbc_ext_dataset.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

namespace quorda::demo {
namespace {

void Heading(const std::string& title) {
    std::cout << "\n== " << title << " ==\n";
}

void PrintLines(TODBCExtQuery& lines, const std::string& moment) {
    std::cout << "  " << moment << '\n';
    lines.First();
    for (; !lines.Eof(); lines.Next()) {
        std::printf("    line %-2s product %-2s quantity %4s x %8.2f\n",
                    lines.FieldByName("line_no")->AsString().c_str(),
                    lines.FieldByName("product_id")->AsString().c_str(),
                    lines.FieldByName("quantity")->AsString().c_str(),
                    lines.FieldByName("unit_price")->AsFloat());
    }
    lines.First();
}

std::unique_ptr<TODBCQuery> Statement(TODBCDatabase& db, const std::string& text) {
    auto query = std::make_unique<TODBCQuery>(nullptr);
    query->SetODBCDatabase(&db);
    query->SQL().SetText(text);
    return query;
}

// The values of the record being posted go to the statement's parameters of the same names; the
// key of an edited row is its value before the edit.
void BindLine(TODBCQuery& statement, TDataSet* lines, bool OldKey) {
    for (const char* name : {"order_id", "line_no", "product_id", "quantity", "unit_price"}) {
        TODBCParam* param = statement.FindParam(name);
        if (param == nullptr) {
            continue;
        }
        TField* field = lines->FieldByName(name);
        const bool key = std::string(name) == "order_id" || std::string(name) == "line_no";
        const Variant value = key && OldKey ? field->OldValue() : field->AsVariant();
        if (std::string(name) == "unit_price") {
            param->SetAsCurrency(value.AsDouble());
        } else {
            param->SetAsInteger(value.AsInteger());
        }
    }
}

} // namespace

void EditOrderLines(TODBCDatabase& db) {
    const long long order = Scalar(db, "select max(id) from orders");
    Heading("Order editor: the lines of order " + std::to_string(order));
    auto update = Statement(db, "update order_lines set product_id = :product_id, quantity = :quantity, "
                                "unit_price = :unit_price where order_id = :order_id and line_no = :line_no");
    auto insert =
        Statement(db, "insert into order_lines values (:order_id, :line_no, :product_id, :quantity, "
                      ":unit_price)");
    auto remove = Statement(db, "delete from order_lines where order_id = :order_id and line_no = :line_no");

    TODBCExtQuery lines(nullptr);
    lines.SetODBCDatabase(&db);
    lines.SQL().SetText("select order_id, line_no, product_id, quantity, unit_price from order_lines "
                        "where order_id = :order_id order by line_no");
    lines.ParamByName("order_id")->SetAsInteger(static_cast<std::int32_t>(order));
    lines.OnUpdateRec = [&](TDataSet* DataSet, TUpdateKind, TUpdateAction&) {
        BindLine(*update, DataSet, true);
        update->ExecSQL();
        std::cout << "  OnUpdateRec: UPDATE changed " << update->RowsAffected() << " row\n";
    };
    lines.OnInsertRec = [&](TDataSet* DataSet, TUpdateKind, TUpdateAction&) {
        BindLine(*insert, DataSet, false);
        insert->ExecSQL();
        std::cout << "  OnInsertRec: INSERT added " << insert->RowsAffected() << " row\n";
    };
    lines.OnDeleteRec = [&](TDataSet* DataSet, TUpdateKind, TUpdateAction&) {
        BindLine(*remove, DataSet, false);
        remove->ExecSQL();
        std::cout << "  OnDeleteRec: DELETE removed " << remove->RowsAffected() << " row\n";
    };
    lines.Open();
    PrintLines(lines, "as stored:");

    lines.Edit();
    TField* quantity = lines.FieldByName("quantity");
    quantity->SetAsInteger(quantity->AsInteger() + 1);
    std::cout << "  editing line 1: quantity " << quantity->OldValue().AsString() << " -> "
              << quantity->AsString() << " (" << lines.ModifiedField() << " field changed)\n";
    lines.Post();
    PrintLines(lines, "after the edit, refreshed:");

    const long long next =
        Scalar(db, "select max(line_no) + 1 from order_lines where order_id = " + std::to_string(order));
    lines.Append();
    lines.FieldByName("order_id")->SetAsInteger(static_cast<std::int32_t>(order));
    lines.FieldByName("line_no")->SetAsInteger(static_cast<std::int32_t>(next));
    lines.FieldByName("product_id")->SetAsInteger(8);
    lines.FieldByName("quantity")->SetAsInteger(2);
    lines.FieldByName("unit_price")->SetAsFloat(7.95);
    lines.Post();
    PrintLines(lines, "after inserting line " + std::to_string(next) + ", refreshed:");

    lines.Next();
    std::cout << "  deleting line " << lines.FieldByName("line_no")->AsString() << '\n';
    lines.Delete();
    lines.Refresh();
    PrintLines(lines, "after the delete, refreshed:");
    lines.Close();
}

} // namespace quorda::demo
