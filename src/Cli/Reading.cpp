#include "Cli/Reading.h"

#include "Document/AudioFileReading.h"

namespace kiv::Cli {

AudioFileContents readNow(const DocumentServices &services, const std::string &path) {
    AudioFileContents contents;
    std::exception_ptr failed;
    services.jobs.run(
        std::make_shared<Progress>(),
        [&](Progress &progress) { contents = readAudioFile(services.files, path, progress).contents; },
        [&](std::exception_ptr failure) { failed = failure; });
    if (!failed) return contents;
    try {
        std::rethrow_exception(failed);
    } catch (const Cancelled &) {
        throw;
    } catch (...) {
        throw FileFailure(path, errorText(failed));
    }
}

}  // namespace kiv::Cli
