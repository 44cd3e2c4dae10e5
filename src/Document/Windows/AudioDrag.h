#pragma once

#include <QStringList>
#include <string>
#include <vector>

class QMimeData;
class QUrl;

namespace kiv {

// The endings of the files that the program opens, lower-case, without the point.
const QStringList &audioExtensions();
// The path of a local file, byte for byte; empty of anything else.
std::string localPath(const QUrl &url);
// The paths of the audio files among what is dragged, as their names tell; files of other kinds and what is elsewhere do not
// count. The disk is not asked, since a drag waits for the answer.
std::vector<std::string> audioURLs(const QMimeData &data);

}  // namespace kiv
