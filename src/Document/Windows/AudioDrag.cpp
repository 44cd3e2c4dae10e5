#include "Document/Windows/AudioDrag.h"

#include <QMimeData>
#include <QUrl>

#include "Document/AudioExtensions.h"

namespace kiv {

const QStringList &audioExtensions() {
    static const QStringList extensions = [] {
        QStringList all;
        for (const std::string_view extension : openableExtensions) all << QString::fromLatin1(extension);
        return all;
    }();
    return extensions;
}

std::string localPath(const QUrl &url) {
    if (!url.isLocalFile()) return {};
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

std::vector<std::string> audioURLs(const QMimeData &data) {
    std::vector<std::string> paths;
    for (const QUrl &url : data.urls()) {
        const QString name = url.fileName(QUrl::FullyDecoded);
        const bool isAudio = audioExtensions().contains(name.mid(name.lastIndexOf('.') + 1).toLower());
        if (std::string path = localPath(url); isAudio && !path.empty()) paths.push_back(std::move(path));
    }
    return paths;
}

}  // namespace kiv
