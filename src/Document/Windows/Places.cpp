#include "Document/Windows/Places.h"

#include <QDir>
#include <QStandardPaths>
#include <QStorageInfo>

namespace kiv {

std::string homeFolder() { return QDir::homePath().toStdString(); }

std::vector<Place> userPlaces() {
    using enum QStandardPaths::StandardLocation;
    std::vector<Place> places;
    for (const auto &[label, location] : {std::pair{"Desktop", DesktopLocation}, std::pair{"Documents", DocumentsLocation},
                                          std::pair{"Music", MusicLocation}, std::pair{"Downloads", DownloadLocation}}) {
        const QDir folder(QStandardPaths::writableLocation(location));
        if (folder.exists() && folder != QDir::home()) places.push_back({label, folder.absolutePath().toStdString()});
    }
    return places;
}

std::vector<Place> mountedPlaces() {
    std::vector<Place> places;
    for (const QStorageInfo &storage : QStorageInfo::mountedVolumes()) {
        const QString root = storage.rootPath();
        const bool isMedium = root.startsWith("/media/") || root.startsWith("/run/media/") || root.startsWith("/mnt/");
        if (isMedium && storage.isReady() && !storage.isReadOnly())
            places.push_back({root.mid(root.lastIndexOf('/') + 1).toStdString(), root.toStdString()});
    }
    return places;
}

}  // namespace kiv
