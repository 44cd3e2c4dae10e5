#pragma once

#include <QStringList>
#include <string>
#include <vector>

class QMimeData;

namespace kiv {

// The endings of the files that the program opens, lower-case, without the point.
const QStringList &audioExtensions();
// The paths of the audio files among what is dragged; files of other kinds, folders and what is elsewhere do not count.
std::vector<std::string> audioURLs(const QMimeData &data);

}  // namespace kiv
