#include "Document/Windows/FolderRows.h"

#include <QCollator>
#include <algorithm>

#include "Document/FileNames.h"
#include "Document/SaveFormats.h"
#include "Editor/Surfaces/FolderCrumbs.h"
#include "Editor/Views/RowList.h"

namespace kiv {

namespace {

FolderRow rowOf(const FolderEntry &entry, std::time_t now) {
    return {.name = entry.name,
            .text = QString::fromStdString(shownName(entry.name)),
            .size = entry.isFolder ? QString() : QString::fromStdString(sizeText(entry.size)),
            .changed = QString::fromStdString(dateText(entry.modifiedNs, now)),
            .isFolder = entry.isFolder,
            .canBeWritten = containerOfExtension(extensionOf(entry.name)).has_value()};
}

}  // namespace

std::vector<FolderRow> folderRows(const FolderListing &listing, std::time_t now) {
    // Without a language there would be no order but that of the codes.
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::vector<std::pair<QCollatorSortKey, FolderRow>> keyed;
    for (const FolderEntry &entry : listing.entries) {
        const std::string stem(entry.isFolder ? entry.name : stemOf(entry.name));
        keyed.emplace_back(collator.sortKey(QString::fromStdString(stem)), rowOf(entry, now));
    }
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto &a, const auto &b) {
        return a.second.isFolder != b.second.isFolder ? a.second.isFolder : a.first < b.first;
    });
    std::vector<FolderRow> rows;
    for (auto &[key, row] : keyed) rows.push_back(std::move(row));
    return rows;
}

void FolderRows::setRows(std::vector<FolderRow> rows) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

QVariant FolderRows::data(const QModelIndex &index, int role) const {
    const FolderRow &row = rows_[std::size_t(index.row())];
    switch (role) {
        case Qt::DisplayRole:
            return row.text;
        case Qt::AccessibleTextRole:
            return QStringList{row.text, row.isFolder ? QString("folder") : row.size, row.changed}.join(", ");
        case RowList::secondRole:
            return row.size;
        case RowList::thirdRole:
            return row.changed;
        case RowList::iconRole:
            return row.isFolder ? QString("folder") : QString();
        case RowList::isDimRole:
            return !row.isFolder && !row.canBeWritten;
        default:
            return {};
    }
}

void PlaceRows::setPlaces(std::vector<Place> places) {
    beginResetModel();
    places_ = std::move(places);
    endResetModel();
    setFolder(folder_);
}

void PlaceRows::addPlaces(const std::vector<Place> &places) {
    beginInsertRows({}, rowCount(), rowCount() + int(places.size()) - 1);
    places_.insert(places_.end(), places.begin(), places.end());
    endInsertRows();
    setFolder(folder_);
}

void PlaceRows::setFolder(const std::string &folder) {
    folder_ = folder;
    chosen_ = -1;
    for (int i = 0; i < rowCount(); ++i) {
        const std::string &path = places_[std::size_t(i)].path;
        const bool isInner = chosen_ < 0 || path.size() > places_[std::size_t(chosen_)].path.size();
        if (isInner && isWithin(folder, path)) chosen_ = i;
    }
    if (rowCount() > 0) emit dataChanged(index(0), index(rowCount() - 1));
}

QVariant PlaceRows::data(const QModelIndex &index, int role) const {
    if (role == Qt::DisplayRole) return QString::fromStdString(places_[std::size_t(index.row())].label);
    if (role == RowList::isChosenRole) return index.row() == chosen_;
    return {};
}

}  // namespace kiv
