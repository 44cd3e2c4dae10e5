#include "Document/Windows/AudioDrag.h"

#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

namespace kiv {

const QStringList &audioExtensions() {
    static const QStringList extensions{"wav", "wave", "bwf",  "rf64", "w64", "aif",  "aiff", "aifc", "caf", "au",
                                        "snd", "voc",  "flac", "oga",  "ogg", "opus", "mp3",  "mp2",  "mp1", "m4a",
                                        "m4b", "mp4",  "aac",  "wma",  "wv",  "ape",  "tta",  "ac3",  "mka"};
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
