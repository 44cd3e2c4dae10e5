#include "Document/Windows/AudioDrag.h"

#include <QFileInfo>
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

std::vector<std::string> audioURLs(const QMimeData &data) {
    std::vector<std::string> paths;
    for (const QUrl &url : data.urls()) {
        const QFileInfo file(url.toLocalFile());
        if (url.isLocalFile() && audioExtensions().contains(file.suffix().toLower()) && !file.isDir())
            paths.push_back(file.filePath().toStdString());
    }
    return paths;
}

}  // namespace kiv
