#include "quorda/db/dataset.h"
#include "quorda/db/field.h"
#include "quorda/tools/text_transfer.h"
#include "text_file_p.h"

namespace quorda {

void ExportBookmarks(TDataSet* DataSet, const std::vector<std::string>& Bookmarks,
                     const std::string& FileName, const TTransferProgress& Progress) {
    TLineWriter file(FileName, false);
    const TFields& fields = DataSet->Fields();
    std::string line;
    for (int i = 0; i < fields.Count(); ++i) {
        line += i > 0 ? "," : "";
        line += fields[i]->FieldName();
    }
    file.WriteLine(line);
    std::int64_t rows = 0;
    for (const std::string& bookmark : Bookmarks) {
        DataSet->GotoBookmark(TBookmark(bookmark));
        line.clear();
        for (int i = 0; i < fields.Count(); ++i) {
            line += i > 0 ? "," : "";
            AppendFieldValue(line, *fields[i]);
        }
        file.WriteLine(line);
        if (Progress) {
            Progress(++rows);
        }
    }
    file.Close();
}

} // namespace quorda
