#include "demo_cursor.h"

#include "demo_sql.h"
#include "quorda/core/odbc_query.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/stream.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

namespace quorda::demo {
namespace {

void Heading(const std::string& title) {
    std::cout << "\n== " << title << " ==\n";
}

// One order line of the query as a line of text.
void PrintLine(TDataSet& lines) {
    std::printf("  %-6s %-3s %-30s %4s x %8.2f  %s\n", lines.FieldByName("order_id")->AsString().c_str(),
                lines.FieldByName("line_no")->AsString().c_str(),
                lines.FieldByName("product")->AsString().c_str(),
                lines.FieldByName("quantity")->AsString().c_str(), lines.FieldByName("unit_price")->AsFloat(),
                FormatDateTime("yyyy-mm-dd", lines.FieldByName("order_date")->AsDateTime()).c_str());
}

// A long, several-line note for the first product: more than the 8192 bytes a text column binds, so
// only the blob stream delivers it whole.
void EnsureProductNotes(TODBCDatabase& db) {
    Exec(db, "create table if not exists product_notes (product_id integer primary key, note text)");
    if (Scalar(db, "select count(*) from product_notes") > 0) {
        return;
    }
    std::string note;
    for (int i = 1; i <= 200; ++i) {
        note += "Service note " + std::to_string(i) +
                ": charge the battery fully before first use; "
                "keep the chuck free of dust.\n";
    }
    Exec(db, "insert into product_notes values (1, '" + note + "')");
}

} // namespace

void ShowCursor(TODBCDatabase& db) {
    Heading("Order lines since :since (a parameterised query)");
    TODBCQuery lines(nullptr);
    lines.SetODBCDatabase(&db);
    lines.SQL().SetText(
        "select l.order_id, l.line_no, p.name as product, l.quantity, l.unit_price, o.order_date\n"
        "from order_lines l join orders o on o.id = l.order_id\n"
        "join products p on p.id = l.product_id\n"
        "where o.order_date >= :since order by l.order_id, l.line_no");
    lines.ParamByName("since")->SetAsDate(EncodeDate(2024, 3, 7));
    lines.Open();
    TBookmark third;
    for (int row = 1; !lines.Eof(); ++row) {
        if (row == 3) {
            third = lines.GetBookmark();
        }
        PrintLine(lines);
        lines.Next();
    }

    Heading("The same rows walked back from the end");
    lines.Last();
    while (!lines.Bof()) {
        PrintLine(lines);
        lines.Prior();
    }

    Heading("Back to the bookmark taken on the third row");
    lines.GotoBookmark(third);
    PrintLine(lines);

    Heading("Counting the rows");
    std::cout << "  by stepping through them: " << lines.RecordCount() << '\n';
    TODBCQuery counted(nullptr);
    counted.SetODBCDatabase(&db);
    counted.SQL().SetText(lines.SQL().Text());
    counted.ParamByName("since")->SetAsDate(EncodeDate(2024, 3, 7));
    counted.Open();
    std::cout << "  by probing positions:     " << counted.GetRecordCountExt() << '\n';
    std::cout << "  the cursor stayed on the bookmarked row:\n";
    PrintLine(lines);

    Heading("A product note read through a blob stream");
    EnsureProductNotes(db);
    TODBCQuery notes(nullptr);
    notes.SetODBCDatabase(&db);
    notes.SQL().SetText("select p.name, n.note from products p join product_notes n on n.product_id = p.id "
                        "where p.id = :id");
    notes.ParamByName("id")->SetAsInteger(1);
    notes.Open();
    TField* note = notes.FieldByName("note");
    std::unique_ptr<TStream> stream = notes.CreateBlobStream(note, bmRead);
    std::string text(static_cast<std::size_t>(stream->Size()), '\0');
    stream->ReadBuffer(text.data(), stream->Size());
    std::cout << "  " << notes.FieldByName("name")->AsString() << ": " << text.size()
              << " bytes (the field binds " << note->Size() << "), first and last lines:\n";
    std::cout << "    " << text.substr(0, text.find('\n')) << "\n    ...\n";
    const std::size_t lastStart = text.rfind('\n', text.size() - 2);
    std::cout << "    " << text.substr(lastStart + 1, text.size() - lastStart - 2) << '\n';
}

} // namespace quorda::demo
