#pragma once

#include <stdexcept>
#include <string>

#include "Audio/Files/AudioFileCodec.h"
#include "Document/AudioDocument.h"

namespace kiv::Cli {

// A file that could not be read or written; what() is the reason.
struct FileFailure : std::runtime_error {
    FileFailure(std::string path, const std::string &text) : std::runtime_error(text), file(std::move(path)) {}
    std::string file;
};

// Runs work on that file as a job with a progress bar. Throws FileFailure and Cancelled.
void runNow(const DocumentServices &services, const std::string &path, const std::function<void(Progress &)> &work);

// The same way opens a document, or reads the sound file at a path and says on standard error what is wrong with it.
void openNow(AudioDocument &document, const std::string &path);
AudioFileContents readNow(const DocumentServices &services, const std::string &path);
// The same without the samples.
AudioFileCodec::AudioFileSummary summarizeNow(const DocumentServices &services, const std::string &path);

}  // namespace kiv::Cli
