#pragma once

#include <stdexcept>
#include <string>

#include "Document/AudioDocument.h"

namespace kiv::Cli {

// A file that could not be read or written; what() is the reason.
struct FileFailure : std::runtime_error {
    FileFailure(std::string path, const std::string &text) : std::runtime_error(text), file(std::move(path)) {}
    std::string file;
};

// The sound file at a path, with the progress bar of a job. Throws FileFailure and Cancelled.
// Runs work on that file as a job with a progress bar. Throws FileFailure and Cancelled.
void runNow(const DocumentServices &services, const std::string &path, const std::function<void(Progress &)> &work);

AudioFileContents readNow(const DocumentServices &services, const std::string &path);
// The same without the samples.
AudioFileCodec::AudioFileSummary summarizeNow(const DocumentServices &services, const std::string &path);

}  // namespace kiv::Cli
