#include "quorda/db/dataset.h"
#include "quorda/db/field.h"
#include "quorda/tools/text_transfer.h"
#include "text_file_p.h"

namespace quorda {

void ExportDataSet(TDataSet* DataSet, const std::string& FileName, const TTransferProgress& Progress) {
    TLineWriter file(FileName, false);
    const TFields& fields = DataSet->Fields();
    std::string line = fields[0]->FieldName();
    for (int i = 1; i < fields.Count(); ++i) {
        line += ',';
        line += fields[i]->FieldName();
    }
    file.WriteLine(line);
    // From the current record on: callers position the dataset.
    std::int64_t rows = 0;
    while (!DataSet->Eof()) {
        line.clear();
        for (int i = 0; i < fields.Count(); ++i) {
            if (i > 0) {
                line += ',';
            }
            AppendFieldValue(line, *fields[i]);
        }
        file.WriteLine(line);
        DataSet->Next();
        if (Progress) {
            Progress(++rows);
        }
    }
    file.Close();
}

void SaveQryToFile(const std::string& FileName, const std::string& LeadText, TDataSet* DataSet,
                   const std::vector<std::string>& Fields) {
    if (DataSet->Eof()) {
        return;
    }
    TLineWriter file(FileName, true);
    std::string line;
    while (!DataSet->Eof()) {
        line = LeadText;
        // Only the number of entries counts: field j is taken by position.
        for (std::size_t j = 0; j < Fields.size(); ++j) {
            line += ',';
            AppendFieldValue(line, *DataSet->Fields()[static_cast<int>(j)]);
        }
        file.WriteLine(line);
        DataSet->Next();
    }
    file.Close();
}

} // namespace quorda
