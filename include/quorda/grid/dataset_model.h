#pragma once

#include "quorda/db/bookmark.h"

#include <QAbstractTableModel>
#include <QString>
#include <memory>
#include <vector>

namespace quorda {

class TDataSet;
class TDataSource;
class TDataSetModelLink;

// A Qt table model over any dataset, for Qt's own item views. Rows are read in chunks as the view
// asks for more (canFetchMore / fetchMore); each row read keeps its bookmark and its texts, so the
// view can show and edit it without moving the dataset about. Opening, closing, refreshing or
// editing the dataset elsewhere resets the model.
class QUORDA_API TDataSetModel : public QAbstractTableModel {
public:
    explicit TDataSetModel(QObject* Parent = nullptr);
    ~TDataSetModel() override;

    TDataSource* DataSource() const;
    void SetDataSource(TDataSource* Value);
    TDataSet* DataSet() const;
    // Rows read per fetchMore.
    int ChunkSize() const { return FChunkSize; }
    void SetChunkSize(int Value) { FChunkSize = Value > 0 ? Value : 1; }

    int rowCount(const QModelIndex& Parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& Parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& Index, int Role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& Index, const QVariant& Value, int Role = Qt::EditRole) override;
    QVariant headerData(int Section, Qt::Orientation Orientation, int Role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& Index) const override;
    bool canFetchMore(const QModelIndex& Parent = QModelIndex()) const override;
    void fetchMore(const QModelIndex& Parent = QModelIndex()) override;

    // Forgets every row read (the next fetchMore starts from the first record).
    void Reset();

private:
    friend class TDataSetModelLink;

    struct TRow {
        TBookmarkStr Bookmark;
        std::vector<QString> Display;
        std::vector<QString> Edit;
    };
    // The texts of the dataset's active record.
    TRow ReadRow() const;
    void DataSetEvent();
    void EndReset();

    std::unique_ptr<TDataSetModelLink> FLink;
    std::vector<TRow> FRows;
    int FChunkSize = 256;
    bool FAtEnd = false;
    // Set while the model moves the dataset itself: the events that causes are its own.
    bool FBusy = false;
    // Set while a change is being announced: views that ask for more rows then get them later.
    bool FAnnouncing = false;
};

} // namespace quorda
