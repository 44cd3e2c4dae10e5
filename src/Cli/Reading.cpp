#include "Cli/Reading.h"

#include "Cli/Interrupt.h"

#include "Document/AudioFileReading.h"
#include "Support/Failures.h"

namespace kiv::Cli {

namespace {

// The result of a job with a progress bar.
template <class Result, class Read>
Result resultOf(const DocumentServices &services, const std::string &path, Read read) {
    Result result;
    std::exception_ptr failed;
    services.jobs.run(
        std::make_shared<Progress>(), [&](Progress &progress) { result = read(progress); },
        [&](std::exception_ptr failure) { failed = failure; });
    if (!failed) return result;
    try {
        std::rethrow_exception(failed);
    } catch (const Cancelled &) {
        throw;
    } catch (...) {
        throw FileFailure(path, errorText(failed));
    }
}

}  // namespace

void runNow(const DocumentServices &services, const std::string &path, const std::function<void(Progress &)> &work) {
    resultOf<bool>(services, path, [&](Progress &progress) { return work(progress), true; });
}

void openNow(AudioDocument &document, const std::string &path) {
    std::string failed;
    document.open(path, [&](const std::string &error) { failed = error; });
    Interrupt::throwIfRequested();
    if (!failed.empty()) throw FileFailure(path, failed);
}

AudioFileContents readNow(const DocumentServices &services, const std::string &path) {
    return resultOf<AudioFileContents>(services, path, [&](Progress &progress) {
        return readAudioFile(services.files, services.decoders, path, progress).contents;
    });
}

AudioFileCodec::AudioFileSummary summarizeNow(const DocumentServices &services, const std::string &path) {
    return resultOf<AudioFileCodec::AudioFileSummary>(services, path, [&](Progress &progress) {
        return summarizeAudioFile(services.files, services.decoders, path, progress);
    });
}

}  // namespace kiv::Cli
