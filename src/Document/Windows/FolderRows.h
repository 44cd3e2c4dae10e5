#pragma once

#include <QAbstractListModel>
#include <vector>

#include "Document/FolderListing.h"
#include "Document/Windows/Places.h"

namespace kiv {

// One row of a folder as it is shown: made off the main thread.
struct FolderRow {
    std::string name;
    QString text, size, changed;
    bool isFolder = false;
    bool canBeWritten = false;  // a file in a form that sounds are saved in
};

// Folders first, each kind in the order of the user's language, numbers in names by their value.
std::vector<FolderRow> folderRows(const FolderListing &listing, std::time_t now);

// The rows of a folder for a RowList.
class FolderRows : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    void setRows(std::vector<FolderRow> rows);
    const FolderRow &row(int index) const { return rows_[std::size_t(index)]; }
    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int(rows_.size()); }
    QVariant data(const QModelIndex &index, int role) const override;

private:
    std::vector<FolderRow> rows_;
};

// The places for a RowList; the innermost one that holds a folder is the chosen one.
class PlaceRows : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    void setPlaces(std::vector<Place> places);
    void addPlaces(const std::vector<Place> &places);  // behind the others, which stay what they are
    void setFolder(const std::string &folder);
    const std::vector<Place> &places() const { return places_; }
    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int(places_.size()); }
    QVariant data(const QModelIndex &index, int role) const override;

private:
    std::vector<Place> places_;
    std::string folder_;
    int chosen_ = -1;
};

}  // namespace kiv
